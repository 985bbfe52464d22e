// Thread state: what the framework keeps for each thread.
#pragma once

#include "runtime/ThreadBlock.h"

class AFX_MODULE_STATE;
class CWinThread;
class TrackedState;

class ThreadState : public ThreadBlock
{
public:
    AFX_MODULE_STATE* m_pModuleState = nullptr; // current; null: the default one
    TrackedState* m_pInnermost = nullptr;       // guard, on the thread's stack
    CWinThread* m_pCurrentWinThread = nullptr;  // of a thread that AfxBeginThread started
};

// The calling thread's state, made on first use. Throws CMemoryException when it cannot be.
ThreadState* GetThreadState();

// The calling thread's state, or null when it has none yet.
inline ThreadState* FindThreadState() noexcept
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): no thread is given another block
    return static_cast<ThreadState*>(FindThreadBlock());
}

// Frees the calling thread's state, if it has one.
void FreeThreadState() noexcept;
