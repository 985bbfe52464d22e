// CFileException: a failure of a file operation.
#pragma once

#include "framework/exceptions/CException.h"
#include "framework/text/CString.h"

class CFileException : public CException
{
public:
    // The documented causes, with their documented values.
    enum Cause
    {
        none = 0,
        genericException = 1,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 14,
        endOfFile = 15
    };

    explicit CFileException(int cause = none, LONG lOsError = -1, LPCSTR lpszFileName = nullptr)
        : m_cause(cause), m_lOsError(lOsError), m_strFileName(lpszFileName)
    {
    }

    // The cause that stands for an error code of the system.
    static int OsErrorToException(LONG lOsError) noexcept;

    // Tells the cause and names the file.
    BOOL GetErrorMessage(LPSTR lpszError, UINT nMaxError,
                         UINT* pnHelpContext = nullptr) const override;

    int m_cause;
    LONG m_lOsError;       // the system's error code, -1 when there is none
    CString m_strFileName; // as it was given to the operation
};

// Throws a new CFileException.
[[noreturn]] void AfxThrowFileException(int cause, LONG lOsError = -1,
                                        LPCSTR lpszFileName = nullptr);
