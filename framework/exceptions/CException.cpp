#include "framework/exceptions/CException.h"

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
