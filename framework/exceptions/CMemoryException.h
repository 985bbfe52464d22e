// CMemoryException: memory ran out. Throwing it allocates nothing: there is one object, which is never freed.
#pragma once

#include "framework/exceptions/CException.h"

class CMemoryException : public CException
{
public:
    CMemoryException() noexcept : CException(FALSE) {}
    BOOL GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                         UINT* pnHelpContext = nullptr) const override;
};

[[noreturn]] void AfxThrowMemoryException();
