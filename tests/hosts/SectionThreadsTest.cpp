// Installers that open the wait window on one thread and close it on another, whatever the first is
// doing at that moment.
#include "tests/hosts/WaitWindows.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace window_driver;

namespace
{
constexpr char kCaption[] = "Tarn window of two threads";

void Pump()
{
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageA(&msg);
}

void DestroyWaitWindowsOfThisThread()
{
    for (HWND const hWnd : WaitWindowsOfThisThread())
        ::DestroyWindow(hWnd);
}

// Two threads that make a process's first window calls at once can hang in Wine.
class SectionThreads : public testing::Test
{
protected:
    SectionThreads() : first(0, 0, 10, 10) {}

    HostWindow first;
    LoadedTarn tarn;
};
} // namespace

// One thread closes in a loop while the other opens, ticks, paints and runs the window's handlers.
TEST_F(SectionThreads, MayCloseWhileTheOwnersThreadIsInTheWindowsCode)
{
    constexpr int kRounds = 300;
    volatile LONG bOver = FALSE;
    DriverThread closer([&] {
        while (!bOver)
            tarn.CloseWaitDlg();
    });
    int nLeft = 0;
    for (int i = 0; i < kRounds; ++i)
    {
        tarn.DoWaitDlgModless(first.Handle(), kCaption, "Please wait.");
        const std::vector<HWND> windows = WaitWindowsOfThisThread();
        ASSERT_EQ(windows.size(), 1U) << "another thread cannot destroy it";
        HWND const hWnd = windows.front();
        for (int nTick = 0; nTick < kWatchdogTicks; ++nTick)
            ::PostMessageA(hWnd, WM_TIMER, kWatchdogTimer, 0);
        ::InvalidateRect(hWnd, nullptr, TRUE);
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        Pump();
        EXPECT_FALSE(::IsWindowVisible(hWnd)) << "its watchdog has hidden it";
        tarn.CloseWaitDlg();
        nLeft += ::IsWindow(hWnd) ? 1 : 0;
        ::DestroyWindow(hWnd);
    }
    bOver = TRUE;
    closer.Join();
    EXPECT_GT(nLeft, 0) << "the other thread never closed one first";
    std::printf("%d rounds, %d of the windows were closed by the other thread\n", kRounds, nLeft);
}

// Opened by many, closed by many: what is left open is closed by nobody else and hides by itself.
TEST_F(SectionThreads, MayOpenAndCloseAllAtOnce)
{
    constexpr int kThreads = 6;
    constexpr int kRounds = 60;
    volatile LONG nOpened = 0;
    volatile LONG nLeft = 0;
    {
        std::vector<std::unique_ptr<DriverThread>> threads;
        for (int i = 0; i < kThreads; ++i)
        {
            threads.push_back(std::make_unique<DriverThread>([&] {
                for (int nRound = 0; nRound < kRounds; ++nRound)
                {
                    tarn.DoWaitDlgModless(nullptr, kCaption, "Please wait.");
                    ::InterlockedIncrement(&nOpened);
                    Pump();
                    tarn.CloseWaitDlg();
                    Pump();
                }
                for (HWND const hWnd : WaitWindowsOfThisThread())
                {
                    EXPECT_TRUE(::IsWindowVisible(hWnd));
                    Tick(hWnd);
                    EXPECT_FALSE(::IsWindowVisible(hWnd));
                    ::InterlockedIncrement(&nLeft);
                }
                DestroyWaitWindowsOfThisThread();
            }));
        }
    }
    EXPECT_EQ(nOpened, kThreads * kRounds);
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    std::printf("%ld of %ld windows were closed by another thread or by none\n", nLeft, nOpened);
    tarn.DoWaitDlgModless(nullptr, kCaption, "Please wait.");
    EXPECT_EQ(WaitWindowsOfThisThread().size(), 1U);
    tarn.CloseWaitDlg();
    EXPECT_EQ(WaitWindowsOfThisThread().size(), 0U);
}

TEST_F(SectionThreads, MayEndBeforeTheirWindowIsClosed)
{
    DriverThread section([this] { tarn.DoWaitDlgModless(nullptr, kCaption, "Please wait."); });
    section.Join();
    EXPECT_TRUE(WaitFor([] { return FindTopLevel(kCaption) == nullptr; }));
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    tarn.DoWaitDlgModless(nullptr, kCaption, "Please wait.");
    tarn.CloseWaitDlg();
    EXPECT_EQ(FindTopLevel(kCaption), nullptr);
}
