// HeapCalls: counts what is taken from each heap of the process and given back, call by call.
//
// For a system whose HeapWalk does not know every block. Wine's, since its version 8.1, leaves out small
// ones: its low-fragmentation heap keeps them in groups, and only heaps of a fixed size go without it.
#pragma once

#include "tests/support/FunctionPatch.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>

class HeapCalls
{
public:
    struct Blocks
    {
        long long nBlocks;
        long long cbBlocks;
    };

    // While the process has one thread. False when this system's functions cannot be patched.
    static bool CountFromNowOn()
    {
        HMODULE const hModule = ::GetModuleHandleA("ntdll.dll");
        return PatchFunction(hModule, "RtlDestroyHeap", &Destroy, s_pDestroy) &&
               PatchFunction(hModule, "RtlAllocateHeap", &Allocate, s_pAllocate) &&
               PatchFunction(hModule, "RtlReAllocateHeap", &Reallocate, s_pReallocate) &&
               PatchFunction(hModule, "RtlFreeHeap", &Free, s_pFree);
    }
    // What was taken before counts as nothing, and as less than nothing when it is given back.
    static Blocks In(HANDLE hHeap)
    {
        Blocks blocks = {};
        for (const Heap& heap : s_heaps)
        {
            if (heap.hHeap != hHeap)
                continue;
            blocks.nBlocks += heap.nBlocks;
            blocks.cbBlocks += heap.cbBlocks;
        }
        return blocks;
    }

private:
    // Two may be of one heap, when two threads were its first.
    struct Heap
    {
        std::atomic<HANDLE> hHeap;
        std::atomic<long long> nBlocks;
        std::atomic<long long> cbBlocks;
    };
    static constexpr std::size_t kMaxHeaps = 512;

    static void Add(HANDLE hHeap, long long nBlocks, long long cbBlocks)
    {
        Heap* pFound = nullptr;
        for (std::size_t i = 0; pFound == nullptr && i < kMaxHeaps; ++i)
        {
            if (s_heaps[i].hHeap == hHeap)
                pFound = &s_heaps[i];
        }
        for (std::size_t i = 0; pFound == nullptr && i < kMaxHeaps; ++i)
        {
            HANDLE hNone = nullptr;
            if (s_heaps[i].hHeap.compare_exchange_strong(hNone, hHeap))
                pFound = &s_heaps[i];
        }
        if (pFound == nullptr)
            return;
        pFound->nBlocks += nBlocks;
        pFound->cbBlocks += cbBlocks;
    }
    static long long SizeOf(HANDLE hHeap, const void* p)
    {
        return p != nullptr ? static_cast<long long>(::HeapSize(hHeap, 0, p)) : 0;
    }

    static void* WINAPI Allocate(HANDLE hHeap, ULONG nFlags, SIZE_T cb)
    {
        void* const p = s_pAllocate(hHeap, nFlags, cb);
        if (p != nullptr)
            Add(hHeap, 1, static_cast<long long>(cb));
        return p;
    }
    // What moves a block is not left to the system, of which it is not known whether it calls the other
    // two for that.
    static void* WINAPI Reallocate(HANDLE hHeap, ULONG nFlags, void* pOld, SIZE_T cb)
    {
        const DWORD nLastError = ::GetLastError();
        const long long cbOld = SizeOf(hHeap, pOld);
        const ULONG nInPlace =
            (nFlags & ~ULONG{HEAP_GENERATE_EXCEPTIONS}) | HEAP_REALLOC_IN_PLACE_ONLY;
        if (void* const p = s_pReallocate(hHeap, nInPlace, pOld, cb); p != nullptr)
        {
            Add(hHeap, 0, static_cast<long long>(cb) - cbOld);
            return p;
        }
        if (pOld == nullptr || cbOld < 0 || (nFlags & HEAP_REALLOC_IN_PLACE_ONLY) != 0)
            return s_pReallocate(hHeap, nFlags, pOld,
                                 cb); // which says in its own way that it fails
        ::SetLastError(nLastError);
        void* const p = Allocate(hHeap, nFlags, cb);
        if (p != nullptr)
        {
            std::memcpy(p, pOld, std::min(cb, static_cast<SIZE_T>(cbOld)));
            Free(hHeap, nFlags, pOld);
        }
        return p;
    }
    static ULONG WINAPI Free(HANDLE hHeap, ULONG nFlags, void* p)
    {
        const long long cb = SizeOf(hHeap, p);
        const ULONG nResult = s_pFree(hHeap, nFlags, p);
        if (p != nullptr && (nResult & 0xFF) != 0) // a BOOLEAN
            Add(hHeap, -1, -cb);
        return nResult;
    }
    // First of all forgotten: another thread may get the next heap at the same place.
    static HANDLE WINAPI Destroy(HANDLE hHeap)
    {
        for (Heap& heap : s_heaps)
        {
            if (hHeap == ::GetProcessHeap() || heap.hHeap != hHeap)
                continue;
            heap.nBlocks = 0;
            heap.cbBlocks = 0;
            heap.hHeap = nullptr;
        }
        return s_pDestroy(hHeap);
    }

    static inline Heap s_heaps[kMaxHeaps];
    static inline decltype(&Allocate) s_pAllocate = nullptr;
    static inline decltype(&Reallocate) s_pReallocate = nullptr;
    static inline decltype(&Free) s_pFree = nullptr;
    static inline decltype(&Destroy) s_pDestroy = nullptr;
};
