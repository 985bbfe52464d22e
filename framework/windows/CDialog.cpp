#include "framework/windows/CDialog.h"

#include "framework/exceptions/CException.h"
#include "framework/modules/MaintainState.h"
#include "framework/windows/ModalOwner.h"

BEGIN_MESSAGE_MAP(CDialog, CWnd)
END_MESSAGE_MAP()

namespace
{
// The process's own activation context, while a dialog's window and controls are made: they are to
// look like the windows of the program around them, and a line of text is no reason to load another
// version of the controls.
class ProcessActCtx
{
public:
    ProcessActCtx() noexcept : m_bActive(::ActivateActCtx(nullptr, &m_nCookie)) {}
    ~ProcessActCtx()
    {
        if (m_bActive)
            AfxDeactivateActCtx(0, m_nCookie);
    }
    ProcessActCtx(const ProcessActCtx&) = delete;
    ProcessActCtx& operator=(const ProcessActCtx&) = delete;

private:
    ULONG_PTR m_nCookie = 0;
    BOOL m_bActive;
};
} // namespace

BOOL CDialog::Create(UINT nIDTemplate, CWnd* pParentWnd)
{
    const ProcessActCtx context;
    HWND const hWndParent = pParentWnd != nullptr ? pParentWnd->GetSafeHwnd() : nullptr;
    return ::CreateDialogParamA(AfxGetResourceHandle(), MAKEINTRESOURCEA(nIDTemplate), hWndParent,
                                &CDialog::DialogProc, reinterpret_cast<LPARAM>(this)) != nullptr;
}

INT_PTR CDialog::DoModal()
{
    const ProcessActCtx context;
    const ModalOwner owner(m_pParentWnd);
    return ::DialogBoxParamA(AfxGetResourceHandle(), m_lpszTemplateName, owner.Handle(),
                             &CDialog::DialogProc, reinterpret_cast<LPARAM>(this));
}

BOOL CDialog::OnInitDialog()
{
    return TRUE;
}

void CDialog::OnOK()
{
    EndDialog(IDOK);
}

void CDialog::OnCancel()
{
    EndDialog(IDCANCEL);
}

BOOL CDialog::OnCommand(WPARAM wParam, LPARAM lParam)
{
    switch (wParam) // the notification code, in the high word, is 0 for both
    {
    case IDOK:
        OnOK();
        return TRUE;
    case IDCANCEL:
        OnCancel();
        return TRUE;
    default:
        return CWnd::OnCommand(wParam, lParam);
    }
}

// Only binds the object; every later message passes the object's own procedure first.
INT_PTR CALLBACK CDialog::DialogProc(HWND hWnd, UINT message, WPARAM /*wParam*/, LPARAM lParam)
{
    if (message != WM_INITDIALOG)
        return FALSE;
    auto* const pDialog = reinterpret_cast<CDialog*>(lParam);
    pDialog->Bind(hWnd);
    // The system calls this, and must not be unwound.
    try
    {
        AFX_MANAGE_STATE(GetCurrentModuleState());
        return pDialog->OnInitDialog();
    }
    catch (CException* pException)
    {
        pException->Delete();
    }
    catch (...) // NOLINT(bugprone-empty-catch): whatever it was, it ends here
    {
    }
    return TRUE;
}
