// CInvalidArgException: an argument is not valid, such as an index out of bounds. There is one object, never freed.
#pragma once

#include "framework/exceptions/CException.h"

class CInvalidArgException : public CException
{
public:
    CInvalidArgException() noexcept : CException(FALSE) {}
    BOOL GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                         UINT* pnHelpContext = nullptr) const override;
};

[[noreturn]] void AfxThrowInvalidArgException();
