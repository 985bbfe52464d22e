// The job runner, in a library of its own that is the one that ships with one export more: each call
// that it makes of the system fails in turn, the worker dies, the library is unloaded under it.
#include "tests/support/ChildProcess.h"
#include "tests/support/CleanFault.h"
#include "tests/support/FailingCall.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ThreadWithADialog.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace window_driver;

namespace
{
constexpr char kCaption[] = "Tarn job with a fault";
constexpr LONGLONG kValue = 0x123456789ALL;

using JobFunction = LONGLONG (*)(void*, HWND);

std::string PathOfProgram()
{
    char szPath[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, szPath, MAX_PATH);
    return szPath;
}

std::string PathOfJobs()
{
    const std::string program = PathOfProgram();
    return program.substr(0, program.rfind('\\') + 1) + "jobs.dll";
}

class LoadedJobs
{
public:
    explicit LoadedJobs(const std::string& path = PathOfJobs()) : m_tarn(path)
    {
        if (m_tarn.IsComplete())
            m_pfnRunJob = reinterpret_cast<RunFunction>(
                reinterpret_cast<void*>(::GetProcAddress(m_tarn.Module(), "RunJob")));
    }
    bool IsComplete() const { return m_pfnRunJob != nullptr; }
    HMODULE Module() const { return m_tarn.Module(); }

    LONGLONG Run(JobFunction pfnJob, void* pArg) const
    {
        return m_pfnRunJob(pfnJob, pArg, "Working.", kCaption);
    }

private:
    using RunFunction = LONGLONG (*)(JobFunction, void*, const char*, const char*);

    LoadedTarn m_tarn;
    RunFunction m_pfnRunJob = nullptr;
};

bool IsLoaded()
{
    return ::GetModuleHandleA("jobs.dll") != nullptr;
}

// Counts its runs in the argument.
LONGLONG CountRuns(void* pArg, HWND /*hWnd*/)
{
    ++*static_cast<int*>(pArg);
    return kValue;
}

// A job that lasts until it is told to end, and tells how far it is.
struct HeldJob
{
    HANDLE hStarted = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE hMayEnd = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE hThread = nullptr; // of the worker

    HeldJob() = default;
    HeldJob(const HeldJob&) = delete;
    HeldJob& operator=(const HeldJob&) = delete;
    ~HeldJob()
    {
        ::CloseHandle(hStarted);
        ::CloseHandle(hMayEnd);
        ::CloseHandle(hThread);
    }
    bool HasStarted() const
    {
        return ::WaitForSingleObject(hStarted, kLimitMilliseconds) == WAIT_OBJECT_0;
    }
    bool WorkerHasEnded(DWORD nLimit = kLimitMilliseconds) const
    {
        return ::WaitForSingleObject(hThread, nLimit) == WAIT_OBJECT_0;
    }
    DWORD ExitCode() const
    {
        DWORD nExitCode = 0;
        ::GetExitCodeThread(hThread, &nExitCode);
        return nExitCode;
    }
    static LONGLONG Run(void* pArg, HWND /*hWnd*/)
    {
        auto& job = *static_cast<HeldJob*>(pArg);
        ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                          &job.hThread, 0, FALSE, DUPLICATE_SAME_ACCESS);
        ::SetEvent(job.hStarted);
        ::WaitForSingleObject(job.hMayEnd, INFINITE);
        return kValue;
    }
};

HWND WaitForDialog()
{
    HWND const hWnd = WaitForTopLevel(kCaption);
    // Shown only when it has been initialised, the worker included.
    EXPECT_TRUE(WaitFor([hWnd] { return ::IsWindowVisible(hWnd) != FALSE; }));
    return hWnd;
}

void ExpectToWork(const LoadedJobs& jobs)
{
    int nRuns = 0;
    EXPECT_EQ(jobs.Run(&CountRuns, &nRuns), kValue);
    EXPECT_EQ(nRuns, 1);
    EXPECT_EQ(FindTopLevel(kCaption), nullptr);
}

volatile LONG g_nBadFrees = 0;

// A heap takes back what is not its own without a word.
BOOL WINAPI FreeIfValid(HANDLE hHeap, DWORD nFlags, LPVOID p)
{
    if (::HeapValidate(hHeap, 0, p))
        return ::HeapFree(hHeap, nFlags, p);
    ::InterlockedIncrement(&g_nBadFrees);
    return FALSE;
}

volatile LONG g_nBadWaits = 0;

// For a thread whose handle is closed, or whose object is gone.
DWORD WINAPI WaitIfValid(HANDLE hObject, DWORD nMilliseconds)
{
    const DWORD nResult = ::WaitForSingleObject(hObject, nMilliseconds);
    if (nResult == WAIT_FAILED)
        ::InterlockedIncrement(&g_nBadWaits);
    return nResult;
}

// From loading to unloading, which must really happen.
template <class Action>
void RunRound(const Action& action)
{
    g_nBadFrees = 0;
    g_nBadWaits = 0;
    {
        const LoadedJobs jobs;
        ASSERT_TRUE(jobs.IsComplete());
        const ImportPatch frees(jobs.Module(), "HeapFree", reinterpret_cast<void*>(&FreeIfValid));
        const ImportPatch waits(jobs.Module(), "WaitForSingleObject",
                                reinterpret_cast<void*>(&WaitIfValid));
        ASSERT_TRUE(frees.IsActive());
        ASSERT_TRUE(waits.IsActive());
        const CallersState before = CallersState::Now();
        action(jobs);
        EXPECT_EQ(CallersState::Now(), before);
        ExpectToWork(jobs);
    }
    EXPECT_TRUE(WaitFor([] { return !IsLoaded(); })) << "it stays loaded";
    EXPECT_EQ(g_nBadFrees, 0) << "something was freed twice";
    EXPECT_EQ(g_nBadWaits, 0) << "a thread was given back too early";
}

// And nothing is left behind.
template <class Action>
void ExpectCleanRound(const Action& action)
{
    EXPECT_TRUE(LeavesNothingBehind([&] { RunRound(action); }));
}

// With a worker that dies: what the system keeps for a thread in the process's heap is lost with it.
template <class Action>
void ExpectCleanRoundButForTheDead(const Action& action)
{
    RoundCost::Allowance allowed = {};
    allowed[RoundCost::kHeapBlocks] = allowed[RoundCost::kHeapBytes] = RoundCost::kAnything;
    EXPECT_TRUE(CostsAtMost(allowed, 1, [&] { RunRound(action); }));
}

TEST(JobFault, OfTheDialogReturnsZeroAndStartsNoJob)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        const FailingCall failing(jobs.Module(), "DialogBoxParamA", ~ULONG_PTR{0});
        int nRuns = 0;
        EXPECT_EQ(jobs.Run(&CountRuns, &nRuns), 0);
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_EQ(nRuns, 0);
    });
}

// The worker does not come to run; the watchdog ends the wait.
TEST(JobFault, OfTheWorkersStartLeavesTheWaitToTheWatchdog)
{
    struct Fault
    {
        const char* pszFunction;
        ULONG_PTR nResult;
        bool bKilled; // a worker that exists and waits to be let go
    };
    constexpr Fault kFaults[] = {
        {"CreateThread", 0, false},
        {"GetModuleHandleExA", FALSE, false},
        {"ResumeThread", static_cast<DWORD>(-1), true},
        {"TlsSetValue", FALSE, false}, // the worker's
    };
    for (const Fault& fault : kFaults)
    {
        SCOPED_TRACE(fault.pszFunction);
        const auto round = [&fault](const LoadedJobs& jobs) {
            ExpectToWork(jobs); // what this thread needs has been made
            int nRuns = 0;
            int nCalls = 0;
            {
                const FailingCall failing(jobs.Module(), fault.pszFunction, fault.nResult);
                DriverThread driver([] {
                    HWND const hWnd = WaitForDialog();
                    Tick(hWnd, kWatchdogTicks / 2); // real ones may come between
                    EXPECT_TRUE(::IsWindowVisible(hWnd));
                    Tick(hWnd, kWatchdogTicks / 2);
                });
                EXPECT_EQ(jobs.Run(&CountRuns, &nRuns), 0);
                nCalls = FailingCall::Calls();
            }
            EXPECT_EQ(nCalls, 1);
            EXPECT_EQ(nRuns, 0);
        };
        if (fault.bKilled)
            ExpectCleanRoundButForTheDead(round);
        else
            ExpectCleanRound(round);
    }
}

// The n-th allocation of one thread fails, counted from 1; 0: none.
DWORD g_nThreadID = 0;
int g_nUntilFailure = 0;

LPVOID WINAPI AllocUntilFailure(HANDLE hHeap, DWORD nFlags, SIZE_T cb)
{
    if (::GetCurrentThreadId() == g_nThreadID && g_nUntilFailure > 0 && --g_nUntilFailure == 0)
        return nullptr;
    return ::HeapAlloc(hHeap, nFlags, cb);
}

// Before the window is there, the exception leaves; once it is, the watchdog ends the wait.
TEST(JobFault, OfEachAllocationEndsInAnExceptionOrInTheWatchdog)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        ExpectToWork(jobs); // what this thread needs has been made
        const ImportPatch patch(jobs.Module(), "HeapAlloc",
                                reinterpret_cast<void*>(&AllocUntilFailure));
        ASSERT_TRUE(patch.IsActive());
        g_nThreadID = ::GetCurrentThreadId();
        bool bFailed = true;
        int nThrown = 0;
        int nWithout = 0;
        for (int n = 1; bFailed && n < 50; ++n)
        {
            SCOPED_TRACE(testing::Message() << "request " << n);
            int nRuns = 0;
            LONGLONG nResult = -1;
            volatile bool bEnded = false;
            DriverThread driver([&bEnded] {
                HWND hWnd = nullptr;
                WaitFor([&] { return bEnded || (hWnd = FindTopLevel(kCaption)) != nullptr; });
                WaitFor([hWnd] { return ::IsWindowVisible(hWnd) != FALSE || !::IsWindow(hWnd); });
                if (g_nUntilFailure == 0) // it has failed
                    Tick(hWnd);
            });
            g_nUntilFailure = n;
            try
            {
                nResult = jobs.Run(&CountRuns, &nRuns);
            }
            catch (...)
            {
                ++nThrown;
            }
            bEnded = true;
            driver.Join();
            bFailed = g_nUntilFailure == 0;
            g_nUntilFailure = 0;
            EXPECT_EQ(nRuns, bFailed ? 0 : 1);
            EXPECT_TRUE(nResult == (bFailed ? 0 : kValue) || nResult == -1) << nResult;
            nWithout += nResult == 0 ? 1 : 0;
            EXPECT_EQ(FindTopLevel(kCaption), nullptr);
        }
        EXPECT_FALSE(bFailed) << "the requests do not end";
        EXPECT_GE(nThrown, 3) << "the texts, the dialog";
        EXPECT_EQ(nWithout, 2) << "the thread's object and its state";
    });
}

TEST(JobFault, OfTheTimerDoesNotKeepAJobFromEndingTheWait)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        for (const char* const pszFunction : {"SetTimer", "KillTimer", "SetWindowPos"})
        {
            SCOPED_TRACE(pszFunction);
            const FailingCall failing(jobs.Module(), pszFunction);
            ExpectToWork(jobs);
            EXPECT_EQ(FailingCall::Calls(), 1);
        }
    });
}

TEST(JobFault, OfTheMessageThatEndsTheWaitLeavesItToTheWatchdogAndKeepsTheResult)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        HeldJob job;
        ::SetEvent(job.hMayEnd);
        const FailingCall failing(jobs.Module(), "PostMessageA");
        DriverThread driver([&job] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(job.HasStarted());
            EXPECT_TRUE(job.WorkerHasEnded());
            Tick(hWnd);
        });
        EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), kValue);
        EXPECT_EQ(FailingCall::Calls(), 1);
    });
}

TEST(JobFault, OfEndDialogLeavesTheWindowToTheNextTry)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        int nRuns = 0;
        auto pFailing = std::make_unique<FailingCall>(jobs.Module(), "EndDialog", FALSE);
        DriverThread driver([&pFailing] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(WaitFor([] { return FailingCall::Calls() == 1; }));
            EXPECT_TRUE(::IsWindowVisible(hWnd));
            pFailing.reset();
            PostKey(hWnd, VK_RETURN);
        });
        EXPECT_EQ(jobs.Run(&CountRuns, &nRuns), kValue);
        EXPECT_EQ(nRuns, 1);
    });
}

// The window ends in time, and the job, which nobody can stop, goes on by itself.
TEST(JobFault, OfTerminatingTheWorkerEndsTheWaitAndLeavesTheJobAlone)
{
    for (const bool bJobEndsMeanwhile : {false, true})
    {
        SCOPED_TRACE(bJobEndsMeanwhile);
        ExpectCleanRound([bJobEndsMeanwhile](const LoadedJobs& jobs) {
            HeldJob job;
            {
                const FailingCall failing(jobs.Module(), "TerminateThread");
                DriverThread driver([&job, bJobEndsMeanwhile] {
                    HWND const hWnd = WaitForDialog();
                    EXPECT_TRUE(job.HasStarted());
                    Tick(hWnd, kWatchdogTicks - 1);
                    if (bJobEndsMeanwhile)
                        ::SetEvent(job.hMayEnd);
                    Tick(hWnd, 1);
                });
                const LONGLONG nResult = jobs.Run(&HeldJob::Run, &job);
                if (!bJobEndsMeanwhile)
                {
                    EXPECT_EQ(nResult, 0);
                    EXPECT_EQ(FailingCall::Calls(), 1);
                    EXPECT_FALSE(job.WorkerHasEnded(0));
                }
            }
            ExpectToWork(jobs);
            ::SetEvent(job.hMayEnd);
            EXPECT_TRUE(job.WorkerHasEnded());
            EXPECT_EQ(job.ExitCode(), 0U);
        });
    }
}

// Whoever cannot be waited for cannot be deleted: object and handle stay, and of a killed worker its
// reference to the library. The results are right.
TEST(JobFault, OfWaitingForTheWorkerCostsAHandleAndNothingElse)
{
    const CallersState state = CallersState::Now();
    ResourceCount before;
    {
        const LoadedJobs jobs;
        ASSERT_TRUE(jobs.IsComplete());
        const int nThreads = ResourceCount::Threads();
        ExpectToWork(jobs);
        // The worker posts its message, and may take a while to end.
        ASSERT_TRUE(WaitFor([nThreads] { return ResourceCount::Threads() <= nThreads; }));
        before = ResourceCount::Now();
        const FailingCall failing(jobs.Module(), "WaitForSingleObject", WAIT_FAILED);
        ExpectToWork(jobs);
        EXPECT_EQ(FailingCall::Calls(), 0) << "nobody waits for a worker that is past its job";
        {
            HeldJob killed;
            DriverThread driver([&killed] {
                HWND const hWnd = WaitForDialog();
                EXPECT_TRUE(killed.HasStarted());
                Tick(hWnd);
            });
            EXPECT_EQ(jobs.Run(&HeldJob::Run, &killed), 0);
            EXPECT_TRUE(killed.WorkerHasEnded());
        }
        {
            HeldJob outlived;
            DriverThread driver([&outlived] {
                HWND const hWnd = WaitForDialog();
                EXPECT_TRUE(outlived.HasStarted());
                PostKey(hWnd, VK_RETURN);
            });
            EXPECT_EQ(jobs.Run(&HeldJob::Run, &outlived), 0);
            EXPECT_FALSE(outlived.WorkerHasEnded(0));
            ::SetEvent(outlived.hMayEnd);
            EXPECT_TRUE(outlived.WorkerHasEnded());
        }
    }
    EXPECT_TRUE(WaitFor([&] { return ResourceCount::Threads() == before.nThreads; }));
    EXPECT_LE(ResourceCount::Now().nHandles, before.nHandles + 2) << "of the first two jobs";
    EXPECT_EQ(CallersState::Now(), state);
    {
        const LoadedJobs jobs;
        ExpectToWork(jobs);
    }
    EXPECT_TRUE(IsLoaded());
    ::FreeLibrary(::GetModuleHandleA("jobs.dll")); // for the killed worker
    EXPECT_TRUE(WaitFor([] { return !IsLoaded(); }));
}

// Also that no priority is ever set.
TEST(JobFault, OfGivingBackChangesNoResult)
{
    const LoadedJobs jobs;
    ASSERT_TRUE(jobs.IsComplete());
    const CallersState state = CallersState::Now();
    for (const char* const pszFunction : {"CloseHandle", "HeapFree"})
    {
        SCOPED_TRACE(pszFunction);
        const FailingCall failing(jobs.Module(), pszFunction);
        ExpectToWork(jobs);
        // The worker gives its own things back, when its result has long been there.
        EXPECT_TRUE(WaitFor([] { return FailingCall::Calls() >= 1; }));
    }
    const FailingCall failing(jobs.Module(), "SetThreadPriority");
    ASSERT_TRUE(failing.IsActive());
    ExpectToWork(jobs);
    EXPECT_EQ(FailingCall::Calls(), 0);
    EXPECT_EQ(CallersState::Now(), state);
}

TEST(JobFault, OfAWorkerThatSomebodyTerminatedIsClean)
{
    ExpectCleanRoundButForTheDead([](const LoadedJobs& jobs) {
        HeldJob job;
        DriverThread driver([&job] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(job.HasStarted());
            ::TerminateThread(job.hThread, 99);
            EXPECT_TRUE(job.WorkerHasEnded());
            Tick(hWnd, kWatchdogTicks / 2);
            EXPECT_TRUE(::IsWindowVisible(hWnd)) << "nobody noticed";
            Tick(hWnd, kWatchdogTicks / 2);
        });
        EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), 0);
        EXPECT_EQ(job.ExitCode(), 99U) << "it is not terminated again";
    });
}

TEST(JobFault, OfAWorkerThatSomebodyTerminatedBehindAnEndedWindowIsClean)
{
    ExpectCleanRoundButForTheDead([](const LoadedJobs& jobs) {
        HeldJob job;
        DriverThread driver([&job] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(job.HasStarted());
            ::TerminateThread(job.hThread, 99);
            EXPECT_TRUE(job.WorkerHasEnded());
            PostKey(hWnd, VK_RETURN);
        });
        EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), 0);
    });
}

TEST(JobFault, OfUnloadingForADeadWorkerKeepsTheLibraryLoaded)
{
    {
        const LoadedJobs jobs;
        ASSERT_TRUE(jobs.IsComplete());
        HeldJob job;
        {
            const FailingCall failing(jobs.Module(), "FreeLibrary");
            DriverThread driver([&job] {
                HWND const hWnd = WaitForDialog();
                EXPECT_TRUE(job.HasStarted());
                Tick(hWnd);
            });
            const CallersState state = CallersState::Now();
            EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), 0);
            EXPECT_EQ(FailingCall::Calls(), 1);
            EXPECT_EQ(CallersState::Now(), state);
        }
        ExpectToWork(jobs);
    }
    EXPECT_TRUE(IsLoaded());
    ::FreeLibrary(::GetModuleHandleA("jobs.dll"));
    EXPECT_TRUE(WaitFor([] { return !IsLoaded(); }));
}

// A window that owns the dialog takes it along.
TEST(JobFault, OfTheOwnerThatDiesEndsTheWaitAndLeavesTheJobAlone)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        HeldJob job;
        const HostWindow owner(100, 100, 500, 400);
        ::ShowWindow(owner.Handle(), SW_SHOW);
        ::SetActiveWindow(owner.Handle());
        ASSERT_EQ(::GetActiveWindow(), owner.Handle());
        DriverThread driver([&job, &owner] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(job.HasStarted());
            EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), owner.Handle());
            ::PostMessageA(owner.Handle(), WM_CLOSE, 0, 0);
        });
        EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), 0);
        EXPECT_FALSE(::IsWindow(owner.Handle()));
        EXPECT_EQ(FindTopLevel(kCaption), nullptr);
        EXPECT_FALSE(job.WorkerHasEnded(0));
        ExpectToWork(jobs);
        ::SetEvent(job.hMayEnd);
        EXPECT_TRUE(job.WorkerHasEnded());
    });
}

HeldJob* g_pJobToEnd = nullptr;

volatile LONG g_bAsleep = FALSE;

void WINAPI NoteSleep(DWORD nMilliseconds)
{
    g_bAsleep = TRUE;
    ::Sleep(nMilliseconds);
}

DWORD WINAPI LookAndThenEndTheJob(HANDLE hObject, DWORD nMilliseconds)
{
    const DWORD nResult = WaitIfValid(hObject, nMilliseconds);
    if (nMilliseconds == 0 && g_pJobToEnd != nullptr)
    {
        ::SetEvent(g_pJobToEnd->hMayEnd);
        EXPECT_TRUE(WaitFor([] { return g_bAsleep != FALSE; }));
        EXPECT_FALSE(g_pJobToEnd->WorkerHasEnded(0));
        g_pJobToEnd = nullptr;
    }
    return nResult;
}

// When the dialog looks, the job still runs, and ends before the dialog has left its object to it: the
// worker sleeps until that has been settled, and deletes the object.
TEST(JobRace, BetweenEnterAndTheEndOfTheJobLeavesNothingBehind)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        HeldJob job;
        g_bAsleep = FALSE;
        const ImportPatch patch(jobs.Module(), "WaitForSingleObject",
                                reinterpret_cast<void*>(&LookAndThenEndTheJob));
        const ImportPatch sleeps(jobs.Module(), "Sleep", reinterpret_cast<void*>(&NoteSleep));
        ASSERT_TRUE(patch.IsActive());
        ASSERT_TRUE(sleeps.IsActive());
        DriverThread driver([&job] {
            HWND const hWnd = WaitForDialog();
            EXPECT_TRUE(job.HasStarted());
            g_pJobToEnd = &job;
            PostKey(hWnd, VK_RETURN);
        });
        EXPECT_EQ(jobs.Run(&HeldJob::Run, &job), 0);
        EXPECT_EQ(g_pJobToEnd, nullptr) << "nobody looked";
        EXPECT_TRUE(job.WorkerHasEnded());
    });
}

HANDLE g_hPostMayEnd = nullptr;
HANDLE g_hPosts = nullptr;
volatile LONG g_bPosted = FALSE;

BOOL WINAPI PostWhenToldTo(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    ::SetEvent(g_hPosts);
    ::WaitForSingleObject(g_hPostMayEnd, INFINITE);
    g_bPosted = TRUE;
    return ::PostMessageA(hWnd, message, wParam, lParam);
}

// The job has ended, and its thread is on its way out when the watchdog comes: nobody is to be
// terminated any more, and the result counts.
TEST(JobRace, BetweenTheEndOfTheJobAndTheWatchdogTerminatesNobody)
{
    ExpectCleanRound([](const LoadedJobs& jobs) {
        g_hPosts = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
        g_hPostMayEnd = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
        g_bPosted = FALSE;
        int nRuns = 0;
        {
            const ImportPatch patch(jobs.Module(), "PostMessageA",
                                    reinterpret_cast<void*>(&PostWhenToldTo));
            const FailingCall failing(jobs.Module(), "TerminateThread", TRUE);
            DriverThread driver([] {
                HWND const hWnd = WaitForDialog();
                EXPECT_EQ(::WaitForSingleObject(g_hPosts, kLimitMilliseconds), WAIT_OBJECT_0);
                Tick(hWnd);
            });
            EXPECT_EQ(jobs.Run(&CountRuns, &nRuns), kValue);
            EXPECT_EQ(FailingCall::Calls(), 0);
            EXPECT_FALSE(g_bPosted) << "nobody waits for the worker";
            ::SetEvent(g_hPostMayEnd);
            EXPECT_TRUE(WaitFor([] { return g_bPosted != FALSE; }));
        }
        EXPECT_EQ(nRuns, 1);
        ::CloseHandle(g_hPosts);
        ::CloseHandle(g_hPostMayEnd);
    });
}

TEST(JobUnload, WhileAJobRunsByItselfWaitsForTheJob)
{
    ExpectCleanFault(
        LONGLONG{0},
        [] {
            HeldJob job;
            LONGLONG nResult = -1;
            {
                const LoadedJobs jobs;
                EXPECT_TRUE(jobs.IsComplete());
                DriverThread driver([&job] {
                    HWND const hWnd = WaitForDialog();
                    EXPECT_TRUE(job.HasStarted());
                    PostKey(hWnd, VK_RETURN);
                });
                nResult = jobs.Run(&HeldJob::Run, &job);
            }
            EXPECT_TRUE(IsLoaded()) << "its code is needed";
            EXPECT_FALSE(job.WorkerHasEnded(0));
            ::SetEvent(job.hMayEnd);
            EXPECT_TRUE(job.WorkerHasEnded());
            EXPECT_EQ(job.ExitCode(), 0U);
            EXPECT_TRUE(WaitFor([] { return !IsLoaded(); }));
            return nResult;
        },
        [] { ExpectToWork(LoadedJobs()); });
}

TEST(JobUnload, HappensWhenTheJobsHaveEnded)
{
    {
        const LoadedJobs jobs;
        ASSERT_TRUE(jobs.IsComplete());
        ExpectToWork(jobs);
        EXPECT_TRUE(IsLoaded());
    }
    EXPECT_TRUE(WaitFor([] { return !IsLoaded(); }));
}

TEST(JobCopies, UnderDifferentNamesRunJobsAtTheSameTime)
{
    const TempFolder folder;
    const std::string path = folder / "other.dll";
    ASSERT_TRUE(::CopyFileA(PathOfJobs().c_str(), path.c_str(), TRUE));
    ExpectCleanFault(
        kValue,
        [&path] {
            LONGLONG nResult = 0;
            {
                const LoadedJobs first;
                const LoadedJobs second(path);
                EXPECT_TRUE(first.IsComplete());
                EXPECT_TRUE(second.IsComplete());
                EXPECT_NE(first.Module(), second.Module());
                HeldJob job;
                DriverThread other([&] { nResult = first.Run(&HeldJob::Run, &job); });
                EXPECT_TRUE(job.HasStarted());
                int nRuns = 0;
                EXPECT_EQ(second.Run(&CountRuns, &nRuns), kValue);
                ::SetEvent(job.hMayEnd);
                other.Join();
            }
            EXPECT_TRUE(
                WaitFor([] { return !IsLoaded() && ::GetModuleHandleA("other.dll") == nullptr; }));
            return nResult;
        },
        [] { ExpectToWork(LoadedJobs()); }, CostOfAThreadWithADialog());
}

LONGLONG Crash(void* /*pArg*/, HWND /*hWnd*/)
{
    ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return 0;
}

LONGLONG Throw(void* /*pArg*/, HWND /*hWnd*/)
{
    throw 1;
}

TEST(JobInAChild, DISABLED_Returns)
{
    const LoadedJobs jobs;
    ExpectToWork(jobs);
}

TEST(JobInAChild, DISABLED_Crashes)
{
    const LoadedJobs jobs;
    jobs.Run(&Crash, nullptr);
}

TEST(JobInAChild, DISABLED_Throws)
{
    const LoadedJobs jobs;
    jobs.Run(&Throw, nullptr);
}

// Ends while the worker runs and holds the library.
TEST(JobInAChild, DISABLED_EndsTheProcessBeforeTheJob)
{
    const LoadedJobs jobs;
    HeldJob job;
    DriverThread driver([&job] {
        HWND const hWnd = WaitForDialog();
        job.HasStarted();
        PostKey(hWnd, VK_RETURN);
    });
    if (jobs.Run(&HeldJob::Run, &job) == 0 && !job.WorkerHasEnded(0))
        ::ExitProcess(42);
}

// The same as in any other thread of the installer: the library does not hide it.
TEST(JobCrash, EndsTheProcessWithTheCodeOfTheCrash)
{
    EXPECT_EQ(ExitCodeOfChild("JobInAChild.DISABLED_Returns"), 0U);
    EXPECT_EQ(ExitCodeOfChild("JobInAChild.DISABLED_Crashes"),
              static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
}

TEST(JobCrash, IsWhatAnExceptionOutOfAJobComesTo)
{
    const DWORD nExitCode = ExitCodeOfChild("JobInAChild.DISABLED_Throws");
    EXPECT_NE(nExitCode, 0U);
    EXPECT_NE(nExitCode, static_cast<DWORD>(STILL_ACTIVE)) << "it hangs";
}

TEST(JobCrash, DoesNotHappenWhenTheProcessEndsBeforeTheJob)
{
    EXPECT_EQ(ExitCodeOfChild("JobInAChild.DISABLED_EndsTheProcessBeforeTheJob"), 42U);
}
} // namespace
