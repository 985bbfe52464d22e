#include "framework/modules/ThreadState.h"

#include "framework/exceptions/CMemoryException.h"

namespace
{
// Thread-local storage by slot, not by compiler: that would bring its own allocations, which end the
// process when memory runs out. 0 when there is none, else the slot's number plus one.
LONG volatile g_nSlotPlusOne = 0;

constexpr DWORD kNoSlot = TLS_OUT_OF_INDEXES;

DWORD FindSlot() noexcept
{
    // No slot gives a number that wraps round to just that.
    return static_cast<DWORD>(g_nSlotPlusOne) - 1;
}

DWORD MakeSlot() noexcept
{
    const DWORD nNew = ::TlsAlloc();
    if (nNew == kNoSlot)
        return kNoSlot;
    if (::InterlockedCompareExchange(&g_nSlotPlusOne, static_cast<LONG>(nNew + 1), 0) != 0)
        ::TlsFree(nNew); // another thread was first
    return FindSlot();
}

__attribute__((noinline)) _AFX_THREAD_STATE* MakeThreadState()
{
    auto* const pState = new _AFX_THREAD_STATE;
    if (!AfxSetThreadState(pState))
    {
        delete pState;
        AfxThrowMemoryException();
    }
    return pState;
}
} // namespace

_AFX_THREAD_STATE* AfxFindThreadState() noexcept
{
    const DWORD nSlot = FindSlot();
    return nSlot != kNoSlot ? static_cast<_AFX_THREAD_STATE*>(::TlsGetValue(nSlot)) : nullptr;
}

_AFX_THREAD_STATE* AfxGetThreadState()
{
    _AFX_THREAD_STATE* const pState = AfxFindThreadState();
    return pState != nullptr ? pState : MakeThreadState();
}

BOOL AfxSetThreadState(_AFX_THREAD_STATE* pState) noexcept
{
    DWORD nSlot = FindSlot();
    if (nSlot == kNoSlot)
        nSlot = MakeSlot();
    return nSlot != kNoSlot && ::TlsSetValue(nSlot, pState);
}

void AfxTermThread() noexcept
{
    _AFX_THREAD_STATE* const pState = AfxFindThreadState();
    if (pState != nullptr)
    {
        AfxSetThreadState(nullptr);
        delete pState;
    }
}

void AfxFreeThreadSlot() noexcept
{
    const DWORD nSlot = FindSlot();
    if (nSlot != kNoSlot)
        ::TlsFree(nSlot);
    g_nSlotPlusOne = 0;
}
