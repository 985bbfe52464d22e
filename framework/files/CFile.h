// CFile: a file of raw bytes.
#pragma once

#include "framework/files/CFileException.h"
#include "framework/text/CString.h"

#include <windows.h>

class CFile
{
public:
    // One of the access flags, and any of the others. A file is never shared, and child processes
    // inherit the handle.
    enum OpenFlags : UINT
    {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        shareExclusive = 0x0010,
        modeCreate = 0x1000 // create the file, or truncate an existing one
    };

    CFile() noexcept = default;
    ~CFile(); // closes the file, without a word if that fails
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Opens a file. Returns FALSE when it cannot be opened; the failure is then described in
    // *pError, if one is given.
    BOOL Open(LPCSTR lpszFileName, UINT nOpenFlags, CFileException* pError = nullptr);

    // Writes all nCount bytes or throws CFileException.
    void Write(const void* lpBuf, UINT nCount);

    // Closes the file; throws CFileException when the system cannot. Closed either way.
    void Close();

    HANDLE m_hFile = INVALID_HANDLE_VALUE; // owned

private:
    CString m_strFileName; // for the exceptions
};
