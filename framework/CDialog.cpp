#include "CDialog.h"

#include "CException.h"
#include "ModuleState.h"

BEGIN_MESSAGE_MAP(CDialog, CWnd)
END_MESSAGE_MAP()

BOOL CDialog::Create(UINT nIDTemplate, CWnd* pParentWnd)
{
    HWND const hWndParent = pParentWnd != nullptr ? pParentWnd->GetSafeHwnd() : nullptr;
    return ::CreateDialogParamA(AfxGetResourceHandle(), MAKEINTRESOURCEA(nIDTemplate), hWndParent,
                                &CDialog::DialogProc,
                                reinterpret_cast<LPARAM>(this)) != nullptr;
}

INT_PTR CDialog::DoModal()
{
    return ::DialogBoxParamA(AfxGetResourceHandle(), m_lpszTemplateName,
                             AfxGetSafeOwner(m_pParentWnd), &CDialog::DialogProc,
                             reinterpret_cast<LPARAM>(this));
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
    pDialog->Attach(hWnd);
    // The system calls this, and must not be unwound.
    try
    {
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
