// What a user reads of a file that cannot be opened or written, and which errors lead to it.
#include <afx.h>

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string MessageOf(const CFileException& exception)
{
    char szText[256] = "";
    EXPECT_TRUE(exception.GetErrorMessage(szText, sizeof(szText)));
    return szText;
}
} // namespace

TEST(CFileException, SaysWhatHappenedAroundTheFilesName)
{
    const struct
    {
        int cause;
        const char* pszBefore;
        const char* pszAfter;
    } cases[] = {
        {CFileException::genericException, "An error occurred while using ", "."},
        {CFileException::fileNotFound, "", " was not found."},
        {CFileException::badPath, "The path is not valid or its folder does not exist: ", ""},
        {CFileException::tooManyOpenFiles, "Too many files are open to open ", "."},
        {CFileException::accessDenied, "Access was denied to ", "."},
        {CFileException::invalidFile, "The file handle is not valid: ", ""},
        {CFileException::directoryFull, "The folder has no room for ", "."},
        {CFileException::hardIO, "The device reported an error in ", "."},
        {CFileException::sharingViolation, "", " is in use by another program."},
        {CFileException::lockViolation, "", " is locked by another program."},
        {CFileException::diskFull, "The disk was full while writing ", "."}};
    for (const auto& each : cases)
    {
        EXPECT_EQ(MessageOf(CFileException(each.cause, -1, "C:\\a.txt")),
                  std::string(each.pszBefore) + "C:\\a.txt" + each.pszAfter);
        EXPECT_EQ(MessageOf(CFileException(each.cause)),
                  std::string(each.pszBefore) + "a file" + each.pszAfter);
    }
}

TEST(CFileException, KnowsEveryErrorThatOpeningWritingAndClosingEndWith)
{
    const struct
    {
        int cause;
        LONG errors[10]; // up to a zero
    } cases[] = {
        {CFileException::fileNotFound, {ERROR_FILE_NOT_FOUND, ERROR_BAD_NETPATH}},
        {CFileException::badPath,
         {ERROR_PATH_NOT_FOUND, ERROR_INVALID_DRIVE, ERROR_INVALID_NAME, ERROR_BAD_PATHNAME,
          ERROR_BAD_NET_NAME, ERROR_DIRECTORY, ERROR_FILENAME_EXCED_RANGE}},
        {CFileException::tooManyOpenFiles,
         {ERROR_TOO_MANY_OPEN_FILES, ERROR_SHARING_BUFFER_EXCEEDED}},
        {CFileException::accessDenied,
         {ERROR_ACCESS_DENIED, ERROR_NETWORK_ACCESS_DENIED, ERROR_FILE_EXISTS, ERROR_ALREADY_EXISTS,
          ERROR_USER_MAPPED_FILE}},
        {CFileException::invalidFile, {ERROR_INVALID_HANDLE}},
        {CFileException::directoryFull, {ERROR_CANNOT_MAKE}},
        {CFileException::hardIO,
         {ERROR_WRITE_PROTECT, ERROR_NOT_READY, ERROR_CRC, ERROR_SECTOR_NOT_FOUND,
          ERROR_WRITE_FAULT, ERROR_READ_FAULT, ERROR_GEN_FAILURE, ERROR_UNRECOGNIZED_MEDIA,
          ERROR_UNRECOGNIZED_VOLUME}},
        {CFileException::sharingViolation, {ERROR_SHARING_VIOLATION}},
        {CFileException::lockViolation, {ERROR_LOCK_VIOLATION}},
        {CFileException::diskFull, {ERROR_HANDLE_DISK_FULL, ERROR_DISK_FULL}}};
    for (const auto& each : cases)
    {
        for (const LONG* pError = each.errors; *pError != 0; ++pError)
            EXPECT_EQ(CFileException::OsErrorToException(*pError), each.cause) << *pError;
    }
}
