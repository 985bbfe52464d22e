#include "framework/windows/AfxMessageBox.h"

#include "framework/modules/ModuleState.h"
#include "framework/windows/CWnd.h"

int AfxMessageBox(LPCSTR lpszText, UINT nType, UINT /*nIDHelp*/)
{
    if ((nType & MB_ICONMASK) == 0)
        nType |= MB_ICONEXCLAMATION;
    return ::MessageBoxA(AfxGetSafeOwner(nullptr), lpszText, AfxGetAppName(), nType);
}
