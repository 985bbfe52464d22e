#include "AfxMessageBox.h"

#include "CWnd.h"
#include "ModuleState.h"

int AfxMessageBox(LPCSTR lpszText, UINT nType, UINT /*nIDHelp*/)
{
    if ((nType & MB_ICONMASK) == 0)
        nType |= MB_ICONEXCLAMATION;
    return ::MessageBoxA(AfxGetSafeOwner(nullptr), lpszText, AfxGetAppName(), nType);
}
