// What the user sees and picks, in the process's code page, of which there is a run for each: see Names.h.
// Texts are read back as the system holds them, not as bytes.
#include "tests/codepages/Names.h"

#include "include/tarn.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/OpenDialogDriver.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/WindowDriver.h"

#include <cstdio>
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

std::string InCodePage(const std::wstring& wide)
{
    char szBytes[1024] = "";
    ::WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, szBytes, sizeof(szBytes), nullptr, nullptr);
    return szBytes;
}

std::wstring FromCodePage(const std::string& bytes)
{
    WCHAR szWide[512] = L"";
    ::MultiByteToWideChar(CP_ACP, 0, bytes.c_str(), -1, szWide, 512);
    return szWide;
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

// A path of up to 259 bytes is given back whole, a longer one not at all, and never a part of one: neither
// behind the caller's 260 bytes nor within them is anything else written.
TEST_F(CodePageOpenDialog, GivesAPathWholeOrNotAtAll)
{
    const std::wstring letter(1, L'\u6F22');
    const std::string bytes = InCodePage(letter);
    if (bytes.size() < 2)
        GTEST_SKIP() << "a path of 260 bytes is one of 260 characters here, which no dialog gives";
    const std::wstring wideTemp = FromCodePage(temp.Path());
    std::wstring folder = wideTemp + L"\\";
    folder.append(60, letter[0]); // no name too long for the file system below Wine
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    int nGiven = 0;
    int nRefused = 0;
    for (std::size_t cb = 255; cb <= 274; ++cb)
    {
        SCOPED_TRACE(cb);
        std::wstring file = L"x";
        while (InCodePage(folder + L"\\" + file).size() + bytes.size() <= cb)
            file += letter;
        while (InCodePage(folder + L"\\" + file).size() < cb)
            file += L'a';
        const std::wstring path = folder + L"\\" + file;
        HANDLE const hFile = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                           FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(hFile, INVALID_HANDLE_VALUE);
        ::CloseHandle(hFile);

        GuardedBuffer buffer(TARN_OPEN_PATH_SIZE);
        buffer.Data()[0] = '\0';
        std::string folderBytes = InCodePage(folder);
        char title[] = "Open a long path";
        DriverThread user([&] {
            HWND hDialog = nullptr;
            ASSERT_TRUE(WaitFor([&] {
                hDialog = FindVisibleDialog();
                return hDialog != nullptr && IsReady(hDialog);
            }));
            ::SendMessageW(FileNameBox(hDialog), WM_SETTEXT, 0,
                           reinterpret_cast<LPARAM>(file.c_str()));
            Confirm(hDialog);
            if (!WaitFor([&] { return !::IsWindow(hDialog); }))
            {
                ADD_FAILURE() << "the dialog did not close";
                Cancel(hDialog);
            }
        });
        const int nResult =
            tarn.DoFileOpenDialog(&folderBytes[0], title, nullptr, nullptr, buffer.Data());
        user.Join();
        if (cb < TARN_OPEN_PATH_SIZE)
        {
            EXPECT_EQ(nResult, 1);
            EXPECT_EQ(std::string(buffer.Data()), InCodePage(path));
            EXPECT_TRUE(buffer.IsUntouchedFrom(cb + 1));
            ++nGiven;
        }
        else
        {
            EXPECT_EQ(nResult, 0);
            EXPECT_EQ(buffer.Data()[0], '\0');
            EXPECT_TRUE(buffer.IsUntouchedFrom(1));
            ++nRefused;
        }
        EXPECT_TRUE(buffer.IsFrontIntact());
        ::DeleteFileW(path.c_str());
    }
    ::RemoveDirectoryW(folder.c_str());
    std::printf("%d paths given, %d refused\n", nGiven, nRefused);
}
