// What the user sees and picks, in the process's code page, of which there is a run for each: see Names.h.
// Texts are read back as the system holds them, not as bytes.
#include "tests/codepages/Names.h"

#include "include/tarn.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/OpenDialogDriver.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/WindowDriver.h"

#include <cstring>

using namespace open_dialog_driver;
using namespace window_driver;

namespace
{
constexpr int kMessageControl = 14000;

std::wstring WideTextOf(HWND hWnd)
{
    WCHAR szText[512] = L"";
    ::SendMessageW(hWnd, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(szText));
    return szText;
}

class CodePageWindows : public InItsCodePage
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        InItsCodePage::SetUp();
    }
    ~CodePageWindows() override { tarn.CloseWaitDlg(); }

    // Wine's display driver is loaded with a thread's first window.
    const HostWindow installer{0, 0, 10, 10};
    const LoadedTarn tarn;
};

class CodePageOpenDialog : public CodePageWindows
{
protected:
    CodePageOpenDialog() : m_elsewhere("C:\\") {}
    void SetUp() override
    {
        if (!MayTouchUsersSettings())
            GTEST_SKIP() << kDialogTouchesSettings;
        CodePageWindows::SetUp();
    }

    const TempFolder temp;

private:
    CurrentFolder m_elsewhere;
};
} // namespace

TEST_F(CodePageWindows, ShowTitleAndMessageAsTheyWereMeant)
{
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        const std::string message = name.bytes + " - " + name.bytes;
        EXPECT_EQ(tarn.DoWaitDlgModless(nullptr, name.bytes.c_str(), message.c_str()), 0);
        HWND const hWnd = FindVisibleDialog();
        ASSERT_NE(hWnd, nullptr);
        EXPECT_EQ(WideTextOf(hWnd), name.wide);
        EXPECT_EQ(WideTextOf(::GetDlgItem(hWnd, kMessageControl)), name.wide + L" - " + name.wide);
        tarn.CloseWaitDlg();
    }
}

TEST_F(CodePageWindows, NameTheFileThatCannotBeWrittenAsItWasMeant)
{
    const TempFolder temp;
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        std::wstring said;
        DriverThread user([&] {
            HWND hBox = nullptr;
            ASSERT_TRUE(WaitFor([&] { return (hBox = FindVisibleDialog()) != nullptr; }));
            ASSERT_TRUE(WaitFor([&] { return FindDescendant(hBox, "Static") != nullptr; }));
            for (HWND hPart = ::GetWindow(hBox, GW_CHILD); hPart != nullptr;
                 hPart = ::GetWindow(hPart, GW_HWNDNEXT))
                said += WideTextOf(hPart);
            // As a click: the number of the one button is not the same everywhere.
            HWND const hButton = FindDescendant(hBox, "Button");
            ::PostMessageA(hBox, WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(hButton), BN_CLICKED),
                           reinterpret_cast<LPARAM>(hButton));
        });
        EXPECT_EQ(tarn.Write_ch_config_File((temp / name.bytes + "x").c_str()), 0);
        user.Join();
        EXPECT_NE(said.find(L"\\" + name.wide + L"x\\embedch\\config\\chrc"), std::wstring::npos);
    }
}

// The folder, the title, the kinds of files and the first name go in; the path of what was picked comes
// out.
TEST_F(CodePageOpenDialog, TakesAndGivesTextsAsTheyWereMeant)
{
    for (const Name& name : names)
    {
        SCOPED_TRACE(name.bytes);
        std::string folder = temp / name.bytes;
        ASSERT_TRUE(::CreateDirectoryA(folder.c_str(), nullptr));
        const std::string picked = name.bytes + "2.lic";
        WriteBytes(folder + "\\" + name.bytes + ".lic", "1");
        WriteBytes(folder + "\\" + picked, "2");

        char buffer[TARN_OPEN_PATH_SIZE] = "";
        std::strcpy(buffer, (name.bytes + ".lic").c_str());
        std::string title = "Open " + name.bytes;
        // A bar ends a part of the filter, and only a whole character is one.
        const std::string filter = name.bytes + " (*.lic)|*.lic|All|*.*||";
        DriverThread user([&] {
            HWND hDialog = nullptr;
            ASSERT_TRUE(WaitFor([&] {
                hDialog = FindVisibleDialog();
                return hDialog != nullptr && IsReady(hDialog);
            }));
            EXPECT_EQ(WideTextOf(hDialog), L"Open " + name.wide);
            EXPECT_EQ(WideTextOf(FileNameBox(hDialog)), name.wide + L".lic");
            WCHAR szType[64] = L"";
            EXPECT_EQ(::SendMessageW(FileTypes(hDialog), CB_GETCOUNT, 0, 0), 2);
            ::SendMessageW(FileTypes(hDialog), CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(szType));
            EXPECT_EQ(std::wstring(szType), name.wide + L" (*.lic)");
            ::SendMessageW(FileNameBox(hDialog), WM_SETTEXT, 0,
                           reinterpret_cast<LPARAM>((name.wide + L"2.lic").c_str()));
            Confirm(hDialog);
            if (!WaitFor([&] { return !::IsWindow(hDialog); }))
            {
                ADD_FAILURE() << "the dialog did not close";
                Cancel(hDialog);
            }
        });
        EXPECT_EQ(tarn.DoFileOpenDialog(&folder[0], &title[0], filter.c_str(), "lic", buffer), 1);
        user.Join();
        EXPECT_EQ(std::string(buffer), folder + "\\" + picked);
    }
}
