// DoWaitDlgModless and CloseWaitDlg of the built DLL, on real windows.
#include "tests/support/CleanFault.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/ThreadWithADialog.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace window_driver;

namespace
{
constexpr int kMessageControl = 14000;

class WaitWindow : public ::testing::Test
{
protected:
    ~WaitWindow() override { tarn.CloseWaitDlg(); }

    HWND Open(HWND hParent = nullptr, const char* pszMessage = "Please wait.")
    {
        EXPECT_EQ(tarn.DoWaitDlgModless(hParent, kCaption, pszMessage), 0);
        HWND const hWnd = FindTopLevel(kCaption);
        EXPECT_NE(hWnd, nullptr);
        return hWnd;
    }

    static constexpr const char* kCaption = "Tarn wait window under test";
    void ExpectToWork()
    {
        HWND const hWnd = Open();
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        EXPECT_EQ(tarn.CloseWaitDlg(), 0);
        EXPECT_FALSE(::IsWindow(hWnd));
    }
    LoadedTarn tarn;
};

RECT RectOf(HWND hWnd)
{
    RECT rc = {};
    ::GetWindowRect(hWnd, &rc);
    return rc;
}

struct Placed
{
    HWND hWnd, hWndAfter;
    int x, y, cx, cy;
    UINT nFlags;
};
std::vector<Placed> g_placed;

BOOL WINAPI NotePlace(HWND hWnd, HWND hWndAfter, int x, int y, int cx, int cy, UINT nFlags)
{
    g_placed.push_back({hWnd, hWndAfter, x, y, cx, cy, nFlags});
    return ::SetWindowPos(hWnd, hWndAfter, x, y, cx, cy, nFlags);
}
} // namespace

TEST_F(WaitWindow, IsACaptionedTopmostPopupWithoutACloseBox)
{
    HWND const hWnd = Open();
    const auto nStyle = static_cast<DWORD>(::GetWindowLongA(hWnd, GWL_STYLE));
    const auto nExStyle = static_cast<DWORD>(::GetWindowLongA(hWnd, GWL_EXSTYLE));
    EXPECT_EQ(nStyle & (WS_POPUP | WS_CHILD), WS_POPUP);
    EXPECT_EQ(nStyle & WS_CAPTION, static_cast<DWORD>(WS_CAPTION));
    EXPECT_EQ(nStyle & (WS_SYSMENU | WS_MINIMIZEBOX | WS_MAXIMIZEBOX | WS_THICKFRAME), 0U);
    EXPECT_NE(nStyle & DS_MODALFRAME, 0U);
    EXPECT_NE(nExStyle & WS_EX_TOPMOST, 0U);
    EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), nullptr);
}

TEST_F(WaitWindow, ShowsTheTitleAndTheMessage)
{
    HWND const hWnd = Open(nullptr, "Copying files, please wait.");
    EXPECT_EQ(TextOf(hWnd), kCaption);
    EXPECT_EQ(TextOf(::GetDlgItem(hWnd, kMessageControl)), "Copying files, please wait.");
}

TEST_F(WaitWindow, KeepsCopiesOfItsTextsOnly)
{
    std::string title(kCaption);
    std::string message("The caller's text.");
    tarn.DoWaitDlgModless(nullptr, title.c_str(), message.c_str());
    title.assign(title.size(), 'x');
    message.assign(message.size(), 'x');
    HWND const hWnd = FindTopLevel(kCaption);
    ASSERT_NE(hWnd, nullptr);
    EXPECT_EQ(TextOf(::GetDlgItem(hWnd, kMessageControl)), "The caller's text.");
}

TEST_F(WaitWindow, LeavesTheTemplatesEmptyTextsForNullAndEmptyTexts)
{
    for (const char* const pszText : {static_cast<const char*>(nullptr), ""})
    {
        const int nDialogs = CountDialogs();
        EXPECT_EQ(tarn.DoWaitDlgModless(nullptr, pszText, pszText), 0);
        EXPECT_EQ(CountDialogs(), nDialogs + 1);
        HWND const hWnd = FindVisibleDialog();
        ASSERT_NE(::GetDlgItem(hWnd, kMessageControl), nullptr);
        EXPECT_EQ(TextOf(hWnd), "");
        EXPECT_EQ(TextOf(::GetDlgItem(hWnd, kMessageControl)), "");
        tarn.CloseWaitDlg();
        EXPECT_EQ(CountDialogs(), nDialogs);
    }
}

TEST_F(WaitWindow, HasTheClientSizeAndTheTextAreaOfItsTemplate)
{
    HWND const hWnd = Open();
    RECT rcUnits = {0, 0, 229, 45};
    ASSERT_TRUE(::MapDialogRect(hWnd, &rcUnits));
    RECT rcClient = {};
    ::GetClientRect(hWnd, &rcClient);
    EXPECT_EQ(rcClient.right, rcUnits.right);
    EXPECT_EQ(rcClient.bottom, rcUnits.bottom);

    RECT rcTextUnits = {13, 9, 13 + 197, 9 + 22};
    ASSERT_TRUE(::MapDialogRect(hWnd, &rcTextUnits));
    RECT rcText = RectOf(::GetDlgItem(hWnd, kMessageControl));
    ::MapWindowPoints(nullptr, hWnd, reinterpret_cast<POINT*>(&rcText), 2);
    EXPECT_EQ(rcText.left, rcTextUnits.left);
    EXPECT_EQ(rcText.top, rcTextUnits.top);
    // The system converts sizes by themselves, so that the far edge may be a rounding away.
    RECT rcSizeUnits = {0, 0, 197, 22};
    ASSERT_TRUE(::MapDialogRect(hWnd, &rcSizeUnits));
    EXPECT_EQ(rcText.right - rcText.left, rcSizeUnits.right);
    EXPECT_EQ(rcText.bottom - rcText.top, rcSizeUnits.bottom);
}

TEST_F(WaitWindow, HasOneControlWhichIsAStaticText)
{
    HWND const hWnd = Open();
    HWND const hText = ::GetWindow(hWnd, GW_CHILD);
    ASSERT_NE(hText, nullptr);
    EXPECT_EQ(::GetWindow(hText, GW_HWNDNEXT), nullptr);
    EXPECT_EQ(::GetDlgCtrlID(hText), kMessageControl);
    EXPECT_EQ(static_cast<DWORD>(::GetWindowLongA(hText, GWL_STYLE)), 0x50020000U);
    char szClass[32] = "";
    ::GetClassNameA(hText, szClass, sizeof(szClass));
    EXPECT_STRCASEEQ(szClass, "Static");
}

TEST_F(WaitWindow, IsVisibleAndPaintedWhenTheCallReturns)
{
    HWND const hWnd = Open();
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_FALSE(::GetUpdateRect(hWnd, nullptr, FALSE));
    EXPECT_FALSE(::GetUpdateRect(::GetDlgItem(hWnd, kMessageControl), nullptr, FALSE));
}

// Nobody sees the size that goes with SWP_NOSIZE, but whoever watches the calls.
TEST_F(WaitWindow, IsPlacedByOneCallThatMovesItAndShowsIt)
{
    const HostWindow host(100, 100, 500, 400);
    const ImportPatch patch(tarn.Module(), "SetWindowPos", reinterpret_cast<void*>(&NotePlace));
    ASSERT_TRUE(patch.IsActive());
    g_placed.clear();
    HWND const hWnd = Open(host.Handle());
    ASSERT_EQ(g_placed.size(), 2U) << "the first one while it is made";
    const Placed& placed = g_placed[1];
    EXPECT_EQ(placed.hWnd, hWnd);
    EXPECT_EQ(placed.hWndAfter, HWND_TOPMOST);
    EXPECT_EQ(placed.x, RectOf(hWnd).left);
    EXPECT_EQ(placed.y, RectOf(hWnd).top);
    EXPECT_EQ(placed.cx, 0);
    EXPECT_EQ(placed.cy, 0);
    EXPECT_EQ(placed.nFlags, static_cast<UINT>(SWP_NOSIZE | SWP_SHOWWINDOW));
}

HWND g_hParent = nullptr;

// As if the system had not made the window in the screen's corner.
BOOL WINAPI FindElsewhere(HWND hWnd, RECT* pRect)
{
    const BOOL bFound = ::GetWindowRect(hWnd, pRect);
    if (hWnd != g_hParent)
        ::OffsetRect(pRect, 70, 30);
    return bFound;
}

TEST_F(WaitWindow, IsCentredWhereverItWasMade)
{
    const HostWindow host(100, 100, 500, 400);
    g_hParent = host.Handle();
    const ImportPatch patch(tarn.Module(), "GetWindowRect",
                            reinterpret_cast<void*>(&FindElsewhere));
    ASSERT_TRUE(patch.IsActive());
    const RECT rc = RectOf(Open(host.Handle()));
    EXPECT_EQ(rc.left, 300 - (rc.right - rc.left) / 2);
    EXPECT_EQ(rc.top, 250 - (rc.bottom - rc.top) / 2);
}

struct ParentCase
{
    const char* pszSentence;
    RECT rc;
};

class WaitWindowCentring : public WaitWindow, public ::testing::WithParamInterface<ParentCase>
{
};

TEST_P(WaitWindowCentring, IsOverTheParentWithEveryHalfTruncatedTowardZero)
{
    const RECT& rc = GetParam().rc;
    const HostWindow host(rc.left, rc.top, rc.right, rc.bottom);
    const RECT rcHost = RectOf(host.Handle());
    ASSERT_EQ(rcHost.left, rc.left) << GetParam().pszSentence;
    ASSERT_EQ(rcHost.bottom, rc.bottom) << GetParam().pszSentence;
    const RECT rcWait = RectOf(Open(host.Handle()));
    const int nWidth = rcWait.right - rcWait.left;
    const int nHeight = rcWait.bottom - rcWait.top;
    EXPECT_EQ(rcWait.left, (rc.left + rc.right) / 2 - nWidth / 2) << GetParam().pszSentence;
    EXPECT_EQ(rcWait.top, (rc.top + rc.bottom) / 2 - nHeight / 2) << GetParam().pszSentence;
}

INSTANTIATE_TEST_SUITE_P(
    Parents, WaitWindowCentring,
    ::testing::Values(ParentCase{"in the middle of the screen", {200, 150, 800, 550}},
                      ParentCase{"odd edges", {101, 33, 504, 334}},
                      ParentCase{"the sum of the edges is odd and negative", {-101, -301, 0, 0}},
                      ParentCase{"-3 halves to -1", {-2003, -1003, 2000, 1000}},
                      ParentCase{"wholly left of and above the screen", {-900, -700, -201, -102}},
                      ParentCase{"smaller than the wait window", {300, 300, 310, 309}},
                      ParentCase{"one edge negative", {-7, 10, 4, 25}}));

TEST_F(WaitWindow, StaysWhereItWasMadeWhenTheParentCannotBeRead)
{
    HWND hDead = nullptr;
    {
        const HostWindow host(0, 0, 100, 100);
        hDead = host.Handle();
    }
    const RECT rcWithoutParent = RectOf(Open(nullptr));
    tarn.CloseWaitDlg();
    for (HWND const hParent : {hDead, reinterpret_cast<HWND>(static_cast<INT_PTR>(0x7ABCDE0))})
    {
        HWND const hWnd = Open(hParent);
        const RECT rc = RectOf(hWnd);
        EXPECT_EQ(rc.left, rcWithoutParent.left);
        EXPECT_EQ(rc.top, rcWithoutParent.top);
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        EXPECT_FALSE(::GetUpdateRect(hWnd, nullptr, FALSE));
        tarn.CloseWaitDlg();
    }
}

TEST_F(WaitWindow, IgnoresEscapeAltF4AndEveryCloseCommand)
{
    HWND const hWnd = Open();
    PostKey(hWnd, VK_ESCAPE);
    ::PostMessageA(hWnd, WM_SYSKEYDOWN, VK_F4, (1 << 29) | 1);
    ::PostMessageA(hWnd, WM_CLOSE, 0, 0);
    ::PostMessageA(hWnd, WM_SYSCOMMAND, SC_CLOSE, 0);
    ::PostMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
    ::PostMessageA(hWnd, WM_APP, 0, 0); // the last one, to know that all have been served
    bool bServed = false;
    MSG msg;
    while (!bServed && ::GetMessageA(&msg, nullptr, 0, 0) > 0)
    {
        bServed = msg.message == WM_APP;
        if (!::IsDialogMessageA(hWnd, &msg))
            ::DispatchMessageA(&msg);
    }
    // Closing is passed on by posted commands; serve those too.
    ::PostMessageA(hWnd, WM_APP, 0, 0);
    PumpUntil([] { return true; }, hWnd);
    EXPECT_TRUE(::IsWindow(hWnd));
    EXPECT_TRUE(::IsWindowVisible(hWnd));
}

TEST_F(WaitWindow, HidesOnEnterAndLivesOnUntilItIsClosed)
{
    HWND const hWnd = Open();
    PostKey(hWnd, VK_RETURN);
    EXPECT_TRUE(PumpUntil([hWnd] { return !::IsWindowVisible(hWnd); }, hWnd));
    EXPECT_TRUE(::IsWindow(hWnd));
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
}

TEST_F(WaitWindow, StaysFor99TicksAndHidesAtThe100th)
{
    HWND const hWnd = Open();
    Tick(hWnd, kWatchdogTicks - 1);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd, 1);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(::IsWindow(hWnd)) << "hidden, and alive until it is closed";
    EXPECT_FALSE(::KillTimer(hWnd, 333)) << "the timer has been killed";
    Tick(hWnd, 3);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
}

TEST_F(WaitWindow, CountsTheTicksOfEveryTimer)
{
    HWND const hWnd = Open();
    for (UINT_PTR nTimerID = 1; nTimerID < kWatchdogTicks; ++nTimerID)
        Tick(hWnd, 1, nTimerID);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd, 1, 77777);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
}

TEST_F(WaitWindow, TicksEvery600MillisecondsWithTimer333)
{
    const DWORD nStart = ::GetTickCount();
    HWND const hWnd = Open();
    int nTicks = 0;
    MSG msg;
    while (nTicks < 3 && ::GetMessageA(&msg, nullptr, 0, 0) > 0)
    {
        if (msg.hwnd == hWnd && msg.message == WM_TIMER)
        {
            EXPECT_EQ(msg.wParam, 333U);
            EXPECT_EQ(msg.lParam, 0) << "no callback";
            ++nTicks;
        }
        ::DispatchMessageA(&msg);
    }
    // Late ticks are the machine's business, early ones would be ours.
    EXPECT_GE(::GetTickCount() - nStart, 3U * 600U - 50U);
}

TEST_F(WaitWindow, EndsOnTheJobDoneMessageAsOnAnyOther)
{
    HWND const hWnd = Open();
    EXPECT_EQ(::SendMessageA(hWnd, WM_USER + 1, 5, 6), 0);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(::IsWindow(hWnd));
}

TEST_F(WaitWindow, StartsNoThreadWhileThereIsNoJob)
{
    Open();
    tarn.CloseWaitDlg(); // whatever the system starts for its first window, it has started now
    const int nBefore = ResourceCount::Now().nThreads;
    Open();
    EXPECT_EQ(ResourceCount::Now().nThreads, nBefore);
}

TEST_F(WaitWindow, IsDestroyedByClose)
{
    HWND const hWnd = Open();
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    EXPECT_FALSE(::IsWindow(hWnd));
}

TEST_F(WaitWindow, CloseWithoutAWindowDoesNothing)
{
    const int nDialogs = CountDialogs();
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    Open();
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    EXPECT_EQ(CountDialogs(), nDialogs);
}

TEST_F(WaitWindow, OfTwoWindowsCloseDestroysOnlyTheSecond)
{
    tarn.DoWaitDlgModless(nullptr, "first of two", "1");
    tarn.DoWaitDlgModless(nullptr, "second of two", "2");
    HWND const hFirst = FindTopLevel("first of two");
    HWND const hSecond = FindTopLevel("second of two");
    ASSERT_NE(hFirst, nullptr);
    ASSERT_NE(hSecond, nullptr);
    tarn.CloseWaitDlg();
    EXPECT_TRUE(::IsWindowVisible(hFirst));
    EXPECT_FALSE(::IsWindow(hSecond));
    tarn.CloseWaitDlg();
    EXPECT_TRUE(::IsWindowVisible(hFirst)) << "nothing knows it any more but its watchdog";
    Tick(hFirst);
    EXPECT_TRUE(::IsWindow(hFirst));
    EXPECT_FALSE(::IsWindowVisible(hFirst));
    ::DestroyWindow(hFirst);
}

TEST_F(WaitWindow, ClosesQuietlyWhenItsWindowHasGoneAlready)
{
    HWND const hWnd = Open();
    ::DestroyWindow(hWnd);
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
}

TEST_F(WaitWindow, OutlivesItsParent)
{
    HWND hWnd = nullptr;
    {
        const HostWindow host(100, 100, 700, 500);
        hWnd = Open(host.Handle());
    }
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd, 1);
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
}

TEST_F(WaitWindow, WorksOnAnotherThread)
{
    const auto onAnotherThread = [this] {
        bool bOpened = false;
        bool bClosed = false;
        DriverThread thread([&] {
            tarn.DoWaitDlgModless(nullptr, "on a second thread", "x");
            HWND const hWnd = FindTopLevel("on a second thread");
            bOpened = ::IsWindowVisible(hWnd) != FALSE;
            tarn.CloseWaitDlg();
            bClosed = !::IsWindow(hWnd);
        });
        thread.Join();
        EXPECT_TRUE(bClosed);
        return bOpened;
    };
    ExpectCleanFault(
        true, onAnotherThread, [this] { ExpectToWork(); }, CostOfAThreadWithADialog());
}

// The system destroys a window on its own thread only.
TEST_F(WaitWindow, ClosedFromAnotherThreadLivesOnUntilItsWatchdogHidesIt)
{
    HWND const hWnd = Open();
    int nClosed = -1;
    DriverThread thread([&] { nClosed = tarn.CloseWaitDlg(); });
    thread.Join();
    EXPECT_EQ(nClosed, 0);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    EXPECT_TRUE(::IsWindowVisible(hWnd)) << "nothing knows it any more but its watchdog";
    ExpectToWork(); // another window, beside it
    Tick(hWnd, kWatchdogTicks - 1);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd, 1);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(::IsWindow(hWnd));
    ::DestroyWindow(hWnd);
    ExpectToWork();
}

TEST_F(WaitWindow, LeavesTheCallersActivationContextAloneWhileMessagesArrive)
{
    HWND const hWnd = Open();
    HANDLE hBefore = nullptr;
    ASSERT_TRUE(::GetCurrentActCtx(&hBefore));
    Tick(hWnd);
    HANDLE hAfter = nullptr;
    ASSERT_TRUE(::GetCurrentActCtx(&hAfter));
    EXPECT_EQ(hBefore, hAfter);
    ::ReleaseActCtx(hBefore);
    ::ReleaseActCtx(hAfter);
}

TEST(WaitWindowAtUnload, IsLeftBehindInert)
{
    HWND hWnd = nullptr;
    {
        LoadedTarn tarn;
        tarn.DoWaitDlgModless(nullptr, "left behind", "x");
        hWnd = FindTopLevel("left behind");
        ASSERT_NE(hWnd, nullptr);
    }
    ASSERT_EQ(::GetModuleHandleA("tarn.dll"), nullptr);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_EQ(::GetWindowLongPtrA(hWnd, GWLP_USERDATA), 0) << "it leads nowhere";
    Tick(hWnd, 2 * kWatchdogTicks);
    ::SendMessageA(hWnd, WM_COMMAND, IDOK, 0);
    ::SendMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
    ::SendMessageA(hWnd, WM_USER + 1, 0, 0);
    ::SendMessageA(hWnd, WM_CLOSE, 0, 0);
    ::InvalidateRect(hWnd, nullptr, TRUE);
    ::UpdateWindow(hWnd);
    PumpUntil([] { return true; });
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    {
        LoadedTarn again;
        EXPECT_EQ(again.CloseWaitDlg(), 0);
        EXPECT_TRUE(::IsWindow(hWnd)) << "a library loaded later does not know it";
    }
    EXPECT_TRUE(::DestroyWindow(hWnd));
}

TEST_F(WaitWindow, LooksAsItShould)
{
    const HostWindow host(200, 150, 800, 550);
    ::ShowWindow(host.Handle(), SW_SHOW);
    HWND const hWnd = Open(host.Handle(), "Please wait while the application is being installed.");
    PumpUntil([] { return true; }, hWnd);
    // The text is there in pixels, not only in the window's memory.
    HWND const hText = ::GetDlgItem(hWnd, kMessageControl);
    HDC const hdc = ::GetDC(hText);
    bool bInk = false;
    const COLORREF background = ::GetPixel(hdc, 0, 0);
    for (int y = 0; y < 16 && !bInk; ++y)
    {
        for (int x = 0; x < 100 && !bInk; ++x)
            bInk = ::GetPixel(hdc, x, y) != background;
    }
    ::ReleaseDC(hText, hdc);
    EXPECT_TRUE(bInk);
    EXPECT_TRUE(SaveScreenshot("wait-dialog"));
}
