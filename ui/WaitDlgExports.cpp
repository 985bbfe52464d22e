#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "ui/WaitDlgModless.h"

// The one wait window that CloseWaitDlg knows; null when none is open. Owned; touched by the two
// exports here only, on the caller's thread.
static CWaitDlgModless* g_pWaitDlg = nullptr;

extern "C" int DoWaitDlgModless(HWND parent, const char* title, const char* message)
{
    TARN_EXPORT_GUARD();
    // An older window that was not closed stays on its own until its watchdog hides it.
    g_pWaitDlg = new CWaitDlgModless(nullptr);
    g_pWaitDlg->m_strTitle = title;
    g_pWaitDlg->m_strMessage = message;
    g_pWaitDlg->Create(IDD_WAITDLG, nullptr);

    RECT rcParent;
    if (::GetWindowRect(parent, &rcParent))
    {
        RECT rcDlg = {};
        g_pWaitDlg->GetWindowRect(&rcDlg);
        const int nHalfWidth = (rcDlg.right - rcDlg.left) / 2;
        const int nHalfHeight = (rcDlg.bottom - rcDlg.top) / 2;
        const int x = (rcParent.left + rcParent.right) / 2 - nHalfWidth;
        const int y = (rcParent.top + rcParent.bottom) / 2 - nHalfHeight;
        ::SetWindowPos(g_pWaitDlg->GetSafeHwnd(), HWND_TOPMOST, x, y, 0, 0,
                       SWP_NOSIZE | SWP_SHOWWINDOW);
    }
    g_pWaitDlg->ShowWindow(SW_SHOWNORMAL);
    g_pWaitDlg->UpdateWindow();
    return 0;
}

extern "C" int CloseWaitDlg(void)
{
    TARN_EXPORT_GUARD();
    if (g_pWaitDlg != nullptr)
    {
        CWaitDlgModless* const pDlg = g_pWaitDlg;
        pDlg->DestroyWindow();
        g_pWaitDlg = nullptr;
        delete pDlg;
    }
    return 0;
}
