// The module's own heap.
//
// Everything that the library allocates comes from one private heap, so that unloading the library
// gives back every byte, also of objects that a caller never had the chance to release.
#pragma once

#include <cstddef>

// Null when memory ran out.
void* AllocMemory(std::size_t cb) noexcept;
void FreeMemory(void* p) noexcept; // p may be null

// Gives back the whole heap. Nothing that came from it may be used afterwards.
void DestroyHeap() noexcept;

// The heap's lock, for as long as the object lives; not to be taken twice. Whoever terminates a thread
// holds it: a thread that is terminated inside the heap leaves it locked, or half changed where the heap
// works without a lock.
class HeapGuard
{
public:
    HeapGuard() noexcept;
    ~HeapGuard();
    HeapGuard(const HeapGuard&) = delete;
    HeapGuard& operator=(const HeapGuard&) = delete;
};
