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
