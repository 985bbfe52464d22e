// The allocation functions of a program that has the library in it.
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

TEST(Heap, TakesNothingBackWithoutHarm)
{
    ::operator delete(static_cast<void*>(nullptr));
    ::operator delete[](static_cast<void*>(nullptr));
}
} // namespace
