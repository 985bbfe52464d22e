#include "framework/exceptions/CInvalidArgException.h"

#include <new>

BOOL CInvalidArgException::GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                                           UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    return CopyMessage(lpszError, nMaxError, "An argument is not valid.");
}

void AfxThrowInvalidArgException()
{
    // Storage of its own: no constructor at load, no destructor while somebody may still hold it.
    alignas(CInvalidArgException) static unsigned char s_storage[sizeof(CInvalidArgException)];
    throw ::new (s_storage) CInvalidArgException;
}
