#include "framework/exceptions/CSimpleException.h"

#include <new>

namespace
{
template <class Exception>
[[noreturn]] void ThrowTheOne()
{
    // Storage of its own: no constructor at load, no destructor while somebody may still hold it.
    alignas(Exception) static unsigned char s_storage[sizeof(Exception)];
    throw ::new (s_storage) Exception;
}
} // namespace

BOOL CSimpleException::GetErrorMessage(LPSTR lpszError, UINT nMaxError, UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    return CopyMessage(lpszError, nMaxError, m_pszMessage);
}

void AfxThrowMemoryException()
{
    ThrowTheOne<CMemoryException>();
}

void AfxThrowInvalidArgException()
{
    ThrowTheOne<CInvalidArgException>();
}
