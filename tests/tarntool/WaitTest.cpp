// wait and done.
#include "tests/support/Processes.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WindowDriver.h"
#include "tests/tarntool/InstallerWindow.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace tool;
using window_driver::PumpUntil;
using window_driver::WaitFor;

namespace
{
constexpr int kMessageControl = 14000;

// Nothing of this test's is left, also not of one that failed.
class ToolWait : public testing::Test
{
protected:
    void SetUp() override { EXPECT_TRUE(NothingIsLeft()); }
    void TearDown() override { EXPECT_TRUE(NothingIsLeft()); }

    static bool NothingIsLeft()
    {
        return WaitFor([] { return CountTools() == 0 && CountCopies() == 0; });
    }
};

std::wstring MessageOf(HWND hWnd)
{
    wchar_t szText[512] = L"";
    ::SendMessageW(::GetDlgItem(hWnd, kMessageControl), WM_GETTEXT, 512,
                   reinterpret_cast<LPARAM>(szText));
    return szText;
}

RECT RectOf(HWND hWnd)
{
    RECT rc = {};
    ::GetWindowRect(hWnd, &rc);
    return rc;
}

// With the halves cut off toward zero, as the library does.
bool IsCentred(HWND hWnd, HWND hWndOver)
{
    const RECT inner = RectOf(hWnd);
    const RECT outer = RectOf(hWndOver);
    return inner.left == (outer.left + outer.right) / 2 - (inner.right - inner.left) / 2 &&
           inner.top == (outer.top + outer.bottom) / 2 - (inner.bottom - inner.top) / 2;
}

bool IsAbove(HWND hWnd, HWND hWndBelow)
{
    for (HWND h = ::GetTopWindow(nullptr); h != nullptr; h = ::GetWindow(h, GW_HWNDNEXT))
    {
        if (h == hWnd || h == hWndBelow)
            return h == hWnd;
    }
    return false;
}

// Colours inside a window, as they are on the screen. One look at it: each takes long.
std::size_t ColoursOf(HWND hWnd)
{
    const RECT rc = RectOf(hWnd);
    const int nWidth = rc.right - rc.left;
    const int nHeight = rc.bottom - rc.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = nWidth;
    info.bmiHeader.biHeight = nHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pPixels = nullptr;
    HDC const hScreen = ::GetDC(nullptr);
    HDC const hMemory = ::CreateCompatibleDC(hScreen);
    HBITMAP const hBitmap =
        ::CreateDIBSection(hScreen, &info, DIB_RGB_COLORS, &pPixels, nullptr, 0);
    HGDIOBJ const hOld = ::SelectObject(hMemory, hBitmap);
    std::set<COLORREF> colours;
    if (::BitBlt(hMemory, 0, 0, nWidth, nHeight, hScreen, rc.left, rc.top, SRCCOPY))
    {
        ::GdiFlush();
        const auto* const pColours = static_cast<const COLORREF*>(pPixels);
        colours.insert(pColours, pColours + nWidth * nHeight);
    }
    ::SelectObject(hMemory, hOld);
    ::DeleteObject(hBitmap);
    ::DeleteDC(hMemory);
    ::ReleaseDC(nullptr, hScreen);
    return colours.size();
}

DWORD ProcessOf(HWND hWnd)
{
    DWORD nID = 0;
    ::GetWindowThreadProcessId(hWnd, &nID);
    return nID;
}
} // namespace

TEST_F(ToolWait, ReturnsWithTheWindowPaintedOverTheInstallers)
{
    const InstallerWindow installer;
    const Result wait =
        RunTool(L"wait --parent " + installer.Number() +
                L" --title \"Please wait \u03b1\" --message \"Copying \u8868\u793a\""
                L" --id one");
    EXPECT_EQ(wait.nExitCode, 0U) << wait.err;
    EXPECT_EQ(wait.out + wait.err, "");
    HWND const hWnd = FindVisible(L"Please wait \u03b1");
    ASSERT_NE(hWnd, nullptr);
    // Paint of a caption, a frame, a background, and of letters in more than one shade.
    EXPECT_GE(ColoursOf(hWnd), 5U);
    EXPECT_EQ(MessageOf(hWnd), L"Copying \u8868\u793a");
    EXPECT_TRUE(IsCentred(hWnd, installer.Handle()));
    EXPECT_TRUE(IsAbove(hWnd, installer.Handle()));
    EXPECT_NE(ProcessOf(hWnd), ::GetCurrentProcessId());
    window_driver::SaveScreenshot("tarntool-wait");

    const Result done = RunTool(L"done --id one");
    EXPECT_EQ(done.nExitCode, 0U) << done.err;
    EXPECT_EQ(done.out + done.err, "");
    EXPECT_EQ(FindVisible(L"Please wait \u03b1"), nullptr);
}

TEST_F(ToolWait, HasLetGoOfEverythingWhenDoneReturns)
{
    RunTool(L"wait --title T --id one");
    EXPECT_EQ(CountTools(), 1);
    EXPECT_EQ(CountCopies(), 1);
    RunTool(L"done --id one");
    EXPECT_EQ(CountTools(), 0);
    EXPECT_EQ(CountCopies(), 0);
}

TEST_F(ToolWait, StaysPaintedAndResponsiveWhileTheInstallerIsBusy)
{
    const InstallerWindow installer;
    // From here on this thread, which has the installer's window, handles no message.
    EXPECT_EQ(RunTool(L"wait --parent " + installer.Number() + L" --title Busy --id one").nExitCode,
              0U);
    HWND const hWnd = FindVisible(L"Busy");
    ASSERT_NE(hWnd, nullptr);
    const std::size_t nColours = ColoursOf(hWnd);
    for (int i = 0; i < 5; ++i)
    {
        DWORD_PTR nResult = 0;
        EXPECT_NE(::SendMessageTimeoutW(hWnd, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 5000, &nResult), 0);
        // Somebody has painted over it, and it is asked to paint itself again.
        ::RedrawWindow(hWnd, nullptr, nullptr,
                       RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
        EXPECT_TRUE(WaitFor([&] { return ColoursOf(hWnd) == nColours; }));
    }
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
}

TEST_F(ToolWait, TakesTheFocusFromNobody)
{
    InstallerWindow installer;
    ASSERT_TRUE(PumpUntil([&] { return ::GetForegroundWindow() == installer.Handle(); }));
    installer.ForgetMessages();
    RunTool(L"wait --parent " + installer.Number() + L" --title Quiet --id one");
    HWND const hWnd = FindVisible(L"Quiet");
    ASSERT_NE(hWnd, nullptr);
    EXPECT_EQ(::GetForegroundWindow(), installer.Handle());
    // A click on it does not, either.
    EXPECT_EQ(::SendMessageW(hWnd, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(hWnd),
                             MAKELPARAM(HTCAPTION, WM_LBUTTONDOWN)),
              MA_NOACTIVATE);
    RunTool(L"done --id one");
    PumpUntil([] { return true; });
    EXPECT_EQ(::GetForegroundWindow(), installer.Handle());
    EXPECT_EQ(::GetFocus(), installer.Handle());
    EXPECT_EQ(installer.CountActivations(), 0);
}

TEST_F(ToolWait, IsNoWindowOfTheTaskBar)
{
    RunTool(L"wait --title Quiet --id one");
    HWND const hWnd = FindVisible(L"Quiet");
    EXPECT_NE(::GetWindowLongPtrW(hWnd, GWL_EXSTYLE) & WS_EX_NOACTIVATE, 0);
    EXPECT_EQ(::GetWindowLongPtrW(hWnd, GWL_EXSTYLE) & WS_EX_APPWINDOW, 0);
    RunTool(L"done --id one");
}

TEST_F(ToolWait, GoesWhereTheInstallersWindowGoes)
{
    const InstallerWindow installer;
    RunTool(L"wait --parent " + installer.Number() + L" --title Follows --id one");
    HWND const hWnd = FindVisible(L"Follows");
    ASSERT_NE(hWnd, nullptr);
    ::SetWindowPos(installer.Handle(), nullptr, 301, 203, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    EXPECT_TRUE(PumpUntil([&] { return IsCentred(hWnd, installer.Handle()); }));

    ::ShowWindow(installer.Handle(), SW_MINIMIZE);
    EXPECT_TRUE(PumpUntil([&] { return !::IsWindowVisible(hWnd); }));
    ::ShowWindow(installer.Handle(), SW_RESTORE);
    EXPECT_TRUE(PumpUntil([&] { return ::IsWindowVisible(hWnd) != FALSE; }));
    EXPECT_TRUE(PumpUntil([&] { return IsCentred(hWnd, installer.Handle()); }));

    RunTool(L"done --id one");
}

TEST_F(ToolWait, StaysOverAWindowThatIsTopmostItself)
{
    const InstallerWindow installer;
    RunTool(L"wait --parent " + installer.Number() + L" --title Above --id one");
    HWND const hWnd = FindVisible(L"Above");
    ASSERT_NE(hWnd, nullptr);
    for (int i = 0; i < 3; ++i)
    {
        ::SetWindowPos(installer.Handle(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
        EXPECT_TRUE(PumpUntil([&] { return IsAbove(hWnd, installer.Handle()); }));
    }
    RunTool(L"done --id one");
}

TEST_F(ToolWait, StandsInTheMiddleOfTheScreenWithoutAnInstallersWindow)
{
    RECT screen = {};
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
    for (const wchar_t* const pszParent : {L"", L" --parent 0", L" --parent 0x0"})
    {
        EXPECT_EQ(RunTool(L"wait --title Alone --id one" + std::wstring(pszParent)).nExitCode, 0U);
        HWND const hWnd = FindVisible(L"Alone");
        ASSERT_NE(hWnd, nullptr);
        const RECT rc = RectOf(hWnd);
        EXPECT_EQ(rc.left, screen.right / 2 - (rc.right - rc.left) / 2);
        EXPECT_EQ(rc.top, screen.bottom / 2 - (rc.bottom - rc.top) / 2);
        RunTool(L"done --id one");
    }
}

TEST_F(ToolWait, KnowsTheNumberOfAWindowInEveryForm)
{
    const InstallerWindow installer;
    const auto n = static_cast<DWORD>(reinterpret_cast<UINT_PTR>(installer.Handle()));
    wchar_t szHexadecimal[20];
    ::wsprintfW(szHexadecimal, L"0x%X", n);
    // Less 2 to the power of 32: as a script with signed numbers of 32 bits writes a large one.
    const std::wstring forms[] = {std::to_wstring(n), szHexadecimal,
                                  std::to_wstring(static_cast<LONGLONG>(n) - (1LL << 32))};
    for (const std::wstring& form : forms)
    {
        const Result wait = RunTool(L"wait --title Number --id one --parent " + form);
        // The last is another window, if one at all.
        if (form[0] == L'-')
        {
            EXPECT_EQ(wait.nExitCode, 100U);
            continue;
        }
        EXPECT_EQ(wait.nExitCode, 0U) << wait.err;
        EXPECT_TRUE(IsCentred(FindVisible(L"Number"), installer.Handle()));
        RunTool(L"done --id one");
    }
}

TEST_F(ToolWait, LetsGoOfTheOutputWhenItReturns)
{
    Process wait(L"wait --title Piped --id one");
    wait.Finish(); // reads to the end, which comes when the last process has closed the pipe
    EXPECT_NE(FindVisible(L"Piped"), nullptr);
    RunTool(L"done --id one");
}

TEST_F(ToolWait, KeepsNoFolderOfTheInstallersFromBeingDeleted)
{
    const TempFolder folder;
    folder.MakeFolder("nsx1.tmp");
    Start start;
    start.program = Wide(folder / "nsx1.tmp\\tarntool.exe");
    start.folder = Wide(folder / "nsx1.tmp");
    ASSERT_TRUE(::CopyFileW(Path().c_str(), start.program.c_str(), TRUE));
    ASSERT_EQ(RunTool(L"wait --title Held --id one", start).nExitCode, 0U);

    EXPECT_TRUE(::DeleteFileW(start.program.c_str())) << ::GetLastError();
    EXPECT_TRUE(::RemoveDirectoryW(start.folder.c_str())) << ::GetLastError();
    EXPECT_NE(FindVisible(L"Held"), nullptr);
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
}

TEST_F(ToolWait, LetsTheInstallersFolderBeDeletedRightAfterDone)
{
    for (int i = 0; i < 5; ++i)
    {
        const TempFolder folder;
        folder.MakeFolder("is-ABC.tmp");
        Start start;
        start.program = Wide(folder / "is-ABC.tmp\\tarntool.exe");
        start.folder = Wide(folder / "is-ABC.tmp");
        ASSERT_TRUE(::CopyFileW(Path().c_str(), start.program.c_str(), TRUE));
        ASSERT_EQ(RunTool(L"wait --title Held --id one", start).nExitCode, 0U);
        ASSERT_EQ(RunTool(L"done --id one", start).nExitCode, 0U);
        EXPECT_TRUE(::DeleteFileW(start.program.c_str())) << ::GetLastError();
        EXPECT_TRUE(::RemoveDirectoryW(start.folder.c_str())) << ::GetLastError();
    }
}

TEST_F(ToolWait, EndsWithTheProcessOfTheInstallersWindow)
{
    OtherInstaller installer;
    ASSERT_EQ(RunTool(L"wait --title Orphan --id one --parent " + installer.Number()).nExitCode,
              0U);
    ASSERT_NE(FindVisible(L"Orphan"), nullptr);
    installer.Kill();
    EXPECT_TRUE(WaitUntilGone(L"Orphan"));
}

TEST_F(ToolWait, SaysWhenThereIsNothingToEnd)
{
    const Result never = RunTool(L"done --id never");
    EXPECT_EQ(never.nExitCode, 105U);
    EXPECT_TRUE(IsOneSentence(never.err)) << never.err;
    RunTool(L"wait --title T --id one");
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 105U);
}

TEST_F(ToolWait, ShowsOneWindowForOneIdentifier)
{
    RunTool(L"wait --title First --id one");
    const Result second = RunTool(L"wait --title Second --id one");
    EXPECT_EQ(second.nExitCode, 106U);
    EXPECT_TRUE(IsOneSentence(second.err)) << second.err;
    EXPECT_EQ(FindVisible(L"Second"), nullptr);
    EXPECT_NE(FindVisible(L"First"), nullptr);
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
}

TEST_F(ToolWait, IsGoneWhenItsProcessIsKilled)
{
    RunTool(L"wait --title Killed --id one");
    HWND const hWnd = FindVisible(L"Killed");
    ASSERT_NE(hWnd, nullptr);
    ASSERT_TRUE(EndProcess(ProcessOf(hWnd)));
    EXPECT_TRUE(WaitUntilGone(L"Killed"));
    EXPECT_TRUE(WaitFor([] { return CountCopies() == 0; }));
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 105U);
    EXPECT_EQ(RunTool(L"wait --title Again --id one").nExitCode, 0U);
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
}

TEST_F(ToolWait, LeavesNothingWhenItIsKilledInTheMiddle)
{
    int nHalfMade = 0;
    for (DWORD nMilliseconds = 0; nMilliseconds < 400; nMilliseconds += 20)
    {
        Process wait(L"wait --title Middle --id one");
        ::Sleep(nMilliseconds);
        const bool bShown = wait.HasEnded();
        wait.Kill();
        if (bShown)
        {
            EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U) << nMilliseconds;
            continue;
        }
        // It may have come as far as to show the window, in the moment before it was killed. And between
        // the call that makes the copy's file and the one that will have it deleted, a kill leaves it,
        // empty, to the next that comes when it is old enough.
        const bool bGone = WaitFor([] {
            RunTool(L"done --id one");
            if (CountTools() > 0)
                return false;
            DeleteEmptyCopies();
            return CountCopies() == 0;
        });
        const int nGivenUp = bGone ? 0 : GiveUpCopiesOfHalfMadeTools();
        EXPECT_TRUE(bGone || nGivenUp == 1) << nMilliseconds;
        nHalfMade += nGivenUp;
    }
    // Seldom: one of some thousands.
    EXPECT_LE(nHalfMade, 1);
}

TEST_F(ToolWait, HasOneWinnerAmongManyOfOneIdentifier)
{
    std::vector<std::unique_ptr<Process>> processes;
    for (int i = 0; i < 12; ++i)
        processes.push_back(std::make_unique<Process>(L"wait --title Contest --id one"));
    int nShown = 0;
    int nRefused = 0;
    for (const std::unique_ptr<Process>& process : processes)
    {
        const DWORD nExitCode = process->Finish().nExitCode;
        nShown += nExitCode == 0 ? 1 : 0;
        nRefused += nExitCode == 106 ? 1 : 0;
    }
    EXPECT_EQ(nShown, 1);
    EXPECT_EQ(nRefused, 11);
    EXPECT_EQ(RunTool(L"done --id one").nExitCode, 0U);
}

TEST_F(ToolWait, ShowsAHundredWindowsAtOnce)
{
    const ULONGLONG nStart = ::GetTickCount64();
    std::vector<std::unique_ptr<Process>> processes;
    for (int i = 0; i < 100; ++i)
        processes.push_back(
            std::make_unique<Process>(L"wait --title Many --id " + std::to_wstring(i)));
    for (const std::unique_ptr<Process>& process : processes)
    {
        const Result result = process->Finish();
        EXPECT_EQ(result.nExitCode, 0U) << result.err;
    }
    EXPECT_TRUE(WaitFor([] { return CountTools() <= 100; }));
    processes.clear();
    for (int i = 0; i < 100; ++i)
        processes.push_back(std::make_unique<Process>(L"done --id " + std::to_wstring(i)));
    for (const std::unique_ptr<Process>& process : processes)
    {
        // On a machine that is busy otherwise, the first have been there for their minute by now.
        const DWORD nExitCode = process->Finish().nExitCode;
        EXPECT_TRUE(nExitCode == 0 || (nExitCode == 105 && ::GetTickCount64() - nStart > 55000))
            << nExitCode;
    }
    EXPECT_EQ(FindVisible(L"Many"), nullptr);
}

TEST_F(ToolWait, WorksWithoutAnyStreams)
{
    Start start;
    start.bCaptured = false;
    start.nFlags = DETACHED_PROCESS;
    start.nShow = SW_HIDE;
    EXPECT_EQ(RunTool(L"wait --title Detached --id one", start).nExitCode, 0U);
    EXPECT_NE(FindVisible(L"Detached"), nullptr);
    EXPECT_EQ(RunTool(L"done --id one", start).nExitCode, 0U);
}

TEST_F(ToolWait, IsNotClosedByItsUser)
{
    RunTool(L"wait --title Stays --id one");
    HWND const hWnd = FindVisible(L"Stays");
    ASSERT_NE(hWnd, nullptr);
    ::SendMessageW(hWnd, WM_CLOSE, 0, 0);
    ::SendMessageW(hWnd, WM_SYSCOMMAND, SC_CLOSE, 0);
    ::SendMessageW(hWnd, WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(FindVisible(L"Stays"), hWnd);
    RunTool(L"done --id one");
}

TEST_F(ToolWait, DeletesCopiesThatSomethingKeptFromBeingDeleted)
{
    wchar_t szFolder[MAX_PATH] = L"";
    ::GetTempPathW(MAX_PATH, szFolder);
    const std::wstring old =
        std::wstring(szFolder) + L"tarntool-0123456789abcdef0123456789abcdef.exe";
    const std::wstring young =
        std::wstring(szFolder) + L"tarntool-1123456789abcdef0123456789abcdef.exe";
    const std::wstring other = std::wstring(szFolder) + L"tarntool-mine.exe";
    for (const std::wstring& path : {old, young, other})
    {
        HANDLE const hFile =
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        const FILETIME longAgo = {0, 0x01D00000};
        if (path != young)
            ::SetFileTime(hFile, &longAgo, &longAgo, &longAgo);
        ::CloseHandle(hFile);
    }
    RunTool(L"wait --title T --id one");
    RunTool(L"done --id one");
    EXPECT_EQ(::GetFileAttributesW(old.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(::DeleteFileW(young.c_str()));
    EXPECT_TRUE(::DeleteFileW(other.c_str()));
}

TEST_F(ToolWait, SaysWhenThereIsNoFolderForTemporaryFiles)
{
    wchar_t szTmp[MAX_PATH] = L"";
    ::GetEnvironmentVariableW(L"TMP", szTmp, MAX_PATH);
    ::SetEnvironmentVariableW(L"TMP", L"C:\\no such folder");
    const Result wait = RunTool(L"wait --title T --id one");
    ::SetEnvironmentVariableW(L"TMP", szTmp);
    EXPECT_EQ(wait.nExitCode, 107U);
    EXPECT_TRUE(IsOneSentence(wait.err)) << wait.err;
}
