// The memory that each thread of the process has in this library.
#pragma once

// What a thread keeps. Whoever keeps more of it derives from this.
struct ThreadBlock
{
    // What the compiler's exception handling keeps for a thread, in the DLL; its binary interface fixes
    // both fields.
    struct Exceptions
    {
        void* pCaught = nullptr;
        unsigned int nUncaught = 0;
    };
    Exceptions exceptions;
};

// The calling thread's block, or null when it has none yet.
ThreadBlock* FindThreadBlock() noexcept;

// Gives the calling thread a block, or takes it away (null). The caller frees the old one. False when
// the system has no room to keep it.
bool SetThreadBlock(ThreadBlock* pBlock) noexcept;

// Gives back the slot that the threads' blocks hang on. Their memory goes with the heap.
void FreeThreadSlot() noexcept;
