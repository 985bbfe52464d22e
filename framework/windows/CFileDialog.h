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
    // and the filter ("text|pattern|text|pattern||") are copied.
    explicit CFileDialog(BOOL bOpenFileDialog, LPCSTR lpszDefExt = nullptr,
                         LPCSTR lpszFileName = nullptr,
                         DWORD dwFlags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT,
                         LPCSTR lpszFilter = nullptr, CWnd* pParentWnd = nullptr, DWORD dwSize = 0);

    OPENFILENAMEA& GetOFN() { return m_ofn; }

    // IDOK when the user confirmed a file; IDCANCEL otherwise, also when no dialog could be shown.
    INT_PTR DoModal() override;

    // The chosen file, after IDOK.
    CString GetPathName() const { return m_ofn.lpstrFile; }

    OPENFILENAMEA m_ofn = {};

private:
    CString m_strFilter;              // the zero-separated form of the filter
    char m_szFileName[MAX_PATH] = ""; // in and out
};
