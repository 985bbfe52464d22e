// DoFileOpenDialog of the built DLL, with the system's dialog on the screen and a second thread in the
// user's place.
#include "include/tarn.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <cstring>
#include <functional>
#include <string>

using namespace window_driver;

namespace
{
constexpr const char* kCaption = "Choose a file under test";
constexpr int kFileNameEdit = 1148;
constexpr int kFileTypeCombo = 1136;
constexpr int kReadOnlyBox = 1040;
constexpr char kUntouched = '\x5A';

struct Descendant
{
    const char* pszClass;
    HWND hFound;
};

BOOL CALLBACK VisitDescendant(HWND hWnd, LPARAM lParam)
{
    auto& search = *reinterpret_cast<Descendant*>(lParam);
    char szClass[64] = "";
    ::GetClassNameA(hWnd, szClass, sizeof(szClass));
    if (::lstrcmpiA(szClass, search.pszClass) != 0)
        return TRUE;
    search.hFound = hWnd;
    return FALSE;
}

HWND FindDescendant(HWND hWnd, const char* pszClass)
{
    Descendant search = {pszClass, nullptr};
    ::EnumChildWindows(hWnd, &VisitDescendant, reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

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
            // Filled and ready when it is shown.
            ASSERT_TRUE(WaitFor([&] { return ::IsWindowVisible(hDialog) != FALSE; }));
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
    static void Type(HWND hDialog, const std::string& text)
    {
        ::SendDlgItemMessageA(hDialog, kFileNameEdit, WM_SETTEXT, 0,
                              reinterpret_cast<LPARAM>(text.c_str()));
    }
    static std::string FileName(HWND hDialog)
    {
        return TextOf(::GetDlgItem(hDialog, kFileNameEdit));
    }
    static void Confirm(HWND hDialog) { ::PostMessageA(hDialog, WM_COMMAND, IDOK, 0); }
    static void Cancel(HWND hDialog) { ::PostMessageA(hDialog, WM_COMMAND, IDCANCEL, 0); }

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

TEST_F(OpenDialog, TakesANameTypedOnTheKeyboard)
{
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       TypeKeys("first.lic");
                       EXPECT_TRUE(WaitFor([&] { return FileName(hDialog) == "first.lic"; }));
                       TypeKeys("\r");
                   }),
              1);
    EXPECT_STRCASEEQ(buffer, (folder + "\\first.lic").c_str());
}

TEST_F(OpenDialog, TakesAFilePickedInTheList)
{
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       HWND hList = nullptr;
                       EXPECT_TRUE(WaitFor([&] {
                           hList = FindDescendant(hDialog, WC_LISTVIEWA);
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
        HWND const hCombo = ::GetDlgItem(hDialog, kFileTypeCombo);
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
        EXPECT_EQ(::SendDlgItemMessageA(hDialog, kFileTypeCombo, CB_GETCOUNT, 0, 0), 1);
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
            EXPECT_EQ(::SendDlgItemMessageA(hDialog, kFileTypeCombo, CB_GETCOUNT, 0, 0), 0);
            Cancel(hDialog);
        });
    }
}

TEST_F(OpenDialog, ShowsTheReadOnlyBoxAndIgnoresIt)
{
    EXPECT_EQ(Open({},
                   [](HWND hDialog) {
                       HWND const hBox = ::GetDlgItem(hDialog, kReadOnlyBox);
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
    EXPECT_EQ(
        Open({}, [](HWND hDialog) { PostKey(::GetDlgItem(hDialog, kFileNameEdit), VK_ESCAPE); }),
        0);
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
                       ::PostMessageA(hBox, WM_COMMAND, IDOK, 0);
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
                hDialog = ::FindWindowA("#32770", nullptr);
                return hDialog != nullptr && ::IsWindowVisible(hDialog) != FALSE;
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
                   !::GetUpdateRect(::GetDlgItem(hDialog, kReadOnlyBox), nullptr, FALSE);
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
