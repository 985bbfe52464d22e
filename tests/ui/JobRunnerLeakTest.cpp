// What a thousand jobs leave behind: nothing.
#include "tests/support/RoundCost.h"
#include "tests/support/WindowDriver.h"
#include "ui/WaitDlgModless.h"

#include <gtest/gtest.h>

#include <memory>

using namespace window_driver;

namespace
{
LONGLONG Double(void* pArg, HWND /*hWnd*/)
{
    return 2 * *static_cast<LONGLONG*>(pArg);
}

// In the library's own heap, this program's.
std::size_t OwnBlocks()
{
    const auto pBlock = std::make_unique<char>();
    HANDLE heaps[64];
    const DWORD nHeaps = ::GetProcessHeaps(64, heaps);
    for (DWORD i = 0; i < nHeaps; ++i)
    {
        if (::HeapValidate(heaps[i], 0, pBlock.get()))
            return ResourceCount::BlocksIn(heaps[i]);
    }
    ADD_FAILURE() << "the library has no heap";
    return 0;
}
} // namespace

TEST(JobRunner, RunsAThousandJobsInARowAndLeavesNothingBehind)
{
    LONGLONG nJob = 0;
    const auto runJob = [&nJob] {
        ++nJob;
        ASSERT_EQ(RunJobWithWaitDlg(&Double, &nJob, "Working.", "one of many"), 2 * nJob);
    };
    runJob();
    const std::size_t nBlocks = OwnBlocks();
    EXPECT_TRUE(LeavesNothingBehind(333, runJob));
    // A worker gives its own things back a moment after its result: that of the first job, or of the last.
    EXPECT_TRUE(window_driver::WaitFor([nBlocks] { return OwnBlocks() <= nBlocks; }));
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
    const auto runJob = [] {
        Job job = {::CreateEventA(nullptr, TRUE, FALSE, nullptr), nullptr};
        EXPECT_EQ(RunJobWithWaitDlg(&Job::Run, &job, "", "outlived"), 0);
        ::SetEvent(job.hMayEnd);
        EXPECT_EQ(::WaitForSingleObject(job.hThread, kLimitMilliseconds),
                  static_cast<DWORD>(WAIT_OBJECT_0));
        ::CloseHandle(job.hMayEnd);
        ::CloseHandle(job.hThread);
    };
    runJob();
    const std::size_t nBlocks = OwnBlocks();
    EXPECT_TRUE(LeavesNothingBehind(100, runJob));
    EXPECT_EQ(OwnBlocks(), nBlocks);
}
