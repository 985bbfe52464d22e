// The watchdog in real time: a minute.
#include "tests/support/WindowDriver.h"
#include "ui/WaitDlgModless.h"

#include <gtest/gtest.h>

namespace
{
LONGLONG NeverReturn(void* pArg, HWND /*hWnd*/)
{
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                      static_cast<HANDLE*>(pArg), 0, FALSE, DUPLICATE_SAME_ACCESS);
    ::Sleep(INFINITE);
    return 1;
}
} // namespace

TEST(JobRunner, TerminatesAJobThatNeverReturnsAfterAMinute)
{
    HANDLE hThread = nullptr;
    const DWORD nStart = ::GetTickCount();
    EXPECT_EQ(RunJobWithWaitDlg(&NeverReturn, &hThread, "This takes a minute.", "watchdog"), 0);
    // Late is the machine's business, early would be ours.
    EXPECT_GE(::GetTickCount() - nStart, 100U * 600U - 500U);
    ASSERT_NE(hThread, nullptr);
    EXPECT_EQ(::WaitForSingleObject(hThread, 0), static_cast<DWORD>(WAIT_OBJECT_0));
    ::CloseHandle(hThread);
    EXPECT_EQ(window_driver::FindTopLevel("watchdog"), nullptr);
}
