// CFileDialog: the system's Open dialog.
#pragma once

#include "framework/text/CString.h"
#include "framework/windows/CDialog.h"

#include <windows.h>

#include <commdlg.h>

class CFileDialog : public CDialog
{
public:
    // bOpenFileDialog must be TRUE. lpszDefExt is kept as a pointer; the file name (up to 259 bytes)
    // and the filter ("text|pattern|text|pattern||") are copied. bVistaStyle is for the vendor's class,
    // which has two dialogs; here it is always the system's, by GetOpenFileName.
    explicit CFileDialog(BOOL bOpenFileDialog, LPCSTR lpszDefExt = nullptr,
                         LPCSTR lpszFileName = nullptr,
                         DWORD dwFlags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT,
                         LPCSTR lpszFilter = nullptr, CWnd* pParentWnd = nullptr, DWORD dwSize = 0,
                         BOOL bVistaStyle = TRUE);

    OPENFILENAMEA& GetOFN() { return m_ofn; }

    // IDOK when the user confirmed a file; IDCANCEL otherwise, also when no dialog could be shown.
    INT_PTR DoModal() override;

    // The chosen file, after IDOK.
    CString GetPathName() const { return m_ofn.lpstrFile; }

    OPENFILENAMEA m_ofn = {};

private:
    CString m_strFilter; // the zero-separated form of the filter
    // In and out. Longer than any path of MAX_PATH characters in any code page: Wine cuts a path that
    // does not fit, and says that all is well.
    char m_szFileName[4 * MAX_PATH] = "";
};
