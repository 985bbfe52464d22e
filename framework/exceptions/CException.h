// CException: base of the exceptions, which are thrown by pointer and freed by whoever catches them
// with Delete().
#pragma once

#include "runtime/PlatformTypes.h"

class CException
{
public:
    // bAutoDelete: the object is on the heap, and Delete() frees it.
    explicit CException(BOOL bAutoDelete = TRUE) noexcept : m_bAutoDelete(bAutoDelete) {}
    virtual ~CException() = default;
    CException(const CException&) = delete;
    CException& operator=(const CException&) = delete;

    void Delete();

    // Writes what went wrong into a buffer of nMaxError bytes, cut to fit and terminated. Returns
    // FALSE, with an empty text, when there is nothing to say.
    virtual BOOL GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                                 UINT* pnHelpContext = nullptr) const;

#ifdef _WIN32
    // Shows the error message in a message box of the given type and returns the button chosen. An
    // exception without a message of its own shows a general one; pumps messages. It stands with the
    // message box, in framework/windows.
    virtual int ReportError(UINT nType = MB_OK, UINT nMessageID = 0);
#endif

protected:
    // Copies text into the buffer, cut to fit.
    static BOOL CopyMessage(LPSTR lpszError, UINT nMaxError, LPCSTR pszText);

    BOOL m_bAutoDelete;
};
