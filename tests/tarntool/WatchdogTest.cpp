// The watchdogs of wait and run in real time: a minute, both at once.
#include "tests/support/WindowDriver.h"
#include "tests/tarntool/InstallerWindow.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <string>

using namespace tool;
using window_driver::PumpUntil;

namespace
{
// Late is the machine's business, early would be ours.
constexpr ULONGLONG kMinute = 100 * 600 - 500;
constexpr DWORD kLimit = 300000;
} // namespace

TEST(ToolWatchdog, EndsTheWaitWindowAndTheProgramOfRunAfterAMinute)
{
    const InstallerWindow installer;
    const ULONGLONG nStart = ::GetTickCount64();
    const Result wait = RunTool(L"wait --title Minute --id minute --parent " + installer.Number());
    ASSERT_EQ(wait.nExitCode, 0U) << wait.err;
    ASSERT_NE(FindVisible(L"Minute"), nullptr);
    Process run(L"run --title Default --parent " + installer.Number() + L" -- " +
                Quoted(Program()) + L" tree");
    ASSERT_TRUE(PumpUntil([] { return CountProcesses(L"tool-program.exe") == 3; }));
    EXPECT_FALSE(::IsWindowEnabled(installer.Handle()));

    ULONGLONG nWaited = 0;
    ULONGLONG nRan = 0;
    EXPECT_TRUE(PumpUntil(
        [&] {
            const ULONGLONG nNow = ::GetTickCount64() - nStart;
            if (nWaited == 0 && FindVisible(L"Minute") == nullptr)
                nWaited = nNow;
            if (nRan == 0 && run.HasEnded())
                nRan = nNow;
            return nWaited != 0 && nRan != 0;
        },
        nullptr, kLimit));
    EXPECT_GE(nWaited, kMinute);
    EXPECT_GE(nRan, kMinute);

    const Result ran = run.Finish();
    EXPECT_EQ(ran.nExitCode, 103U);
    EXPECT_EQ(ran.err, "tarntool: the program was ended after 60 seconds.\r\n");
    EXPECT_EQ(FindVisible(L"Default"), nullptr);
    EXPECT_TRUE(PumpUntil([&] { return ::IsWindowEnabled(installer.Handle()) != FALSE; }));
    EXPECT_TRUE(PumpUntil([] {
        return CountProcesses(L"tool-program.exe") == 0 && CountTools() == 0 && CountCopies() == 0;
    }));
    EXPECT_EQ(RunTool(L"done --id minute").nExitCode, 105U);
}
