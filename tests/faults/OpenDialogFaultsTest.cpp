// DoFileOpenDialog of the built DLL, with each call that it makes of the system failing in turn.
#include "include/tarn.h"
#include "tests/support/CleanFault.h"
#include "tests/support/FailingCall.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ThreadWithADialog.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <commdlg.h>

#include <cderr.h>

#include <cstring>
#include <memory>
#include <string>

using namespace window_driver;

namespace
{
constexpr char kUntouched = '\x5A';
constexpr char kChosen[] = "C:\\folder\\chosen.lic";

// What the library asked of the dialog, and what that answers.
struct Asked
{
    int nCalls;
    HWND hOwner;
    bool bConfirms;
    const char* pszFolder;
    const char* pszTitle;
    DWORD nFlags;
};
Asked g_asked;
HWND g_hToActivate = nullptr; // by the dialog, as if the user had
HWND g_hToLookAt = nullptr;
bool g_bEnabled = false;

BOOL APIENTRY Answer(LPOPENFILENAMEA pofn)
{
    ++g_asked.nCalls;
    g_asked.hOwner = pofn->hwndOwner;
    g_asked.pszFolder = pofn->lpstrInitialDir;
    g_asked.pszTitle = pofn->lpstrTitle;
    g_asked.nFlags = pofn->Flags;
    EXPECT_EQ(pofn->lStructSize, sizeof(OPENFILENAMEA));
    if (g_hToActivate != nullptr)
        ::SetActiveWindow(g_hToActivate);
    g_bEnabled = g_hToLookAt != nullptr && ::IsWindowEnabled(g_hToLookAt);
    // A dialog that fails may have written before.
    ::lstrcpynA(pofn->lpstrFile, kChosen, static_cast<int>(pofn->nMaxFile));
    return g_asked.bConfirms;
}

// The library looks for one function only.
FARPROC WINAPI FindAnswer(HMODULE /*hModule*/, LPCSTR pszName)
{
    EXPECT_STREQ(pszName, "GetOpenFileNameA");
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Answer));
}

std::string g_systemFolder;

UINT WINAPI NameSystemFolder(LPSTR pszBuffer, UINT cbBuffer)
{
    // As the system does: a buffer that is too small is left alone, and the size that is needed told.
    if (g_systemFolder.size() >= cbBuffer)
        return static_cast<UINT>(g_systemFolder.size() + 1);
    std::memcpy(pszBuffer, g_systemFolder.c_str(), g_systemFolder.size() + 1);
    return static_cast<UINT>(g_systemFolder.size());
}

class OpenDialogFault : public testing::Test
{
protected:
    OpenDialogFault()
    {
        // Stays loaded: under Wine, each time that it is loaded anew leaves a handle behind.
        static HMODULE const s_hDialogs = ::LoadLibraryA("comdlg32.dll");
        EXPECT_NE(s_hDialogs, nullptr);
        g_asked = {0, nullptr, true, nullptr, nullptr, 0};
        ::CopyFileA(LoadedTarn::Path().c_str(), path.c_str(), FALSE);
        Load();
        Fill();
    }

    // Anew: once it has found the dialog, the library does not look for it again.
    void Load()
    {
        pTarn.reset();
        pTarn = std::make_unique<LoadedTarn>(path);
        ASSERT_TRUE(pTarn->IsComplete());
    }

    void Fill()
    {
        std::memset(buffer, kUntouched, sizeof(buffer));
        std::strcpy(buffer, "name on entry.lic");
        std::memcpy(before, buffer, sizeof(buffer));
    }
    int Open()
    {
        char szFolder[] = "C:\\";
        char szTitle[] = "title";
        return Open(szFolder, szTitle);
    }
    int Open(char* pszFolder, char* pszTitle)
    {
        return pTarn->DoFileOpenDialog(pszFolder, pszTitle, "All|*.*||", "lic", buffer);
    }
    bool IsUntouched() const { return std::memcmp(buffer, before, sizeof(buffer)) == 0; }
    // With the dialog's answer in the system's place.
    void ExpectToWork()
    {
        const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                                reinterpret_cast<void*>(&FindAnswer));
        ASSERT_TRUE(patch.IsActive());
        g_asked = {0, nullptr, true, nullptr, nullptr, 0};
        EXPECT_EQ(Open(), 1);
        EXPECT_EQ(g_asked.nCalls, 1);
        EXPECT_STREQ(buffer, kChosen);
        Fill();
    }

    const TempFolder folder;
    const std::string path = folder / "tarn copy.dll";
    std::unique_ptr<LoadedTarn> pTarn;
    char buffer[TARN_OPEN_PATH_SIZE];
    char before[TARN_OPEN_PATH_SIZE];
};

TEST_F(OpenDialogFault, DoesNotComeOfATitleOrAFolderThatIsMissing)
{
    const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                            reinterpret_cast<void*>(&FindAnswer));
    ASSERT_TRUE(patch.IsActive());
    char szGiven[] = "xyz";
    char szEmpty[] = "";
    for (char* const pszFolder : {szGiven, szEmpty, static_cast<char*>(nullptr)})
    {
        for (char* const pszTitle : {szGiven, szEmpty, static_cast<char*>(nullptr)})
        {
            EXPECT_EQ(Open(pszFolder, pszTitle), 1);
            EXPECT_EQ(g_asked.pszFolder, pszFolder == szGiven ? szGiven : nullptr);
            EXPECT_EQ(g_asked.pszTitle, pszTitle == szGiven ? szGiven : nullptr);
            EXPECT_NE(g_asked.nFlags & OFN_FILEMUSTEXIST, 0U);
        }
    }
    EXPECT_EQ(g_asked.nCalls, 9);
}

TEST_F(OpenDialogFault, InFindingTheDialogReturnsZeroAndTheNextCallLooksAgain)
{
    for (const char* const pszFunction :
         {"GetSystemDirectoryA", "LoadLibraryExA", "GetProcAddress"})
    {
        SCOPED_TRACE(pszFunction);
        ExpectCleanFault(
            0,
            [&] {
                Load();
                int nOpened = 0;
                for (int i = 0; i < 2; ++i)
                {
                    const FailingCall failing(pTarn->Module(), pszFunction);
                    EXPECT_TRUE(failing.IsActive());
                    nOpened += Open();
                    EXPECT_EQ(FailingCall::Calls(), 1);
                    EXPECT_TRUE(IsUntouched());
                }
                ExpectToWork();
                return nOpened;
            },
            [this] { ExpectToWork(); });
    }
}

TEST_F(OpenDialogFault, OfAPathOfTheSystemFolderThatIsTooLongReturnsZero)
{
    // With the separator, "comdlg32.dll" and the terminating zero, 246 bytes are the most. What is
    // longer is not loaded: a path that was cut off names something else.
    for (const std::size_t cb : {246U, 247U, 259U, 260U, 5000U})
    {
        SCOPED_TRACE(cb);
        g_systemFolder = std::string(cb, 'x');
        ExpectCleanFault(
            0,
            [&] {
                const ImportPatch patch(pTarn->Module(), "GetSystemDirectoryA",
                                        reinterpret_cast<void*>(&NameSystemFolder));
                const FailingCall failing(pTarn->Module(), "LoadLibraryExA");
                const int nOpened = Open();
                EXPECT_EQ(FailingCall::Calls(), cb == 246 ? 1 : 0);
                EXPECT_TRUE(IsUntouched());
                return nOpened;
            },
            [this] {
                ExpectToWork();
                Load();
            });
    }
}

TEST_F(OpenDialogFault, OfTheDialogItselfReturnsZeroAndTouchesNothing)
{
    ExpectCleanFault(
        0,
        [this] {
            const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                                    reinterpret_cast<void*>(&FindAnswer));
            g_asked = {};
            const int nOpened = Open();
            EXPECT_EQ(g_asked.nCalls, 1);
            EXPECT_TRUE(IsUntouched());
            return nOpened;
        },
        [this] { ExpectToWork(); });
}

// The dialog's library is there all the same; what could not be given back is one more reference to it.
TEST_F(OpenDialogFault, OfKeepingTheDialogsLibraryDoesNotKeepTheDialogAway)
{
    const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                            reinterpret_cast<void*>(&FindAnswer));
    for (const char* const pszFunction : {"GetModuleHandleExA", "FreeLibrary"})
    {
        SCOPED_TRACE(pszFunction);
        const CallersState state = CallersState::Now();
        {
            const FailingCall failing(pTarn->Module(), pszFunction);
            ASSERT_TRUE(failing.IsActive());
            EXPECT_EQ(Open(), 1);
            EXPECT_EQ(FailingCall::Calls(), 1);
            EXPECT_STREQ(buffer, kChosen);
            EXPECT_EQ(CallersState::Now(), state);
        }
        Fill();
        EXPECT_EQ(Open(), 1);
        Fill();
    }
}

TEST_F(OpenDialogFault, OfTheActiveWindowLeavesTheDialogWithoutAnOwner)
{
    ExpectCleanFault(
        1,
        [this] {
            const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                                    reinterpret_cast<void*>(&FindAnswer));
            const FailingCall failing(pTarn->Module(), "GetActiveWindow");
            g_asked.hOwner = ::GetDesktopWindow();
            const int nOpened = Open();
            EXPECT_GE(FailingCall::Calls(), 1);
            EXPECT_EQ(g_asked.hOwner, nullptr);
            EXPECT_STREQ(buffer, kChosen);
            Fill();
            return nOpened;
        },
        [this] { ExpectToWork(); });
}

// The installer's other windows take clicks while the dialog is open, or another of them is active
// afterwards; the dialog does its work.
TEST_F(OpenDialogFault, OfKeepingOtherWindowsFromClicksChangesNothingElse)
{
    const HostWindow first(0, 0, 100, 100);
    const HostWindow second(100, 0, 200, 100);
    ::ShowWindow(first.Handle(), SW_SHOW);
    ::ShowWindow(second.Handle(), SW_SHOW);
    for (const char* const pszFunction : {"EnumWindows", "EnableWindow", "SetActiveWindow"})
    {
        SCOPED_TRACE(pszFunction);
        ExpectCleanFault(
            1,
            [&] {
                const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                                        reinterpret_cast<void*>(&FindAnswer));
                ::SetActiveWindow(first.Handle());
                g_hToActivate = second.Handle();
                const FailingCall failing(pTarn->Module(), pszFunction);
                const int nOpened = Open();
                EXPECT_GE(FailingCall::Calls(), 1);
                EXPECT_STREQ(buffer, kChosen);
                EXPECT_TRUE(::IsWindowEnabled(first.Handle()));
                EXPECT_TRUE(::IsWindowEnabled(second.Handle()));
                g_hToActivate = nullptr;
                Fill();
                return nOpened;
            },
            [this] { ExpectToWork(); });
    }
}

// It counts as one that does not handle messages.
TEST_F(OpenDialogFault, OfAskingAWindowOfAnotherThreadLeavesThatOneAlone)
{
    const HostWindow installer(0, 0, 100, 100);
    ::ShowWindow(installer.Handle(), SW_SHOW);
    ExpectCleanFault(
        1,
        [&] {
            int nOpened = 0;
            DriverThread section([&] {
                pTarn->DoWaitDlgModless(installer.Handle(), "of a section", "x");
                const ImportPatch patch(pTarn->Module(), "GetProcAddress",
                                        reinterpret_cast<void*>(&FindAnswer));
                const FailingCall failing(pTarn->Module(), "SendMessageTimeoutA");
                g_hToLookAt = installer.Handle();
                nOpened = Open();
                EXPECT_GE(FailingCall::Calls(), 1);
                EXPECT_TRUE(g_bEnabled);
                g_hToLookAt = nullptr;
                pTarn->CloseWaitDlg();
            });
            section.Join();
            Fill();
            return nOpened;
        },
        [this] { ExpectToWork(); }, CostOfAThreadWithADialog());
}
} // namespace
