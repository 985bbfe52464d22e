#include "framework/files/CFile.h"

namespace
{
constexpr UINT kAccessMask = 0x000F;
constexpr UINT kShareMask = 0x0070;

DWORD DesiredAccess(UINT nOpenFlags)
{
    switch (nOpenFlags & kAccessMask)
    {
    case CFile::modeWrite:
        return GENERIC_WRITE;
    case CFile::modeReadWrite:
        return GENERIC_READ | GENERIC_WRITE;
    default:
        return GENERIC_READ;
    }
}

DWORD ShareMode(UINT nOpenFlags)
{
    switch (nOpenFlags & kShareMask)
    {
    case CFile::shareDenyWrite:
        return FILE_SHARE_READ;
    case CFile::shareDenyRead:
        return FILE_SHARE_WRITE;
    case CFile::shareDenyNone:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    default:
        return 0;
    }
}

DWORD Disposition(UINT nOpenFlags)
{
    if ((nOpenFlags & CFile::modeCreate) == 0)
        return OPEN_EXISTING;
    return (nOpenFlags & CFile::modeNoTruncate) != 0 ? OPEN_ALWAYS : CREATE_ALWAYS;
}
} // namespace

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
    sa.bInheritHandle = (nOpenFlags & modeNoInherit) == 0 ? TRUE : FALSE;
    m_hFile = ::CreateFileA(m_strFileName, DesiredAccess(nOpenFlags), ShareMode(nOpenFlags), &sa,
                            Disposition(nOpenFlags), FILE_ATTRIBUTE_NORMAL, nullptr);
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
