#include "runtime/ThreadBlock.h"

#include <windows.h>

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
} // namespace

ThreadBlock* FindThreadBlock() noexcept
{
    const DWORD nSlot = FindSlot();
    return nSlot != kNoSlot ? static_cast<ThreadBlock*>(::TlsGetValue(nSlot)) : nullptr;
}

bool SetThreadBlock(ThreadBlock* pBlock) noexcept
{
    DWORD nSlot = FindSlot();
    if (nSlot == kNoSlot)
        nSlot = MakeSlot();
    return nSlot != kNoSlot && ::TlsSetValue(nSlot, pBlock) != FALSE;
}

void FreeThreadSlot() noexcept
{
    const DWORD nSlot = FindSlot();
    if (nSlot != kNoSlot)
        ::TlsFree(nSlot);
    g_nSlotPlusOne = 0;
}
