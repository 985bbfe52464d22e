// Write_ch_config_File of the built DLL. The library is linked statically besides, for the types of
// the exceptions that leave the DLL.
#include "tests/install/ChrcModel.h"
#include "tests/support/CleanFault.h"
#include "tests/support/CodePage932.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/FileHandle.h"
#include "tests/support/FullDisk.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/Wine.h"

#include <gtest/gtest.h>

#include <afx.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace
{
// What every test here has: the DLL, a folder, and somebody who answers message boxes.
template <class Base>
class ChrcExportTest : public Base
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tarn.IsComplete());
        Base::SetUp();
    }
    void TearDown() override
    {
        for (const SeenMessageBox& box : Boxes())
            ADD_FAILURE() << "an unexpected message box: " << box.text;
        Base::TearDown();
    }

    // The boxes that were shown since the test began or asked last.
    std::vector<SeenMessageBox> Boxes()
    {
        const std::vector<SeenMessageBox> boxes = m_pDriver->Stop();
        StartAnswering();
        return boxes;
    }
    void StopAnswering()
    {
        for (const SeenMessageBox& box : Boxes())
            ADD_FAILURE() << "an unexpected message box: " << box.text;
        m_pDriver.reset();
    }
    void StartAnswering() { m_pDriver = std::make_unique<MessageBoxDriver>(); }

    const LoadedTarn tarn;
    const TempFolder temp;

private:
    std::unique_ptr<MessageBoxDriver> m_pDriver = std::make_unique<MessageBoxDriver>();
};

int g_nBoxes = 0;

int WINAPI CountBox(HWND /*hWnd*/, LPCSTR /*pszText*/, LPCSTR /*pszCaption*/, UINT /*nType*/)
{
    ++g_nBoxes;
    return IDOK;
}

class ChrcExport : public ChrcExportTest<testing::Test>
{
protected:
    // Without a box on the screen: whoever answers it is another thread, which is counted, too.
    template <class Result, class Call>
    void ExpectClean(const Result& documented, int nBoxes, const Call& call)
    {
        StopAnswering();
        const std::string path = MakeConfig("Works");
        ExpectCleanFault(
            documented,
            [&] {
                const ImportPatch patch(tarn.Module(), "MessageBoxA",
                                        reinterpret_cast<void*>(&CountBox));
                EXPECT_TRUE(patch.IsActive());
                g_nBoxes = 0;
                const Result result = call();
                EXPECT_EQ(g_nBoxes, nBoxes);
                return result;
            },
            [&] {
                EXPECT_EQ(Write(temp / "Works"), 1);
                EXPECT_EQ(ReadBytes(path), FileModel(temp / "Works"));
            });
        StartAnswering();
    }
    void ExpectToFailCleanly(const std::string& folder)
    {
        ExpectClean(0, 1, [&] { return Write(folder); });
    }

    int Write(const std::string& folder) const { return tarn.Write_ch_config_File(folder.c_str()); }

    // Makes embedch\config under a folder and returns the start-up file's path.
    std::string MakeConfig(const std::string& name) const
    {
        temp.MakeFolder(name);
        temp.MakeFolder(name + "\\embedch");
        return temp.MakeFolder(name + "\\embedch\\config") + "\\chrc";
    }
};

// embedch\config at the root of the drive that has the temporary folders; removed with the object.
class ConfigAtTheRoot
{
public:
    explicit ConfigAtTheRoot(const std::string& folderOnDrive) : m_drive(folderOnDrive.substr(0, 2))
    {
        m_bMade = MayTouchUsersSettings() &&
                  ::CreateDirectoryA((m_drive + "\\embedch").c_str(), nullptr) &&
                  ::CreateDirectoryA((m_drive + "\\embedch\\config").c_str(), nullptr);
    }
    ~ConfigAtTheRoot()
    {
        if (m_bMade)
        {
            ::DeleteFileA(Path().c_str());
            ::RemoveDirectoryA((m_drive + "\\embedch\\config").c_str());
            ::RemoveDirectoryA((m_drive + "\\embedch").c_str());
        }
    }
    ConfigAtTheRoot(const ConfigAtTheRoot&) = delete;
    ConfigAtTheRoot& operator=(const ConfigAtTheRoot&) = delete;

    // False when the drive has an embedch of its own, or belongs to somebody else: a person's is left
    // alone.
    bool IsMade() const { return m_bMade; }
    // "C:"
    const std::string& Drive() const { return m_drive; }
    std::string Path() const { return m_drive + "\\embedch\\config\\chrc"; }

private:
    std::string m_drive;
    bool m_bMade;
};

// Catches what a call throws: the type must be the exact one and have the base that hosts know.
struct Caught
{
    bool bFileException = false;
    bool bInvalidArgument = false;
    int cause = CFileException::none;
    LONG lOsError = 0;
    std::string fileName;
};

Caught CatchFrom(const LoadedTarn& tarn, const std::string& folder)
{
    Caught caught;
    try
    {
        tarn.Write_ch_config_File(folder.c_str());
    }
    catch (CFileException* pException)
    {
        caught.bFileException = true;
        caught.cause = pException->m_cause;
        caught.lOsError = pException->m_lOsError;
        caught.fileName = pException->m_strFileName;
        pException->Delete();
    }
    catch (CInvalidArgException* pException)
    {
        caught.bInvalidArgument = true;
        pException->Delete();
    }
    return caught;
}

// Patches lead here.
int g_nOpens = 0;
std::string g_openedPath;
DWORD g_nOpenAccess = 0;
DWORD g_nOpenShare = 99;
DWORD g_nOpenDisposition = 0;
HANDLE g_hOpened = nullptr;
int g_nWrites = 0;
int g_nCloses = 0;
DWORD g_nError = 0;

HANDLE WINAPI RecordingCreateFileA(LPCSTR pszPath, DWORD nAccess, DWORD nShare,
                                   LPSECURITY_ATTRIBUTES pSecurity, DWORD nDisposition,
                                   DWORD nFlags, HANDLE hTemplate)
{
    ++g_nOpens;
    g_openedPath = pszPath;
    g_nOpenAccess = nAccess;
    g_nOpenShare = nShare;
    g_nOpenDisposition = nDisposition;
    g_hOpened = ::CreateFileA(pszPath, nAccess, nShare, pSecurity, nDisposition, nFlags, hTemplate);
    return g_hOpened;
}

// As a disk that has room for all but one byte.
BOOL WINAPI ShortWriteFile(HANDLE hFile, LPCVOID pData, DWORD cb, LPDWORD pcbWritten,
                           LPOVERLAPPED pOverlapped)
{
    ++g_nWrites;
    return ::WriteFile(hFile, pData, cb - 1, pcbWritten, pOverlapped);
}

BOOL WINAPI FailingWriteFile(HANDLE, LPCVOID, DWORD, LPDWORD pcbWritten, LPOVERLAPPED)
{
    ++g_nWrites;
    *pcbWritten = 0;
    ::SetLastError(g_nError);
    return FALSE;
}

// The handle is closed all the same, as the system does when its last write fails.
BOOL WINAPI FailingCloseHandle(HANDLE hObject)
{
    ::CloseHandle(hObject);
    if (hObject != g_hOpened)
        return TRUE;
    ++g_nCloses;
    ::SetLastError(g_nError);
    return FALSE;
}

class Recorder
{
public:
    explicit Recorder(HMODULE hTarn)
        : m_patch(hTarn, "CreateFileA", reinterpret_cast<void*>(&RecordingCreateFileA))
    {
        g_nOpens = g_nWrites = g_nCloses = 0;
        g_hOpened = nullptr;
        EXPECT_TRUE(m_patch.IsActive());
    }

private:
    ImportPatch m_patch;
};
} // namespace

TEST_F(ChrcExport, WritesTheFileUnderTheFolder)
{
    const std::string path = MakeConfig("Program Files");
    const std::string folder = temp / "Program Files";
    EXPECT_EQ(Write(folder), 1);
    EXPECT_EQ(ReadBytes(path), FileModel(folder));
    EXPECT_EQ(TempFolder::Listing(folder + "\\embedch\\config"), "chrc");
    EXPECT_EQ(TempFolder::Listing(folder), "embedch");
}

TEST_F(ChrcExport, IgnoresSeparatorsAtTheFoldersEnd)
{
    const std::string path = MakeConfig("App");
    const std::string folder = temp / "App";
    for (const char* const pszEnd : {"\\", "/", "\\\\", "//", "\\/", "\\\\\\"})
    {
        ::DeleteFileA(path.c_str());
        EXPECT_EQ(Write(folder + pszEnd), 1) << pszEnd;
        EXPECT_EQ(ReadBytes(path), FileModel(folder)) << pszEnd;
    }
}

TEST_F(ChrcExport, TakesOneSeparatorOnlyOffThePathThatItOpens)
{
    MakeConfig("App");
    const std::string folder = temp / "App";
    const Recorder recorder(tarn.Module());
    EXPECT_EQ(Write(folder + "\\\\"), 1);
    EXPECT_EQ(g_openedPath, folder + "\\\\embedch\\config\\chrc");
    EXPECT_EQ(Write(folder + "/\\"), 1);
    EXPECT_EQ(g_openedPath, folder + "/\\embedch\\config\\chrc");
    EXPECT_EQ(Write(folder), 1);
    EXPECT_EQ(g_openedPath, folder + "\\embedch\\config\\chrc");
}

TEST_F(ChrcExport, OpensTheFileOnceForWritingAndForItselfAlone)
{
    MakeConfig("App");
    const Recorder recorder(tarn.Module());
    EXPECT_EQ(Write(temp / "App"), 1);
    EXPECT_EQ(g_nOpens, 1);
    EXPECT_EQ(g_nOpenAccess, GENERIC_WRITE);
    EXPECT_EQ(g_nOpenShare, 0U);
    EXPECT_EQ(g_nOpenDisposition, static_cast<DWORD>(CREATE_ALWAYS));
}

TEST_F(ChrcExport, KeepsForwardSlashes)
{
    const std::string path = MakeConfig("App");
    std::string folder = temp / "App";
    for (char& ch : folder)
        ch = ch == '\\' ? '/' : ch;
    EXPECT_EQ(Write(folder + "/"), 1);
    EXPECT_EQ(ReadBytes(path), TemplateWith(folder));
}

TEST_F(ChrcExport, WritesRunsOfBackslashesAsTheEscapingGivesThem)
{
    temp.MakeFolder("A");
    const std::string path = MakeConfig("A\\B");
    EXPECT_EQ(Write(temp / "A\\\\\\B"), 1);
    EXPECT_EQ(ReadBytes(path), FileModel(temp / "A\\\\\\B"));
    EXPECT_NE(ReadBytes(path).find("\\\\A\\\\\\\\B\\\\embedch"), std::string::npos);

    // Two backslashes in front, as a server's name has them.
    EXPECT_EQ(Write("\\\\?\\" + (temp / "A\\B")), 1);
    EXPECT_EQ(ReadBytes(path), FileModel("\\\\?\\" + (temp / "A\\B")));
    EXPECT_NE(ReadBytes(path).find("\"\\\\\\?\\\\"), std::string::npos);
}

TEST_F(ChrcExport, WritesAtTheRootOfADrive)
{
    const ConfigAtTheRoot root(temp.Path());
    if (!root.IsMade())
        GTEST_SKIP() << "this user's drive is left alone, or has a folder embedch";
    for (const char* const pszEnd : {"\\", "", "/", "\\\\"})
    {
        ::DeleteFileA(root.Path().c_str());
        // Without the separator the path has one all the same.
        EXPECT_EQ(Write(root.Drive() + pszEnd), 1) << pszEnd;
        EXPECT_EQ(ReadBytes(root.Path()), TemplateWith(root.Drive())) << pszEnd;
    }
}

TEST_F(ChrcExport, WritesAtTheCurrentDrivesRootWithoutAFolder)
{
    const ConfigAtTheRoot root(temp.Path());
    if (!root.IsMade())
        GTEST_SKIP() << "this user's drive is left alone, or has a folder embedch";
    const CurrentFolder there(temp.Path());
    for (const char* const pszFolder : {static_cast<const char*>(nullptr), "", "\\", "/"})
    {
        ::DeleteFileA(root.Path().c_str());
        EXPECT_EQ(tarn.Write_ch_config_File(pszFolder), 1);
        EXPECT_EQ(ReadBytes(root.Path()), TemplateWith(""));
    }
    EXPECT_EQ(temp.Listing(), "");
}

TEST_F(ChrcExport, ReplacesALongerOldFileWhole)
{
    const std::string path = MakeConfig("App");
    WriteBytes(path, std::string(20000, 'o'));
    EXPECT_EQ(Write(temp / "App"), 1);
    EXPECT_EQ(ReadBytes(path), FileModel(temp / "App"));
    EXPECT_EQ(Write(temp / "App"), 1);
    EXPECT_EQ(ReadBytes(path), FileModel(temp / "App"));
}

TEST_F(ChrcExport, TellsThatTheConfigFolderIsMissing)
{
    temp.MakeFolder("App");
    const std::string folder = temp / "App";
    EXPECT_EQ(Write(folder), 0);
    const std::vector<SeenMessageBox> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].text, "The path is not valid or its folder does not exist: " + folder +
                                 "\\embedch\\config\\chrc");
    EXPECT_EQ(boxes[0].caption, "tarn");
    EXPECT_EQ(boxes[0].nButtons, 1);
    EXPECT_EQ(TempFolder::Listing(folder), "");
}

TEST_F(ChrcExport, TellsThatAnotherProgramUsesTheFile)
{
    const std::string path = MakeConfig("App");
    WriteBytes(path, "old");
    {
        const FileHandle other(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_TRUE(other.IsOpen());
        EXPECT_EQ(Write(temp / "App"), 0);
        const std::vector<SeenMessageBox> boxes = Boxes();
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_EQ(boxes[0].text, path + " is in use by another program.");
        ExpectToFailCleanly(temp / "App");
    }
    EXPECT_EQ(ReadBytes(path), "old");
}

TEST_F(ChrcExport, TellsThatAReadOnlyFileIsDenied)
{
    const std::string path = MakeConfig("App");
    WriteBytes(path, "old");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    if (!BindsReadOnly(path))
        GTEST_SKIP() << "this user may write to read-only files";
    EXPECT_EQ(Write(temp / "App"), 0);
    const std::vector<SeenMessageBox> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].text, "Access was denied to " + path + ".");
    ExpectToFailCleanly(temp / "App");
    EXPECT_EQ(ReadBytes(path), "old");
}

// Documented of Windows: CREATE_ALWAYS with ordinary attributes is refused a file that is hidden or the
// system's. Wine replaces it.
TEST_F(ChrcExport, IsDeniedAHiddenOrSystemFileByWindowsAndReplacesItUnderWine)
{
    const std::string path = MakeConfig("App");
    for (const DWORD nAttribute : {DWORD{FILE_ATTRIBUTE_HIDDEN}, DWORD{FILE_ATTRIBUTE_SYSTEM}})
    {
        SCOPED_TRACE(nAttribute);
        WriteBytes(path, "old");
        ASSERT_TRUE(::SetFileAttributesA(path.c_str(), nAttribute));
        EXPECT_EQ(Write(temp / "App"), RunsUnderWine() ? 1 : 0);
        const std::vector<SeenMessageBox> boxes = Boxes();
        if (RunsUnderWine())
        {
            EXPECT_EQ(boxes.size(), 0U);
            EXPECT_EQ(ReadBytes(path), FileModel(temp / "App"));
        }
        else
        {
            ASSERT_EQ(boxes.size(), 1U);
            EXPECT_EQ(boxes[0].text, "Access was denied to " + path + ".");
            EXPECT_EQ(ReadBytes(path), "old");
        }
        ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
}

// Run by read_only_test.sh, which also makes the folder, with an embedch\config.
TEST_F(ChrcExport, TellsThatAFolderThatTheUserMayNotWriteToIsDenied)
{
    const char* const pszFolder = std::getenv("TARN_DENIED_FOLDER");
    if (pszFolder == nullptr)
        GTEST_SKIP() << "no such folder; see read_only_test.sh";
    const std::string folder(pszFolder);
    EXPECT_EQ(Write(folder), 0);
    const std::vector<SeenMessageBox> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_EQ(boxes[0].text, "Access was denied to " + folder + "\\embedch\\config\\chrc.");
    ExpectToFailCleanly(folder);
    EXPECT_EQ(TempFolder::Listing(folder + "\\embedch\\config"), "");
}

TEST_F(ChrcExport, FailsWithABoxForAFolderThatIsTooLong)
{
    EXPECT_EQ(Write(temp / std::string(40000, 'x')), 0);
    const std::vector<SeenMessageBox> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1U);
    EXPECT_NE(boxes[0].text.find(temp.Path()), std::string::npos);
    EXPECT_EQ(temp.Listing(), "");
    ExpectToFailCleanly(temp / std::string(40000, 'x'));
}

TEST_F(ChrcExport, ThrowsAFileExceptionForAShortWriteAndClosesTheFile)
{
    const std::string path = MakeConfig("App");
    ExpectClean(true, 0, [&] {
        const ImportPatch patch(tarn.Module(), "WriteFile",
                                reinterpret_cast<void*>(&ShortWriteFile));
        EXPECT_TRUE(patch.IsActive());
        const Recorder recorder(tarn.Module());
        const Caught caught = CatchFrom(tarn, temp / "App");
        EXPECT_EQ(caught.cause, CFileException::diskFull);
        EXPECT_EQ(caught.fileName, path);
        EXPECT_EQ(g_nWrites, 1);
        EXPECT_TRUE(IsClosed(path));
        return caught.bFileException;
    });
}

TEST_F(ChrcExport, ThrowsAFileExceptionForAFailedWriteAndClosesTheFile)
{
    static constexpr struct
    {
        DWORD nError;
        int cause;
    } kCases[] = {
        {ERROR_DISK_FULL, CFileException::diskFull},
        {ERROR_HANDLE_DISK_FULL, CFileException::diskFull},
        {ERROR_WRITE_FAULT, CFileException::hardIO},
        {ERROR_ACCESS_DENIED, CFileException::accessDenied},
    };
    const std::string path = MakeConfig("App");
    for (const auto& c : kCases)
    {
        SCOPED_TRACE(c.nError);
        ExpectClean(true, 0, [&] {
            const ImportPatch patch(tarn.Module(), "WriteFile",
                                    reinterpret_cast<void*>(&FailingWriteFile));
            EXPECT_TRUE(patch.IsActive());
            g_nError = c.nError;
            const Caught caught = CatchFrom(tarn, temp / "App");
            EXPECT_EQ(caught.cause, c.cause);
            EXPECT_EQ(caught.lOsError, static_cast<LONG>(c.nError));
            EXPECT_EQ(caught.fileName, path);
            EXPECT_TRUE(IsClosed(path));
            return caught.bFileException;
        });
    }
}

TEST_F(ChrcExport, ThrowsAFileExceptionWhenTheFileCannotBeClosed)
{
    const std::string path = MakeConfig("App");
    ExpectClean(true, 0, [&] {
        const Recorder recorder(tarn.Module());
        const ImportPatch patch(tarn.Module(), "CloseHandle",
                                reinterpret_cast<void*>(&FailingCloseHandle));
        EXPECT_TRUE(patch.IsActive());
        g_nError = ERROR_DISK_FULL;
        const Caught caught = CatchFrom(tarn, temp / "App");
        EXPECT_EQ(caught.cause, CFileException::diskFull);
        EXPECT_EQ(caught.lOsError, ERROR_DISK_FULL);
        EXPECT_EQ(caught.fileName, path);
        EXPECT_EQ(g_nCloses, 1) << "a handle's number may be another file's by the second time";
        EXPECT_EQ(ReadBytes(path), FileModel(temp / "App"));
        return caught.bFileException;
    });
}

TEST_F(ChrcExport, ThrowsForAFolderOfSeparatorsOnlyAndOpensNothing)
{
    const Recorder recorder(tarn.Module());
    const CallersState before = CallersState::Now();
    for (const char* const pszFolder : {"\\\\", "//", "\\/", "/\\", "\\\\\\", "\\\\\\\\\\\\"})
        EXPECT_TRUE(CatchFrom(tarn, pszFolder).bInvalidArgument) << pszFolder;
    EXPECT_EQ(CallersState::Now(), before);
    EXPECT_EQ(g_nOpens, 0);
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(ChrcExport, ThrowsExceptionsThatAreCaughtByTheirBase)
{
    EXPECT_THROW(tarn.Write_ch_config_File("\\\\"), CException*);
    MakeConfig("App");
    const ImportPatch patch(tarn.Module(), "WriteFile", reinterpret_cast<void*>(&ShortWriteFile));
    try
    {
        Write(temp / "App");
        ADD_FAILURE() << "no exception";
    }
    catch (CException* pException)
    {
        char szText[512] = "";
        EXPECT_TRUE(pException->GetErrorMessage(szText, sizeof(szText)));
        EXPECT_EQ(szText,
                  "The disk was full while writing " + (temp / "App\\embedch\\config\\chrc") + ".");
        pException->Delete();
    }
}

TEST_F(ChrcExport, WorksAfterAnException)
{
    const std::string path = MakeConfig("App");
    EXPECT_TRUE(CatchFrom(tarn, "\\\\").bInvalidArgument);
    EXPECT_EQ(Write(temp / "App"), 1);
    EXPECT_EQ(ReadBytes(path), FileModel(temp / "App"));
}

TEST_F(ChrcExport, LeavesTheCallersStateAndFolderTextAsTheyWere)
{
    MakeConfig("App");
    const std::string folder = temp / "App\\\\";
    const std::string buffer(folder);
    const CallersState before = CallersState::Now();
    EXPECT_EQ(tarn.Write_ch_config_File(buffer.c_str()), 1);
    EXPECT_EQ(CallersState::Now(), before);
    EXPECT_EQ(Write(temp / "missing"), 0);
    EXPECT_EQ(CallersState::Now(), before);
    EXPECT_EQ(buffer, folder);
    EXPECT_EQ(Boxes().size(), 1U);
}

TEST_F(ChrcExport, LeavesNoHandleOpen)
{
    const std::string path = MakeConfig("App");
    const auto callAll = [&] {
        EXPECT_EQ(Write(temp / "App"), 1);
        EXPECT_TRUE(CatchFrom(tarn, "\\\\").bInvalidArgument);
        const ImportPatch patch(tarn.Module(), "WriteFile",
                                reinterpret_cast<void*>(&ShortWriteFile));
        EXPECT_TRUE(CatchFrom(tarn, temp / "App").bFileException);
    };
    callAll(); // what is made on first use
    const int nBefore = CountOpenHandles();
    for (int i = 0; i < 5; ++i)
        callAll();
    EXPECT_EQ(CountOpenHandles(), nBefore);
    const FileHandle one(path, GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(CountOpenHandles(), nBefore + 1) << "the count counts nothing";
}

// Run by full_disk_test.sh, which also makes the disk: the folder in TARN_FULL_DISK has an
// embedch\config and hardly any room.
TEST_F(ChrcExport, ThrowsAFileExceptionOnAFullDisk)
{
    const char* const pszFolder = std::getenv("TARN_FULL_DISK");
    if (pszFolder == nullptr)
        GTEST_SKIP() << kNoFullDisk;
    // Its beginning may fit, the text must not: separators too many make it longer than 2 KB.
    std::string folder(pszFolder);
    ASSERT_LT(folder.size(), 200U);
    folder.insert(folder.rfind('\\'), std::string(220 - folder.size(), '\\'));
    ASSERT_GT(FileModel(folder).size(), 2048U);
    const std::string path = folder + "\\embedch\\config\\chrc";
    ExpectClean(true, 0, [&] {
        const Caught caught = CatchFrom(tarn, folder);
        EXPECT_EQ(caught.cause, CFileException::diskFull);
        EXPECT_EQ(caught.fileName, path);
        EXPECT_TRUE(IsClosed(path));
        return caught.bFileException;
    });
    EXPECT_LT(ReadBytes(path).size(), FileModel(folder).size());
    EXPECT_TRUE(Boxes().empty());
}

class ChrcExportCodePage932 : public ChrcExportTest<CodePage932>
{
protected:
    // One folder at a time: names may hold bytes that look like separators.
    std::string MakeConfig(const std::string& folder, const std::string& embedch) const
    {
        temp.MakeFolder(folder);
        ::CreateDirectoryA((temp / (folder + embedch)).c_str(), nullptr);
        ::CreateDirectoryA((temp / (folder + embedch + "\\config")).c_str(), nullptr);
        return temp / (folder + embedch + "\\config\\chrc");
    }
};

TEST_F(ChrcExportCodePage932, WritesUnderFoldersWithTrailBytesThatLookLikeBackslashes)
{
    for (const char* const pszName : {"\x95\x5Cx", "x\x83\x5C.d", "\x94\x5C\x97\xCD"})
    {
        const std::string path = MakeConfig(pszName, "\\embedch");
        for (const char* const pszEnd : {"", "\\", "/", "\\\\"})
        {
            ::DeleteFileA(path.c_str());
            EXPECT_EQ(tarn.Write_ch_config_File((temp / (pszName + std::string(pszEnd))).c_str()),
                      1);
            EXPECT_EQ(ReadBytes(path), FileModel(temp / pszName));
            EXPECT_NE(ReadBytes(path).find("\\\\" + std::string(pszName) + "\\\\embedch"),
                      std::string::npos);
        }
    }
}

// One separator goes from the path; then the text loses what looks like one more.
TEST_F(ChrcExportCodePage932, ShortensATextThatEndsInSuchATrailByte)
{
    for (const std::string name : {"\x95\x5C", "\x83\x5C", "\x94\x5C"})
    {
        const std::string path = MakeConfig(name, "\\embedch");
        EXPECT_EQ(tarn.Write_ch_config_File((temp / (name + "\\")).c_str()), 1);
        EXPECT_EQ(ReadBytes(path), FileModel(temp / name));
        EXPECT_NE(ReadBytes(path).find("\\\\" + name.substr(0, 1) + "\\\\embedch"),
                  std::string::npos);
    }
}

// The folder's last byte is taken for a separator, and the lead byte that is left takes the next
// one for its own: the path goes elsewhere, where no folder is unless somebody made one.
TEST_F(ChrcExportCodePage932, TakesATrailByteAtTheEndForTheSeparator)
{
    for (const std::string name : {"\x95\x5C", "\x83\x5C", "\x94\x5C"})
    {
        const std::string path = MakeConfig(name, "\\embedch");
        EXPECT_EQ(tarn.Write_ch_config_File((temp / name).c_str()), 0);
        const std::vector<SeenMessageBox> boxes = Boxes();
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_NE(boxes[0].text.find(temp / (name + "embedch\\config\\chrc")), std::string::npos);
        EXPECT_FALSE(Exists(path));

        const std::string elsewhere = MakeConfig(name, "embedch");
        EXPECT_EQ(tarn.Write_ch_config_File((temp / name).c_str()), 1);
        EXPECT_FALSE(Exists(path));
        EXPECT_EQ(ReadBytes(elsewhere), FileModel(temp / name.substr(0, 1)));
    }
}
