// CDialog: commands, and what its handlers throw.
#include <afxdlgs.h>
#include <afxwin.h>

#include "tests/support/ImportPatch.h"
#include "tests/support/WindowDriver.h"
#include "ui/resource.h"

#include "framework/windows/ModalOwner.h"

#include <gtest/gtest.h>

using namespace window_driver;

namespace
{
constexpr WPARAM kOtherCommand = 77;

class TestDialog : public CDialog
{
public:
    explicit TestDialog(CWnd* pParentWnd = nullptr) : CDialog(IDD_WAITDLG, pParentWnd) {}

    WPARAM m_nCommand = 0;          // posted to itself as soon as it is there
    void (*m_pfnThrow)() = nullptr; // called while it is made, and on OK
    int m_nThrown = 0;

protected:
    BOOL OnInitDialog() override
    {
        if (m_nCommand != 0)
            ::PostMessageA(m_hWnd, WM_COMMAND, m_nCommand, 0);
        Throw();
        return CDialog::OnInitDialog();
    }
    void OnOK() override
    {
        Throw();
        CDialog::OnOK();
    }

private:
    void Throw()
    {
        if (m_pfnThrow == nullptr)
            return;
        ++m_nThrown;
        m_pfnThrow();
    }
};

int g_nExceptions = 0; // that are not freed

class CountedException : public CException
{
public:
    CountedException() { ++g_nExceptions; }
    ~CountedException() override { --g_nExceptions; }
};
} // namespace

TEST(CDialog, EndsWithTheCommandThatItWasGiven)
{
    for (const int nCommand : {IDOK, IDCANCEL})
    {
        TestDialog dlg;
        dlg.m_nCommand = static_cast<WPARAM>(nCommand);
        EXPECT_EQ(dlg.DoModal(), nCommand);
    }
}

TEST(CDialog, LeavesOtherCommandsAlone)
{
    TestDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG));
    HWND const hWnd = dlg.GetSafeHwnd();
    EXPECT_EQ(::SendMessageA(hWnd, WM_COMMAND, kOtherCommand, 0), 0);
    EXPECT_TRUE(::IsWindowVisible(hWnd));
    ::SendMessageA(hWnd, WM_COMMAND, IDCANCEL, 0);
    EXPECT_FALSE(::IsWindowVisible(hWnd)) << "a modeless one is hidden";
    dlg.DestroyWindow();
}

TEST(CDialog, IsOwnedByItsParent)
{
    TestDialog parent;
    ASSERT_TRUE(parent.Create(IDD_WAITDLG));
    TestDialog child;
    ASSERT_TRUE(child.Create(IDD_WAITDLG, &parent));
    EXPECT_EQ(::GetWindow(child.GetSafeHwnd(), GW_OWNER), parent.GetSafeHwnd());
    EXPECT_EQ(ModalOwner(&parent).Handle(), parent.GetSafeHwnd());
    child.DestroyWindow();
    parent.DestroyWindow();
    EXPECT_EQ(ModalOwner(&parent).Handle(), ModalOwner(nullptr).Handle())
        << "without a window it is no owner";
}

TEST(CDialog, LetsNoExceptionOutToTheSystem)
{
    for (void (*const pfnThrow)() : {+[] { AfxThrowInvalidArgException(); },
                                     +[] { throw new CountedException; }, +[] { throw 1; }})
    {
        TestDialog dlg;
        dlg.m_pfnThrow = pfnThrow;
        ASSERT_TRUE(dlg.Create(IDD_WAITDLG));
        EXPECT_EQ(::SendMessageA(dlg.GetSafeHwnd(), WM_COMMAND, IDOK, 0), 0);
        EXPECT_EQ(dlg.m_nThrown, 2);
        EXPECT_EQ(g_nExceptions, 0);
        EXPECT_TRUE(::IsWindow(dlg.GetSafeHwnd()));
        dlg.DestroyWindow();
    }
}

TEST(CDialog, IsMovedWithinTheOrderThatItIsIn)
{
    TestDialog dlg;
    ASSERT_TRUE(dlg.Create(IDD_WAITDLG));
    EXPECT_TRUE(dlg.SetWindowPos(nullptr, 30, 40, 0, 0, SWP_NOSIZE | SWP_NOZORDER));
    RECT rc = {};
    ASSERT_TRUE(::GetWindowRect(dlg.GetSafeHwnd(), &rc));
    EXPECT_EQ(rc.left, 30);
    EXPECT_EQ(rc.top, 40);
    dlg.DestroyWindow();
}

TEST(CFileDialog, StartsWithWhatItIsGiven)
{
    CFileDialog bare(TRUE);
    EXPECT_EQ(bare.GetOFN().lStructSize, sizeof(OPENFILENAMEA));
    EXPECT_STREQ(bare.GetOFN().lpstrFile, "");
    EXPECT_EQ(bare.GetOFN().lpstrFilter, nullptr);
    CFileDialog given(TRUE, "txt", "a.txt", OFN_FILEMUSTEXIST, "Text|*.txt||", nullptr,
                      OPENFILENAME_SIZE_VERSION_400A);
    EXPECT_EQ(given.GetOFN().lStructSize, static_cast<DWORD>(OPENFILENAME_SIZE_VERSION_400A));
    EXPECT_STREQ(given.GetOFN().lpstrFile, "a.txt");
    EXPECT_STREQ(given.GetOFN().lpstrDefExt, "txt");
    EXPECT_STREQ(given.GetOFN().lpstrFilter, "Text");
    EXPECT_NE(given.GetOFN().Flags & OFN_FILEMUSTEXIST, 0U);
}

TEST(CCmdTarget, IsTheEndOfEveryChainOfMaps)
{
    class OpenTarget : public CCmdTarget
    {
    public:
        using CCmdTarget::GetMessageMap;
    };
    const OpenTarget target;
    const AFX_MSGMAP* const pMap = target.GetMessageMap();
    ASSERT_NE(pMap, nullptr);
    EXPECT_EQ(pMap->pfnGetBaseMap, nullptr);
    EXPECT_EQ(pMap->lpEntries[0].pfnMessage, nullptr);
    EXPECT_EQ(pMap->lpEntries[0].pfnTimer, nullptr);
}

// Not the program's import, which is replaced.
using DestroyFunction = BOOL(WINAPI*)(HWND);
const auto g_pfnDestroy = reinterpret_cast<DestroyFunction>(
    reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("user32.dll"), "DestroyWindow")));

BOOL WINAPI DestroyAndSayNo(HWND hWnd)
{
    g_pfnDestroy(hWnd);
    return FALSE;
}

TEST(CWnd, TakesItsWindowAlong)
{
    HWND hWnd = nullptr;
    {
        TestDialog dlg;
        ASSERT_TRUE(dlg.Create(IDD_WAITDLG));
        hWnd = dlg.GetSafeHwnd();
    }
    EXPECT_FALSE(::IsWindow(hWnd));
    const ImportPatch patch(::GetModuleHandleA(nullptr), "DestroyWindow",
                            reinterpret_cast<void*>(&DestroyAndSayNo));
    ASSERT_TRUE(patch.IsActive());
    {
        TestDialog dlg;
        ASSERT_TRUE(dlg.Create(IDD_WAITDLG));
        hWnd = dlg.GetSafeHwnd();
    }
    EXPECT_FALSE(::IsWindow(hWnd)) << "whatever the system says";
}

TEST(CWnd, OfNoObjectIsLeftToTheSystem)
{
    const HostWindow host(0, 0, 10, 10);
    ::SetWindowTextA(host.Handle(), "plain");
    char szText[16] = "";
    EXPECT_EQ(
        AfxWndProc(host.Handle(), WM_GETTEXT, sizeof(szText), reinterpret_cast<LPARAM>(szText)), 5);
    EXPECT_STREQ(szText, "plain");
}
