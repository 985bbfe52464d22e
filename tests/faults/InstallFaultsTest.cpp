// What FileCopy, PutInRunOnce and Write_ch_config_File of the built DLL return for each error that the
// system may give. Errors that a test can bring about for real are with the tests of each export.
#include "tests/support/CleanFault.h"
#include "tests/support/FailingCall.h"
#include "tests/support/FullDisk.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace
{
constexpr DWORD kErrors[] = {
    ERROR_FILE_NOT_FOUND,      ERROR_PATH_NOT_FOUND,    ERROR_TOO_MANY_OPEN_FILES,
    ERROR_ACCESS_DENIED,       ERROR_NOT_ENOUGH_MEMORY, ERROR_WRITE_PROTECT,
    ERROR_NOT_READY,           ERROR_SHARING_VIOLATION, ERROR_HANDLE_DISK_FULL,
    ERROR_DISK_FULL,           ERROR_NETNAME_DELETED,   ERROR_FILENAME_EXCED_RANGE,
    ERROR_NO_SYSTEM_RESOURCES, ERROR_IO_DEVICE,         12345,
};

constexpr char kRunOnce[] = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";

int g_nBoxes = 0;
std::string g_boxText;

int WINAPI NoteBox(HWND /*hWnd*/, LPCSTR pszText, LPCSTR /*pszCaption*/, UINT /*nType*/)
{
    ++g_nBoxes;
    g_boxText = pszText;
    return IDOK;
}

class InstallFault : public testing::Test
{
protected:
    InstallFault()
        : source(folder / "a.txt"), target(folder.MakeFolder("target")),
          boxes(tarn.Module(), "MessageBoxA", reinterpret_cast<void*>(&NoteBox))
    {
        WriteBytes(source, "text");
        folder.MakeFolder("target\\embedch");
        folder.MakeFolder("target\\embedch\\config");
        chrc = target + "\\embedch\\config\\chrc";
        g_nBoxes = 0;
    }
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        ASSERT_TRUE(boxes.IsActive());
    }

    void ExpectToCopy() const
    {
        EXPECT_EQ(tarn.FileCopy(source.c_str(), (target + "\\").c_str()), 1);
        EXPECT_EQ(ReadBytes(target + "\\a.txt"), "text");
        EXPECT_TRUE(::DeleteFileA((target + "\\a.txt").c_str()));
    }
    void ExpectToWrite() const
    {
        EXPECT_EQ(tarn.Write_ch_config_File(target.c_str()), 1);
        EXPECT_TRUE(::DeleteFileA(chrc.c_str()));
    }
    // Whatever the box said is not the library's memory.
    static void ForgetBox()
    {
        g_boxText.clear();
        g_boxText.shrink_to_fit();
    }

    const TempFolder folder;
    const LoadedTarn tarn;
    std::string source;
    std::string target;
    std::string chrc;
    const ImportPatch boxes;
};

TEST_F(InstallFault, OfFileCopyIsZeroForEveryErrorAndShowsNothing)
{
    for (const char* const pszFunction : {"CopyFileA", "GetFileAttributesA"})
    {
        // All bits set mean that there are no attributes; a copy has been made for any of them.
        const ULONG_PTR nResult =
            std::string(pszFunction) == "CopyFileA" ? FALSE : INVALID_FILE_ATTRIBUTES;
        for (const DWORD nError : kErrors)
        {
            SCOPED_TRACE(testing::Message() << pszFunction << ", error " << nError);
            ExpectCleanFault(
                0,
                [&] {
                    const FailingCall failing(tarn.Module(), pszFunction, nResult, nError);
                    const int nCopied = tarn.FileCopy(source.c_str(), (target + "\\").c_str());
                    EXPECT_EQ(FailingCall::Calls(), 1);
                    EXPECT_FALSE(Exists(target + "\\a.txt"));
                    return nCopied;
                },
                [this] { ExpectToCopy(); });
        }
    }
    EXPECT_EQ(g_nBoxes, 0);
}

// Run by full_disk_test.sh, which also makes the disk, with room for less than the file.
TEST_F(InstallFault, OfAFullDiskIsZeroForFileCopy)
{
    const char* const pszDisk = std::getenv("TARN_FULL_DISK");
    if (pszDisk == nullptr)
        GTEST_SKIP() << kNoFullDisk;
    WriteBytes(source, std::string(2 << 20, 'x'));
    const std::string disk = std::string(pszDisk) + "\\";
    ExpectCleanFault(
        0,
        [&] {
            const int nCopied = tarn.FileCopy(source.c_str(), disk.c_str());
            ::DeleteFileA((disk + "a.txt").c_str());
            return nCopied;
        },
        [&] {
            WriteBytes(source, "text");
            EXPECT_EQ(tarn.FileCopy(source.c_str(), disk.c_str()), 1) << "this much does fit";
            EXPECT_EQ(ReadBytes(disk + "a.txt"), "text");
        });
    EXPECT_EQ(g_nBoxes, 0);
}

TEST_F(InstallFault, OfOpeningTheStartUpFileIsZeroAfterABoxForEveryError)
{
    for (const DWORD nError : kErrors)
    {
        SCOPED_TRACE(nError);
        ExpectCleanFault(
            0,
            [&] {
                const FailingCall failing(tarn.Module(), "CreateFileA", ~ULONG_PTR{0}, nError);
                g_nBoxes = 0;
                const int nWritten = tarn.Write_ch_config_File(target.c_str());
                EXPECT_EQ(g_nBoxes, 1);
                EXPECT_NE(g_boxText.find(chrc), std::string::npos) << g_boxText;
                EXPECT_FALSE(Exists(chrc));
                ForgetBox();
                return nWritten;
            },
            [this] { ExpectToWrite(); });
    }
}

TEST_F(InstallFault, OfTheBoxItselfIsZeroAllTheSame)
{
    ExpectCleanFault(
        0,
        [this] {
            const FailingCall failing(tarn.Module(), "MessageBoxA");
            const int nWritten = tarn.Write_ch_config_File((target + "\\missing").c_str());
            EXPECT_EQ(FailingCall::Calls(), 1);
            return nWritten;
        },
        [this] { ExpectToWrite(); });
    EXPECT_EQ(tarn.Write_ch_config_File((target + "\\missing").c_str()), 0);
    EXPECT_EQ(g_nBoxes, 1) << "the next one is shown";
}

TEST_F(InstallFault, OfTheRegistryIsZeroForEveryErrorAndShowsNothing)
{
    const RegistrySandbox sandbox;
    ASSERT_TRUE(MakeKey(kRunOnce));
    for (const char* const pszFunction : {"RegOpenKeyExA", "RegSetValueExA"})
    {
        for (const DWORD nError : kErrors)
        {
            SCOPED_TRACE(testing::Message() << pszFunction << ", error " << nError);
            ExpectCleanFault(
                0,
                [&] {
                    const FailingCall failing(tarn.Module(), pszFunction, nError);
                    const int nPut = tarn.PutInRunOnce("Tarn fault", "command");
                    EXPECT_EQ(FailingCall::Calls(), 1);
                    EXPECT_FALSE(ReadValue(kRunOnce, "Tarn fault").bExists);
                    return nPut;
                },
                [this] {
                    EXPECT_EQ(tarn.PutInRunOnce("Tarn fault", "command"), 1);
                    EXPECT_EQ(::RegDeleteKeyValueA(HKEY_CURRENT_USER, kRunOnce, "Tarn fault"),
                              ERROR_SUCCESS);
                });
        }
    }
    EXPECT_EQ(g_nBoxes, 0);
}
} // namespace
