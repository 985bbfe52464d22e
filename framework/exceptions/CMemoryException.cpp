#include "framework/exceptions/CMemoryException.h"

#include <new>

BOOL CMemoryException::GetErrorMessage(LPSTR lpszError, UINT nMaxError, UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    return CopyMessage(lpszError, nMaxError, "There is not enough memory.");
}

void AfxThrowMemoryException()
{
    // Storage of its own: no constructor at load, no destructor while somebody may still hold it.
    alignas(CMemoryException) static unsigned char s_storage[sizeof(CMemoryException)];
    throw ::new (s_storage) CMemoryException;
}
