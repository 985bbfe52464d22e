// Installers whose windows call an export from within their handling of a message that another export
// sends them.
#include "include/tarn.h"
#include "tests/hosts/ReactingHost.h"
#include "tests/hosts/WaitWindows.h"
#include "tests/support/CallersState.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RoundCost.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace window_driver;

namespace
{

// Cancels every dialog of this process that is no wait window, once, for as long as it lives. A second
// cancel could reach a dialog that is on its way out, which Wine's Open dialog does not survive.
class Canceller
{
public:
    Canceller()
        : m_thread([this] {
              while (::WaitForSingleObject(m_hStop, 5) == WAIT_TIMEOUT)
                  ::EnumWindows(&Canceller::Visit, reinterpret_cast<LPARAM>(this));
          })
    {
    }
    ~Canceller()
    {
        ::SetEvent(m_hStop);
        m_thread.Join();
        ::CloseHandle(m_hStop);
    }
    Canceller(const Canceller&) = delete;
    Canceller& operator=(const Canceller&) = delete;

private:
    static BOOL CALLBACK Visit(HWND hWnd, LPARAM lParam)
    {
        std::set<HWND>& cancelled = reinterpret_cast<Canceller*>(lParam)->m_cancelled;
        DWORD nProcessID = 0;
        ::GetWindowThreadProcessId(hWnd, &nProcessID);
        char szClass[32] = "";
        ::GetClassNameA(hWnd, szClass, sizeof(szClass));
        if (nProcessID == ::GetCurrentProcessId() && std::string(szClass) == "#32770" &&
            ::IsWindowVisible(hWnd) && ::GetDlgItem(hWnd, kMessageControl) == nullptr &&
            cancelled.insert(hWnd).second)
            ::PostMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
        return TRUE;
    }

    HANDLE m_hStop = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::set<HWND> m_cancelled;
    DriverThread m_thread;
};

enum Export
{
    kDoWaitDlgModless,
    kCloseWaitDlg,
    kDoFileOpenDialog,
    kFileCopy,
    kPutInRunOnce,
    kVerifyEmail,
    kWriteChConfigFile,
    kExports
};
const char* const kNames[kExports] = {
    "DoWaitDlgModless", "CloseWaitDlg", "DoFileOpenDialog",    "FileCopy",
    "PutInRunOnce",     "VerifyEmail",  "Write_ch_config_File"};

struct Message
{
    const char* pszName;
    ReactingHost::Trigger trigger;
};
const Message kMessages[] = {{"WM_ACTIVATE, active", {WM_ACTIVATE, WA_ACTIVE}},
                             {"WM_ACTIVATE, inactive", {WM_ACTIVATE, WA_INACTIVE}},
                             {"WM_SETFOCUS", {WM_SETFOCUS, -1}},
                             {"WM_KILLFOCUS", {WM_KILLFOCUS, -1}},
                             {"WM_NCACTIVATE, active", {WM_NCACTIVATE, TRUE}},
                             {"WM_NCACTIVATE, inactive", {WM_NCACTIVATE, FALSE}},
                             {"WM_ACTIVATEAPP", {WM_ACTIVATEAPP, -1}},
                             {"WM_WINDOWPOSCHANGED", {WM_WINDOWPOSCHANGED, -1}},
                             {"WM_ENABLE", {WM_ENABLE, -1}}};

// A library, an installer's window, and what must be open.
class Installer
{
public:
    ~Installer()
    {
        for (HWND const hWnd : WaitWindowsOfThisThread())
            ::DestroyWindow(hWnd);
    }

    void Call(Export nExport)
    {
        char text[TARN_OPEN_PATH_SIZE] = " user@example.com ";
        char message[TARN_EMAIL_MESSAGE_SIZE] = "";
        char title[] = "Open from within";
        int nPosition = 0;
        switch (nExport)
        {
        case kDoWaitDlgModless:
            ++nOpen;
            bKnown = true;
            tarn.DoWaitDlgModless(host.Handle(), "re-entrance", "Please wait.");
            break;
        case kCloseWaitDlg:
            nOpen -= bKnown ? 1 : 0;
            bKnown = false;
            tarn.CloseWaitDlg();
            break;
        case kDoFileOpenDialog:
            text[0] = '\0';
            EXPECT_EQ(tarn.DoFileOpenDialog(nullptr, title, nullptr, nullptr, text), 0);
            break;
        case kFileCopy:
            EXPECT_EQ(tarn.FileCopy("Z:\\no such file", "C:\\"), 0);
            break;
        case kPutInRunOnce:
            EXPECT_EQ(tarn.PutInRunOnce(std::string(20000, 'x').c_str(), "never"), 0);
            break;
        case kVerifyEmail:
            EXPECT_EQ(tarn.VerifyEmail(text, &nPosition, message), 1);
            EXPECT_STREQ(text, "user@example.com");
            break;
        default:
            EXPECT_EQ(tarn.Write_ch_config_File("Z:\\no such folder"), 0);
            break;
        }
    }

    // The windows that stay are those that were opened and not closed; the latest one is closed by the
    // next CloseWaitDlg unless there has been one; and the next window comes and goes.
    void ExpectToBeWhole()
    {
        EXPECT_EQ(WaitWindowsOfThisThread().size(), static_cast<std::size_t>(nOpen));
        for (HWND const hWnd : WaitWindowsOfThisThread())
        {
            EXPECT_TRUE(::IsWindowVisible(hWnd));
            Tick(hWnd, 1);
        }
        Call(kCloseWaitDlg);
        EXPECT_EQ(WaitWindowsOfThisThread().size(), static_cast<std::size_t>(nOpen));
        Call(kDoWaitDlgModless);
        EXPECT_EQ(WaitWindowsOfThisThread().size(), static_cast<std::size_t>(nOpen));
        Call(kCloseWaitDlg);
        EXPECT_EQ(WaitWindowsOfThisThread().size(), static_cast<std::size_t>(nOpen));
        EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
    }

    LoadedTarn tarn;
    ReactingHost host;
    int nOpen = 0;       // windows that were opened and not closed
    bool bKnown = false; // CloseWaitDlg has one to close
};

bool MayCall(Export nExport)
{
    return nExport != kDoFileOpenDialog || MayTouchUsersSettings();
}

class Reentrance : public testing::TestWithParam<Export>
{
protected:
    void SetUp() override
    {
        if (!MayCall(GetParam()))
            GTEST_SKIP() << kDialogTouchesSettings;
    }

    Canceller m_canceller;
};
} // namespace

TEST_P(Reentrance, OfEachExportFromWithinThisOneIsCleanAtEachMessage)
{
    int nReactions = 0;
    for (const Message& message : kMessages)
    {
        for (int nInner = 0; nInner < kExports; ++nInner)
        {
            if (!MayCall(static_cast<Export>(nInner)))
                continue;
            SCOPED_TRACE(std::string(kNames[nInner]) + " at " + message.pszName);
            Installer installer;
            const CallersState before = CallersState::Now();
            if (GetParam() == kCloseWaitDlg)
                installer.Call(kDoWaitDlgModless);
            installer.host.React(message.trigger,
                                 [&] { installer.Call(static_cast<Export>(nInner)); });
            installer.Call(GetParam());
            nReactions += installer.host.Stop();
            EXPECT_EQ(CallersState::Now(), before);
            installer.ExpectToBeWhole();
        }
    }
    EXPECT_GE(nReactions, kExports) << "the installer's window heard nothing";
    std::printf("%d calls from within %s\n", nReactions, kNames[GetParam()]);
    if (!MayCall(kDoFileOpenDialog))
        std::printf("none of DoFileOpenDialog: %s\n", kDialogTouchesSettings);
}

INSTANTIATE_TEST_SUITE_P(Exports, Reentrance,
                         testing::Values(kDoWaitDlgModless, kCloseWaitDlg, kDoFileOpenDialog,
                                         kWriteChConfigFile),
                         [](const auto& export_) { return std::string(kNames[export_.param]); });

// Opening and closing from within opening and closing, three levels deep, in every order.
TEST(ReentranceOfTheWaitWindow, IsCleanThreeLevelsDeep)
{
    int nDeepest = 0;
    for (const Message& message :
         {Message{"WM_ACTIVATE", {WM_ACTIVATE, -1}}, Message{"WM_SETFOCUS", {WM_SETFOCUS, -1}},
          Message{"WM_KILLFOCUS", {WM_KILLFOCUS, -1}},
          Message{"WM_NCACTIVATE", {WM_NCACTIVATE, -1}}})
    {
        for (int nOrder = 0; nOrder < 8; ++nOrder)
        {
            SCOPED_TRACE(std::string(message.pszName) + ", order " + std::to_string(nOrder));
            Installer installer;
            installer.Call(kDoWaitDlgModless);
            int nLevel = 0;
            const auto call = [&] {
                nDeepest = nLevel > nDeepest ? nLevel : nDeepest;
                const Export nExport =
                    (nOrder >> nLevel & 1) != 0 ? kCloseWaitDlg : kDoWaitDlgModless;
                ++nLevel;
                // So that there is something to hear at each level.
                if (nExport == kDoWaitDlgModless)
                    ::SetActiveWindow(installer.host.Handle());
                installer.Call(nExport);
                --nLevel;
            };
            installer.host.React(message.trigger, call, 3, 3);
            call();
            installer.host.Stop();
            installer.ExpectToBeWhole();
        }
    }
    EXPECT_GE(nDeepest, 2);
}

// Where no window is left open, nothing else is.
TEST(ReentranceOfTheWaitWindow, LeavesNothingBehind)
{
    struct Case
    {
        Export nOuter;
        Export nInner;
        ReactingHost::Trigger trigger;
    };
    for (const Case& c : {Case{kCloseWaitDlg, kCloseWaitDlg, {WM_ACTIVATE, WA_ACTIVE}},
                          Case{kDoWaitDlgModless, kCloseWaitDlg, {WM_ACTIVATE, WA_INACTIVE}},
                          Case{kDoWaitDlgModless, kCloseWaitDlg, {WM_KILLFOCUS, -1}},
                          Case{kCloseWaitDlg, kDoWaitDlgModless, {WM_ACTIVATE, WA_ACTIVE}}})
    {
        SCOPED_TRACE(std::string(kNames[c.nInner]) + " within " + kNames[c.nOuter]);
        Installer installer;
        const auto round = [&] {
            if (c.nOuter == kCloseWaitDlg)
                installer.Call(kDoWaitDlgModless);
            installer.host.React(c.trigger, [&] { installer.Call(c.nInner); });
            installer.Call(c.nOuter);
            EXPECT_EQ(installer.host.Stop(), 1);
            installer.Call(kCloseWaitDlg);
            EXPECT_EQ(WaitWindowsOfThisThread().size(), 0U);
            ::SetActiveWindow(installer.host.Handle());
        };
        round();
        EXPECT_TRUE(LeavesNothingBehind(round));
    }
}

// The window is closed while it handles the message that makes it hide.
TEST(ReentranceOfTheWaitWindow, ClosesAWindowThatIsHidingAtItsLastTickOrAtEnter)
{
    for (const WPARAM nCommand : {static_cast<WPARAM>(0), static_cast<WPARAM>(IDOK)})
    {
        for (const Message& message : kMessages)
        {
            SCOPED_TRACE(message.pszName);
            Installer installer;
            installer.Call(kDoWaitDlgModless);
            HWND const hWnd = WaitWindowsOfThisThread().front();
            installer.host.React(message.trigger, [&] {
                installer.Call(kCloseWaitDlg);
                EXPECT_FALSE(::IsWindow(hWnd));
            });
            if (nCommand != 0)
                ::SendMessageA(hWnd, WM_COMMAND, nCommand, 0);
            else
                Tick(hWnd);
            installer.host.Stop();
            installer.Call(kCloseWaitDlg);
            EXPECT_FALSE(::IsWindow(hWnd));
            installer.ExpectToBeWhole();
        }
    }
}
