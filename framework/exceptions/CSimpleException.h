// CSimpleException: base of the exceptions of which there is one object each, which is never freed.
// Throwing it allocates nothing.
#pragma once

#include "framework/exceptions/CException.h"

class CSimpleException : public CException
{
public:
    BOOL GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                         UINT* pnHelpContext = nullptr) const override;

protected:
    explicit CSimpleException(LPCSTR pszMessage) noexcept
        : CException(FALSE), m_pszMessage(pszMessage)
    {
    }

private:
    LPCSTR m_pszMessage; // a literal
};

// Memory ran out.
class CMemoryException : public CSimpleException
{
public:
    CMemoryException() noexcept : CSimpleException("There is not enough memory.") {}
};

// An argument is not valid, such as an index out of bounds.
class CInvalidArgException : public CSimpleException
{
public:
    CInvalidArgException() noexcept : CSimpleException("An argument is not valid.") {}
};

[[noreturn]] void AfxThrowMemoryException();
[[noreturn]] void AfxThrowInvalidArgException();
