// The allocation functions of a program that has the library in it.
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

TEST(Heap, TakesNothingBackWithoutHarm)
{
    ::operator delete(static_cast<void*>(nullptr));
    ::operator delete[](static_cast<void*>(nullptr));
}
} // namespace
