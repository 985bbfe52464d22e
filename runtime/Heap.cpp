#include "runtime/Heap.h"

#include <windows.h>

namespace
{
// Made on first use: most of what loads the library and unloads it again needs no heap at all.
HANDLE volatile g_hHeap = nullptr;

// Not one of the system's locks: those keep lists of who waits, on the stacks of the waiting, and whoever
// is terminated waits for just this one.
LONG volatile g_bHeapLocked = FALSE;
constexpr int kImpatientTries = 16;

HANDLE GetHeap() noexcept
{
    if (g_hHeap != nullptr)
        return g_hHeap;
    HANDLE const hNew = ::HeapCreate(0, 0, 0);
    if (hNew == nullptr)
        return nullptr;
    HANDLE const hOther = ::InterlockedCompareExchangePointer(&g_hHeap, hNew, nullptr);
    if (hOther == nullptr)
        return hNew;
    ::HeapDestroy(hNew); // another thread was first
    return hOther;
}
} // namespace

HeapGuard::HeapGuard() noexcept
{
    for (int i = 0; ::InterlockedExchange(&g_bHeapLocked, TRUE) != FALSE; ++i)
        ::Sleep(i < kImpatientTries ? 0 : 1);
}

HeapGuard::~HeapGuard()
{
    ::InterlockedExchange(&g_bHeapLocked, FALSE);
}

void* AllocMemory(std::size_t cb) noexcept
{
    HANDLE const hHeap = GetHeap();
    if (hHeap == nullptr)
        return nullptr;
    const HeapGuard guard;
    return ::HeapAlloc(hHeap, 0, cb);
}

void FreeMemory(void* p) noexcept
{
    if (p == nullptr)
        return;
    const HeapGuard guard;
    ::HeapFree(g_hHeap, 0, p);
}

void DestroyHeap() noexcept
{
    HANDLE const hHeap = ::InterlockedExchangePointer(&g_hHeap, nullptr);
    if (hHeap != nullptr)
        ::HeapDestroy(hHeap);
}
