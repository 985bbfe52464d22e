// How selftest.exe gets through a program with which something is wrong: troublesome.exe.
#include "selftest/TestProgram.h"

#include "selftest/Paths.h"
#include "selftest/Sandbox.h"
#include "tests/support/Processes.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

namespace selftest
{
namespace
{
bool IsRunning()
{
    return !ProcessesOf(L"troublesome.exe").empty();
}

void EndTroublesome()
{
    for (const DWORD nID : ProcessesOf(L"troublesome.exe"))
        EXPECT_TRUE(EndProcess(nID));
}

class TestProgram : public testing::Test
{
protected:
    // This program's own mark of an unfinished run is not for those that it starts.
    TestProgram() { ::SetEnvironmentVariableA("TEST_PREMATURE_EXIT_FILE", nullptr); }

    // The verdicts in the order of the tests, as "Passes:passed MayCrash:CRASHED ...", of those that did
    // not pass.
    std::string Run(const char* pszTroubles)
    {
        ::SetEnvironmentVariableA("TARN_TROUBLE", pszTroubles);
        result = RunTests(OwnFolder() + L"\\troublesome.exe", sandbox.Folder(), limits,
                          [this](int nEnded, int /*nTests*/) { nMostEnded = nEnded; });
        std::string others;
        for (const TestResult& test : result.tests)
        {
            if (test.verdict != Verdict::Passed)
                others += test.name + ":" + Word(test.verdict) + " ";
        }
        EXPECT_EQ(result.tests.size(), 7U);
        EXPECT_FALSE(IsFile(sandbox.Folder() + L"\\output.txt"));
        return others;
    }
    static std::string Word(Verdict verdict)
    {
        static constexpr const char* kWords[] = {"passed",  "failed", "skipped",
                                                 "crashed", "hung",   "not run"};
        return kWords[static_cast<int>(verdict)];
    }

    const Sandbox sandbox;
    Limits limits;
    ProgramResult result;
    int nMostEnded = 0;
};
} // namespace

TEST_F(TestProgram, ThatIsWellPasses)
{
    EXPECT_EQ(Run(""), "");
    EXPECT_EQ(result.trouble, "");
    EXPECT_EQ(result.name, "troublesome");
}

TEST_F(TestProgram, ThatFailsAndSkipsSaysWhy)
{
    EXPECT_EQ(Run("fail skip"), "MayFail:failed MaySkip:skipped ");
    EXPECT_EQ(result.trouble, "");
    EXPECT_NE(result.tests[2].text.find("as it was told"), std::string::npos);
    EXPECT_NE(result.tests[6].text.find("as it was told"), std::string::npos);
}

TEST_F(TestProgram, ThatCrashesAndFailsGoesOnBehindTheCrash)
{
    EXPECT_EQ(Run("crash fail"), "MayCrash:crashed MayFail:failed ");
    EXPECT_EQ(result.trouble, "");
    EXPECT_NE(result.tests[1].text.find("exit code 0xC0000005"), std::string::npos)
        << result.tests[1].text;
}

TEST_F(TestProgram, ThatHangsIsEndedAndGoesOnBehindTheTest)
{
    limits.nSilence = 1500;
    EXPECT_EQ(Run("hang skip"), "MayHang:hung MaySkip:skipped ");
    EXPECT_NE(result.tests[3].text.find("took too long"), std::string::npos);
}

TEST_F(TestProgram, ThatEndsInATestAsIfAllWereWellIsNoticed)
{
    EXPECT_EQ(Run("quit"), "MayEndTheProgramAsIfAllWereWell:crashed ");
}

TEST_F(TestProgram, ThatEndsBadlyBehindItsTestsIsNoticed)
{
    EXPECT_EQ(Run("bad end"), "");
    EXPECT_NE(result.trouble.find("0x0000004D"), std::string::npos) << result.trouble;
}

TEST_F(TestProgram, LeavesNoProcessBehind)
{
    EXPECT_EQ(Run("leave"), "");
    EXPECT_TRUE(window_driver::WaitFor([] { return !IsRunning(); }));
}

TEST_F(TestProgram, ThatSomebodyHoldsForAMomentIsRunAllTheSame)
{
    const std::wstring program = sandbox.Folder() + L"\\held.exe";
    ASSERT_TRUE(::CopyFileW((OwnFolder() + L"\\troublesome.exe").c_str(), program.c_str(), TRUE));
    HANDLE const hFile =
        ::CreateFileW(program.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(hFile, INVALID_HANDLE_VALUE);
    ::SetEnvironmentVariableA("TARN_TROUBLE", "");
    {
        window_driver::DriverThread holder([hFile] {
            ::Sleep(300);
            ::CloseHandle(hFile);
        });
        result = RunTests(program, sandbox.Folder(), limits, [](int, int) {});
    }
    EXPECT_EQ(result.trouble, "");
    EXPECT_EQ(result.tests.size(), 7U);
}

TEST_F(TestProgram, ThatListsNoTestsOrIsMissingIsATrouble)
{
    ::SetEnvironmentVariableA("TARN_TROUBLE", "no list");
    const auto noProgress = [](int, int) {};
    result = RunTests(OwnFolder() + L"\\troublesome.exe", sandbox.Folder(), limits, noProgress);
    EXPECT_EQ(result.trouble, "it does not list its tests: it ended with exit code 0x00000003");
    result = RunTests(OwnFolder() + L"\\none.exe", sandbox.Folder(), limits, noProgress);
    EXPECT_EQ(result.trouble, "it does not list its tests: it cannot be started: Windows error 2");
    EXPECT_TRUE(result.tests.empty());
}

TEST_F(TestProgram, IsStoppedWithTheSelfTest)
{
    limits.hStop = ::CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ::SetEnvironmentVariableA("TARN_TROUBLE", "");
    const ProgramResult stopped =
        RunTests(OwnFolder() + L"\\troublesome.exe", sandbox.Folder(), limits, [](int, int) {});
    ::CloseHandle(limits.hStop);
    EXPECT_NE(stopped.trouble.find("stopped"), std::string::npos);
    EXPECT_TRUE(window_driver::WaitFor([] { return !IsRunning(); }));
}

TEST_F(TestProgram, IsStoppedAlsoWhenItEndsInTheSameMoment)
{
    limits.hStop = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::SetEnvironmentVariableA("TARN_TROUBLE", "hang");
    const Outcome outcome =
        RunProcess(L"\"" + OwnFolder() + L"\\troublesome.exe\"", sandbox.Folder() + L"\\output.txt",
                   limits, [this](const std::string&) {
                       EndTroublesome();
                       ::SetEvent(limits.hStop);
                   });
    ::CloseHandle(limits.hStop);
    EXPECT_EQ(outcome.end, End::Stopped) << outcome.nExitCode;
}

TEST(SelfTestSandbox, IsGoneAfterwardsWithAllThatIsInIt)
{
    std::wstring folder;
    std::wstring key;
    WCHAR szTempBefore[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH + 1, szTempBefore);
    {
        const Sandbox sandbox;
        folder = sandbox.Folder();
        key = sandbox.RegistryKey();
        EXPECT_TRUE(IsPlain(folder));
        sandbox.SetEnvironment(L"C:\\tarn.dll", false);
        WCHAR szTemp[MAX_PATH + 1] = L"";
        ::GetTempPathW(MAX_PATH + 1, szTemp);
        EXPECT_EQ(std::wstring(szTemp), folder + L"\\temp\\");
        const std::wstring deep = folder + L"\\temp\\\x8868";
        ASSERT_TRUE(::CreateDirectoryW(deep.c_str(), nullptr));
        ASSERT_TRUE(WriteAll(deep + L"\\a.txt", "x"));
        ::SetFileAttributesW((deep + L"\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
        HKEY hKey = nullptr;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, (key + L"\\deep").c_str(), 0, nullptr, 0,
                                    KEY_WRITE, nullptr, &hKey, nullptr),
                  ERROR_SUCCESS);
        ::RegCloseKey(hKey);
        sandbox.Empty();
        EXPECT_EQ(::GetFileAttributesW(deep.c_str()), INVALID_FILE_ATTRIBUTES);
        EXPECT_NE(::GetFileAttributesW((folder + L"\\temp").c_str()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_EQ(::GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    HKEY hKey = nullptr;
    EXPECT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, KEY_READ, &hKey),
              ERROR_FILE_NOT_FOUND);
    WCHAR szTempAfter[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH + 1, szTempAfter);
    EXPECT_STREQ(szTempAfter, szTempBefore);
}

// Programs of another code page could not name it. Where the system keeps a short name, that serves.
TEST(SelfTestSandbox, HasAPlainPathForProgramsInAFolderWithOtherCharactersThanAscii)
{
    const Sandbox sandbox;
    const std::wstring folder = sandbox.Folder() + L"\\\x8868 (1)";
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(WriteAll(folder + L"\\a.exe", "x"));
    const std::wstring copy = sandbox.PlainCopyOf(folder);
    EXPECT_TRUE(IsPlain(copy));
    EXPECT_EQ(ReadAll(copy + L"\\a.exe"), "x");
    EXPECT_EQ(sandbox.PlainCopyOf(sandbox.Folder()), sandbox.Folder());

    // Where it keeps none, a copy does.
    CopyFiles(folder, sandbox.Folder() + L"\\copy");
    EXPECT_EQ(ReadAll(sandbox.Folder() + L"\\copy\\a.exe"), "x");
    EXPECT_THROW(CopyFiles(folder, sandbox.Folder() + L"\\none\\copy"), std::runtime_error);
}
} // namespace selftest
