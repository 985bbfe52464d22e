// What a thousand jobs leave behind: nothing.
#include "tests/support/ResourceCount.h"
#include "tests/support/WindowDriver.h"
#include "ui/WaitDlgModless.h"

#include <gtest/gtest.h>

using namespace window_driver;

namespace
{
LONGLONG Double(void* pArg, HWND /*hWnd*/)
{
    return 2 * *static_cast<LONGLONG*>(pArg);
}

void ExpectNoMoreThan(const ResourceCount& before)
{
    // A thread that has just signalled its end may still be counted for a moment.
    EXPECT_TRUE(PumpUntil([&] { return ResourceCount::Now().nThreads <= before.nThreads; }));
    const ResourceCount after = ResourceCount::Now();
    EXPECT_LE(after.nHandles, before.nHandles);
    // The system's caches of fonts and pens may still grow by a few; a leak would be one for each job.
    EXPECT_LE(after.nGdiObjects, before.nGdiObjects + 20);
    EXPECT_LE(after.nUserObjects, before.nUserObjects);
    EXPECT_LE(after.nHeapBlocks, before.nHeapBlocks);
}
} // namespace

TEST(JobRunner, RunsAThousandJobsInARowAndLeavesNothingBehind)
{
    const auto runJobs = [](LONGLONG nJobs) {
        for (LONGLONG i = 1; i <= nJobs; ++i)
            ASSERT_EQ(RunJobWithWaitDlg(&Double, &i, "Working.", "one of many"), 2 * i);
    };
    runJobs(50); // caches of the system fill up
    const ResourceCount before = ResourceCount::Now();
    runJobs(1000);
    ExpectNoMoreThan(before);
}

TEST(JobRunner, LeavesNothingBehindWhenTheJobOutlivesTheDialog)
{
    struct Job
    {
        HANDLE hMayEnd;
        HANDLE hThread;
        static LONGLONG Run(void* pArg, HWND hWnd)
        {
            auto& job = *static_cast<Job*>(pArg);
            ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                              &job.hThread, 0, FALSE, DUPLICATE_SAME_ACCESS);
            ::PostMessageA(hWnd, WM_COMMAND, IDOK, 0);
            ::WaitForSingleObject(job.hMayEnd, INFINITE);
            return 1;
        }
    };
    const auto runJobs = [](int nJobs) {
        for (int i = 0; i < nJobs; ++i)
        {
            Job job = {::CreateEventA(nullptr, TRUE, FALSE, nullptr), nullptr};
            EXPECT_EQ(RunJobWithWaitDlg(&Job::Run, &job, "", "outlived"), 0);
            ::SetEvent(job.hMayEnd);
            EXPECT_EQ(::WaitForSingleObject(job.hThread, kLimitMilliseconds),
                      static_cast<DWORD>(WAIT_OBJECT_0));
            ::CloseHandle(job.hMayEnd);
            ::CloseHandle(job.hThread);
        }
    };
    runJobs(20);
    const ResourceCount before = ResourceCount::Now();
    runJobs(200);
    ExpectNoMoreThan(before);
}
