// ResourceCount: what this process holds of the system, to see what a call leaves behind.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

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

    // Blocks in use in one heap.
    static std::size_t BlocksIn(HANDLE hHeap);
};

bool operator==(const ResourceCount& a, const ResourceCount& b);
std::ostream& operator<<(std::ostream& stream, const ResourceCount& count);

// Whether an action leaves no more than is allowed. It is repeated a few times: the system and the C
// library keep something now and then, a leak takes something every time.
template <class Allowed, class Action>
testing::AssertionResult LeavesOnly(const Allowed& allowed, const Action& action)
{
    ResourceCount before;
    ResourceCount after;
    for (int nTries = 0; nTries < 5; ++nTries)
    {
        before = ResourceCount::Now();
        action();
        after = ResourceCount::Now();
        if (allowed(before, after))
            return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "before: " << before << "\nafter: " << after;
}

// Whether an action gives back all that it takes.
template <class Action>
testing::AssertionResult LeavesNothingBehind(const Action& action)
{
    return LeavesOnly(
        [](const ResourceCount& before, const ResourceCount& after) { return after == before; },
        action);
}
