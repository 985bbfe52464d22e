// The allocation functions of the compiler's exception handling, replaced in the DLL.
//
// The stock ones take 73 KB from the heap when the library is loaded and never give them back when it
// is unloaded, and they end the process when a thread throws its first exception and memory has run
// out. Ours throw without allocating: the exceptions here are pointers, a few at a time.
#include "runtime/ExceptionRuntime.h"

#include "runtime/Heap.h"
#include "runtime/ThreadBlock.h"

#include <cxxabi.h>
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <exception>

namespace
{
// In front of the thrown object the runtime keeps its header, which it finds by counting back from
// the object; its size is the runtime's secret, and less than this.
constexpr std::size_t kHeaderSize = 256;
constexpr std::size_t kObjectSize = 64;
constexpr int kExceptions = 16;

struct ExceptionStorage
{
    // While it leaves the library.
    DWORD nThreadID;
    const void* pStack;
    alignas(16) unsigned char header[kHeaderSize - 16];
    alignas(16) unsigned char object[kObjectSize];
};

ExceptionStorage g_exceptions[kExceptions];
LONG volatile g_bExceptionUsed[kExceptions];

ExceptionStorage* FindFreeStorage() noexcept
{
    for (int i = 0; i < kExceptions; ++i)
    {
        if (::InterlockedExchange(&g_bExceptionUsed[i], TRUE) == FALSE)
            return &g_exceptions[i];
    }
    return nullptr;
}

// For a thread that throws before it has a block: when there is no memory for one. An entry
// belongs to its thread until that ends.
struct ThreadEntry
{
    LONG volatile nThreadID = 0; // 0: free
    ThreadBlock::Exceptions exceptions;
};
constexpr int kThreads = 64;
ThreadEntry g_threads[kThreads];

ThreadEntry* FindThread(LONG nThreadID) noexcept
{
    for (ThreadEntry& entry : g_threads)
    {
        if (entry.nThreadID == nThreadID)
            return &entry;
    }
    return nullptr;
}

ThreadBlock::Exceptions* GetThreadExceptions() noexcept
{
    ThreadBlock* const pBlock = FindThreadBlock();
    if (pBlock != nullptr)
        return &pBlock->exceptions;
    const auto nThreadID = static_cast<LONG>(::GetCurrentThreadId());
    ThreadEntry* const pFound = FindThread(nThreadID);
    if (pFound != nullptr)
        return &pFound->exceptions;
    for (ThreadEntry& entry : g_threads)
    {
        if (::InterlockedCompareExchange(&entry.nThreadID, nThreadID, 0) == 0)
            return &entry.exceptions;
    }
    std::abort();
}
} // namespace

void FreeThreadExceptions() noexcept
{
    ThreadEntry* const pEntry = FindThread(static_cast<LONG>(::GetCurrentThreadId()));
    if (pEntry != nullptr)
    {
        pEntry->exceptions = {};
        ::InterlockedExchange(&pEntry->nThreadID, 0);
    }
}

void ExceptionLeaves(const void* pObject, const void* pStack) noexcept
{
    // The catch that counts down will be somebody else's.
    --GetThreadExceptions()->nUncaught;
    for (ExceptionStorage& storage : g_exceptions)
    {
        if (pObject == storage.object)
        {
            storage.pStack = pStack;
            storage.nThreadID = ::GetCurrentThreadId();
        }
    }
}

void ExceptionComes() noexcept
{
    // The throw that counted up was somebody else's.
    ++GetThreadExceptions()->nUncaught;
}

void EndExceptions(const void* pEnd, void (*pfnDispose)(void* pObject)) noexcept
{
    const DWORD nThreadID = ::GetCurrentThreadId();
    for (ExceptionStorage& storage : g_exceptions)
    {
        if (storage.nThreadID != nThreadID || storage.pStack >= pEnd)
            continue;
        storage.nThreadID = 0;
        if (pfnDispose != nullptr)
        {
            pfnDispose(storage.object);
            abi::__cxa_free_exception(storage.object);
        }
    }
}

namespace __cxxabiv1
{
extern "C" void* __cxa_allocate_exception(std::size_t cbObject) noexcept
{
    ExceptionStorage* const pStorage = cbObject <= kObjectSize ? FindFreeStorage() : nullptr;
    auto* pBytes = reinterpret_cast<unsigned char*>(pStorage);
    if (pBytes == nullptr)
        pBytes = static_cast<unsigned char*>(AllocMemory(kHeaderSize + cbObject));
    if (pBytes == nullptr)
        std::abort();
    std::memset(pBytes, 0, kHeaderSize + cbObject);
    return pBytes + kHeaderSize;
}

extern "C" void __cxa_free_exception(void* pObject) noexcept
{
    for (int i = 0; i < kExceptions; ++i)
    {
        if (pObject == g_exceptions[i].object)
        {
            g_exceptions[i].nThreadID = 0;
            ::InterlockedExchange(&g_bExceptionUsed[i], FALSE);
            return;
        }
    }
    FreeMemory(static_cast<unsigned char*>(pObject) - kHeaderSize);
}

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept
{
    return reinterpret_cast<__cxa_eh_globals*>(GetThreadExceptions());
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return reinterpret_cast<__cxa_eh_globals*>(GetThreadExceptions());
}
} // namespace __cxxabiv1

namespace __gnu_cxx
{
// The stock one writes the exception's name, which costs a demangler and a console.
void __verbose_terminate_handler()
{
    std::abort();
}
} // namespace __gnu_cxx

// The stock ones are variables, the only ones in the library that would be initialised by its file.
namespace __cxxabiv1
{
extern const std::terminate_handler __terminate_handler;
const std::terminate_handler __terminate_handler = &std::abort;
extern const std::terminate_handler __unexpected_handler;
const std::terminate_handler __unexpected_handler = &std::abort;
} // namespace __cxxabiv1
