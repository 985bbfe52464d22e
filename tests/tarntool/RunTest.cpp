// run
#include "tests/support/TempFolder.h"
#include "tests/support/WindowDriver.h"
#include "tests/tarntool/InstallerWindow.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace tool;
using window_driver::PumpUntil;
using window_driver::WaitFor;

namespace
{
class ToolRun : public testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_TRUE(
            WaitFor([] { return CountTools() == 0 && CountProcesses(L"tool-program.exe") == 0; }));
    }
};

// Ends a program that waits, once it does.
void LetGo()
{
    HANDLE hGo = nullptr;
    ASSERT_TRUE(PumpUntil([&] {
        return (hGo = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, L"Local\\tarn tool-program")) !=
               nullptr;
    }));
    ::SetEvent(hGo);
    ::CloseHandle(hGo);
}

std::wstring Behind(const std::wstring& arguments)
{
    return L" -- " + Quoted(Program()) + L" " + arguments;
}
} // namespace

TEST_F(ToolRun, GivesBackExitCodeAndOutput)
{
    for (const DWORD nExitCode : {0U, 1U, 7U, 100U, 259U, 0xC0000005U, 0xFFFFFFFFU})
    {
        const Result result =
            RunTool(L"run --title T --message M" + Behind(L"exit " + std::to_wstring(nExitCode)));
        EXPECT_EQ(result.nExitCode, nExitCode);
        EXPECT_EQ(result.out, "to the output\r\n");
        EXPECT_EQ(result.err, "to the error output\r\n");
    }
}

TEST_F(ToolRun, PassesTheArgumentsOnToTheLetter)
{
    const std::wstring arguments = L"line \"C:\\A B\\\" \"x\\\"y\"  %TEMP% -- --out z \u8868 ";
    const Result result = RunTool(L"run" + Behind(arguments));
    EXPECT_EQ(result.out, Utf8(Quoted(Program()) + L" " + arguments));
}

TEST_F(ToolRun, WritesTheOutputToAFile)
{
    const TempFolder folder;
    const Result result =
        RunTool(L"run --out " + Quoted(Wide(folder / "out.txt")) + Behind(L"exit 3"));
    EXPECT_EQ(result.nExitCode, 3U);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "to the error output\r\n");
    EXPECT_EQ(ReadBytes(folder / "out.txt"), "to the output\r\n");
}

TEST_F(ToolRun, WorksWithoutAnyStreams)
{
    Start start;
    start.bCaptured = false;
    start.nFlags = DETACHED_PROCESS;
    start.nShow = SW_HIDE;
    EXPECT_EQ(RunTool(L"run" + Behind(L"exit 5"), start).nExitCode, 5U);
}

TEST_F(ToolRun, ShowsTheWaitWindowOverTheInstallersWhichCannotBeClicked)
{
    const InstallerWindow installer;
    Process process(L"run --parent " + installer.Number() +
                    L" --title \"Setting up \u8868\" --message \"One moment\"" + Behind(L"wait"));
    HWND hWnd = nullptr;
    ASSERT_TRUE(PumpUntil([&] { return (hWnd = FindVisible(L"Setting up \u8868")) != nullptr; }));
    ASSERT_TRUE(PumpUntil([&] { return CountProcesses(L"tool-program.exe") == 1; }));
    EXPECT_FALSE(::IsWindowEnabled(installer.Handle()));
    RECT inner = {};
    RECT outer = {};
    ::GetWindowRect(hWnd, &inner);
    ::GetWindowRect(installer.Handle(), &outer);
    EXPECT_EQ(inner.left, (outer.left + outer.right) / 2 - (inner.right - inner.left) / 2);
    EXPECT_EQ(inner.top, (outer.top + outer.bottom) / 2 - (inner.bottom - inner.top) / 2);
    window_driver::SaveScreenshot("tarntool-run");

    // Neither key closes it, and the program goes on.
    window_driver::PostKey(hWnd, VK_RETURN);
    window_driver::PostKey(hWnd, VK_ESCAPE);
    DWORD_PTR nResult = 0;
    ::SendMessageTimeoutW(hWnd, WM_NULL, 0, 0, 0, 5000, &nResult);
    EXPECT_EQ(FindVisible(L"Setting up \u8868"), hWnd);

    LetGo();
    ASSERT_TRUE(PumpUntil([&] { return process.HasEnded(); }));
    EXPECT_EQ(process.Finish().nExitCode, 4U);
    EXPECT_TRUE(::IsWindowEnabled(installer.Handle()));
    EXPECT_TRUE(PumpUntil([&] { return ::GetForegroundWindow() == installer.Handle(); }));
}

TEST_F(ToolRun, IsSeenAlsoWhenTheInstallerStartsItHidden)
{
    Start start;
    start.nShow = SW_HIDE;
    Process process(L"run --title Hidden --patience 20" + Behind(L"wait"), start);
    EXPECT_NE(WaitForVisible(L"Hidden"), nullptr);
}

TEST_F(ToolRun, EndsTheProgramAndWhatItStartedWhenPatienceIsOver)
{
    Process process(L"run --title Slow --patience 3" + Behind(L"tree"));
    EXPECT_TRUE(WaitFor([] { return CountProcesses(L"tool-program.exe") == 3; }));
    const Result result = process.Finish();
    EXPECT_EQ(result.nExitCode, 103U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
    EXPECT_EQ(FindVisible(L"Slow"), nullptr);
    EXPECT_TRUE(WaitFor([] { return CountProcesses(L"tool-program.exe") == 0; }));
}

TEST_F(ToolRun, GoesOnWaitingWhenSomebodyClosesTheWindow)
{
    Process process(L"run --title Closed --patience 20" + Behind(L"wait"));
    HWND const hWnd = WaitForVisible(L"Closed");
    ASSERT_NE(hWnd, nullptr);
    ::PostMessageW(hWnd, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(WaitUntilGone(L"Closed"));
    EXPECT_FALSE(process.HasEnded());
    LetGo();
    EXPECT_EQ(process.Finish().nExitCode, 4U);
}

TEST_F(ToolRun, EndsTheTreeWhenItIsKilled)
{
    Process process(L"run --title Killed" + Behind(L"tree"));
    ASSERT_TRUE(WaitFor([] { return CountProcesses(L"tool-program.exe") == 3; }));
    process.Kill();
    EXPECT_TRUE(WaitFor([] { return CountProcesses(L"tool-program.exe") == 0; }));
    EXPECT_TRUE(WaitUntilGone(L"Killed"));
}

TEST_F(ToolRun, EnablesTheInstallersWindowAgainWhenItIsKilled)
{
    const InstallerWindow installer;
    Process process(L"run --title Killed --parent " + installer.Number() + Behind(L"wait"));
    ASSERT_TRUE(PumpUntil([&] { return FindVisible(L"Killed") != nullptr; }));
    EXPECT_FALSE(::IsWindowEnabled(installer.Handle()));
    process.Kill();
    EXPECT_TRUE(PumpUntil([&] { return ::IsWindowEnabled(installer.Handle()) != FALSE; }));
}

TEST_F(ToolRun, EndsWithTheInstaller)
{
    OtherInstaller installer;
    Process process(L"run --title Orphan --parent " + installer.Number() + Behind(L"tree"));
    ASSERT_TRUE(WaitFor([] { return CountProcesses(L"tool-program.exe") == 3; }));
    installer.Kill();
    EXPECT_TRUE(WaitFor([&] { return process.HasEnded(); }));
}

TEST_F(ToolRun, LeavesAloneWhatAProgramLeavesBehindAtItsEnd)
{
    Start start;
    start.bCaptured = false; // a pipe would be read until that has ended, too
    EXPECT_EQ(RunTool(L"run" + Behind(L"leave"), start).nExitCode, 6U);
    EXPECT_EQ(CountProcesses(L"tool-program.exe"), 1);
    LetGo();
}

TEST_F(ToolRun, DoesNotHangOnAnInstallerThatHandlesNoMessages)
{
    const InstallerWindow installer;
    EXPECT_EQ(RunTool(L"run --parent " + installer.Number() + Behind(L"exit 8")).nExitCode, 8U);
    EXPECT_TRUE(::IsWindowEnabled(installer.Handle()));
}

TEST_F(ToolRun, ShowsNothingForAProgramThatCannotBeStarted)
{
    const TempFolder folder;
    WriteBytes(folder / "text.exe", "no program");
    for (const std::wstring& program :
         {std::wstring(L"no-such-program"), std::wstring(L"\"C:\\no such\\program.exe\" x"),
          Quoted(Wide(folder / "text.exe")), Quoted(Wide(folder.Path()))})
    {
        Process process(L"run --title None -- " + program);
        bool bWindow = false;
        while (!process.HasEnded() && !bWindow)
            bWindow = FindVisible(L"None") != nullptr;
        EXPECT_FALSE(bWindow);
        const Result result = process.Finish();
        EXPECT_EQ(result.nExitCode, 104U) << Utf8(program);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
    }
}

TEST_F(ToolRun, FindsProgramsOfTheSystemAndBesideIt)
{
    const Result echo = RunTool(L"run -- cmd /c echo hello");
    EXPECT_EQ(echo.nExitCode, 0U) << echo.err;
    EXPECT_EQ(echo.out, "hello\r\n");

    const TempFolder folder;
    Start start;
    start.program = Wide(folder / "tarntool.exe");
    ASSERT_TRUE(::CopyFileW(Path().c_str(), start.program.c_str(), TRUE));
    ASSERT_TRUE(::CopyFileW(Program().c_str(), Wide(folder / "helper.exe").c_str(), TRUE));
    EXPECT_EQ(RunTool(L"run -- helper exit 9", start).nExitCode, 9U);
}

TEST_F(ToolRun, DoesNotTakeABareNameFromTheCurrentFolder)
{
    const TempFolder folder;
    ASSERT_TRUE(::CopyFileW(Program().c_str(), Wide(folder / "helper.exe").c_str(), TRUE));
    Start start;
    start.folder = Wide(folder.Path());
    EXPECT_EQ(RunTool(L"run -- helper exit 9", start).nExitCode, 104U);
    EXPECT_EQ(RunTool(L"run -- .\\helper exit 9", start).nExitCode, 9U);
}

TEST_F(ToolRun, DoesNotTakeTheFirstWordsOfAPathForAProgram)
{
    const TempFolder folder;
    ASSERT_TRUE(::CopyFileW(Program().c_str(), Wide(folder / "a.exe").c_str(), TRUE));
    folder.MakeFolder("a b");
    EXPECT_EQ(RunTool(L"run -- " + Quoted(Wide(folder / "a b\\c.exe")) + L" exit 9").nExitCode,
              104U);
}

TEST_F(ToolRun, RunsABatchFile)
{
    const TempFolder folder;
    WriteBytes(folder / "x y.bat", "@echo bat %~1\r\n@exit 7\r\n");
    const Result result = RunTool(L"run -- " + Quoted(Wide(folder / "x y.bat")) + L" \"one two\"");
    EXPECT_EQ(result.nExitCode, 7U) << result.err;
    EXPECT_EQ(result.out, "bat one two\r\n");
}

TEST_F(ToolRun, LeavesAWindowDisabledThatWasSo)
{
    const InstallerWindow installer;
    ::EnableWindow(installer.Handle(), FALSE);
    EXPECT_EQ(RunTool(L"run --parent " + installer.Number() + Behind(L"exit 8")).nExitCode, 8U);
    EXPECT_FALSE(::IsWindowEnabled(installer.Handle()));
}
