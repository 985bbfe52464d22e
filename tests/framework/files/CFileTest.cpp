#include <afx.h>

#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
constexpr UINT kCreate = CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive;

// All 256 bytes, and line ends that a text mode would change.
std::string EveryByte()
{
    std::string bytes = "\n\r\n\r\x1A";
    for (int nByte = 0; nByte < 256; ++nByte)
        bytes += static_cast<char>(nByte);
    return bytes;
}

void Write(CFile& file, const std::string& bytes)
{
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

// What the system says to another program that opens the file for reading or writing and shares it.
DWORD ErrorForOthers(const std::string& path, DWORD nAccess)
{
    HANDLE const hFile =
        ::CreateFileA(path.c_str(), nAccess, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, 0, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    ::CloseHandle(hFile);
    return ERROR_SUCCESS;
}

TEST(CFileFlags, HaveTheDocumentedValues)
{
    EXPECT_EQ(CFile::modeRead, 0x0000U);
    EXPECT_EQ(CFile::modeWrite, 0x0001U);
    EXPECT_EQ(CFile::shareExclusive, 0x0010U);
    EXPECT_EQ(CFile::modeCreate, 0x1000U);
}

class CFileTest : public testing::Test
{
protected:
    TempFolder m_folder;
    const std::string m_path = m_folder / "file.bin";
};

TEST_F(CFileTest, WritesRawBytes)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    Write(file, EveryByte());
    Write(file, "");
    Write(file, "more");
    file.Close();
    EXPECT_EQ(ReadBytes(m_path), EveryByte() + "more");
}

TEST_F(CFileTest, TruncatesAnExistingFileThatItIsToCreate)
{
    WriteBytes(m_path, "a long text that was there before");
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    Write(file, "new");
    file.Close();
    EXPECT_EQ(ReadBytes(m_path), "new");
    // Without the create flag an existing file is needed, and kept.
    ASSERT_TRUE(file.Open(m_path.c_str(), CFile::modeWrite));
    file.Close();
    EXPECT_EQ(ReadBytes(m_path), "new");
    EXPECT_FALSE(file.Open((m_folder / "none").c_str(), CFile::modeWrite));
    EXPECT_FALSE(Exists(m_folder / "none"));
}

TEST_F(CFileTest, OpensWithTheAccessThatIsAskedFor)
{
    WriteBytes(m_path, "text");
    char chRead = 0;
    DWORD cb = 0;
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), CFile::modeRead));
    EXPECT_TRUE(::ReadFile(file.m_hFile, &chRead, 1, &cb, nullptr));
    EXPECT_THROW(Write(file, "x"), CFileException*);
    file.Close();
    ASSERT_TRUE(file.Open(m_path.c_str(), CFile::modeWrite));
    EXPECT_FALSE(::ReadFile(file.m_hFile, &chRead, 1, &cb, nullptr));
    file.Close();
}

TEST_F(CFileTest, SharesTheFileWithNobody)
{
    WriteBytes(m_path, "text");
    for (const UINT nAccess : {UINT{CFile::modeRead}, UINT{CFile::modeWrite}})
    {
        SCOPED_TRACE(nAccess);
        CFile file;
        ASSERT_TRUE(file.Open(m_path.c_str(), nAccess | CFile::shareExclusive));
        EXPECT_EQ(ErrorForOthers(m_path, GENERIC_READ), DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_EQ(ErrorForOthers(m_path, GENERIC_WRITE), DWORD{ERROR_SHARING_VIOLATION});
        file.Close();
        EXPECT_EQ(ErrorForOthers(m_path, GENERIC_READ), 0U);
        EXPECT_EQ(ErrorForOthers(m_path, GENERIC_WRITE), 0U);
    }
}

TEST_F(CFileTest, LetsChildProcessesInheritTheHandle)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    DWORD nFlags = 0;
    ASSERT_TRUE(::GetHandleInformation(file.m_hFile, &nFlags));
    EXPECT_EQ(nFlags & HANDLE_FLAG_INHERIT, DWORD{HANDLE_FLAG_INHERIT});
}

TEST_F(CFileTest, TellsTheExceptionObjectWhyItCouldNotBeOpened)
{
    WriteBytes(m_path, "held");
    HANDLE const hHeld =
        ::CreateFileA(m_path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(hHeld, INVALID_HANDLE_VALUE);
    const std::string folder = m_folder.MakeFolder("folder");
    const struct
    {
        std::string path;
        UINT nFlags;
        int cause;
        LONG lOsError;
    } cases[] = {
        {m_path, kCreate, CFileException::sharingViolation, ERROR_SHARING_VIOLATION},
        {m_folder / "none\\file", kCreate, CFileException::badPath, ERROR_PATH_NOT_FOUND},
        {m_folder / "none", CFile::modeRead, CFileException::fileNotFound, ERROR_FILE_NOT_FOUND},
        {folder, kCreate, CFileException::accessDenied, ERROR_ACCESS_DENIED},
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.path);
        CFile file;
        CFileException exception;
        EXPECT_FALSE(file.Open(each.path.c_str(), each.nFlags, &exception));
        EXPECT_EQ(file.m_hFile, INVALID_HANDLE_VALUE);
        EXPECT_EQ(exception.m_cause, each.cause);
        EXPECT_EQ(exception.m_lOsError, each.lOsError);
        EXPECT_STREQ(exception.m_strFileName, each.path.c_str());
        EXPECT_FALSE(file.Open(each.path.c_str(), each.nFlags)); // nothing is told
    }
    ::CloseHandle(hHeld);
    EXPECT_EQ(ReadBytes(m_path), "held");
}

TEST_F(CFileTest, LeavesTheExceptionObjectAloneWhenItIsOpened)
{
    CFile file;
    CFileException exception(CFileException::badSeek, 4711, "before");
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate, &exception));
    EXPECT_EQ(exception.m_cause, CFileException::badSeek);
    EXPECT_EQ(exception.m_lOsError, 4711);
    EXPECT_STREQ(exception.m_strFileName, "before");
}

TEST_F(CFileTest, ClosesTheFileWhenItIsDestroyed)
{
    {
        CFile file;
        ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
        EXPECT_EQ(ErrorForOthers(m_path, GENERIC_READ), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_EQ(ErrorForOthers(m_path, GENERIC_READ), 0U);
}

BOOL WINAPI WriteHalf(HANDLE, LPCVOID, DWORD cbToWrite, LPDWORD pcbWritten, LPOVERLAPPED)
{
    *pcbWritten = cbToWrite / 2;
    return TRUE;
}

BOOL WINAPI WriteNothing(HANDLE, LPCVOID, DWORD, LPDWORD pcbWritten, LPOVERLAPPED)
{
    *pcbWritten = 0;
    ::SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

BOOL(WINAPI* g_pfnCloseHandle)(HANDLE) = nullptr;

BOOL WINAPI CloseBadly(HANDLE hObject)
{
    g_pfnCloseHandle(hObject);
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

// What the function throws; cause none when it throws nothing.
template <class Function>
void ExpectThrow(const Function& function, int cause, LONG lOsError, const std::string& path)
{
    try
    {
        function();
        FAIL() << "nothing was thrown";
    }
    catch (CFileException* pException)
    {
        EXPECT_EQ(pException->m_cause, cause);
        EXPECT_EQ(pException->m_lOsError, lOsError);
        EXPECT_STREQ(pException->m_strFileName, path.c_str());
        pException->Delete();
    }
}

TEST_F(CFileTest, TakesAShortWriteForAFullDisk)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    const ImportPatch patch(::GetModuleHandleA(nullptr), "WriteFile",
                            reinterpret_cast<void*>(&WriteHalf));
    ASSERT_TRUE(patch.IsActive());
    ExpectThrow([&] { Write(file, "text"); }, CFileException::diskFull, -1, m_path);
}

TEST_F(CFileTest, ThrowsWhenTheSystemCannotWrite)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    const ImportPatch patch(::GetModuleHandleA(nullptr), "WriteFile",
                            reinterpret_cast<void*>(&WriteNothing));
    ASSERT_TRUE(patch.IsActive());
    ExpectThrow([&] { Write(file, "text"); }, CFileException::hardIO, ERROR_WRITE_PROTECT, m_path);
}

TEST_F(CFileTest, ThrowsWhenTheSystemCannotCloseAndIsClosedAllTheSame)
{
    CFile file;
    ASSERT_TRUE(file.Open(m_path.c_str(), kCreate));
    {
        const ImportPatch patch(::GetModuleHandleA(nullptr), "CloseHandle",
                                reinterpret_cast<void*>(&CloseBadly));
        ASSERT_TRUE(patch.IsActive());
        g_pfnCloseHandle = reinterpret_cast<BOOL(WINAPI*)(HANDLE)>(patch.Original());
        ExpectThrow([&] { file.Close(); }, CFileException::diskFull, ERROR_DISK_FULL, m_path);
    }
    EXPECT_EQ(file.m_hFile, INVALID_HANDLE_VALUE);
    file.Close(); // nothing left to close, nothing thrown
    EXPECT_EQ(ErrorForOthers(m_path, GENERIC_READ), 0U);
}
} // namespace
