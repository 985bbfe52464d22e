#include "runtime/Heap.h"

#include <windows.h>

namespace
{
// Made on first use: most of what loads the library and unloads it again needs no heap at all.
HANDLE volatile g_hHeap = nullptr;

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

void* AllocMemory(std::size_t cb) noexcept
{
    HANDLE const hHeap = GetHeap();
    return hHeap != nullptr ? ::HeapAlloc(hHeap, 0, cb) : nullptr;
}

void FreeMemory(void* p) noexcept
{
    if (p != nullptr)
        ::HeapFree(g_hHeap, 0, p);
}

void DestroyHeap() noexcept
{
    HANDLE const hHeap = ::InterlockedExchangePointer(&g_hHeap, nullptr);
    if (hHeap != nullptr)
        ::HeapDestroy(hHeap);
}
