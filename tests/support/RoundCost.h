// RoundCost: what a round of some work costs of what the process holds.
//
// A leak takes something again and again; a cache of the system's fills up, or goes up and down by a few.
// So the work is done in three blocks of equally many rounds, and what counts is what every block takes:
// as much as the one that takes the least. A leak of one in 50 rounds is found by blocks of 50.
#pragma once

#include "tests/support/ResourceCount.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <ostream>

class RoundCost
{
public:
    enum Kind
    {
        kHandles,
        kGdiObjects,
        kUserObjects,
        kThreads,
        kHeaps,
        kHeapBlocks,
        kHeapBytes,
        kKinds
    };
    // What a round may cost, of each kind.
    using Allowance = std::array<double, kKinds>;

    static constexpr double kAnything = HUGE_VAL;
    static constexpr int kBlocks = 3;

    // Does the work of all blocks, nRounds in each.
    template <class Round>
    static RoundCost Of(int nRounds, const Round& round)
    {
        RoundCost cost(nRounds);
        while (!cost.IsComplete())
            cost.RunBlock(round);
        return cost;
    }

    explicit RoundCost(int nRounds) : m_nRounds(nRounds) {}

    // Notes what a block of rounds took.
    void AddBlock(const ResourceCount& before, const ResourceCount& after)
    {
        const Growth start = Figures(before);
        Growth& growth = m_growth[m_nBlocks++];
        growth = Figures(after);
        for (std::size_t i = 0; i < kKinds; ++i)
            growth[i] -= start[i];
    }
    template <class Round>
    void RunBlock(const Round& round)
    {
        if (m_nBlocks == 0)
            m_start = ResourceCount::Now();
        for (int i = 0; i < m_nRounds; ++i)
            round();
        // A thread that has just signalled its end may still be there for a moment, with all it holds. To
        // count the threads takes long: those that stay are not counted all the time.
        for (DWORD nPause = 2;
             ResourceCount::Threads() > m_start.nThreads && nPause <= kLongestPause; nPause *= 2)
            ::Sleep(nPause);
        const ResourceCount end = ResourceCount::Now();
        AddBlock(m_start, end);
        m_start = end;
    }
    bool IsComplete() const { return m_nBlocks == kBlocks; }

    // Negative, when every block gives back more than it takes; 0, when they do not agree.
    double PerRound(Kind kind) const
    {
        long long nLeast = m_nBlocks > 0 ? m_growth[0][kind] : 0;
        for (std::size_t i = 1; i < m_nBlocks; ++i)
        {
            const long long n = m_growth[i][kind];
            if ((n > 0) != (nLeast > 0) || (n < 0) != (nLeast < 0))
                return 0;
            if (std::llabs(n) < std::llabs(nLeast))
                nLeast = n;
        }
        return static_cast<double>(nLeast) / m_nRounds;
    }
    bool IsWithin(const Allowance& allowed) const
    {
        for (std::size_t i = 0; i < kKinds; ++i)
        {
            const double cost = PerRound(static_cast<Kind>(i));
            if (allowed[i] != kAnything && (cost < 0 || cost > allowed[i]))
                return false;
        }
        return true;
    }
    // What the block that takes the most takes, of what every block takes.
    Allowance AsAllowance() const
    {
        Allowance allowed = {};
        for (std::size_t i = 0; i < kKinds; ++i)
        {
            for (std::size_t nBlock = 0; PerRound(static_cast<Kind>(i)) > 0 && nBlock < m_nBlocks;
                 ++nBlock)
                allowed[i] =
                    std::max(allowed[i], static_cast<double>(m_growth[nBlock][i]) / m_nRounds);
        }
        return allowed;
    }

    friend std::ostream& operator<<(std::ostream& stream, const RoundCost& cost)
    {
        static constexpr const char* kNames[] = {"handles",   "GDI objects", "USER objects",
                                                 "threads",   "heaps",       "heap blocks",
                                                 "heap bytes"};
        stream << cost.m_nBlocks << " blocks, rounds in each: " << cost.m_nRounds;
        for (std::size_t i = 0; i < kKinds; ++i)
        {
            stream << "\n  " << std::left << std::setw(13) << kNames[i] << std::right;
            for (std::size_t nBlock = 0; nBlock < cost.m_nBlocks; ++nBlock)
                stream << std::showpos << std::setw(8) << cost.m_growth[nBlock][i];
            stream << std::noshowpos << "   a round costs " << std::setprecision(3)
                   << cost.PerRound(static_cast<Kind>(i));
        }
        return stream;
    }

private:
    using Growth = std::array<long long, kKinds>;
    static constexpr DWORD kLongestPause = 256; // milliseconds; with those before it, half a second

    static Growth Figures(const ResourceCount& count)
    {
        return {
            static_cast<long long>(count.nHandles),     static_cast<long long>(count.nGdiObjects),
            static_cast<long long>(count.nUserObjects), count.nThreads,
            static_cast<long long>(count.nHeaps),       static_cast<long long>(count.nHeapBlocks),
            static_cast<long long>(count.cbHeapBlocks)};
    }

    int m_nRounds;
    ResourceCount m_start; // of the next block
    std::size_t m_nBlocks = 0;
    std::array<Growth, kBlocks> m_growth = {};
};

// Whether a round costs no more than is allowed, in blocks of nRounds. What looks like a leak is measured
// again: a leak is still there. Blocks of several rounds say what a round costs in any case; those of a
// single one end as soon as it is certain that it costs nothing.
template <class Round>
testing::AssertionResult CostsAtMost(const RoundCost::Allowance& allowed, int nRounds,
                                     const Round& round)
{
    for (int nTries = 3;; --nTries)
    {
        RoundCost cost(nRounds);
        do
            cost.RunBlock(round);
        while (!cost.IsComplete() && (nRounds > 1 || !cost.IsWithin(allowed)));
        if (nRounds > 1)
            std::cout << cost << '\n';
        if (cost.IsWithin(allowed))
            return testing::AssertionSuccess() << cost;
        if (nTries == 1)
            return testing::AssertionFailure() << cost;
    }
}

// Whether an action gives back all that it takes.
template <class Action>
testing::AssertionResult LeavesNothingBehind(const Action& action)
{
    return CostsAtMost({}, 1, action);
}
template <class Round>
testing::AssertionResult LeavesNothingBehind(int nRounds, const Round& round)
{
    return CostsAtMost({}, nRounds, round);
}
