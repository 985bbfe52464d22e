#include "framework/files/CFileException.h"

#include <cstring>

namespace
{
struct OsErrorCause
{
    unsigned short nOsError;
    unsigned char cause;
};

// Those that opening, writing and closing a file can end with.
constexpr OsErrorCause kCauses[] = {
    {ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
    {ERROR_BAD_NETPATH, CFileException::fileNotFound},
    {ERROR_PATH_NOT_FOUND, CFileException::badPath},
    {ERROR_INVALID_DRIVE, CFileException::badPath},
    {ERROR_INVALID_NAME, CFileException::badPath},
    {ERROR_BAD_PATHNAME, CFileException::badPath},
    {ERROR_BAD_NET_NAME, CFileException::badPath},
    {ERROR_DIRECTORY, CFileException::badPath},
    {ERROR_FILENAME_EXCED_RANGE, CFileException::badPath},
    {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
    {ERROR_SHARING_BUFFER_EXCEEDED, CFileException::tooManyOpenFiles},
    {ERROR_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_NETWORK_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_FILE_EXISTS, CFileException::accessDenied},
    {ERROR_ALREADY_EXISTS, CFileException::accessDenied},
    {ERROR_USER_MAPPED_FILE, CFileException::accessDenied},
    {ERROR_INVALID_HANDLE, CFileException::invalidFile},
    {ERROR_CANNOT_MAKE, CFileException::directoryFull},
    {ERROR_WRITE_PROTECT, CFileException::hardIO},
    {ERROR_NOT_READY, CFileException::hardIO},
    {ERROR_CRC, CFileException::hardIO},
    {ERROR_SECTOR_NOT_FOUND, CFileException::hardIO},
    {ERROR_WRITE_FAULT, CFileException::hardIO},
    {ERROR_READ_FAULT, CFileException::hardIO},
    {ERROR_GEN_FAILURE, CFileException::hardIO},
    {ERROR_UNRECOGNIZED_MEDIA, CFileException::hardIO},
    {ERROR_UNRECOGNIZED_VOLUME, CFileException::hardIO},
    {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
    {ERROR_LOCK_VIOLATION, CFileException::lockViolation},
    {ERROR_HANDLE_DISK_FULL, CFileException::diskFull},
    {ERROR_DISK_FULL, CFileException::diskFull},
};

// One behind the other, for the causes from genericException to diskFull; an empty one stands for the
// first. The file's name takes the place of the asterisk.
constexpr char kTexts[] = "An error occurred while using *.\0"
                          "* was not found.\0"
                          "The path is not valid or its folder does not exist: *\0"
                          "Too many files are open to open *.\0"
                          "Access was denied to *.\0"
                          "The file handle is not valid: *\0"
                          "\0" // removeCurrentDir: nothing here removes one
                          "The folder has no room for *.\0"
                          "\0" // badSeek: nothing here seeks
                          "The device reported an error in *.\0"
                          "* is in use by another program.\0"
                          "* is locked by another program.\0"
                          "\0" // no cause has this value
                          "The disk was full while writing *.";

const char* FindText(int cause) noexcept
{
    if (cause < CFileException::genericException || cause > CFileException::diskFull)
        return kTexts;
    const char* psz = kTexts;
    for (; cause > CFileException::genericException; --cause)
        psz += std::strlen(psz) + 1;
    return *psz != '\0' ? psz : kTexts;
}
} // namespace

int CFileException::OsErrorToException(LONG lOsError) noexcept
{
    for (const OsErrorCause& entry : kCauses)
    {
        if (entry.nOsError == lOsError)
            return entry.cause;
    }
    return genericException;
}

BOOL CFileException::GetErrorMessage(LPSTR lpszError, UINT nMaxError, UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    if (!CopyMessage(lpszError, nMaxError, ""))
        return FALSE;
    // Straight into the caller's buffer: the message must not need memory of its own.
    const auto append = [&](char ch) {
        if (nMaxError <= 1)
            return;
        --nMaxError;
        *lpszError++ = ch;
        *lpszError = '\0';
    };
    for (const char* p = FindText(m_cause); *p != '\0'; ++p)
    {
        if (*p != '*')
        {
            append(*p);
            continue;
        }
        for (const char* q = m_strFileName.IsEmpty() ? "a file" : m_strFileName.GetString();
             *q != '\0'; ++q)
            append(*q);
    }
    return TRUE;
}

void AfxThrowFileException(int cause, LONG lOsError, LPCSTR lpszFileName)
{
    throw new CFileException(cause, lOsError, lpszFileName);
}
