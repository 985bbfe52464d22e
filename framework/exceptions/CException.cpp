#include "framework/exceptions/CException.h"

#ifdef _WIN32
#include "framework/windows/AfxMessageBox.h"
#endif

#include <cstring>

void CException::Delete()
{
    if (m_bAutoDelete)
        delete this;
}

BOOL CException::GetErrorMessage(LPSTR lpszError, UINT nMaxError, UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    CopyMessage(lpszError, nMaxError, "");
    return FALSE;
}

BOOL CException::CopyMessage(LPSTR lpszError, UINT nMaxError, LPCSTR pszText)
{
    if (lpszError == nullptr || nMaxError == 0)
        return FALSE;
    UINT cb = static_cast<UINT>(std::strlen(pszText));
    if (cb >= nMaxError)
        cb = nMaxError - 1;
    std::memcpy(lpszError, pszText, cb);
    lpszError[cb] = '\0';
    return TRUE;
}

#ifdef _WIN32
int CException::ReportError(UINT nType, UINT /*nMessageID*/)
{
    // On the stack: the failure at hand may be a lack of memory. Room for the longest path that the
    // system opens by its ANSI name, and the text around it.
    char szMessage[512];
    if (!GetErrorMessage(szMessage, sizeof(szMessage)))
        return AfxMessageBox("An error occurred.", nType);
    return AfxMessageBox(szMessage, nType);
}
#endif
