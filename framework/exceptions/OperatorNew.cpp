// operator new: memory comes from the module's own heap, and a lack of it is a CMemoryException.
#include "framework/exceptions/CSimpleException.h"
#include "runtime/Heap.h"

#include <new>

void* operator new(std::size_t cb)
{
    void* const p = AllocMemory(cb);
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
    FreeMemory(p);
}

void operator delete[](void* p) noexcept
{
    FreeMemory(p);
}

void operator delete(void* p, std::size_t /*cb*/) noexcept
{
    FreeMemory(p);
}

void operator delete[](void* p, std::size_t /*cb*/) noexcept
{
    FreeMemory(p);
}
