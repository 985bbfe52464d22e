#include "framework/windows/AfxMessageBox.h"

#include "framework/exceptions/CException.h"
#include "framework/modules/CWinApp.h"
#include "framework/windows/ModalOwner.h"

int AfxMessageBox(LPCSTR lpszText, UINT nType, UINT /*nIDHelp*/)
{
    if ((nType & MB_ICONMASK) == 0)
        nType |= MB_ICONEXCLAMATION;
    const ModalOwner owner(nullptr);
    return ::MessageBoxA(owner.Handle(), lpszText, AfxGetAppName(), nType);
}

// Here, and not with the rest of its class, because it shows a window.
int CException::ReportError(UINT nType, UINT /*nMessageID*/)
{
    // On the stack: the failure at hand may be a lack of memory. Room for the longest path that the
    // system opens by its ANSI name, and the text around it.
    char szMessage[512];
    if (!GetErrorMessage(szMessage, sizeof(szMessage)))
        return AfxMessageBox("An error occurred.", nType);
    return AfxMessageBox(szMessage, nType);
}
