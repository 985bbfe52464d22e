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

// A job that hands its worker's thread out.
LONGLONG HandOutThread(void* phThread, HWND /*hWnd*/)
{
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                      static_cast<HANDLE*>(phThread), 0, FALSE, DUPLICATE_SAME_ACCESS);
    return 1;
}

// With all that it holds.
void WaitForEndOf(HANDLE hThread)
{
    EXPECT_EQ(::WaitForSingleObject(hThread, kLimitMilliseconds),
              static_cast<DWORD>(WAIT_OBJECT_0));
    ::CloseHandle(hThread);
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
    HANDLE hFirst = nullptr;
    ASSERT_EQ(RunJobWithWaitDlg(&HandOutThread, &hFirst, "Working.", "the first"), 1);
    WaitForEndOf(hFirst);
    const std::size_t nBlocks = OwnBlocks();
    EXPECT_TRUE(LeavesNothingBehind(333, runJob));
    // The last worker gives its own things back a moment after its result.
    EXPECT_TRUE(WaitFor([nBlocks] { return OwnBlocks() == nBlocks; })) << OwnBlocks();
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
            HandOutThread(&job.hThread, hWnd);
            ::PostMessageA(hWnd, WM_COMMAND, IDOK, 0);
            ::WaitForSingleObject(job.hMayEnd, INFINITE);
            return 1;
        }
    };
    const auto runJob = [] {
        Job job = {::CreateEventA(nullptr, TRUE, FALSE, nullptr), nullptr};
        EXPECT_EQ(RunJobWithWaitDlg(&Job::Run, &job, "", "outlived"), 0);
        ::SetEvent(job.hMayEnd);
        WaitForEndOf(job.hThread);
        ::CloseHandle(job.hMayEnd);
    };
    runJob();
    const std::size_t nBlocks = OwnBlocks();
    EXPECT_TRUE(LeavesNothingBehind(100, runJob));
    EXPECT_EQ(OwnBlocks(), nBlocks);
}
