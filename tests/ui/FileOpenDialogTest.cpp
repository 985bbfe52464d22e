// DoFileOpenDialog of the built DLL, with the system's dialog on the screen and a second thread in the
// user's place. Under Wine that is the classic dialog, on Windows the newer one.
#include "include/tarn.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/OpenDialogDriver.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/Wine.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <cstring>
#include <functional>
#include <string>

using namespace open_dialog_driver;
using namespace window_driver;

namespace
{
constexpr const char* kCaption = "Choose a file under test";
constexpr char kUntouched = '\x5A';

class OpenDialog : public ::testing::Test
{
protected:
    OpenDialog() : folder(temp.Path()), currentFolder("C:\\")
    {
        WriteBytes(temp / "first.lic", "1");
        WriteBytes(temp / "second.txt", "2");
        std::memset(buffer, kUntouched, sizeof(buffer));
        buffer[0] = '\0';
    }

    void SetUp() override
    {
        if (!MayTouchUsersSettings())
            GTEST_SKIP() << kDialogTouchesSettings;
        ASSERT_TRUE(tarn.IsComplete());
    }

    struct Arguments
    {
        std::string title = kCaption;
        const char* pszFilter = "Licence files (*.lic)|*.lic|All files|*.*||";
        const char* pszExtension = nullptr;
        bool bFolder = true;
    };

    // Opens the dialog with a user who waits for it; the user must close it.
    int Open(const Arguments& arguments, const std::function<void(HWND)>& user)
    {
        DriverThread driver([&] {
            HWND const hDialog = WaitForTopLevel(arguments.title);
            ASSERT_NE(hDialog, nullptr);
            ASSERT_TRUE(WaitFor([&] { return IsReady(hDialog); }));
            user(hDialog);
            // A user who failed must not leave the test waiting.
            if (!WaitFor([&] { return !::IsWindow(hDialog); }))
            {
                ADD_FAILURE() << "the dialog did not close";
                Cancel(hDialog);
            }
        });
        std::string initialFolder = folder;
        std::string title = arguments.title;
        return tarn.DoFileOpenDialog(arguments.bFolder ? &initialFolder[0] : nullptr, &title[0],
                                     arguments.pszFilter, arguments.pszExtension, buffer);
    }

    // On the keyboard, for whatever has the focus.
    static void TypeKeys(const std::string& text)
    {
        for (const char ch : text)
        {
            INPUT keys[2] = {};
            keys[0].type = INPUT_KEYBOARD;
            if (ch == '\r')
                keys[0].ki.wVk = VK_RETURN;
            else
            {
                keys[0].ki.wScan = static_cast<unsigned char>(ch);
                keys[0].ki.dwFlags = KEYEVENTF_UNICODE;
            }
            keys[1] = keys[0];
            keys[1].ki.dwFlags |= KEYEVENTF_KEYUP;
            EXPECT_EQ(::SendInput(2, keys, sizeof(INPUT)), 2U);
        }
    }
    // As in every installer, there is a window before there is a dialog. Without one, Wine loads its
    // display driver for the user's thread while this one loads the dialogs, and they lock each other
    // out now and then.
    HostWindow installer{0, 0, 10, 10};
    TempFolder temp;
    std::string folder;
    // The dialog may change it; a temporary folder could not be removed while it is current.
    CurrentFolder currentFolder;
    LoadedTarn tarn;
    char buffer[TARN_OPEN_PATH_SIZE + 16];
};
} // namespace

// Defined first, so that it runs before any dialog has been shown.
TEST(CommonDialogLibrary, IsNotLoadedBeforeTheDialogIsWanted)
{
    ASSERT_EQ(::GetModuleHandleA("comdlg32.dll"), nullptr);
    const LoadedTarn tarn;
    EXPECT_EQ(::GetModuleHandleA("comdlg32.dll"), nullptr);
}

TEST_F(OpenDialog, WritesTheFullPathOfATypedName)
{
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       Type(hDialog, "first.lic");
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, WritesNothingBehindThePath)
{
    Open({}, [](HWND hDialog) {
        Type(hDialog, "first.lic");
        Confirm(hDialog);
    });
    for (std::size_t i = std::strlen(buffer) + 1; i < sizeof(buffer); ++i)
        ASSERT_EQ(buffer[i], kUntouched) << i;
}

TEST_F(OpenDialog, TakesAFullPathThatIsTypedFromAnyFolder)
{
    Arguments arguments;
    arguments.bFolder = false;
    EXPECT_EQ(Open(arguments,
                   [this](HWND hDialog) {
                       Type(hDialog, folder + "\\second.txt");
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\second.txt").c_str());
}

// Keys go to the window in the foreground. Windows lets a program put its windows there only if the
// user was busy with it, or with the one that started it; Wine always does.
TEST_F(OpenDialog, TakesANameTypedOnTheKeyboard)
{
    bool bInForeground = false;
    const int nResult = Open({}, [&](HWND hDialog) {
        bInForeground = WaitFor([&] { return ::GetForegroundWindow() == hDialog; },
                                RunsUnderWine() ? kLimitMilliseconds : 3000);
        if (!bInForeground)
        {
            Cancel(hDialog);
            return;
        }
        TypeKeys("first.lic");
        EXPECT_TRUE(WaitFor([&] { return FileName(hDialog) == "first.lic"; }));
        TypeKeys("\r");
    });
    if (!bInForeground && !RunsUnderWine())
        GTEST_SKIP() << "Windows does not let this program's windows into the foreground now";
    EXPECT_EQ(nResult, 1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, TakesAFilePickedInTheList)
{
    if (!RunsUnderWine())
        GTEST_SKIP()
            << "Windows' newer dialog has no list view whose items can be selected by message";
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       HWND hList = nullptr;
                       EXPECT_TRUE(WaitFor([&] {
                           hList = FilesShown(hDialog);
                           return hList != nullptr &&
                                  ::SendMessageA(hList, LVM_GETITEMCOUNT, 0, 0) == 1;
                       })) << "the filter shows one of the two files";
                       LVITEMA item = {};
                       item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
                       item.state = item.stateMask;
                       ::SendMessageA(hList, LVM_SETITEMSTATE, 0, reinterpret_cast<LPARAM>(&item));
                       EXPECT_TRUE(WaitFor([&] { return FileName(hDialog) == "first.lic"; }));
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, StartsWithTheNameInTheBuffer)
{
    std::strcpy(buffer, "first.lic");
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       EXPECT_EQ(FileName(hDialog), "first.lic");
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, StartsWithoutANameForAnEmptyBuffer)
{
    Open({}, [](HWND hDialog) {
        EXPECT_EQ(FileName(hDialog), "");
        Cancel(hDialog);
    });
}

TEST_F(OpenDialog, OffersAFullPathInTheBufferAsTheInitialName)
{
    std::strcpy(buffer, (folder + "\\first.lic").c_str());
    Arguments arguments;
    arguments.bFolder = false;
    EXPECT_EQ(Open(arguments,
                   [](HWND hDialog) {
                       EXPECT_NE(FileName(hDialog).find("first.lic"), std::string::npos);
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, ShowsTheDisplayTextsOfTheFilter)
{
    Open({}, [](HWND hDialog) {
        HWND const hCombo = FileTypes(hDialog);
        EXPECT_EQ(::SendMessageA(hCombo, CB_GETCOUNT, 0, 0), 2);
        char szText[64] = "";
        ::SendMessageA(hCombo, CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(szText));
        EXPECT_STREQ(szText, "Licence files (*.lic)");
        ::SendMessageA(hCombo, CB_GETLBTEXT, 1, reinterpret_cast<LPARAM>(szText));
        EXPECT_STREQ(szText, "All files");
        Cancel(hDialog);
    });
}

TEST_F(OpenDialog, UsesAFilterWithoutItsClosingBarsToo)
{
    Arguments arguments;
    arguments.pszFilter = "Text|*.txt";
    Open(arguments, [](HWND hDialog) {
        EXPECT_EQ(::SendMessageA(FileTypes(hDialog), CB_GETCOUNT, 0, 0), 1);
        Cancel(hDialog);
    });
}

TEST_F(OpenDialog, HasNoFileTypesWithoutAFilter)
{
    for (const char* const pszFilter : {static_cast<const char*>(nullptr), ""})
    {
        Arguments arguments;
        arguments.pszFilter = pszFilter;
        Open(arguments, [](HWND hDialog) {
            EXPECT_EQ(::SendMessageA(FileTypes(hDialog), CB_GETCOUNT, 0, 0), 0);
            Cancel(hDialog);
        });
    }
}

TEST_F(OpenDialog, ShowsTheReadOnlyBoxAndIgnoresIt)
{
    if (!RunsUnderWine())
        GTEST_SKIP() << "Windows' newer dialog has a menu at its Open button in the box's place";
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       HWND const hBox = ReadOnlyBox(hDialog);
                       EXPECT_TRUE(::IsWindowVisible(hBox));
                       ::SendMessageA(hBox, BM_SETCHECK, BST_CHECKED, 0);
                       Type(hDialog, "first.lic");
                       Confirm(hDialog);
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, LeavesTheBufferAloneOnCancel)
{
    char before[sizeof(buffer)];
    std::strcpy(buffer, "kept.lic");
    std::memcpy(before, buffer, sizeof(buffer));
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       Type(hDialog, "first.lic");
                       Cancel(hDialog);
                   }),
              0);
    EXPECT_EQ(std::memcmp(buffer, before, sizeof(buffer)), 0);
}

TEST_F(OpenDialog, CancelsOnEscape)
{
    EXPECT_EQ(Open({}, [](HWND hDialog) { PostKey(FileNameBox(hDialog), VK_ESCAPE); }), 0);
    EXPECT_STREQ(buffer, "");
}

TEST_F(OpenDialog, TellsTheUserOfAMissingFileAndStaysOpen)
{
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       Type(hDialog, "no such file.lic");
                       Confirm(hDialog);
                       HWND hBox = nullptr;
                       EXPECT_TRUE(WaitFor([&] {
                           hBox = ::GetLastActivePopup(hDialog);
                           return hBox != nullptr && hBox != hDialog &&
                                  ::IsWindowVisible(hBox) != FALSE;
                       }));
                       AnswerBox(hBox);
                       EXPECT_TRUE(WaitFor([&] { return !::IsWindow(hBox); }));
                       EXPECT_TRUE(::IsWindowVisible(hDialog));
                       Cancel(hDialog);
                   }),
              0);
    EXPECT_STREQ(buffer, "");
}

TEST_F(OpenDialog, HasTheSystemsOwnTitleForNullAndEmptyTitles)
{
    std::string titles[2];
    int i = 0;
    char szEmpty[] = "";
    for (char* const pszTitle : {static_cast<char*>(nullptr), szEmpty})
    {
        DriverThread driver([&] {
            HWND hDialog = nullptr;
            ASSERT_TRUE(WaitFor([&] {
                hDialog = FindVisibleDialog();
                return hDialog != nullptr;
            }));
            titles[i] = TextOf(hDialog);
            Cancel(hDialog);
        });
        EXPECT_EQ(tarn.DoFileOpenDialog(szEmpty, pszTitle, nullptr, nullptr, buffer), 0);
        driver.Join();
        ++i;
    }
    EXPECT_NE(titles[0], "");
    EXPECT_EQ(titles[0], titles[1]);
}

TEST_F(OpenDialog, IsOwnedByTheCallersActiveWindow)
{
    const HostWindow host(100, 100, 700, 500);
    ::ShowWindow(host.Handle(), SW_SHOW);
    ::SetActiveWindow(host.Handle());
    ASSERT_EQ(::GetActiveWindow(), host.Handle());
    Open({}, [&](HWND hDialog) {
        EXPECT_EQ(::GetWindow(hDialog, GW_OWNER), host.Handle());
        EXPECT_FALSE(::IsWindowEnabled(host.Handle()));
        ::RedrawWindow(hDialog, nullptr, nullptr,
                       RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        EXPECT_TRUE(WaitFor([hDialog] {
            return !::GetUpdateRect(::GetDlgItem(hDialog, IDCANCEL), nullptr, FALSE) &&
                   !::GetUpdateRect(ReadOnlyBox(hDialog), nullptr, FALSE);
        }));
        EXPECT_TRUE(SaveScreenshot("open-dialog"));
        Cancel(hDialog);
    });
    EXPECT_TRUE(::IsWindowEnabled(host.Handle()));
}

TEST_F(OpenDialog, ReturnsZeroWhenTheInitialNameCannotBeAName)
{
    std::strcpy(buffer, "a|b?:<>.lic");
    // Shown or refused, that is the system's business; the answer is the same.
    DriverThread driver([] {
        HWND const hDialog = WaitForTopLevel(kCaption);
        if (hDialog != nullptr)
            Cancel(hDialog);
    });
    std::string title = kCaption;
    EXPECT_EQ(tarn.DoFileOpenDialog(nullptr, &title[0], nullptr, nullptr, buffer), 0);
    EXPECT_STREQ(buffer, "a|b?:<>.lic");
}

TEST_F(OpenDialog, TakesAnOverlongInitialNameAsFarAsItGoes)
{
    std::string name(TARN_OPEN_PATH_SIZE + 200, 'n');
    DriverThread driver([] {
        HWND const hDialog = WaitForTopLevel(kCaption);
        if (hDialog != nullptr)
        {
            EXPECT_LT(FileName(hDialog).size(), static_cast<std::size_t>(TARN_OPEN_PATH_SIZE));
            Cancel(hDialog);
        }
    });
    const std::string before = name;
    std::string title = kCaption;
    EXPECT_EQ(tarn.DoFileOpenDialog(nullptr, &title[0], nullptr, nullptr, &name[0]), 0);
    EXPECT_EQ(name, before);
}

TEST_F(OpenDialog, ComesFromTheSystemFolderOnly)
{
    // A file of that name in the current folder and one beside the program would both be found first.
    WriteBytes(temp / "comdlg32.dll", "not a library");
    ASSERT_TRUE(::SetCurrentDirectoryA(folder.c_str()));
    std::string loadedFrom;
    Open({}, [&](HWND hDialog) {
        char szPath[MAX_PATH] = "";
        ::GetModuleFileNameA(::GetModuleHandleA("comdlg32.dll"), szPath, MAX_PATH);
        loadedFrom = szPath;
        Cancel(hDialog);
    });
    char szSystem[MAX_PATH];
    ::GetSystemDirectoryA(szSystem, MAX_PATH);
    EXPECT_STRCASEEQ(loadedFrom.c_str(), (std::string(szSystem) + "\\comdlg32.dll").c_str());
}

// The program's first dialog decides: the system compares later initial folders with its.
class OpenDialogInAChild : public OpenDialog
{
};

constexpr int kOpensWhereTold = 40;
constexpr int kOpensWhereLast = 41;

TEST_F(OpenDialogInAChild, DISABLED_OpensAgainWithTheSameInitialFolder)
{
    const std::string other = temp.MakeFolder("other");
    WriteBytes(other + "\\other.lic", "3");
    for (const std::string& choice : {folder + "\\first.lic", other + "\\other.lic"})
    {
        ASSERT_EQ(Open({},
                       [&](HWND hDialog) {
                           Type(hDialog, choice);
                           Confirm(hDialog);
                       }),
                  1);
        ASSERT_STRCASEEQ(buffer, choice.c_str());
        buffer[0] = '\0';
    }
    // Both names are there, each in its folder: what the dialog makes of a bare one tells where it is.
    WriteBytes(temp / "same.lic", "4");
    WriteBytes(other + "\\same.lic", "4");
    ASSERT_EQ(Open({},
                   [](HWND hDialog) {
                       Type(hDialog, "same.lic");
                       Confirm(hDialog);
                   }),
              1);
    const std::string chosen(buffer);
    ::ExitProcess(
        ::lstrcmpiA(chosen.c_str(), (folder + "\\same.lic").c_str()) == 0  ? kOpensWhereTold
        : ::lstrcmpiA(chosen.c_str(), (other + "\\same.lic").c_str()) == 0 ? kOpensWhereLast
                                                                           : 1);
}

// Windows 7 and later: an initial folder that is the same as the program's first time gives way to the
// folder of the latest choice. Wine opens where it is told.
TEST_F(OpenDialog, OpensInTheSameFolderAgainWhereWindowsOpensInThatOfTheLatestChoice)
{
    const DWORD nEnd =
        ExitCodeOfChild("OpenDialogInAChild.DISABLED_OpensAgainWithTheSameInitialFolder");
    EXPECT_EQ(nEnd, static_cast<DWORD>(RunsUnderWine() ? kOpensWhereTold : kOpensWhereLast));
}
