// Thread state: what the framework keeps for each thread.
#pragma once

#include <windows.h>

class AFX_MODULE_STATE;
class CWinThread;
class TrackedState;

// What the compiler's exception handling keeps for a thread; its binary interface fixes both fields.
struct AfxThreadExceptions
{
    void* pCaught = nullptr;
    unsigned int nUncaught = 0;
};

class _AFX_THREAD_STATE
{
public:
    AFX_MODULE_STATE* m_pModuleState = nullptr; // current; null: the default one
    TrackedState* m_pInnermost = nullptr;       // guard, on the thread's stack
    CWinThread* m_pCurrentWinThread = nullptr;  // of a thread that AfxBeginThread started
    AfxThreadExceptions m_exceptions;           // in the DLL
};

// The calling thread's state, made on first use. Throws CMemoryException when it cannot be.
_AFX_THREAD_STATE* AfxGetThreadState();

// The calling thread's state, or null when it has none yet.
_AFX_THREAD_STATE* AfxFindThreadState() noexcept;

// Gives the calling thread a state that was made for it, or takes it away (null). The caller frees
// the old one. FALSE when the system has no room to keep it.
BOOL AfxSetThreadState(_AFX_THREAD_STATE* pState) noexcept;

// Frees the calling thread's state, if it has one.
void AfxTermThread() noexcept;

// Gives back the slot that the threads' states hang on. Their memory goes with the heap.
void AfxFreeThreadSlot() noexcept;
