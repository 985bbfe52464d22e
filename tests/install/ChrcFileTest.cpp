// WriteChrcFile, on real files.
#include "install/ChrcFile.h"

#include "tests/install/ChrcModel.h"
#include "tests/support/FileHandle.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
class ChrcFile : public testing::Test
{
protected:
    // The one box that a failed call has to show.
    void ExpectBox(const std::vector<SeenMessageBox>& boxes, const std::string& text)
    {
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_EQ(boxes[0].text, text);
        EXPECT_EQ(boxes[0].nButtons, 1);
    }

    const TempFolder temp;
    const std::string path = temp / "chrc";
};

decltype(&::WriteFile) g_pfnWriteFile = nullptr; // the system's; the test's own import is patched
std::string g_pathBeingWritten;
int g_nWrites = 0;
DWORD g_cbWritten = 0;
bool g_bOthersShutOut = false;

BOOL WINAPI WatchingWriteFile(HANDLE hFile, LPCVOID pData, DWORD cb, LPDWORD pcbWritten,
                              LPOVERLAPPED pOverlapped)
{
    ++g_nWrites;
    g_cbWritten = cb;
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    g_bOthersShutOut = !FileHandle(g_pathBeingWritten, GENERIC_READ, kShareAll).IsOpen() &&
                       !FileHandle(g_pathBeingWritten, GENERIC_WRITE, kShareAll).IsOpen();
    return g_pfnWriteFile(hFile, pData, cb, pcbWritten, pOverlapped);
}
} // namespace

TEST_F(ChrcFile, IsWrittenToThePathWithTheTextForTheFolder)
{
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\Program Files\\App", TRUE), 1);
    EXPECT_EQ(ReadBytes(path), FileModel("C:\\Program Files\\App"));
    EXPECT_EQ(ReadBytes(path).size(), 1531U);
    EXPECT_EQ(temp.Listing(), "chrc");
}

TEST_F(ChrcFile, HasTheTextOfEachFolder)
{
    static constexpr const char* kFolders[] = {
        "C:\\App\\\\", "C:/App/", "C:\\", "", "\\\\Server\\Share\\App", "C:\\A\\\\\\B", nullptr};
    for (const char* const pszFolder : kFolders)
    {
        EXPECT_EQ(WriteChrcFile(path.c_str(), pszFolder, TRUE), 1);
        EXPECT_EQ(ReadBytes(path), FileModel(pszFolder != nullptr ? pszFolder : ""));
    }
}

TEST_F(ChrcFile, EndsItsLinesInLineFeedsAlone)
{
    ASSERT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 1);
    const std::string text = ReadBytes(path);
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.find('\0'), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
}

TEST_F(ChrcFile, ReplacesALongerOldFileWhole)
{
    WriteBytes(path, std::string(10000, 'o'));
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 1);
    EXPECT_EQ(ReadBytes(path), FileModel("C:\\App"));
}

TEST_F(ChrcFile, IsTheSameWhenWrittenAgain)
{
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 1);
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 1);
    EXPECT_EQ(ReadBytes(path), FileModel("C:\\App"));
}

TEST_F(ChrcFile, IsWrittenInOneWriteWhileNobodyElseCanOpenIt)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "WriteFile",
                            reinterpret_cast<void*>(&WatchingWriteFile));
    ASSERT_TRUE(patch.IsActive());
    g_pfnWriteFile = reinterpret_cast<decltype(&::WriteFile)>(patch.Original());
    g_pathBeingWritten = path;
    g_nWrites = 0;
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 1);
    EXPECT_EQ(g_nWrites, 1);
    EXPECT_EQ(g_cbWritten, FileModel("C:\\App").size());
    EXPECT_TRUE(g_bOthersShutOut);
    EXPECT_TRUE(IsClosed(path));
}

TEST_F(ChrcFile, TellsThatTheFolderIsMissing)
{
    const std::string missing = temp / "missing\\chrc";
    MessageBoxDriver driver;
    EXPECT_EQ(WriteChrcFile(missing.c_str(), "C:\\App", TRUE), 0);
    ExpectBox(driver.Stop(), "The path is not valid or its folder does not exist: " + missing);
    EXPECT_EQ(temp.Listing(), "");
}

TEST_F(ChrcFile, TellsThatAnotherProgramUsesTheFile)
{
    WriteBytes(path, "old");
    MessageBoxDriver driver;
    {
        const FileHandle other(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_TRUE(other.IsOpen());
        EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 0);
    }
    ExpectBox(driver.Stop(), path + " is in use by another program.");
    EXPECT_EQ(ReadBytes(path), "old");
}

TEST_F(ChrcFile, TellsThatAccessIsDenied)
{
    temp.MakeFolder("chrc"); // which no file can replace
    MessageBoxDriver driver;
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 0);
    ExpectBox(driver.Stop(), "Access was denied to " + path + ".");
    EXPECT_EQ(TempFolder::Listing(path), "");
}

TEST_F(ChrcFile, TellsThatAReadOnlyFileIsDenied)
{
    WriteBytes(path, "old");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    if (!BindsReadOnly(path))
        GTEST_SKIP() << "this user may write to read-only files";
    MessageBoxDriver driver;
    EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", TRUE), 0);
    ExpectBox(driver.Stop(), "Access was denied to " + path + ".");
    EXPECT_EQ(ReadBytes(path), "old");
}

TEST_F(ChrcFile, FailsSilentlyWhenErrorsAreNotToBeReported)
{
    WriteBytes(path, "old");
    MessageBoxDriver driver;
    {
        const FileHandle other(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(WriteChrcFile(path.c_str(), "C:\\App", FALSE), 0);
    }
    EXPECT_EQ(WriteChrcFile((temp / "missing\\chrc").c_str(), "C:\\App", FALSE), 0);
    EXPECT_TRUE(driver.Stop().empty());
    EXPECT_EQ(ReadBytes(path), "old");
}

TEST_F(ChrcFile, IsNotOpenedForAFolderOfSeparatorsOnly)
{
    for (const char* const pszFolder : {"\\", "/", "\\\\", "/\\/"})
    {
        EXPECT_THROW(WriteChrcFile(path.c_str(), pszFolder, TRUE), CInvalidArgException*);
        EXPECT_FALSE(Exists(path)) << pszFolder;
    }
    WriteBytes(path, "old");
    EXPECT_THROW(WriteChrcFile(path.c_str(), "\\", TRUE), CInvalidArgException*);
    EXPECT_EQ(ReadBytes(path), "old");
}
