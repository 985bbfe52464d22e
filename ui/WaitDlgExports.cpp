#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "ui/WaitDlgModless.h"

namespace
{
// A window that DoWaitDlgModless opened, and what it takes to know when its object may be freed.
struct ModelessWaitDlg
{
    CWaitDlgModless dlg{nullptr};
    const DWORD nThreadID = ::GetCurrentThreadId(); // the window's; only there the object is freed
    bool bOpening = true; // DoWaitDlgModless is at work on it, further up that thread
    bool bClosed = false; // CloseWaitDlg has been called for it, on that thread
};
} // namespace

// The one wait window that CloseWaitDlg knows; null when none is open. Owned. Only exchanged, since
// showing and destroying a window calls the installer, which may call either export again, and an
// installer may close on another thread than it opens on: whoever takes the pointer has it alone.
static ModelessWaitDlg* volatile g_pWaitDlg = nullptr;

namespace
{
ModelessWaitDlg* Exchange(ModelessWaitDlg* pWaitDlg)
{
    return static_cast<ModelessWaitDlg*>(
        ::InterlockedExchangePointer(reinterpret_cast<void* volatile*>(&g_pWaitDlg), pWaitDlg));
}

// On the window's thread. A window that the system does not destroy keeps its object, until the
// library is unloaded; so does one that is still being opened, until that is done.
void DestroyClosed(ModelessWaitDlg* pWaitDlg)
{
    pWaitDlg->bClosed = true;
    pWaitDlg->dlg.DestroyWindow();
    if (!pWaitDlg->bOpening && !::IsWindow(pWaitDlg->dlg.GetSafeHwnd()))
        delete pWaitDlg;
}

// The extent of DoWaitDlgModless: keeps the object while the installer is called from within, and
// does what a CloseWaitDlg from within has left.
class Opening
{
public:
    explicit Opening(ModelessWaitDlg* pWaitDlg) : m_pWaitDlg(pWaitDlg) {}
    ~Opening()
    {
        m_pWaitDlg->bOpening = false;
        if (m_pWaitDlg->bClosed)
            DestroyClosed(m_pWaitDlg);
    }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

private:
    ModelessWaitDlg* m_pWaitDlg;
};
} // namespace

extern "C" int DoWaitDlgModless(HWND parent, const char* title, const char* message)
{
    TARN_EXPORT_GUARD();
    auto* const pWaitDlg = new ModelessWaitDlg;
    const Opening opening(pWaitDlg);
    // An older window that was not closed stays on its own until its watchdog hides it.
    Exchange(pWaitDlg);
    CWaitDlgModless& dlg = pWaitDlg->dlg;
    dlg.m_strTitle = title;
    dlg.m_strMessage = message;
    dlg.Create(IDD_WAITDLG, nullptr);

    RECT rcParent;
    if (::GetWindowRect(parent, &rcParent))
    {
        RECT rcDlg = {};
        dlg.GetWindowRect(&rcDlg);
        const int nHalfWidth = (rcDlg.right - rcDlg.left) / 2;
        const int nHalfHeight = (rcDlg.bottom - rcDlg.top) / 2;
        const int x = (rcParent.left + rcParent.right) / 2 - nHalfWidth;
        const int y = (rcParent.top + rcParent.bottom) / 2 - nHalfHeight;
        ::SetWindowPos(dlg.GetSafeHwnd(), HWND_TOPMOST, x, y, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    }
    dlg.ShowWindow(SW_SHOWNORMAL);
    dlg.UpdateWindow();
    return 0;
}

extern "C" int CloseWaitDlg(void)
{
    TARN_EXPORT_GUARD();
    ModelessWaitDlg* const pWaitDlg = Exchange(nullptr);
    if (pWaitDlg == nullptr)
        return 0;
    if (pWaitDlg->nThreadID == ::GetCurrentThreadId())
        DestroyClosed(pWaitDlg);
    else
        pWaitDlg->dlg.DestroyWindow(); // refused: its thread may be in its code at this moment
    return 0;
}
