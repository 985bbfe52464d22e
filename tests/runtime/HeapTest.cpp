// The allocation functions of a program that has the library in it.
#include "runtime/Heap.h"
#include "tests/support/ResourceCount.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace
{
constexpr std::size_t kSize = 1000;

TEST(Heap, GivesMemoryForObjectsAndArraysAndTakesItBack)
{
    for (int i = 0; i < 3; ++i)
    {
        void* const pObject = ::operator new(kSize);
        void* const pArray = ::operator new[](kSize);
        std::memset(pObject, 1, kSize);
        std::memset(pArray, 2, kSize);
        EXPECT_EQ(static_cast<char*>(pObject)[kSize - 1], 1);
        if (i % 2 == 0)
        {
            ::operator delete(pObject);
            ::operator delete[](pArray);
        }
        else
        {
            ::operator delete(pObject, kSize);
            ::operator delete[](pArray, kSize);
        }
    }
}

TEST(Heap, HasItsBlockAgainAfterEachFormOfDelete)
{
    constexpr int kBlocks = 50;
    void (*const forms[])() = {
        [] { ::operator delete(::operator new(kSize)); },
        [] { ::operator delete(::operator new(kSize), kSize); },
        [] { ::operator delete[](::operator new[](kSize)); },
        [] { ::operator delete[](::operator new[](kSize), kSize); },
    };
    for (const auto form : forms)
    {
        const std::size_t nBefore = ResourceCount::Now().nHeapBlocks;
        for (int i = 0; i < kBlocks; ++i)
            form();
        EXPECT_LT(ResourceCount::Now().nHeapBlocks, nBefore + kBlocks);
    }
}

DWORD WINAPI UseHeap(LPVOID /*pNothing*/)
{
    ::operator delete(::operator new(kSize));
    return 0;
}

// Nothing here may ask for memory while the lock is held.
TEST(HeapGuard, KeepsOtherThreadsFromTheHeap)
{
    constexpr DWORD kLongEnough = 50; // for a thread that nobody keeps
    constexpr DWORD kLimit = 60000;
    HANDLE hThread = nullptr;
    DWORD nWaited = 0;
    {
        const HeapGuard guard;
        hThread = ::CreateThread(nullptr, 0, &UseHeap, nullptr, 0, nullptr);
        nWaited = ::WaitForSingleObject(hThread, kLongEnough);
    }
    EXPECT_EQ(nWaited, DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(::WaitForSingleObject(hThread, kLimit), WAIT_OBJECT_0);
    ::CloseHandle(hThread);
}

TEST(Heap, TakesNothingBackWithoutHarm)
{
    ::operator delete(static_cast<void*>(nullptr));
    ::operator delete[](static_cast<void*>(nullptr));
}
} // namespace
