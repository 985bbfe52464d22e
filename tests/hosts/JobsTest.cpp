// The job runner in an installer that has a window of its own.
#include "tests/hosts/ReactingHost.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"
#include "ui/WaitDlgModless.h"

#include <gtest/gtest.h>

#include <functional>

using namespace window_driver;

namespace
{
constexpr char kCaption[] = "Tarn job over an installer";
constexpr LONGLONG kValue = 77;

// In the place of ResumeThread: the worker does not run yet.
HANDLE g_hSuspended = nullptr;
DWORD WINAPI NoteSuspended(HANDLE hThread)
{
    g_hSuspended = hThread;
    return 1;
}

LONGLONG WaitForEvent(void* pArg, HWND /*hWnd*/)
{
    ::WaitForSingleObject(static_cast<HANDLE>(pArg), kLimitMilliseconds);
    return kValue;
}

// Waits for the dialog, looks at it on another thread, and ends the wait in one of three ways.
class Jobs : public testing::Test
{
protected:
    enum End
    {
        kByTheJob,
        kByTheWatchdog,
        kByEnter
    };

    ~Jobs() override { ::CloseHandle(m_hMayEnd); }

    LONGLONG Run(End end, const std::function<void(HWND)>& look, WaitJobProc pfnJob = nullptr,
                 void* pArg = nullptr)
    {
        DriverThread driver([&] {
            HWND const hWnd = WaitForTopLevel(kCaption);
            EXPECT_TRUE(WaitFor([hWnd] { return ::IsWindowVisible(hWnd) != FALSE; }));
            look(hWnd);
            if (end == kByTheWatchdog)
                Tick(hWnd);
            else if (end == kByEnter)
                PostKey(hWnd, VK_RETURN);
            else
                ::SetEvent(m_hMayEnd);
        });
        const LONGLONG nResult =
            pfnJob != nullptr ? RunJobWithWaitDlg(pfnJob, pArg, "Working.", kCaption)
                              : RunJobWithWaitDlg(&WaitForEvent, m_hMayEnd, "Working.", kCaption);
        driver.Join();
        ::ResetEvent(m_hMayEnd);
        return nResult;
    }

    ReactingHost host;

private:
    HANDLE m_hMayEnd = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
};
} // namespace

TEST_F(Jobs, KeepTheInstallersWindowFromClicksAndGiveItBack)
{
    for (const End end : {kByTheJob, kByTheWatchdog, kByEnter})
    {
        SCOPED_TRACE(end);
        EXPECT_EQ(Run(end,
                      [this](HWND hWnd) {
                          EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), host.Handle());
                          EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
                      }),
                  end == kByTheJob ? kValue : 0);
        EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
        EXPECT_EQ(::GetActiveWindow(), host.Handle());
        EXPECT_EQ(FindTopLevel(kCaption), nullptr);
    }
}

TEST_F(Jobs, KeepEveryWindowOfTheInstallersThreadFromClicks)
{
    const ReactingHost second;
    for (const End end : {kByTheJob, kByTheWatchdog, kByEnter})
    {
        SCOPED_TRACE(end);
        ::SetActiveWindow(host.Handle());
        Run(end, [&](HWND) {
            EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
            EXPECT_FALSE(::IsWindowEnabled(second.Handle()));
        });
        EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
        EXPECT_TRUE(::IsWindowEnabled(second.Handle()));
        EXPECT_EQ(::GetActiveWindow(), host.Handle());
    }
}

// What a thread leaves to be done at its end, here by a fibre's callback, talks to the caller's window.
TEST_F(Jobs, MaySayGoodByeToTheCallersWindow)
{
    struct GoodBye
    {
        HWND hWnd;
        DWORD nSlot;
        volatile LONG nHeard;
        static void CALLBACK Say(void* pGoodBye)
        {
            auto& goodBye = *static_cast<GoodBye*>(pGoodBye);
            ::SendMessageA(goodBye.hWnd, WM_NULL, 0, 0);
            ::InterlockedIncrement(&goodBye.nHeard);
        }
        static LONGLONG Run(void* pArg, HWND)
        {
            auto& goodBye = *static_cast<GoodBye*>(pArg);
            ::FlsSetValue(goodBye.nSlot, &goodBye);
            return kValue;
        }
    };
    GoodBye goodBye = {host.Handle(), ::FlsAlloc(&GoodBye::Say), 0};
    for (int i = 1; i <= 20; ++i)
    {
        EXPECT_EQ(RunJobWithWaitDlg(&GoodBye::Run, &goodBye, "", kCaption), kValue);
        EXPECT_TRUE(PumpUntil([&] { return goodBye.nHeard == i; }));
    }
    ::FlsFree(goodBye.nSlot);
}

// Killed anywhere in the library's heap, again and again: the next allocation works all the same.
TEST_F(Jobs, KilledInTheLibrarysHeapDoNotBlockIt)
{
    struct Busy
    {
        static LONGLONG Run(void* pArg, HWND)
        {
            const CString text(static_cast<const char*>(pArg));
            for (;;)
            {
                CString copy = text;
                copy += text;
                copy += copy;
            }
        }
    };
    char text[] = "Something that goes to the heap, in pieces of several sizes.";
    for (int i = 0; i < 40; ++i)
    {
        DriverThread driver([] { Tick(WaitForTopLevel(kCaption)); });
        EXPECT_EQ(RunJobWithWaitDlg(&Busy::Run, text, "", kCaption), 0);
        driver.Join();
        CString next(text);
        next += next;
        EXPECT_EQ(next.GetLength(), 2 * static_cast<int>(sizeof(text) - 1));
    }
}

// Enter may come before the worker has run at all.
TEST_F(Jobs, GetTheWindowsHandleEvenWhenTheWindowHasEndedBeforeThem)
{
    struct Late
    {
        HWND hWnd;
        HANDLE hRan;
        static LONGLONG Run(void* pArg, HWND hWnd)
        {
            auto& late = *static_cast<Late*>(pArg);
            late.hWnd = hWnd;
            ::SetEvent(late.hRan);
            return kValue;
        }
    };
    Late late = {nullptr, ::CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    HWND hDialog = nullptr;
    {
        const ImportPatch patch(::GetModuleHandleA(nullptr), "ResumeThread",
                                reinterpret_cast<void*>(&NoteSuspended));
        ASSERT_TRUE(patch.IsActive());
        EXPECT_EQ(Run(
                      kByEnter, [&](HWND hWnd) { hDialog = hWnd; }, &Late::Run, &late),
                  0);
    }
    EXPECT_EQ(late.hWnd, nullptr);
    ::ResumeThread(g_hSuspended);
    EXPECT_EQ(::WaitForSingleObject(late.hRan, kLimitMilliseconds),
              static_cast<DWORD>(WAIT_OBJECT_0));
    EXPECT_EQ(late.hWnd, hDialog);
    ::CloseHandle(late.hRan);
}
