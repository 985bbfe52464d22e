#include "runtime/Heap.h"

#include "framework/exceptions/CMemoryException.h"

#include <windows.h>

#include <new>

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

void* AfxAllocMemory(std::size_t cb) noexcept
{
    HANDLE const hHeap = GetHeap();
    return hHeap != nullptr ? ::HeapAlloc(hHeap, 0, cb) : nullptr;
}

void AfxFreeMemory(void* p) noexcept
{
    if (p != nullptr)
        ::HeapFree(g_hHeap, 0, p);
}

void AfxDestroyHeap() noexcept
{
    HANDLE const hHeap = ::InterlockedExchangePointer(&g_hHeap, nullptr);
    if (hHeap != nullptr)
        ::HeapDestroy(hHeap);
}

void* operator new(std::size_t cb)
{
    void* const p = AfxAllocMemory(cb);
    if (p == nullptr)
        AfxThrowMemoryException();
    return p;
}

void* operator new[](std::size_t cb)
{
    return ::operator new(cb);
}

void operator delete(void* p) noexcept
{
    AfxFreeMemory(p);
}

void operator delete[](void* p) noexcept
{
    AfxFreeMemory(p);
}

void operator delete(void* p, std::size_t /*cb*/) noexcept
{
    AfxFreeMemory(p);
}

void operator delete[](void* p, std::size_t /*cb*/) noexcept
{
    AfxFreeMemory(p);
}
