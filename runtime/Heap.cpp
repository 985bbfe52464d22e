#include "runtime/Heap.h"

#include <windows.h>

#include <cstdint>

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

// The C run-time library's question for the heap that operator new takes from, _get_heap_handle, answered
// for this module; once more as an import, which is how the toolchain's header declares it.
extern "C" std::intptr_t __cdecl GetHeapHandle() __asm__("_get_heap_handle");
extern "C" __attribute__((used)) std::intptr_t __cdecl GetHeapHandle()
{
    return reinterpret_cast<std::intptr_t>(g_hHeap);
}
extern "C" decltype(&GetHeapHandle) const __imp__get_heap_handle;
extern "C" __attribute__((used)) decltype(&GetHeapHandle) const __imp__get_heap_handle =
    &GetHeapHandle;

HeapGuard::HeapGuard() noexcept : m_hHeap(GetHeap())
{
    if (m_hHeap != nullptr && !::HeapLock(m_hHeap))
        m_hHeap = nullptr;
}

HeapGuard::~HeapGuard()
{
    if (m_hHeap != nullptr)
        ::HeapUnlock(m_hHeap);
}

// Under the heap's lock as a whole: some of its work the heap does without, and would leave half done
// when its thread is terminated.
void* AllocMemory(std::size_t cb) noexcept
{
    const HeapGuard guard;
    return g_hHeap != nullptr ? ::HeapAlloc(g_hHeap, 0, cb) : nullptr;
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
