// What thousands of wait windows leave behind: nothing.
#include "tests/support/LoadedTarn.h"
#include "tests/support/NewHeap.h"
#include "tests/support/RoundCost.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

using namespace window_driver;

TEST(WaitWindows, FiveThousandLeaveNothingBehind)
{
    const NewHeap heap;
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    tarn.CloseWaitDlg();
    HANDLE const hHeap = heap.Find(); // the library's
    ASSERT_NE(hHeap, nullptr);
    const HostWindow host(100, 100, 700, 500);
    const auto openAndClose = [&] {
        tarn.DoWaitDlgModless(host.Handle(), "one of many", "Please wait.");
        tarn.CloseWaitDlg();
        PumpUntil([] { return true; });
    };
    openAndClose();
    const std::size_t nBlocks = ResourceCount::BlocksIn(hHeap);
    EXPECT_TRUE(LeavesNothingBehind(1667, openAndClose));
    EXPECT_EQ(ResourceCount::BlocksIn(hHeap), nBlocks);
    EXPECT_EQ(CountDialogs(), 0);
}
