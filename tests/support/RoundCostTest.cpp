// Leaks on purpose, to see that the measure finds each kind, and what is none.
#include "tests/support/RoundCost.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace
{
constexpr int kRounds = 50;
constexpr SIZE_T kStep = 256; // bytes

struct Leak
{
    RoundCost::Kind kind;
    const char* pszName;
    int nEach;                       // of that kind
    std::function<void()> (*take)(); // returns what gives it back
};

std::function<void()> TakeHandle()
{
    HANDLE const hEvent = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    return [hEvent] { ::CloseHandle(hEvent); };
}

std::function<void()> TakeGdiObject()
{
    HBRUSH const hBrush = ::CreateSolidBrush(RGB(1, 2, 3));
    return [hBrush] { ::DeleteObject(hBrush); };
}

std::function<void()> TakeUserObject()
{
    HWND const hWnd = ::CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                        nullptr, nullptr);
    return [hWnd] { ::DestroyWindow(hWnd); };
}

std::function<void()> TakeChildWindow()
{
    HWND const hWnd = ::CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                        nullptr, nullptr);
    ::CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 5, 5, hWnd, nullptr, nullptr, nullptr);
    return [hWnd] { ::DestroyWindow(hWnd); };
}

std::function<void()> TakeThread()
{
    HANDLE const hThread = ::CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            ::SleepEx(INFINITE, TRUE);
            return 0;
        },
        nullptr, 0, nullptr);
    return [hThread] {
        // Terminated while it begins, it would keep what it holds of the system's locked, at the latest
        // for the end of the process.
        ::QueueUserAPC([](ULONG_PTR) { ::ExitThread(0); }, hThread, 0);
        ::WaitForSingleObject(hThread, INFINITE);
        ::CloseHandle(hThread);
    };
}

std::function<void()> TakeHeap()
{
    HANDLE const hHeap = ::HeapCreate(0, 0, 0);
    return [hHeap] { ::HeapDestroy(hHeap); };
}

std::function<void()> TakeBlockOf(SIZE_T cb)
{
    void* const p = ::HeapAlloc(::GetProcessHeap(), 0, cb);
    return [p] { ::HeapFree(::GetProcessHeap(), 0, p); };
}

std::function<void()> TakeBlock()
{
    return TakeBlockOf(1);
}

std::function<void()> TakeLargeBlock()
{
    return TakeBlockOf(3 << 20);
}

// The same block, larger.
void* g_pGrowing = nullptr;
SIZE_T g_cbGrowing = 0;

void Resize(SIZE_T cb)
{
    HANDLE const hHeap = ::GetProcessHeap();
    if (g_pGrowing == nullptr)
        g_pGrowing = ::HeapAlloc(hHeap, 0, 1);
    g_pGrowing = ::HeapReAlloc(hHeap, 0, g_pGrowing, cb);
    g_cbGrowing = cb;
}

std::function<void()> TakeBytes()
{
    Resize(g_cbGrowing + kStep);
    return [] { Resize(g_cbGrowing - kStep); };
}

// What a program does while it leaks.
void Work()
{
    void* blocks[20];
    for (std::size_t i = 0; i < 20; ++i)
        blocks[i] = ::HeapAlloc(::GetProcessHeap(), 0, 1 + i);
    for (void* const p : blocks)
        ::HeapFree(::GetProcessHeap(), 0, p);
    HANDLE const hEvent = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ::CloseHandle(hEvent);
    ::DeleteObject(::CreateSolidBrush(RGB(4, 5, 6)));
}

class RoundCostOf : public testing::TestWithParam<Leak>
{
protected:
    RoundCostOf()
    {
        // What is made on the first use of each, and room to note all that is held.
        m_giveBack.reserve(1000);
        GetParam().take()();
        for (int i = 0; i < kRounds; ++i)
            Work();
    }
    ~RoundCostOf() override { GiveBack(); }

    void Take(int n = 1)
    {
        for (int i = 0; i < n; ++i)
            m_giveBack.push_back(GetParam().take());
    }
    void GiveBack(int n = 1000)
    {
        for (; n > 0 && !m_giveBack.empty(); --n)
        {
            m_giveBack.back()();
            m_giveBack.pop_back();
        }
    }
    std::size_t Held() const { return m_giveBack.size(); }

private:
    std::vector<std::function<void()>> m_giveBack;
};

INSTANTIATE_TEST_SUITE_P(
    EachKind, RoundCostOf,
    testing::Values(Leak{RoundCost::kHandles, "Handle", 1, &TakeHandle},
                    Leak{RoundCost::kGdiObjects, "GdiObject", 1, &TakeGdiObject},
                    Leak{RoundCost::kUserObjects, "UserObject", 1, &TakeUserObject},
                    Leak{RoundCost::kUserObjects, "ChildWindow", 2, &TakeChildWindow},
                    Leak{RoundCost::kThreads, "Thread", 1, &TakeThread},
                    Leak{RoundCost::kHeaps, "Heap", 1, &TakeHeap},
                    Leak{RoundCost::kHeapBlocks, "Block", 1, &TakeBlock},
                    Leak{RoundCost::kHeapBlocks, "LargeBlock", 1, &TakeLargeBlock},
                    Leak{RoundCost::kHeapBytes, "Bytes", kStep, &TakeBytes}),
    [](const testing::TestParamInfo<Leak>& tested) { return tested.param.pszName; });

TEST_P(RoundCostOf, OneInFiftyRoundsIsFound)
{
    int nRound = 0;
    const testing::AssertionResult result = LeavesNothingBehind(kRounds, [&] {
        Work();
        if (++nRound % 50 == 0)
            Take();
    });
    EXPECT_FALSE(result) << result.message();
}

TEST_P(RoundCostOf, OneInEachRoundIsFoundByBlocksOfOneRound)
{
    EXPECT_FALSE(LeavesNothingBehind([this] {
        Work();
        Take();
    }));
}

TEST_P(RoundCostOf, EachRoundIsSaid)
{
    const RoundCost cost = RoundCost::Of(2, [this] { Take(3); });
    EXPECT_EQ(cost.PerRound(GetParam().kind), 3 * GetParam().nEach) << cost;
    std::ostringstream text;
    text << cost;
    EXPECT_NE(text.str().find("a round costs " + std::to_string(3 * GetParam().nEach)),
              std::string::npos)
        << text.str();
}

TEST_P(RoundCostOf, AFewOnceIsNone)
{
    for (const int nWhen : {1, kRounds + 1, 2 * kRounds + 1})
    {
        SCOPED_TRACE(nWhen);
        int nRound = 0;
        EXPECT_TRUE(LeavesNothingBehind(kRounds, [&] {
            Work();
            if (++nRound == nWhen)
                Take(4);
        }));
    }
}

// A cache that fills up, in part by part.
TEST_P(RoundCostOf, WhatGoesOnForTwoBlocksIsNone)
{
    int nRound = 0;
    EXPECT_TRUE(LeavesNothingBehind(kRounds, [&] {
        Work();
        ++nRound;
        if (nRound == 1 || nRound == kRounds + 1)
            Take(2);
    }));
}

TEST_P(RoundCostOf, AFewUpAndDownIsNone)
{
    Take(2);
    int nRound = 0;
    EXPECT_TRUE(LeavesNothingBehind(kRounds, [&] {
        Work();
        if (++nRound % kRounds != 0)
            return;
        if (Held() > 2)
            GiveBack(2);
        else
            Take(2);
    }));
}

TEST_P(RoundCostOf, GivingBackTooMuchIsFound)
{
    Take(9);
    EXPECT_FALSE(LeavesNothingBehind([this] { GiveBack(1); }));
}

TEST_P(RoundCostOf, WhatIsAllowedIsNoLeakAndOneMoreIs)
{
    Take(); // what comes with the first of all
    RoundCost cost = RoundCost::Of(1, [this] { Take(); });
    // The system may come with something of its own, such as a window for input methods, later than that.
    for (int i = 0; i < 4 && cost.AsAllowance()[GetParam().kind] != GetParam().nEach; ++i)
        cost = RoundCost::Of(1, [this] { Take(); });
    ASSERT_EQ(cost.AsAllowance()[GetParam().kind], GetParam().nEach) << cost;
    EXPECT_TRUE(CostsAtMost(cost.AsAllowance(), 1, [this] { Take(); }));
    EXPECT_FALSE(CostsAtMost(cost.AsAllowance(), 1, [this] { Take(2); }));
}

TEST(RoundCost, OfNothingIsNothing)
{
    const RoundCost cost = RoundCost::Of(kRounds, [] {});
    EXPECT_TRUE(cost.IsWithin({})) << cost;
}
} // namespace
