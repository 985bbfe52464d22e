// What thousands of wait windows leave behind: nothing.
#include "tests/support/LoadedTarn.h"
#include "tests/support/ResourceCount.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

using namespace window_driver;

TEST(WaitWindows, FiveThousandLeaveNothingBehind)
{
    LoadedTarn tarn;
    const HostWindow host(100, 100, 700, 500);
    const auto openAndClose = [&](int nRounds) {
        for (int i = 0; i < nRounds; ++i)
        {
            tarn.DoWaitDlgModless(host.Handle(), "one of many", "Please wait.");
            tarn.CloseWaitDlg();
            PumpUntil([] { return true; });
        }
    };
    openAndClose(50); // caches of the system fill up
    const ResourceCount before = ResourceCount::Now();
    openAndClose(5000);
    const ResourceCount after = ResourceCount::Now();
    EXPECT_EQ(after.nHandles, before.nHandles);
    EXPECT_EQ(after.nGdiObjects, before.nGdiObjects);
    EXPECT_EQ(after.nUserObjects, before.nUserObjects);
    EXPECT_EQ(after.nThreads, before.nThreads);
    EXPECT_EQ(after.nHeapBlocks, before.nHeapBlocks);
    EXPECT_EQ(CountDialogs(), 0);
}
