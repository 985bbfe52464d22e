// Boxes and dialogs of the library over its wait window, in an installer that has a window of its own.
#include "include/tarn.h"
#include "tests/hosts/ReactingHost.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace window_driver;

namespace
{
constexpr char kWaitCaption[] = "Tarn wait window below";
constexpr char kOpenCaption[] = "Tarn open dialog above";
constexpr char kBoxCaption[] = "tarn";

bool IsAbove(HWND hUpper, HWND hLower)
{
    for (HWND hWnd = ::GetWindow(hUpper, GW_HWNDNEXT); hWnd != nullptr;
         hWnd = ::GetWindow(hWnd, GW_HWNDNEXT))
    {
        if (hWnd == hLower)
            return true;
    }
    return false;
}

// Which modal window of the library a test is about.
struct Modal
{
    const char* pszName;
    const char* pszCaption;
    int (*pfnShow)(const LoadedTarn& tarn);
};

int ShowBox(const LoadedTarn& tarn)
{
    return tarn.Write_ch_config_File("Z:\\no such folder");
}

int ShowOpenDialog(const LoadedTarn& tarn)
{
    char path[TARN_OPEN_PATH_SIZE] = "";
    char title[] = "Tarn open dialog above";
    return tarn.DoFileOpenDialog(nullptr, title, nullptr, nullptr, path);
}

class Boxes : public testing::TestWithParam<Modal>
{
protected:
    void SetUp() override
    {
        if (GetParam().pfnShow == &ShowOpenDialog && !MayTouchUsersSettings())
            GTEST_SKIP() << kDialogTouchesSettings;
    }

    // Shows the modal window; the look at it is on another thread, which then cancels it.
    void Show(const std::function<void(HWND)>& look)
    {
        DriverThread driver([&] {
            HWND const hWnd = WaitForTopLevel(GetParam().pszCaption);
            ASSERT_NE(hWnd, nullptr);
            EXPECT_TRUE(WaitFor([hWnd] { return ::IsWindowVisible(hWnd) != FALSE; }));
            look(hWnd);
            ::PostMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
        });
        EXPECT_EQ(GetParam().pfnShow(tarn), 0);
    }

    HWND OpenWaitWindow()
    {
        tarn.DoWaitDlgModless(host.Handle(), kWaitCaption, "Please wait.");
        HWND const hWnd = FindTopLevel(kWaitCaption);
        EXPECT_NE(hWnd, nullptr);
        return hWnd;
    }

    void ExpectNoHarm(HWND hActive)
    {
        EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
        EXPECT_EQ(::GetActiveWindow(), hActive);
    }

    LoadedTarn tarn;
    ReactingHost host;
};
} // namespace

TEST_P(Boxes, OverTheInstallersWindowAreOwnedByIt)
{
    Show([this](HWND hWnd) {
        EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), host.Handle());
        EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
    });
    ExpectNoHarm(host.Handle());
}

TEST_P(Boxes, StandOverTheWaitWindowWhileTheInstallersWindowTakesNoClicks)
{
    for (const bool bHostActive : {false, true})
    {
        SCOPED_TRACE(bHostActive ? "the user has clicked on the installer's window"
                                 : "the wait window is the active one");
        HWND const hWait = OpenWaitWindow();
        if (bHostActive)
            ::SetActiveWindow(host.Handle());
        HWND const hActive = ::GetActiveWindow();
        EXPECT_EQ(hActive, bHostActive ? host.Handle() : hWait);
        Show([&](HWND hWnd) {
            EXPECT_TRUE(IsAbove(hWnd, hWait));
            EXPECT_NE(::GetWindowLongA(hWnd, GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
            EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
            EXPECT_FALSE(::IsWindowEnabled(hWait));
        });
        ExpectNoHarm(hActive);
        EXPECT_TRUE(::IsWindowEnabled(hWait));
        tarn.CloseWaitDlg();
        ExpectNoHarm(host.Handle());
    }
}

TEST_P(Boxes, AreNotOwnedByAWaitWindowThatHasHidden)
{
    for (const bool bEnter : {false, true})
    {
        SCOPED_TRACE(bEnter ? "by Enter" : "by its watchdog");
        HWND const hWait = OpenWaitWindow();
        if (bEnter)
            ::SendMessageA(hWait, WM_COMMAND, IDOK, 0);
        else
            Tick(hWait);
        ASSERT_FALSE(::IsWindowVisible(hWait));
        EXPECT_EQ(::GetActiveWindow(), host.Handle()) << "a hidden window is not left active";
        Show([&](HWND hWnd) {
            EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), host.Handle());
            EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
        });
        ExpectNoHarm(host.Handle());
        tarn.CloseWaitDlg();
        ExpectNoHarm(host.Handle());
    }
}

TEST_P(Boxes, HaveNoOwnerWhenTheHiddenWaitWindowIsTheOnlyOne)
{
    ::ShowWindow(host.Handle(), SW_HIDE);
    HWND const hWait = OpenWaitWindow();
    Tick(hWait);
    ASSERT_FALSE(::IsWindowVisible(hWait));
    EXPECT_NE(::GetActiveWindow(), hWait) << "a hidden window is not left active";
    Show([&](HWND hWnd) { EXPECT_EQ(::GetWindow(hWnd, GW_OWNER), nullptr); });
    EXPECT_NE(::GetActiveWindow(), hWait);
    tarn.CloseWaitDlg();
}

TEST_P(Boxes, OutliveTheWaitWindowBelowThem)
{
    HWND const hWait = OpenWaitWindow();
    Show([&](HWND hWnd) {
        Tick(hWait);
        EXPECT_TRUE(WaitFor([hWait] { return !::IsWindowVisible(hWait); }));
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
    });
    ExpectNoHarm(host.Handle());
    tarn.CloseWaitDlg();
    ExpectNoHarm(host.Handle());
}

// An installer may have disabled its window while it works.
TEST_P(Boxes, HaveNoHiddenOwnerOverADisabledInstaller)
{
    for (const bool bEnter : {false, true})
    {
        HWND const hWait = OpenWaitWindow();
        ::EnableWindow(host.Handle(), FALSE);
        if (bEnter)
            ::SendMessageA(hWait, WM_COMMAND, IDOK, 0);
        else
            Tick(hWait);
        ASSERT_FALSE(::IsWindowVisible(hWait));
        EXPECT_NE(::GetActiveWindow(), hWait) << "a hidden window is not left active";
        Show([&](HWND hWnd) {
            EXPECT_NE(::GetWindow(hWnd, GW_OWNER), hWait);
            EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
        });
        EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
        EXPECT_NE(::GetActiveWindow(), hWait);
        tarn.CloseWaitDlg();
        ::EnableWindow(host.Handle(), TRUE);
    }
}

TEST_P(Boxes, LeaveDisabledWhatWasDisabled)
{
    const ReactingHost other;
    ::EnableWindow(other.Handle(), FALSE);
    HWND const hWait = OpenWaitWindow();
    Show([&](HWND) { EXPECT_FALSE(::IsWindowEnabled(host.Handle())); });
    EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
    EXPECT_TRUE(::IsWindowEnabled(hWait));
    EXPECT_FALSE(::IsWindowEnabled(other.Handle()));
    tarn.CloseWaitDlg();
}

// The section of an installer, on a thread of its own; the installer's window is on the other.
TEST_P(Boxes, OfASectionsThreadKeepTheInstallersWindowFromClicks)
{
    DriverThread section([this] {
        HWND const hWait = OpenWaitWindow();
        Show([&](HWND hWnd) {
            EXPECT_TRUE(IsAbove(hWnd, hWait));
            EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
        });
        EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
        tarn.CloseWaitDlg();
    });
    section.Join();
    EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
}

// A thread that waits without handling messages cannot be told that its window is disabled.
TEST_P(Boxes, OfASectionsThreadDoNotWaitForAnInstallerThatDoesNotAnswer)
{
    HANDLE const hDone = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    {
        DriverThread section([this, hDone] {
            OpenWaitWindow();
            Show([](HWND) {});
            tarn.CloseWaitDlg();
            ::SetEvent(hDone);
        });
        EXPECT_EQ(::WaitForSingleObject(hDone, kLimitMilliseconds),
                  static_cast<DWORD>(WAIT_OBJECT_0));
    }
    ::CloseHandle(hDone);
    EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
}

INSTANTIATE_TEST_SUITE_P(Modals, Boxes,
                         testing::Values(Modal{"ErrorBox", kBoxCaption, &ShowBox},
                                         Modal{"OpenDialog", kOpenCaption, &ShowOpenDialog}),
                         [](const auto& modal) { return std::string(modal.param.pszName); });
