// RunJobWithWaitDlg and the dialog class behind it, on real windows and threads.
#include "tests/support/ImportPatch.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"
#include "ui/WaitDlgModless.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>

using namespace window_driver;

namespace
{
constexpr const char* kCaption = "Tarn job under test";

LONGLONG ReturnArgument(void* pArg, HWND /*hWnd*/)
{
    return *static_cast<LONGLONG*>(pArg);
}

// A job that lasts until it is told to end, and tells how far it is.
struct HeldJob
{
    HANDLE hStarted = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE hMayEnd = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE hThread = nullptr; // of the worker
    HWND hWnd = nullptr;      // what the job was given
    LONGLONG nResult = 0;

    ~HeldJob()
    {
        ::CloseHandle(hStarted);
        ::CloseHandle(hMayEnd);
        if (hThread != nullptr)
            ::CloseHandle(hThread);
    }
    bool WorkerHasEnded(DWORD nLimit) const
    {
        return ::WaitForSingleObject(hThread, nLimit) == WAIT_OBJECT_0;
    }
    static LONGLONG Run(void* pArg, HWND hWnd)
    {
        auto& job = *static_cast<HeldJob*>(pArg);
        ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                          &job.hThread, 0, FALSE, DUPLICATE_SAME_ACCESS);
        job.hWnd = hWnd;
        ::SetEvent(job.hStarted);
        ::WaitForSingleObject(job.hMayEnd, INFINITE);
        return job.nResult;
    }
};

// In the place of SetTimer, which it does without.
UINT g_nMilliseconds = 0;
UINT_PTR WINAPI NoteTimer(HWND /*hWnd*/, UINT_PTR nID, UINT nMilliseconds, TIMERPROC /*pfn*/)
{
    g_nMilliseconds = nMilliseconds;
    return nID;
}

// In the place of SetWindowPos, which moves nothing.
int g_nPlaced = 0;
BOOL WINAPI ExpectTopmostWhereItIs(HWND /*hWnd*/, HWND hWndAfter, int x, int y, int cx, int cy,
                                   UINT nFlags)
{
    ++g_nPlaced;
    EXPECT_EQ(hWndAfter, HWND_TOPMOST);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(cx, 0);
    EXPECT_EQ(cy, 0);
    EXPECT_EQ(nFlags, static_cast<UINT>(SWP_NOSIZE | SWP_NOMOVE));
    return TRUE;
}

// In the place of TerminateThread: the system says yes at once, and does it later.
HANDLE g_hToTerminate = nullptr;
HANDLE g_hAsked = nullptr;
BOOL WINAPI PromiseToTerminate(HANDLE hThread, DWORD /*nExitCode*/)
{
    g_hToTerminate = hThread;
    return ::SetEvent(g_hAsked);
}

// A block, and the window that a job puts into it, as a dialog does whose worker was not to be terminated.
struct Contest
{
    WaitJobBlock block = {};
    HWND hWnd = nullptr;
    volatile LONG bOver = FALSE;
    volatile LONG nTaken = 0; // by somebody else than the worker

    HWND Exchange(HWND hWndNew)
    {
        return static_cast<HWND>(
            ::InterlockedExchangePointer(reinterpret_cast<void* volatile*>(&block.hWnd), hWndNew));
    }
    static LONGLONG PutWindowBack(void* pArg, HWND /*hWnd*/)
    {
        auto& contest = *static_cast<Contest*>(pArg);
        contest.Exchange(contest.hWnd);
        return 1;
    }
};

// In the place of Sleep: the window comes back while the worker sleeps for the third time.
Contest* g_pAsleep = nullptr;
int g_nSleeps = 0;
void WINAPI PutWindowBackAtLast(DWORD nMilliseconds)
{
    EXPECT_GT(nMilliseconds, 0U);
    if (++g_nSleeps == 3)
        g_pAsleep->Exchange(g_pAsleep->hWnd);
}

// In the place of PostMessageA, which takes its time.
int g_nPosted = 0;
BOOL WINAPI CountPosts(HWND /*hWnd*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    g_nPosted += message == WM_WAITDLG_JOBDONE ? 1 : 0;
    return TRUE;
}

// A window as it stands in a block whose worker is held (1) or left to itself (2).
HWND Marked(HWND hWnd, UINT nMark)
{
    return reinterpret_cast<HWND>(reinterpret_cast<ULONG_PTR>(hWnd) | ULONG_PTR{nMark} << 32);
}

int CountJobsDone(HWND hWnd)
{
    int nMessages = 0;
    MSG msg = {};
    while (::PeekMessageA(&msg, hWnd, WM_WAITDLG_JOBDONE, WM_WAITDLG_JOBDONE, PM_REMOVE))
        ++nMessages;
    return nMessages;
}

// The dialog with its protected operations in reach.
class OpenDialog : public CWaitDlgModless
{
public:
    using CWaitDlgModless::OnCancel;
    using CWaitDlgModless::OnInitDialog;
    using CWaitDlgModless::OnJobDone;
    using CWaitDlgModless::OnTimer;

    // Opens with a job that holds, and returns once that runs.
    void OpenFor(HeldJob& job)
    {
        m_job.pArg = &job;
        m_job.pfnJob = &HeldJob::Run;
        ASSERT_TRUE(Create(IDD_WAITDLG, nullptr));
        ASSERT_EQ(::WaitForSingleObject(job.hStarted, kLimitMilliseconds),
                  static_cast<DWORD>(WAIT_OBJECT_0));
    }
};
} // namespace

TEST(WaitJobBlock, IsFourWordsOfZero)
{
    const OpenDialog dlg;
    EXPECT_EQ(sizeof(WaitJobBlock), 32U);
    EXPECT_EQ(dlg.m_job.hWnd, nullptr);
    EXPECT_EQ(dlg.m_job.pArg, nullptr);
    EXPECT_EQ(dlg.m_job.nResult, 0);
    EXPECT_EQ(dlg.m_job.pfnJob, nullptr);
}

TEST(WaitDialog, StartsEmptyAndWithoutAWindow)
{
    const OpenDialog dlg;
    EXPECT_STREQ(dlg.m_strMessage, "");
    EXPECT_STREQ(dlg.m_strTitle, "");
    EXPECT_EQ(dlg.m_pThread, nullptr);
    EXPECT_EQ(dlg.m_nTicks, 0);
    EXPECT_EQ(dlg.m_nTimerID, 0U);
    EXPECT_EQ(dlg.GetSafeHwnd(), nullptr);
}

TEST(WaitDialog, RemembersItsTimerAndItsWindowAndStartsNoWorkerWithoutAJob)
{
    OpenDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG, nullptr));
    EXPECT_EQ(dlg.m_nTimerID, 333U);
    EXPECT_EQ(dlg.m_job.hWnd, dlg.GetSafeHwnd());
    EXPECT_EQ(dlg.m_pThread, nullptr);
    EXPECT_EQ(dlg.m_nTicks, 0);
    Tick(dlg.GetSafeHwnd(), 3);
    EXPECT_EQ(dlg.m_nTicks, 3);
    dlg.DestroyWindow();
    EXPECT_EQ(dlg.GetSafeHwnd(), nullptr);
    EXPECT_EQ(dlg.m_nTicks, 3) << "never reset";
}

TEST(WaitDialog, TicksEvery600Milliseconds)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "SetTimer",
                            reinterpret_cast<void*>(&NoteTimer));
    ASSERT_TRUE(patch.IsActive());
    OpenDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG, nullptr));
    EXPECT_EQ(g_nMilliseconds, 600U);
    EXPECT_EQ(dlg.m_nTimerID, 333U);
    dlg.DestroyWindow();
}

TEST(WaitDialog, IsPutOnTopWhereItIs)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "SetWindowPos",
                            reinterpret_cast<void*>(&ExpectTopmostWhereItIs));
    ASSERT_TRUE(patch.IsActive());
    OpenDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG, nullptr));
    EXPECT_EQ(g_nPlaced, 1);
    dlg.DestroyWindow();
}

TEST(WaitDialog, LeavesTheFocusToTheDialogManager)
{
    OpenDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG, nullptr));
    EXPECT_TRUE(dlg.OnInitDialog());
    dlg.DestroyWindow();
}

TEST(WaitDialog, HasAnIdleProcedureForABlockWithoutAJob)
{
    WaitJobBlock block = {};
    block.hWnd = ::GetDesktopWindow();
    EXPECT_EQ(WaitDlgThreadProc(&block), 0U);
    EXPECT_EQ(block.nResult, 0);
}

TEST(WaitDialog, HasAWorkerProcedureThatStoresTheResultAndThenPosts)
{
    const HostWindow host(0, 0, 10, 10);
    LONGLONG nValue = -7;
    WaitJobBlock block = {host.Handle(), &nValue, 0, &ReturnArgument};
    EXPECT_EQ(WaitDlgThreadProc(&block), 0U);
    EXPECT_EQ(block.nResult, -7);
    MSG msg = {};
    ASSERT_TRUE(
        ::PeekMessageA(&msg, host.Handle(), WM_WAITDLG_JOBDONE, WM_WAITDLG_JOBDONE, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 0U);
    EXPECT_EQ(msg.lParam, 0);
}

TEST(WaitDialog, HasAWorkerProcedureThatPostsNothingWithoutAWindow)
{
    LONGLONG nValue = 8;
    WaitJobBlock block = {nullptr, &nValue, 0, &ReturnArgument};
    EXPECT_EQ(WaitDlgThreadProc(&block), 0U);
    EXPECT_EQ(block.nResult, 8);
    MSG msg = {};
    EXPECT_FALSE(::PeekMessageA(&msg, nullptr, WM_WAITDLG_JOBDONE, WM_WAITDLG_JOBDONE, PM_REMOVE));
}

// A worker may come to its job only after the dialog's thread has marked the window in the block.
TEST(WaitDialog, HasAWorkerProcedureThatGivesTheJobTheWindowWithoutAnyMark)
{
    struct Late
    {
        WaitJobBlock block;
        HWND hWnd; // what the job was given
    };
    const WaitJobProc pfnJob = [](void* pArg, HWND hWnd) -> LONGLONG {
        auto& late = *static_cast<Late*>(pArg);
        late.hWnd = hWnd;
        late.block.hWnd = nullptr; // no dialog is there to follow the mark up
        return 1;
    };
    HWND const hWnd = ::GetDesktopWindow();
    for (const UINT nMark : {1U, 2U})
    {
        Late late = {{Marked(hWnd, nMark), &late, 0, pfnJob}, nullptr};
        EXPECT_EQ(WaitDlgThreadProc(&late.block), 0U);
        EXPECT_EQ(late.block.nResult, 1);
        EXPECT_EQ(late.hWnd, hWnd) << nMark;
    }
}

TEST(WaitDialog, HasAWorkerProcedureThatSleepsWhileItIsAboutToBeTerminated)
{
    const HostWindow host(0, 0, 10, 10);
    Contest contest;
    contest.hWnd = host.Handle();
    const WaitJobProc pfnJob = [](void* pArg, HWND /*hWnd*/) -> LONGLONG {
        auto& held = *static_cast<Contest*>(pArg);
        held.Exchange(Marked(held.hWnd, 1));
        return 1;
    };
    contest.block = {host.Handle(), &contest, 0, pfnJob};
    g_pAsleep = &contest;
    g_nSleeps = 0;
    const ImportPatch patch(::GetModuleHandleA(nullptr), "Sleep",
                            reinterpret_cast<void*>(&PutWindowBackAtLast));
    ASSERT_TRUE(patch.IsActive());
    EXPECT_EQ(WaitDlgThreadProc(&contest.block), 0U);
    EXPECT_EQ(g_nSleeps, 3);
    EXPECT_EQ(CountJobsDone(host.Handle()), 1) << "it was not terminated after all";
    EXPECT_EQ(contest.block.hWnd, nullptr);
}

// The dialog's thread may take the window at any instant: one of the two has it, never both.
TEST(WaitDialog, HasAWorkerProcedureThatTakesTheWindowUnlessSomebodyElseHasIt)
{
    constexpr LONG kTaken = 50000;
    constexpr DWORD kMilliseconds = 5000; // enough, also for one processor
    const HostWindow host(0, 0, 10, 10);
    Contest contest;
    contest.hWnd = host.Handle();
    const ImportPatch patch(::GetModuleHandleA(nullptr), "PostMessageA",
                            reinterpret_cast<void*>(&CountPosts));
    ASSERT_TRUE(patch.IsActive());
    g_nPosted = 0;
    int nRounds = 0;
    {
        DriverThread driver([&contest] {
            while (!contest.bOver)
                contest.nTaken =
                    contest.nTaken + (contest.Exchange(nullptr) == contest.hWnd ? 1 : 0);
        });
        for (const DWORD nStart = ::GetTickCount();
             contest.nTaken < kTaken && ::GetTickCount() - nStart < kMilliseconds; ++nRounds)
        {
            contest.block = {nullptr, &contest, 0, &Contest::PutWindowBack};
            WaitDlgThreadProc(&contest.block);
        }
        contest.bOver = TRUE;
    }
    EXPECT_EQ(g_nPosted + contest.nTaken, nRounds);
    std::printf("of %d windows, the worker took %d\n", nRounds, g_nPosted);
}

TEST(WaitDialog, TakesATickAfterTheWatchdogHasTerminatedTheWorker)
{
    HeldJob job;
    OpenDialog dlg;
    ASSERT_NO_FATAL_FAILURE(dlg.OpenFor(job));
    Tick(dlg.GetSafeHwnd());
    EXPECT_TRUE(job.WorkerHasEnded(0));
    Tick(dlg.GetSafeHwnd(), 1);
    EXPECT_EQ(dlg.m_nTicks, kWatchdogTicks + 1);
    EXPECT_EQ(dlg.m_job.nResult, 0);
    dlg.DestroyWindow();
}

TEST(WaitDialog, WaitsUntilTheTerminatedWorkerIsReallyGone)
{
    HeldJob job;
    OpenDialog dlg;
    ASSERT_NO_FATAL_FAILURE(dlg.OpenFor(job));
    g_hAsked = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    {
        ImportPatch patch(::GetModuleHandleA(nullptr), "TerminateThread",
                          reinterpret_cast<void*>(&PromiseToTerminate));
        ASSERT_TRUE(patch.IsActive());
        const auto pfnTerminate = reinterpret_cast<BOOL(WINAPI*)(HANDLE, DWORD)>(patch.Original());
        DriverThread driver([pfnTerminate] {
            EXPECT_EQ(::WaitForSingleObject(g_hAsked, kLimitMilliseconds),
                      static_cast<DWORD>(WAIT_OBJECT_0));
            ::SleepEx(50, FALSE); // time to go on too early
            pfnTerminate(g_hToTerminate, 0);
        });
        Tick(dlg.GetSafeHwnd());
        EXPECT_TRUE(job.WorkerHasEnded(0));
    }
    ::CloseHandle(g_hAsked);
    dlg.DestroyWindow();
}

// A thread object that has deleted itself is not to be asked for its handle any more.
TEST(WaitDialog, LooksAtTheWorkersThreadOnlyWhileThatIsInItsJob)
{
    LONGLONG nValue = 5;
    OpenDialog dlg;
    dlg.m_job.pArg = &nValue;
    dlg.m_job.pfnJob = &ReturnArgument;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG, nullptr));
    ASSERT_NE(dlg.m_pThread, nullptr);
    HWND const hWnd = dlg.GetSafeHwnd();
    EXPECT_TRUE(PumpUntil([hWnd] { return !::IsWindowVisible(hWnd); }));
    EXPECT_EQ(dlg.m_job.nResult, 5);
    dlg.m_pThread = reinterpret_cast<CWinThread*>(INT_PTR{16}); // as good as gone
    Tick(hWnd); // the watchdog finds nothing to terminate
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    dlg.DestroyWindow();
}

TEST(JobRunner, ReturnsTheResultOfAnImmediateJobInAll64Bits)
{
    for (LONGLONG nValue :
         {0LL, 1LL, -1LL, 0x123456789ABCDEFLL, LLONG_MAX, LLONG_MIN, 0xFFFFFFFFLL, -0x100000000LL})
        EXPECT_EQ(RunJobWithWaitDlg(&ReturnArgument, &nValue, "Working.", kCaption), nValue);
}

TEST(JobRunner, ShowsItsTextsAndGivesTheJobTheWindowAndTheArgument)
{
    HeldJob job;
    job.nResult = 11;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForTopLevel(kCaption);
        ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
        EXPECT_EQ(job.hWnd, hWnd);
        EXPECT_EQ(TextOf(::GetDlgItem(hWnd, 14000)), "Working hard.");
        EXPECT_TRUE(WaitFor([hWnd] { return ::IsWindowVisible(hWnd) != FALSE; }));
        EXPECT_TRUE(SaveScreenshot("job-dialog"));
        ::SetEvent(job.hMayEnd);
    });
    EXPECT_EQ(RunJobWithWaitDlg(&HeldJob::Run, &job, "Working hard.", kCaption), 11);
    driver.Join();
    EXPECT_EQ(FindTopLevel(kCaption), nullptr);
}

TEST(JobRunner, IgnoresEscapeAltF4AndTheCloseCommand)
{
    HeldJob job;
    job.nResult = 12;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForTopLevel(kCaption);
        ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
        PostKey(hWnd, VK_ESCAPE);
        ::PostMessageA(hWnd, WM_SYSKEYDOWN, VK_F4, (1 << 29) | 1);
        ::SendMessageA(hWnd, WM_CLOSE, 0, 0);
        ::SendMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
        Tick(hWnd, kWatchdogTicks - 1);
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        ::SetEvent(job.hMayEnd);
    });
    EXPECT_EQ(RunJobWithWaitDlg(&HeldJob::Run, &job, "", kCaption), 12);
}

TEST(JobRunner, TerminatesAJobAtThe100thTickAndReturnsZero)
{
    HeldJob job;
    job.nResult = 13;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForTopLevel(kCaption);
        ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
        Tick(hWnd, kWatchdogTicks - 1);
        EXPECT_FALSE(job.WorkerHasEnded(0));
        Tick(hWnd, 1);
    });
    EXPECT_EQ(RunJobWithWaitDlg(&HeldJob::Run, &job, "", kCaption), 0);
    EXPECT_TRUE(job.WorkerHasEnded(0)) << "gone when the call returns";
    DWORD nExitCode = 1;
    EXPECT_TRUE(::GetExitCodeThread(job.hThread, &nExitCode));
    EXPECT_EQ(nExitCode, 0U);
}

TEST(JobRunner, ReturnsAtOnceOnEnterAndLetsTheJobFinishByItself)
{
    HeldJob job;
    job.nResult = 14;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForTopLevel(kCaption);
        ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
        PostKey(hWnd, VK_RETURN);
    });
    EXPECT_EQ(RunJobWithWaitDlg(&HeldJob::Run, &job, "", kCaption), 0);
    driver.Join();
    EXPECT_EQ(FindTopLevel(kCaption), nullptr);
    EXPECT_FALSE(job.WorkerHasEnded(0)) << "neither stopped nor waited for";
    // The next job does not mind, and neither does the late worker mind the next job.
    LONGLONG nValue = 15;
    EXPECT_EQ(RunJobWithWaitDlg(&ReturnArgument, &nValue, "", kCaption), 15);
    ::SetEvent(job.hMayEnd);
    EXPECT_TRUE(job.WorkerHasEnded(kLimitMilliseconds));
    MSG msg = {};
    EXPECT_FALSE(::PeekMessageA(&msg, nullptr, WM_WAITDLG_JOBDONE, WM_WAITDLG_JOBDONE, PM_NOREMOVE))
        << "it posts to nobody";
}

TEST(JobRunner, ReturnsZeroAtThe100thTickWhenSomebodyElseTerminatedTheWorker)
{
    HeldJob job;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForTopLevel(kCaption);
        ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
        ::TerminateThread(job.hThread, 99);
        EXPECT_TRUE(job.WorkerHasEnded(kLimitMilliseconds));
        Tick(hWnd);
    });
    EXPECT_EQ(RunJobWithWaitDlg(&HeldJob::Run, &job, "", kCaption), 0);
    DWORD nExitCode = 0;
    EXPECT_TRUE(::GetExitCodeThread(job.hThread, &nExitCode));
    EXPECT_EQ(nExitCode, 99U) << "an ended thread is not terminated again";
}

TEST(JobRunner, WaitsWithoutAJobUntilTheWatchdogEndsIt)
{
    DriverThread driver([] { Tick(WaitForTopLevel(kCaption)); });
    EXPECT_EQ(RunJobWithWaitDlg(nullptr, nullptr, "", kCaption), 0);
}

TEST(JobRunner, SettlesTheRaceBetweenTheJobsEndAndThe100thTick)
{
    constexpr int kRounds = 300;
    int nFinished = 0;
    for (int i = 0; i < kRounds; ++i)
    {
        HeldJob job;
        job.nResult = 1000 + i;
        DriverThread driver([&job, i] {
            HWND const hWnd = WaitForTopLevel(kCaption);
            ::WaitForSingleObject(job.hStarted, kLimitMilliseconds);
            Tick(hWnd, kWatchdogTicks - 1);
            ::PostMessageA(hWnd, WM_TIMER, kWatchdogTimer, 0);
            for (volatile int nSpin = 0; nSpin < (i % 50) * 400;)
                nSpin = nSpin + 1;
            ::SetEvent(job.hMayEnd);
        });
        const LONGLONG nResult = RunJobWithWaitDlg(&HeldJob::Run, &job, "", kCaption);
        driver.Join();
        EXPECT_TRUE(nResult == 0 || nResult == job.nResult) << nResult;
        EXPECT_TRUE(job.WorkerHasEnded(kLimitMilliseconds));
        nFinished += nResult != 0 ? 1 : 0;
    }
    std::printf("of %d jobs, %d finished before the watchdog\n", kRounds, nFinished);
}

TEST(JobRunner, RunsOnSeveralThreadsAtOnce)
{
    const auto runSome = [] {
        for (LONGLONG i = 0; i < 25; ++i)
            EXPECT_EQ(RunJobWithWaitDlg(&ReturnArgument, &i, "", ""), i);
    };
    DriverThread first(runSome);
    DriverThread second(runSome);
    runSome();
}
