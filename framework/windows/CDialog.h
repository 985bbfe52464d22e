// CDialog: a window made from a dialog template of the current module.
#pragma once

#include "framework/windows/CWnd.h"

class CDialog : public CWnd
{
public:
    explicit CDialog(UINT nIDTemplate, CWnd* pParentWnd = nullptr)
        : m_lpszTemplateName(MAKEINTRESOURCEA(nIDTemplate)), m_pParentWnd(pParentWnd)
    {
    }

    // Makes a modeless window, owned by pParentWnd, or by none. FALSE when it cannot be made.
    virtual BOOL Create(UINT nIDTemplate, CWnd* pParentWnd = nullptr);

    // Shows the dialog and returns what EndDialog said, or -1 when it cannot be shown. Its owner is
    // the parent window or, without, the calling thread's active window. Pumps messages.
    virtual INT_PTR DoModal();

    // Ends DoModal; hides a modeless window.
    void EndDialog(int nResult) { ::EndDialog(m_hWnd, nResult); }

    // The window exists and is not shown yet. TRUE: the system chooses the control with the focus.
    virtual BOOL OnInitDialog();

protected:
    CDialog() = default;

    // The OK and Cancel commands; both end the dialog.
    virtual void OnOK();
    virtual void OnCancel();

    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;

    LPCSTR m_lpszTemplateName = nullptr;
    CWnd* m_pParentWnd = nullptr; // borrowed

    DECLARE_MESSAGE_MAP()

private:
    static INT_PTR CALLBACK DialogProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
};
