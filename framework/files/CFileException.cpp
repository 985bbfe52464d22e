#include "framework/files/CFileException.h"

namespace
{
struct OsErrorCause
{
    LONG lOsError;
    int cause;
};

constexpr OsErrorCause kCauses[] = {
    {ERROR_SUCCESS, CFileException::none},
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
    {ERROR_CURRENT_DIRECTORY, CFileException::removeCurrentDir},
    {ERROR_DIR_NOT_EMPTY, CFileException::removeCurrentDir},
    {ERROR_CANNOT_MAKE, CFileException::directoryFull},
    {ERROR_SEEK, CFileException::badSeek},
    {ERROR_NEGATIVE_SEEK, CFileException::badSeek},
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
    {ERROR_HANDLE_EOF, CFileException::endOfFile},
};

// The text stands before and after the file's name.
struct CauseText
{
    int cause;
    LPCSTR pszBefore;
    LPCSTR pszAfter;
};

constexpr CauseText kTexts[] = {
    {CFileException::none, "No error occurred in ", "."},
    {CFileException::fileNotFound, "", " was not found."},
    {CFileException::badPath, "The path is not valid or its folder does not exist: ", ""},
    {CFileException::tooManyOpenFiles, "Too many files are open to open ", "."},
    {CFileException::accessDenied, "Access was denied to ", "."},
    {CFileException::invalidFile, "The file handle is not valid: ", ""},
    {CFileException::removeCurrentDir, "The current folder cannot be removed: ", ""},
    {CFileException::directoryFull, "The folder has no room for ", "."},
    {CFileException::badSeek, "The position could not be set in ", "."},
    {CFileException::hardIO, "The device reported an error in ", "."},
    {CFileException::sharingViolation, "", " is in use by another program."},
    {CFileException::lockViolation, "", " is locked by another program."},
    {CFileException::diskFull, "The disk was full while writing ", "."},
    {CFileException::endOfFile, "The end was reached of ", "."},
};
constexpr CauseText kGeneralText = {CFileException::genericException,
                                    "An error occurred while using ", "."};
} // namespace

int CFileException::OsErrorToException(LONG lOsError) noexcept
{
    for (const OsErrorCause& entry : kCauses)
    {
        if (entry.lOsError == lOsError)
            return entry.cause;
    }
    return genericException;
}

BOOL CFileException::GetErrorMessage(LPSTR lpszError, UINT nMaxError, UINT* pnHelpContext) const
{
    if (pnHelpContext != nullptr)
        *pnHelpContext = 0;
    const CauseText* pText = &kGeneralText;
    for (const CauseText& text : kTexts)
    {
        if (text.cause == m_cause)
            pText = &text;
    }
    // Piece by piece into the caller's buffer: the message must not need memory of its own.
    const LPCSTR pszPieces[] = {pText->pszBefore,
                                m_strFileName.IsEmpty() ? "a file" : m_strFileName.GetString(),
                                pText->pszAfter};
    if (!CopyMessage(lpszError, nMaxError, ""))
        return FALSE;
    UINT cbUsed = 0;
    for (LPCSTR const pszPiece : pszPieces)
    {
        CopyMessage(lpszError + cbUsed, nMaxError - cbUsed, pszPiece);
        cbUsed += static_cast<UINT>(::lstrlenA(lpszError + cbUsed));
    }
    return TRUE;
}

void AfxThrowFileException(int cause, LONG lOsError, LPCSTR lpszFileName)
{
    throw new CFileException(cause, lOsError, lpszFileName);
}
