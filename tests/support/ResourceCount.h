// ResourceCount: what this process holds of the system, to see what a call leaves behind.
#pragma once

#include <windows.h>

#include <cstddef>
#include <ostream>

struct ResourceCount
{
    DWORD nHandles = 0;
    DWORD nGdiObjects = 0;
    DWORD nUserObjects = 0;
    int nThreads = 0;
    DWORD nHeaps = 0;
    std::size_t nHeapBlocks = 0; // in use, in all heaps
    std::size_t cbHeapBlocks = 0;

    // Allocates nothing itself, as far as heaps go.
    static ResourceCount Now();

    // The threads alone.
    static int Threads();
    // Blocks in use in one heap.
    static std::size_t BlocksIn(HANDLE hHeap);
};

std::ostream& operator<<(std::ostream& stream, const ResourceCount& count);
