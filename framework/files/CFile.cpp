#include "framework/files/CFile.h"

CFile::~CFile()
{
    if (m_hFile != INVALID_HANDLE_VALUE)
        ::CloseHandle(m_hFile);
}

BOOL CFile::Open(LPCSTR lpszFileName, UINT nOpenFlags, CFileException* pError)
{
    m_strFileName = lpszFileName;
    SECURITY_ATTRIBUTES sa = {};
    sa.nLength = sizeof(sa);
    sa.bInheritHandle = TRUE;
    m_hFile =
        ::CreateFileA(m_strFileName, (nOpenFlags & modeWrite) != 0 ? GENERIC_WRITE : GENERIC_READ,
                      0, &sa, (nOpenFlags & modeCreate) != 0 ? CREATE_ALWAYS : OPEN_EXISTING,
                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (m_hFile != INVALID_HANDLE_VALUE)
        return TRUE;
    if (pError != nullptr)
    {
        pError->m_lOsError = static_cast<LONG>(::GetLastError());
        pError->m_cause = CFileException::OsErrorToException(pError->m_lOsError);
        pError->m_strFileName = m_strFileName;
    }
    return FALSE;
}

void CFile::Write(const void* lpBuf, UINT nCount)
{
    if (nCount == 0)
        return;
    DWORD cbWritten = 0;
    if (!::WriteFile(m_hFile, lpBuf, nCount, &cbWritten, nullptr))
    {
        const LONG lOsError = static_cast<LONG>(::GetLastError());
        AfxThrowFileException(CFileException::OsErrorToException(lOsError), lOsError,
                              m_strFileName);
    }
    // The system may report success for the part that still fitted.
    if (cbWritten != nCount)
        AfxThrowFileException(CFileException::diskFull, -1, m_strFileName);
}

void CFile::Close()
{
    HANDLE const hFile = m_hFile;
    m_hFile = INVALID_HANDLE_VALUE;
    if (hFile != INVALID_HANDLE_VALUE && !::CloseHandle(hFile))
    {
        const LONG lOsError = static_cast<LONG>(::GetLastError());
        AfxThrowFileException(CFileException::OsErrorToException(lOsError), lOsError,
                              m_strFileName);
    }
}
