// HeapGuard: keeps every other thread out of the heap that operator new takes from, for as long as it
// lives.
#pragma once

#ifdef _AFXDLL // the vendor's framework, and with it the C run-time library's heap
#include <malloc.h>
#include <windows.h>

class HeapGuard
{
public:
    HeapGuard() : m_bLocked(::HeapLock(m_hHeap)) {}
    ~HeapGuard()
    {
        if (m_bLocked)
            ::HeapUnlock(m_hHeap);
    }
    HeapGuard(const HeapGuard&) = delete;
    HeapGuard& operator=(const HeapGuard&) = delete;

private:
    HANDLE const m_hHeap = reinterpret_cast<HANDLE>(::_get_heap_handle());
    BOOL m_bLocked;
};
#else
#include "runtime/Heap.h"
#endif
