// The wait window of the built DLL, with each call that it makes of the system failing in turn.
#include "tests/support/CleanFault.h"
#include "tests/support/FailingCall.h"
#include "tests/support/FirstSection.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Watchdog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace window_driver;

namespace
{
constexpr char kCaption[] = "Tarn wait window with a fault";
constexpr char kText[] = "Please wait.";
constexpr int kMessageControl = 14000;

RECT RectOf(HWND hWnd)
{
    RECT rc = {};
    ::GetWindowRect(hWnd, &rc);
    return rc;
}

POINT CentreOf(HWND hWnd)
{
    const RECT rc = RectOf(hWnd);
    return {(rc.left + rc.right) / 2, (rc.top + rc.bottom) / 2};
}

bool IsTopmost(HWND hWnd)
{
    return (::GetWindowLongPtrA(hWnd, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

void PumpOnce()
{
    PumpUntil([] { return true; });
}

class WaitWindowFault : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(tarn.IsComplete()); }
    ~WaitWindowFault() override
    {
        tarn.CloseWaitDlg();
        // Whatever a fault left on the screen is not the next test's business.
        for (HWND hWnd = FindTopLevel(kCaption); hWnd != nullptr; hWnd = FindTopLevel(kCaption))
        {
            if (!::DestroyWindow(hWnd))
                break;
        }
    }

    // Documented: always 0. Returns the window, or null when there is none.
    HWND Open()
    {
        EXPECT_EQ(tarn.DoWaitDlgModless(host.Handle(), kCaption, kText), 0);
        return FindTopLevel(kCaption);
    }
    void ExpectToWork()
    {
        HWND const hWnd = Open();
        ASSERT_NE(hWnd, nullptr);
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        EXPECT_EQ(TextOf(::GetDlgItem(hWnd, kMessageControl)), kText);
        EXPECT_TRUE(IsTopmost(hWnd));
        EXPECT_LE(std::abs(CentreOf(hWnd).x - CentreOf(host.Handle()).x), 1);
        EXPECT_EQ(tarn.CloseWaitDlg(), 0);
        EXPECT_FALSE(::IsWindow(hWnd));
    }

    const LoadedTarn tarn;
    const HostWindow host{100, 100, 700, 500};
};

struct Fault
{
    const char* pszFunction;
    ULONG_PTR nResult;
};

// Every call that showing, keeping and closing the window makes. That each is really made, and that a
// failure changes what it should, is the other tests' business; this one is about what must not change.
constexpr Fault kFaults[] = {
    {"ActivateActCtx", FALSE}, {"CreateActCtxA", ~ULONG_PTR{0}},
    {"CreateDialogParamA", 0}, {"DestroyWindow", FALSE},
    {"EndDialog", FALSE},      {"GetWindowRect", FALSE},
    {"KillTimer", FALSE},      {"SendDlgItemMessageA", 0},
    {"SetTimer", 0},           {"SetWindowLongPtrA", 0},
    {"SetWindowPos", FALSE},   {"SetWindowTextA", FALSE},
    {"ShowWindow", FALSE},     {"UpdateWindow", FALSE},
};

TEST_F(WaitWindowFault, InAnyOneCallIsSurvivedAndLeavesNothingBehind)
{
    // A library that is loaded anew each time: a context that exists already is not made again.
    const TempFolder folder;
    const std::string path = folder / "fresh.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    ExpectToWork(); // what the system keeps after a first window
    for (const Fault& fault : kFaults)
    {
        SCOPED_TRACE(fault.pszFunction);
        int nCalls = 0;
        EXPECT_TRUE(LeavesNothingBehind([&] {
            const LoadedTarn fresh(path);
            ASSERT_TRUE(fresh.IsComplete());
            const CallersState before = CallersState::Now();
            {
                const FailingCall failing(fresh.Module(), fault.pszFunction, fault.nResult);
                ASSERT_TRUE(failing.IsActive());
                EXPECT_EQ(fresh.DoWaitDlgModless(host.Handle(), kCaption, kText), 0);
                EXPECT_EQ(CallersState::Now(), before);
                HWND const hWnd = FindTopLevel(kCaption);
                PumpOnce();
                Tick(hWnd, 2 * kWatchdogTicks);
                EXPECT_EQ(fresh.CloseWaitDlg(), 0);
                EXPECT_EQ(CallersState::Now(), before);
                nCalls = FailingCall::Calls();
                // One that the library was not allowed to destroy.
                PumpOnce();
                if (::IsWindow(hWnd))
                    ::DestroyWindow(hWnd);
            }
            EXPECT_EQ(fresh.CloseWaitDlg(), 0);
            PumpOnce();
        }));
        EXPECT_GE(nCalls, 1) << "the library does not make this call";
        ExpectToWork();
    }
}

TEST_F(WaitWindowFault, InCreationShowsNothingAndCloseHasNothingToDo)
{
    {
        const FailingCall failing(tarn.Module(), "CreateDialogParamA");
        EXPECT_EQ(Open(), nullptr);
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_EQ(tarn.CloseWaitDlg(), 0);
    }
    ExpectToWork();
}

// A copy of the library in which the template has another number.
TEST_F(WaitWindowFault, OfAMissingTemplateShowsNothing)
{
    const TempFolder folder;
    const std::string path = folder / "without.dll";
    std::string bytes = ReadBytes(LoadedTarn::Path());
    const auto* const pHeaders = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        bytes.data() + reinterpret_cast<const IMAGE_DOS_HEADER*>(bytes.data())->e_lfanew);
    const IMAGE_SECTION_HEADER* pSection = FirstSection(pHeaders);
    while (std::strncmp(reinterpret_cast<const char*>(pSection->Name), ".rsrc", 8) != 0)
        ++pSection;
    // The entry of the directory: the number, and an offset with the highest bit set.
    int nFound = 0;
    for (DWORD i = 0; i + 8 <= pSection->SizeOfRawData; i += 4)
    {
        char* const pEntry = &bytes[pSection->PointerToRawData + i];
        DWORD nNumber = 0;
        std::memcpy(&nNumber, pEntry, sizeof(nNumber));
        if (nNumber == 14000 && (pEntry[7] & 0x80) != 0)
        {
            ++*pEntry;
            ++nFound;
        }
    }
    ASSERT_EQ(nFound, 1);
    WriteBytes(path, bytes);
    ExpectCleanFault(
        0,
        [&] {
            const LoadedTarn without(path);
            EXPECT_TRUE(without.IsComplete());
            int nResults = 0;
            for (int i = 0; i < 2; ++i)
            {
                nResults += without.DoWaitDlgModless(host.Handle(), kCaption, kText);
                EXPECT_EQ(FindTopLevel(kCaption), nullptr);
                EXPECT_EQ(CountDialogs(), 0);
                nResults += without.CloseWaitDlg();
            }
            ExpectToWork(); // the library that has its template, beside it
            return nResults;
        },
        [this] { ExpectToWork(); });
}

TEST_F(WaitWindowFault, OfTheTimerLeavesTheWindowUntilItIsClosed)
{
    HWND hWnd = nullptr;
    {
        const FailingCall failing(tarn.Module(), "SetTimer");
        hWnd = Open();
        EXPECT_EQ(FailingCall::Calls(), 1);
    }
    ASSERT_NE(hWnd, nullptr);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(IsTopmost(hWnd)) << "what comes after the timer is done all the same";
    EXPECT_FALSE(::KillTimer(hWnd, 333)) << "there is no timer";
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
    ExpectToWork();
}

TEST_F(WaitWindowFault, OfTheTimersEndDoesNotKeepTheWindowOnTheScreen)
{
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    const FailingCall failing(tarn.Module(), "KillTimer");
    Tick(hWnd, kWatchdogTicks - 1);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd, 1);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    EXPECT_EQ(FailingCall::Calls(), 1);
    Tick(hWnd);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
}

TEST_F(WaitWindowFault, OfEndDialogLeavesTheWindowUntilItIsClosed)
{
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    {
        const FailingCall failing(tarn.Module(), "EndDialog");
        Tick(hWnd);
        EXPECT_EQ(FailingCall::Calls(), 1);
    }
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
}

HWND g_hHost = nullptr;

// Only the parent can be read.
BOOL WINAPI GetParentsRectOnly(HWND hWnd, LPRECT pRect)
{
    return hWnd == g_hHost && ::GetWindowRect(hWnd, pRect);
}

TEST_F(WaitWindowFault, OfTheParentsRectangleLeavesTheWindowWhereItWasMade)
{
    HWND const hWithout = (tarn.DoWaitDlgModless(nullptr, kCaption, kText), FindTopLevel(kCaption));
    ASSERT_NE(hWithout, nullptr);
    const RECT rcWithout = RectOf(hWithout);
    tarn.CloseWaitDlg();
    const FailingCall failing(tarn.Module(), "GetWindowRect");
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    EXPECT_EQ(FailingCall::Calls(), 1) << "the window's own is not needed then";
    const RECT rc = RectOf(hWnd);
    EXPECT_TRUE(::EqualRect(&rc, &rcWithout));
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(IsTopmost(hWnd));
}

TEST_F(WaitWindowFault, OfTheWindowsOwnRectanglePutsItsCornerOnTheParentsCentre)
{
    g_hHost = host.Handle();
    const ImportPatch patch(tarn.Module(), "GetWindowRect",
                            reinterpret_cast<void*>(&GetParentsRectOnly));
    ASSERT_TRUE(patch.IsActive());
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_EQ(RectOf(hWnd).left, CentreOf(host.Handle()).x);
    EXPECT_EQ(RectOf(hWnd).top, CentreOf(host.Handle()).y);
}

TEST_F(WaitWindowFault, OfSetWindowPosLeavesAVisibleWindowThatIsNotTopmost)
{
    HWND hWnd = nullptr;
    {
        const FailingCall failing(tarn.Module(), "SetWindowPos");
        hWnd = Open();
        EXPECT_EQ(FailingCall::Calls(), 2) << "to the top, and over the parent";
    }
    ASSERT_NE(hWnd, nullptr);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    EXPECT_FALSE(IsTopmost(hWnd));
    Tick(hWnd);
    EXPECT_FALSE(::IsWindowVisible(hWnd)) << "the rest of the initialisation was done";
    tarn.CloseWaitDlg();
    ExpectToWork();
}

TEST_F(WaitWindowFault, OfItsTextsLeavesThemEmpty)
{
    {
        const FailingCall failing(tarn.Module(), "SendDlgItemMessageA");
        HWND const hWnd = Open();
        ASSERT_NE(hWnd, nullptr);
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_EQ(TextOf(::GetDlgItem(hWnd, kMessageControl)), "");
        tarn.CloseWaitDlg();
    }
    {
        const FailingCall failing(tarn.Module(), "SetWindowTextA");
        EXPECT_EQ(Open(), nullptr) << "it has no caption to find it by";
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_EQ(CountDialogs(), 1);
        tarn.CloseWaitDlg();
        EXPECT_EQ(CountDialogs(), 0);
    }
    ExpectToWork();
}

TEST_F(WaitWindowFault, OfShowingAndPaintingLeavesAWindowThatItsTemplateShows)
{
    for (const char* const pszFunction : {"ShowWindow", "UpdateWindow"})
    {
        SCOPED_TRACE(pszFunction);
        const FailingCall failing(tarn.Module(), pszFunction);
        HWND const hWnd = Open();
        ASSERT_NE(hWnd, nullptr);
        EXPECT_EQ(FailingCall::Calls(), 1);
        EXPECT_TRUE(::IsWindowVisible(hWnd));
        PumpOnce();
        EXPECT_FALSE(::GetUpdateRect(hWnd, nullptr, FALSE)) << "the message loop paints it";
        tarn.CloseWaitDlg();
    }
}

TEST_F(WaitWindowFault, OfDestroyWindowLeavesTheWindowToItsWatchdog)
{
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    {
        const FailingCall failing(tarn.Module(), "DestroyWindow");
        EXPECT_EQ(tarn.CloseWaitDlg(), 0);
        EXPECT_EQ(FailingCall::Calls(), 1);
    }
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    // Its next tick may put it over the one that is opened now, which is found by its title.
    ::SetWindowTextA(hWnd, "Left behind");
    ExpectToWork();
    Tick(hWnd);
    EXPECT_FALSE(::IsWindowVisible(hWnd));
    EXPECT_TRUE(::DestroyWindow(hWnd));
    ExpectToWork();
}

TEST_F(WaitWindowFault, OfBindingTheObjectLeavesAPlainWindowThatCloseDestroys)
{
    HWND hWnd = nullptr;
    {
        const FailingCall failing(tarn.Module(), "SetWindowLongPtrA");
        hWnd = Open();
        EXPECT_EQ(FailingCall::Calls(), 2);
    }
    ASSERT_NE(hWnd, nullptr);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    Tick(hWnd);
    EXPECT_TRUE(::IsWindowVisible(hWnd)) << "no tick reaches the object";
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
    ExpectToWork();
}

LONG_PTR WINAPI FindNoObject(HWND /*hWnd*/, int /*nIndex*/)
{
    return 0;
}

// The system is asked for the object with each message, and for its own procedure.
TEST_F(WaitWindowFault, OfFindingTheObjectIsTheSystemsDefaultForThatMessage)
{
    HWND const hWnd = Open();
    ASSERT_NE(hWnd, nullptr);
    {
        const FailingCall failing(tarn.Module(), "GetWindowLongPtrA");
        Tick(hWnd);
        EXPECT_GE(FailingCall::Calls(), kWatchdogTicks);
        EXPECT_EQ(TextOf(hWnd), kCaption) << "the default procedure answers";
    }
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    {
        const ImportPatch patch(tarn.Module(), "GetWindowLongPtrA",
                                reinterpret_cast<void*>(&FindNoObject));
        const FailingCall failing(tarn.Module(), "DefWindowProcA");
        EXPECT_EQ(::SendMessageA(hWnd, WM_GETTEXTLENGTH, 0, 0), 0);
        EXPECT_EQ(FailingCall::Calls(), 1);
    }
    {
        const FailingCall failing(tarn.Module(), "CallWindowProcA");
        EXPECT_EQ(::SendMessageA(hWnd, WM_GETTEXTLENGTH, 0, 0), 0);
        EXPECT_EQ(FailingCall::Calls(), 1);
    }
    Tick(hWnd);
    EXPECT_FALSE(::IsWindowVisible(hWnd)) << "it counts from one again";
    tarn.CloseWaitDlg();
    EXPECT_FALSE(::IsWindow(hWnd));
    ExpectToWork();
}

// Handles, windows, threads and heaps as they were; of the rest at most what the system's dialogs have
// for themselves, a font and a block of memory each.
RoundCost::Allowance DataOfADialog()
{
    RoundCost::Allowance allowed = {};
    allowed[RoundCost::kGdiObjects] = allowed[RoundCost::kHeapBlocks] = 1;
    allowed[RoundCost::kHeapBytes] = RoundCost::kAnything;
    return allowed;
}

// For as long as the window lives: not even its last message reaches the system's own procedure, which
// would give back what a dialog has.
TEST_F(WaitWindowFault, OfPassingOnEveryMessageCostsWhatTheSystemKeepsForADialog)
{
    for (const char* const pszFunction : {"GetWindowLongPtrA", "CallWindowProcA"})
    {
        SCOPED_TRACE(pszFunction);
        const auto openAndClose = [&] {
            const CallersState before = CallersState::Now();
            const FailingCall failing(tarn.Module(), pszFunction);
            EXPECT_EQ(tarn.DoWaitDlgModless(host.Handle(), kCaption, kText), 0);
            EXPECT_EQ(CountDialogs(), 1);
            EXPECT_EQ(tarn.CloseWaitDlg(), 0);
            EXPECT_EQ(CountDialogs(), 0);
            EXPECT_GE(FailingCall::Calls(), 1);
            EXPECT_EQ(CallersState::Now(), before);
        };
        ExpectToWork(); // what the system keeps after a first window
        EXPECT_TRUE(CostsAtMost(DataOfADialog(), 1, openAndClose));
        ExpectToWork();
    }
}

// The window cannot be told that the library has gone. That the next message would be the end is not
// tried: it is cut off from the library here as the library could not.
TEST(WaitWindowFaultAtUnload, OfLettingGoOfAWindowLeavesItLeadingToTheLibrary)
{
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    auto pTarn = std::make_unique<LoadedTarn>(path);
    ASSERT_TRUE(pTarn->IsComplete());
    pTarn->DoWaitDlgModless(nullptr, "left behind", "x");
    HWND const hWnd = FindTopLevel("left behind");
    ASSERT_NE(hWnd, nullptr);
    const auto nProcedure = ::GetWindowLongPtrA(hWnd, GWLP_WNDPROC);
    // Not taken away again: the import table goes with the library.
    static_cast<void>(new FailingCall(pTarn->Module(), "SetWindowLongPtrA"));
    pTarn.reset();
    EXPECT_EQ(FailingCall::Calls(), 3);
    EXPECT_EQ(::GetModuleHandleA("tarn copy.dll"), nullptr);
    EXPECT_EQ(::GetWindowLongPtrA(hWnd, GWLP_WNDPROC), nProcedure);
    EXPECT_NE(::GetWindowLongPtrA(hWnd, DWLP_DLGPROC), 0);
    ::SetWindowLongPtrA(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&::DefDlgProcA));
    ::SetWindowLongPtrA(hWnd, GWLP_USERDATA, 0);
    ::SetWindowLongPtrA(hWnd, DWLP_DLGPROC, 0);
    EXPECT_TRUE(::DestroyWindow(hWnd));
}

TEST_F(WaitWindowFault, OfTheParentThatDiesLeavesTheWindowToItsOwner)
{
    ExpectCleanFault(
        0,
        [this] {
            HWND hWnd = nullptr;
            {
                const HostWindow parent(50, 50, 250, 250);
                EXPECT_EQ(tarn.DoWaitDlgModless(parent.Handle(), kCaption, kText), 0);
                hWnd = FindTopLevel(kCaption);
            }
            EXPECT_TRUE(::IsWindowVisible(hWnd));
            Tick(hWnd, kWatchdogTicks - 1);
            EXPECT_TRUE(::IsWindowVisible(hWnd));
            const int nClosed = tarn.CloseWaitDlg();
            EXPECT_FALSE(::IsWindow(hWnd));
            return nClosed;
        },
        [this] { ExpectToWork(); });
}

INT_PTR CALLBACK DoNothing(HWND /*hWnd*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    return message == WM_INITDIALOG;
}

// The system destroys the windows of a thread with it. It may not give back all that it has for a
// dialog then: a dialog without any code of the library is the measure. The object stays until the
// library is unloaded: nobody can know that the thread is not in it.
TEST_F(WaitWindowFault, OfTheThreadThatEndsTakesTheWindowAndCloseHasNothingToDestroy)
{
    const auto endWithABareDialog = [this] {
        HWND hWnd = nullptr;
        DriverThread other([&] {
            hWnd = ::CreateDialogParamA(tarn.Module(), MAKEINTRESOURCEA(14000), nullptr, &DoNothing,
                                        0);
        });
        other.Join();
        EXPECT_NE(hWnd, nullptr);
        EXPECT_TRUE(WaitFor([hWnd] { return !::IsWindow(hWnd); }));
    };
    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    ASSERT_TRUE(::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), TRUE));
    RoundCost::Allowance allowed = RoundCost::Of(1, endWithABareDialog).AsAllowance();
    allowed[RoundCost::kHeapBytes] = RoundCost::kAnything;
    EXPECT_TRUE(CostsAtMost(allowed, 1, [&path] {
        const CallersState before = CallersState::Now();
        HWND hWnd = nullptr;
        {
            const LoadedTarn copy(path);
            DriverThread other([&] {
                copy.DoWaitDlgModless(nullptr, "of another thread", "x");
                hWnd = FindTopLevel("of another thread");
            });
            other.Join();
            EXPECT_NE(hWnd, nullptr);
            EXPECT_TRUE(WaitFor([hWnd] { return !::IsWindow(hWnd); }));
            EXPECT_EQ(copy.CloseWaitDlg(), 0);
        }
        EXPECT_EQ(CallersState::Now(), before);
    }));
    ExpectToWork();
}

// Each library knows its own window only.
TEST(WaitWindowCopies, UnderDifferentNamesHaveAWindowEach)
{
    const TempFolder folder;
    const HostWindow host(100, 100, 700, 500);
    constexpr int kCopies = 4;
    EXPECT_TRUE(LeavesNothingBehind([&] {
        const CallersState before = CallersState::Now();
        std::vector<std::unique_ptr<LoadedTarn>> copies;
        std::vector<HWND> windows;
        for (int i = 0; i < kCopies; ++i)
        {
            const std::string path = folder / ("copy" + std::to_string(i) + ".dll");
            ::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), FALSE);
            copies.push_back(std::make_unique<LoadedTarn>(path));
            ASSERT_TRUE(copies.back()->IsComplete());
            const std::string caption = "copy " + std::to_string(i);
            EXPECT_EQ(copies.back()->DoWaitDlgModless(host.Handle(), caption.c_str(), kText), 0);
            windows.push_back(FindTopLevel(caption));
            ASSERT_NE(windows.back(), nullptr);
        }
        // Out of order.
        copies[1]->CloseWaitDlg();
        EXPECT_FALSE(::IsWindow(windows[1]));
        copies[1].reset();
        Tick(windows[3]);
        EXPECT_FALSE(::IsWindowVisible(windows[3]));
        for (const int i : {0, 2})
        {
            EXPECT_TRUE(::IsWindowVisible(windows[static_cast<std::size_t>(i)]));
        }
        for (const int i : {0, 2, 3})
        {
            copies[static_cast<std::size_t>(i)]->CloseWaitDlg();
            EXPECT_FALSE(::IsWindow(windows[static_cast<std::size_t>(i)]));
        }
        copies[2]->DoWaitDlgModless(host.Handle(), "again", kText);
        EXPECT_TRUE(::IsWindowVisible(FindTopLevel("again")));
        copies[2]->CloseWaitDlg();
        PumpOnce();
        EXPECT_EQ(CallersState::Now(), before);
    }));
}
} // namespace
