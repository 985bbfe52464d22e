// FileCopy of the built DLL, on real files.
#include "tests/support/CleanFault.h"
#include "tests/support/CodePage932.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/FileHandle.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Wine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace
{
std::string RandomBytes(std::size_t cb, unsigned int nSeed)
{
    std::mt19937 random(nSeed);
    std::string bytes(cb, '\0');
    for (char& ch : bytes)
        ch = static_cast<char>(random() & 0xFF);
    return bytes;
}

class FileCopy : public testing::Test
{
protected:
    FileCopy() : source(temp.MakeFolder("source")), target(temp.MakeFolder("target"))
    {
        WriteBytes(source + "\\a.txt", kText);
    }
    void SetUp() override { ASSERT_TRUE(tarn.IsComplete()); }

    int Copy(const std::string& from, const std::string& folder) const
    {
        return tarn.FileCopy(from.c_str(), folder.c_str());
    }
    // What makes it fail is not in the way of another file, which is removed again.
    void ExpectToFailCleanly(const std::string& from, const std::string& folder) const
    {
        ExpectCleanFault(
            0, [&] { return Copy(from, folder); },
            [&] {
                WriteBytes(source + "\\b.txt", "works");
                EXPECT_EQ(Copy(source + "\\b.txt", target + "\\"), 1);
                EXPECT_EQ(ReadBytes(target + "\\b.txt"), "works");
                ::DeleteFileA((source + "\\b.txt").c_str());
                ::DeleteFileA((target + "\\b.txt").c_str());
            });
    }

    static constexpr const char* kText = "the text of a.txt\r\n";
    const LoadedTarn tarn;
    const TempFolder temp;
    const std::string source;
    const std::string target;
};

// Calls of the system's functions, while a patch leads here.
int g_nQueries = 0;
int g_nCopies = 0;
BOOL g_bFailIfExists = -1;

DWORD WINAPI CountingGetFileAttributesA(LPCSTR pszPath)
{
    ++g_nQueries;
    return ::GetFileAttributesA(pszPath);
}

BOOL WINAPI CountingCopyFileA(LPCSTR pszFrom, LPCSTR pszTo, BOOL bFailIfExists)
{
    ++g_nCopies;
    g_bFailIfExists = bFailIfExists;
    return ::CopyFileA(pszFrom, pszTo, bFailIfExists);
}

// Any value but 0 means that the copy was made.
BOOL WINAPI CopyFileAReturningMinusOne(LPCSTR, LPCSTR, BOOL)
{
    return -1;
}

struct CallCounts
{
    explicit CallCounts(HMODULE hTarn)
        : queries(hTarn, "GetFileAttributesA",
                  reinterpret_cast<void*>(&CountingGetFileAttributesA)),
          copies(hTarn, "CopyFileA", reinterpret_cast<void*>(&CountingCopyFileA))
    {
        g_nQueries = 0;
        g_nCopies = 0;
        EXPECT_TRUE(queries.IsActive());
        EXPECT_TRUE(copies.IsActive());
    }
    ImportPatch queries;
    ImportPatch copies;
};
} // namespace

TEST_F(FileCopy, CopiesIntoAFolderThatEndsInABackslash)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(TempFolder::Listing(target), "a.txt");
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
    EXPECT_EQ(ReadBytes(source + "\\a.txt"), kText);
}

TEST_F(FileCopy, CopiesIntoAFolderThatEndsInASlash)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target + "/"), 1);
    EXPECT_EQ(TempFolder::Listing(target), "a.txt");
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
}

TEST_F(FileCopy, InsertsNoSeparatorBetweenFolderAndFileName)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target), 1);
    EXPECT_EQ(temp.Listing(), "source|target|targeta.txt");
    EXPECT_EQ(TempFolder::Listing(target), "");
    EXPECT_EQ(ReadBytes(temp / "targeta.txt"), kText);
}

TEST_F(FileCopy, TakesTheFolderTextAsAPrefixOfTheName)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\copy of "), 1);
    EXPECT_EQ(TempFolder::Listing(target), "copy of a.txt");
}

TEST_F(FileCopy, TakesTheNameBehindTheLastSeparatorOfEitherKind)
{
    const std::string deeper = temp.MakeFolder("source\\x");
    for (const char* const pszFrom : {"/x\\a1.txt", "\\x/a2.txt", "/x/a3.txt", "\\x\\a4.txt"})
    {
        WriteBytes(source + pszFrom, pszFrom);
        EXPECT_EQ(Copy(source + pszFrom, target + "\\"), 1) << pszFrom;
        EXPECT_EQ(ReadBytes(target + "\\" + (pszFrom + 3)), pszFrom);
    }
    EXPECT_EQ(TempFolder::Listing(target), "a1.txt|a2.txt|a3.txt|a4.txt");
}

TEST_F(FileCopy, CopiesToTheCurrentFolderWhenTheFolderIsEmptyOrNull)
{
    const CurrentFolder there(target);
    EXPECT_EQ(tarn.FileCopy((source + "\\a.txt").c_str(), ""), 1);
    EXPECT_EQ(TempFolder::Listing(target), "a.txt");
    ::DeleteFileA((target + "\\a.txt").c_str());
    EXPECT_EQ(tarn.FileCopy((source + "\\a.txt").c_str(), nullptr), 1);
    EXPECT_EQ(TempFolder::Listing(target), "a.txt");
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
}

TEST_F(FileCopy, TakesASourceWithoutSeparatorsFromTheCurrentFolder)
{
    const CurrentFolder there(source);
    EXPECT_EQ(Copy("a.txt", target + "\\"), 1);
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
}

TEST_F(FileCopy, FailsForAnEmptyOrNullSourceWithoutAskingTheSystem)
{
    const CallCounts counts(tarn.Module());
    EXPECT_EQ(tarn.FileCopy("", (target + "\\").c_str()), 0);
    EXPECT_EQ(tarn.FileCopy(nullptr, (target + "\\").c_str()), 0);
    EXPECT_EQ(tarn.FileCopy(nullptr, nullptr), 0);
    EXPECT_EQ(tarn.FileCopy("", ""), 0);
    EXPECT_EQ(g_nQueries, 0);
    EXPECT_EQ(g_nCopies, 0);
    EXPECT_EQ(TempFolder::Listing(target), "");
}

TEST_F(FileCopy, DoesNotTryToCopyASourceThatDoesNotExist)
{
    const CallCounts counts(tarn.Module());
    EXPECT_EQ(Copy(source + "\\missing.txt", target + "\\"), 0);
    EXPECT_EQ(Copy(temp / "missing\\a.txt", target + "\\"), 0);
    EXPECT_EQ(g_nQueries, 2);
    EXPECT_EQ(g_nCopies, 0);
    EXPECT_EQ(TempFolder::Listing(target), "");
}

TEST_F(FileCopy, AsksOnceAndCopiesOnceWithOverwritingAllowed)
{
    const CallCounts counts(tarn.Module());
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(g_nQueries, 1);
    EXPECT_EQ(g_nCopies, 1);
    EXPECT_EQ(g_bFailIfExists, FALSE);
}

TEST_F(FileCopy, ReturnsExactlyOneForAnySuccessOfTheSystem)
{
    const ImportPatch patch(tarn.Module(), "CopyFileA",
                            reinterpret_cast<void*>(&CopyFileAReturningMinusOne));
    ASSERT_TRUE(patch.IsActive());
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
}

TEST_F(FileCopy, FailsForASourceThatIsAFolder)
{
    const CallCounts counts(tarn.Module());
    EXPECT_EQ(Copy(source, target + "\\"), 0);
    EXPECT_EQ(g_nCopies, 1) << "the system's copy is what refuses a folder";
    EXPECT_EQ(TempFolder::Listing(target), "");
}

TEST_F(FileCopy, FailsForASourceThatEndsInASeparator)
{
    EXPECT_EQ(Copy(source + "\\", target + "\\new"), 0);
    EXPECT_EQ(Copy(source + "/", target + "\\new"), 0);
    EXPECT_EQ(Copy(source + "\\", target + "\\"), 0);
    EXPECT_EQ(TempFolder::Listing(target), "");
    EXPECT_EQ(TempFolder::Listing(source), "a.txt");
}

TEST_F(FileCopy, CreatesNoFolder)
{
    EXPECT_EQ(Copy(source + "\\a.txt", temp / "missing\\"), 0);
    EXPECT_EQ(Copy(source + "\\a.txt", temp / "missing/"), 0);
    EXPECT_EQ(temp.Listing(), "source|target");
}

TEST_F(FileCopy, FailsWhenAFolderHasTheDestinationsName)
{
    temp.MakeFolder("target\\a.txt");
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 0);
    EXPECT_EQ(TempFolder::Listing(target + "\\a.txt"), "");
}

TEST_F(FileCopy, ReplacesAnOlderLongerFileWhole)
{
    WriteBytes(target + "\\a.txt", std::string(100000, 'o'));
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
}

TEST_F(FileCopy, GivesTheSameTwiceInARow)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
    EXPECT_EQ(TempFolder::Listing(target), "a.txt");
}

TEST_F(FileCopy, CopiesEveryByte)
{
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    const std::string kContents[] = {"", std::string(1, '\0'), all, RandomBytes(65537, 1),
                                     RandomBytes(6 * 1024 * 1024 + 1, 2)};
    for (const std::string& contents : kContents)
    {
        WriteBytes(source + "\\data.bin", contents);
        EXPECT_EQ(Copy(source + "\\data.bin", target + "\\"), 1) << contents.size();
        // Not compared by the macro, which would print megabytes.
        EXPECT_TRUE(ReadBytes(target + "\\data.bin") == contents) << contents.size();
    }
}

TEST_F(FileCopy, FailsWhenAnotherProgramHoldsTheDestinationOpen)
{
    WriteBytes(target + "\\a.txt", "old");
    {
        const FileHandle other(target + "\\a.txt", GENERIC_READ, FILE_SHARE_READ);
        ASSERT_TRUE(other.IsOpen());
        ExpectToFailCleanly(source + "\\a.txt", target + "\\");
    }
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), "old");
}

TEST_F(FileCopy, FailsWhenAnotherProgramHoldsTheSourceOpenForItself)
{
    const FileHandle other(source + "\\a.txt", GENERIC_READ, 0);
    ASSERT_TRUE(other.IsOpen());
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 0);
    EXPECT_EQ(TempFolder::Listing(target), "");
}

TEST_F(FileCopy, CopiesASourceThatIsReadOnly)
{
    ::SetFileAttributesA((source + "\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_EQ(ReadBytes(target + "\\a.txt"), kText);
}

TEST_F(FileCopy, FailsWhenTheDestinationIsReadOnly)
{
    const std::string copy = target + "\\a.txt";
    WriteBytes(copy, "old");
    ASSERT_TRUE(::SetFileAttributesA(copy.c_str(), FILE_ATTRIBUTE_READONLY));
    if (!BindsReadOnly(copy))
        GTEST_SKIP() << "this user may write to read-only files";
    ExpectToFailCleanly(source + "\\a.txt", target + "\\");
    EXPECT_EQ(ReadBytes(copy), "old");
    EXPECT_NE(::GetFileAttributesA(copy.c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
}

// Run by read_only_test.sh, which also makes folder and file.
TEST_F(FileCopy, FailsInAFolderThatTheUserMayNotWriteTo)
{
    const char* const pszFolder = std::getenv("TARN_DENIED_FOLDER");
    if (pszFolder == nullptr)
        GTEST_SKIP() << "no such folder; see read_only_test.sh";
    const std::string folder(pszFolder);
    const std::string listing = TempFolder::Listing(folder);
    ASSERT_NE(listing, "(unreadable)");
    ExpectToFailCleanly(source + "\\a.txt", folder + "\\");
    EXPECT_EQ(TempFolder::Listing(folder), listing);
}

TEST_F(FileCopy, FailsForASourceThatTheUserMayNotRead)
{
    const char* const pszFile = std::getenv("TARN_DENIED_FILE");
    if (pszFile == nullptr)
        GTEST_SKIP() << "no such file; see read_only_test.sh";
    ASSERT_TRUE(Exists(pszFile)) << "it is there to be seen";
    ExpectToFailCleanly(pszFile, target + "\\");
    EXPECT_EQ(TempFolder::Listing(target), "");
}

// Documented of Windows: a destination that is hidden is refused with "access denied", and so is, by
// CREATE_ALWAYS, one that is the system's. Wine has no such attributes of its own and replaces both.
TEST_F(FileCopy, IsRefusedAHiddenOrSystemFileByWindowsAndReplacesItUnderWine)
{
    const std::string from = source + "\\a.txt";
    const std::string to = target + "\\a.txt";
    for (const DWORD nAttribute : {DWORD{FILE_ATTRIBUTE_HIDDEN}, DWORD{FILE_ATTRIBUTE_SYSTEM}})
    {
        SCOPED_TRACE(nAttribute);
        WriteBytes(to, "old");
        ASSERT_TRUE(::SetFileAttributesA(to.c_str(), nAttribute));
        if (RunsUnderWine())
        {
            EXPECT_EQ(Copy(from, target + "\\"), 1);
            EXPECT_EQ(ReadBytes(to), kText);
        }
        else
        {
            ExpectToFailCleanly(from, target + "\\");
            EXPECT_EQ(ReadBytes(to), "old");
        }
        ::SetFileAttributesA(to.c_str(), FILE_ATTRIBUTE_NORMAL);
        ::DeleteFileA(to.c_str());
    }
}

TEST_F(FileCopy, DoesNoHarmToAFileThatIsCopiedToItself)
{
    EXPECT_EQ(Copy(source + "\\a.txt", source + "\\"), 0);
    EXPECT_EQ(ReadBytes(source + "\\a.txt"), kText);
}

TEST_F(FileCopy, FailsForPathsThatAreTooLong)
{
    const std::string name(40000, 'x');
    ExpectToFailCleanly(source + "\\" + name, target + "\\");
    ExpectToFailCleanly(source + "\\a.txt", target + "\\" + name);
    ExpectToFailCleanly(source + "\\a.txt", target + "\\" + name + "\\");
    ExpectToFailCleanly(name, name);
    ExpectToFailCleanly(source + "\\" + std::string(40000, '\xE9'), target + "\\");
    EXPECT_EQ(TempFolder::Listing(target), "");
    EXPECT_EQ(temp.Listing(), "source|target");
}

TEST_F(FileCopy, LeavesTheCallersTextsAndStateAsTheyWere)
{
    const std::string from = source + "\\a.txt";
    const std::string folder = target + "\\";
    std::string fromBuffer(from);
    std::string folderBuffer(folder);
    const CallersState before = CallersState::Now();
    EXPECT_EQ(tarn.FileCopy(fromBuffer.c_str(), folderBuffer.c_str()), 1);
    EXPECT_EQ(tarn.FileCopy("missing", folderBuffer.c_str()), 0);
    EXPECT_EQ(tarn.FileCopy("", folderBuffer.c_str()), 0);
    EXPECT_EQ(CallersState::Now(), before);
    EXPECT_EQ(fromBuffer, from);
    EXPECT_EQ(folderBuffer, folder);
}

TEST_F(FileCopy, ClosesBothFiles)
{
    EXPECT_EQ(Copy(source + "\\a.txt", target + "\\"), 1);
    EXPECT_TRUE(IsClosed(source + "\\a.txt"));
    EXPECT_TRUE(IsClosed(target + "\\a.txt"));
}

class FileCopyCodePage932 : public CodePage932
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        CodePage932::SetUp();
    }

    // The names as the system stores them, so that a name that only looks the same is noticed.
    static bool HasWideName(const std::string& folder, const wchar_t* pszName)
    {
        WCHAR szFolder[MAX_PATH] = L"";
        ::MultiByteToWideChar(932, 0, folder.c_str(), -1, szFolder, MAX_PATH);
        WIN32_FIND_DATAW found;
        HANDLE const hFind = ::FindFirstFileW((std::wstring(szFolder) + L"\\*").c_str(), &found);
        bool bFound = false;
        for (BOOL bMore = hFind != INVALID_HANDLE_VALUE; bMore;
             bMore = ::FindNextFileW(hFind, &found))
            bFound = bFound || std::wstring(found.cFileName) == pszName;
        ::FindClose(hFind);
        return bFound;
    }

    const LoadedTarn tarn;
    const TempFolder temp;
};

TEST_F(FileCopyCodePage932, KeepsNamesWhoseLastByteIsABackslashs)
{
    static constexpr struct
    {
        const char* pszName;
        const wchar_t* pszWide;
    } kCases[] = {
        {"\x95\x5C", L"\x8868"},         // the character for "table"
        {"\x83\x5C.txt", L"\x30BD.txt"}, // katakana SO
        {"\x94\x5C\x97\xCD", L"\x80FD\x529B"},
        {"\x95\x5C\x83\x5C\x94\x5C.dat", L"\x8868\x30BD\x80FD.dat"},
    };
    const std::string source = temp.MakeFolder("source");
    const std::string target = temp.MakeFolder("target");
    for (const auto& c : kCases)
    {
        WriteBytes(source + "\\" + c.pszName, c.pszName);
        EXPECT_EQ(tarn.FileCopy((source + "\\" + c.pszName).c_str(), (target + "\\").c_str()), 1);
        EXPECT_TRUE(HasWideName(target, c.pszWide)) << c.pszName;
        EXPECT_EQ(ReadBytes(target + "\\" + c.pszName), c.pszName);
    }
}

TEST_F(FileCopyCodePage932, CopiesBetweenFoldersWithSuchNames)
{
    const std::string source = temp.MakeFolder("\x83\x5C");
    const std::string target = temp.MakeFolder("\x95\x5C");
    WriteBytes(source + "\\\x94\x5C.txt", "x");
    EXPECT_EQ(tarn.FileCopy((source + "\\\x94\x5C.txt").c_str(), (target + "\\").c_str()), 1);
    EXPECT_EQ(tarn.FileCopy((source + "/\x94\x5C.txt").c_str(), (target + "/b-").c_str()), 1);
    EXPECT_EQ(TempFolder::Listing(target), "b-\x94\x5C.txt|\x94\x5C.txt");
}

TEST_F(FileCopyCodePage932, TakesASourceOfSuchANameAlone)
{
    const std::string source = temp.MakeFolder("source");
    const std::string target = temp.MakeFolder("target");
    WriteBytes(source + "\\\x95\x5C", "x");
    const CurrentFolder there(source);
    EXPECT_EQ(tarn.FileCopy("\x95\x5C", (target + "\\").c_str()), 1);
    EXPECT_EQ(TempFolder::Listing(target), "\x95\x5C");
}

TEST_F(FileCopyCodePage932, InsertsNoSeparatorBehindSuchAFolder)
{
    const std::string source = temp.MakeFolder("source");
    const std::string target = temp.MakeFolder("\x95\x5C");
    WriteBytes(source + "\\a.txt", "x");
    EXPECT_EQ(tarn.FileCopy((source + "\\a.txt").c_str(), target.c_str()), 1);
    EXPECT_EQ(TempFolder::Listing(target), "");
    EXPECT_EQ(temp.Listing(), "source|\x95\x5C|\x95\x5C"
                              "a.txt");
}
