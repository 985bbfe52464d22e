#include <afxwin.h>

#include "tests/support/AllocationFaults.h"
#include "tests/support/RoundCost.h"

#include <gtest/gtest.h>

namespace
{
class HostApp : public CWinApp
{
};
HostApp g_app;

constexpr DWORD kLimit = 60000;

// What a thread saw, and when it may end.
struct Seen
{
    HANDLE hRan = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE hEnd = ::CreateEventA(nullptr, TRUE, TRUE, nullptr);
    CWinThread* pThread = nullptr;
    AFX_MODULE_STATE* pModuleState = nullptr;
    DWORD nThreadID = 0;
    int nPriority = -1;
    bool bKeepObject = false;

    Seen() = default;
    ~Seen()
    {
        ::CloseHandle(hRan);
        ::CloseHandle(hEnd);
    }
    Seen(const Seen&) = delete;
    Seen& operator=(const Seen&) = delete;
    bool HasRun() const { return ::WaitForSingleObject(hRan, kLimit) == WAIT_OBJECT_0; }
};

UINT Look(LPVOID pParam)
{
    auto& seen = *static_cast<Seen*>(pParam);
    seen.pThread = AfxGetThread();
    seen.pModuleState = GetCurrentModuleState();
    seen.nThreadID = ::GetCurrentThreadId();
    seen.nPriority = ::GetThreadPriority(::GetCurrentThread());
    if (seen.bKeepObject)
        seen.pThread->m_bAutoDelete = FALSE;
    ::SetEvent(seen.hRan);
    ::WaitForSingleObject(seen.hEnd, kLimit);
    return 4711;
}

// Starts a thread that keeps its object, waits for its end, and frees the object.
void RunThread(Seen& seen)
{
    seen.bKeepObject = true;
    CWinThread* const pThread = AfxBeginThread(&Look, &seen);
    ASSERT_NE(pThread, nullptr);
    ASSERT_TRUE(seen.HasRun());
    ASSERT_EQ(::WaitForSingleObject(pThread->m_hThread, kLimit), WAIT_OBJECT_0);
    delete pThread;
}

TEST(CWinThread, HasNothingOfItsOwnToStartOrToEnd)
{
    CWinThread thread;
    EXPECT_FALSE(thread.InitInstance()) << "there is no message loop to go into";
    EXPECT_EQ(thread.ExitInstance(), 0);
}

TEST(CWinThread, KeepsItsObjectWhenTheThreadAsksForThat)
{
    Seen seen;
    seen.bKeepObject = true;
    CWinThread* const pThread = AfxBeginThread(&Look, &seen);
    ASSERT_NE(pThread, nullptr);
    ASSERT_TRUE(seen.HasRun());
    ASSERT_EQ(::WaitForSingleObject(pThread->m_hThread, kLimit), WAIT_OBJECT_0);
    DWORD nExitCode = 0;
    EXPECT_TRUE(::GetExitCodeThread(pThread->m_hThread, &nExitCode));
    EXPECT_EQ(nExitCode, 4711U);
    EXPECT_EQ(seen.nThreadID, pThread->m_nThreadID);
    EXPECT_NE(seen.nThreadID, ::GetCurrentThreadId());
    EXPECT_EQ(seen.pThread, pThread);
    EXPECT_EQ(seen.nPriority, THREAD_PRIORITY_NORMAL);
    delete pThread;
}

TEST(CWinThread, KeepsItsObjectWhenItsOwnerSaysSoBeforeItRuns)
{
    Seen seen;
    CWinThread* const pThread =
        AfxBeginThread(&Look, &seen, THREAD_PRIORITY_BELOW_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_NE(pThread, nullptr);
    EXPECT_TRUE(pThread->m_bAutoDelete);
    EXPECT_EQ(::WaitForSingleObject(seen.hRan, 20), DWORD{WAIT_TIMEOUT}); // it has not run yet
    pThread->m_bAutoDelete = FALSE;
    ::ResumeThread(pThread->m_hThread);
    ASSERT_TRUE(seen.HasRun());
    ASSERT_EQ(::WaitForSingleObject(pThread->m_hThread, kLimit), WAIT_OBJECT_0);
    EXPECT_EQ(seen.nPriority, THREAD_PRIORITY_BELOW_NORMAL);
    delete pThread;
}

TEST(CWinThread, RunsInTheModuleStateOfItsCreator)
{
    Seen inHost;
    RunThread(inHost);
    EXPECT_EQ(inHost.pModuleState, GetDefaultModuleState());
    Seen inLibrary;
    {
        AFX_MANAGE_STATE(AfxGetStaticModuleState());
        RunThread(inLibrary);
    }
    EXPECT_EQ(inLibrary.pModuleState, AfxGetStaticModuleState());
}

TEST(CWinThread, IsTheApplicationOnOtherThreads)
{
    EXPECT_EQ(AfxGetThread(), &g_app);
    CWinThread* pSeen = nullptr;
    HANDLE const hThread = ::CreateThread(
        nullptr, 0,
        [](LPVOID ppThread) -> DWORD {
            *static_cast<CWinThread**>(ppThread) = AfxGetThread();
            return 0;
        },
        &pSeen, 0, nullptr);
    ASSERT_EQ(::WaitForSingleObject(hThread, kLimit), WAIT_OBJECT_0);
    ::CloseHandle(hThread);
    EXPECT_EQ(pSeen, &g_app);
}

TEST(CWinThread, LeavesNothingBehind)
{
    EXPECT_TRUE(LeavesNothingBehind(50, [] {
        Seen kept;
        RunThread(kept);
    }));
}

TEST(CWinThread, DeletesItselfAndLeavesNothingBehind)
{
    EXPECT_TRUE(LeavesNothingBehind(50, [] {
        Seen seen;
        ::ResetEvent(seen.hEnd);
        CWinThread* const pThread = AfxBeginThread(&Look, &seen);
        ASSERT_NE(pThread, nullptr);
        ASSERT_TRUE(seen.HasRun());
        // The object may go at any time once the thread is let go.
        HANDLE hThread = nullptr;
        ASSERT_TRUE(::DuplicateHandle(::GetCurrentProcess(), pThread->m_hThread,
                                      ::GetCurrentProcess(), &hThread, 0, FALSE,
                                      DUPLICATE_SAME_ACCESS));
        ::SetEvent(seen.hEnd);
        ASSERT_EQ(::WaitForSingleObject(hThread, kLimit), WAIT_OBJECT_0);
        ::CloseHandle(hThread);
    }));
}

HANDLE WINAPI CreateNoThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE, LPVOID, DWORD,
                             LPDWORD)
{
    return nullptr;
}

TEST(CWinThread, IsNullWhenTheSystemMakesNoThread)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "CreateThread",
                            reinterpret_cast<void*>(&CreateNoThread));
    ASSERT_TRUE(patch.IsActive());
    EXPECT_TRUE(LeavesNothingBehind([] {
        Seen seen;
        EXPECT_EQ(AfxBeginThread(&Look, &seen), nullptr);
    }));
}

TEST(CWinThread, ThrowsTheMemoryExceptionWithoutMemory)
{
    GetThreadState();
    EXPECT_TRUE(LeavesNothingBehind([] {
        AllocationFaults faults(::GetModuleHandleA(nullptr));
        for (int n = 1; n < 10; ++n)
        {
            Seen seen;
            seen.bKeepObject = true;
            bool bThrown = false;
            CWinThread* pThread = nullptr;
            faults.Arm(n, AllocationFaults::After::Recovers);
            try
            {
                pThread = AfxBeginThread(&Look, &seen);
            }
            catch (CMemoryException* pException)
            {
                bThrown = true;
                pException->Delete();
            }
            const bool bFailed = faults.Disarm();
            EXPECT_EQ(bThrown, bFailed) << n;
            if (pThread != nullptr)
            {
                EXPECT_EQ(::WaitForSingleObject(pThread->m_hThread, kLimit), WAIT_OBJECT_0);
                delete pThread;
            }
            if (!bFailed)
            {
                EXPECT_GE(n, 3); // the object and its thread state
                return;
            }
        }
        ADD_FAILURE() << "the requests do not end";
    }));
}
} // namespace
