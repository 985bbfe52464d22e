// The commands that show no window, and what holds for all of them.
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/Wine.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using namespace tool;

namespace
{
using TextLines = std::vector<std::string>;

// Latin, Greek, Cyrillic, Japanese, and a character of two UTF-16 units: no ANSI code page has them all.
const std::wstring kAllScripts = L"pr\u00fcfung \u03b1\u03b2 \u0436 \u8868\u793a \U0001F600";

std::wstring ReadWide(const std::wstring& path)
{
    HANDLE const hFile = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return L"(unreadable)";
    char bytes[4096] = "";
    DWORD cb = 0;
    ::ReadFile(hFile, bytes, sizeof(bytes) - 1, &cb, nullptr);
    ::CloseHandle(hFile);
    return std::wstring(bytes, bytes + cb);
}

void WriteWide(const std::wstring& path, const std::string& bytes)
{
    HANDLE const hFile =
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(hFile, INVALID_HANDLE_VALUE);
    DWORD cb = 0;
    ::WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cb, nullptr);
    ::CloseHandle(hFile);
}

std::wstring RunOnceValue(const std::wstring& name)
{
    wchar_t szValue[1024] = L"";
    DWORD cb = sizeof(szValue);
    const LSTATUS nStatus =
        ::RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce",
                       name.c_str(), RRF_RT_REG_SZ, nullptr, szValue, &cb);
    return nStatus == ERROR_SUCCESS ? szValue : L"(missing)";
}

void DeleteRunOnceValue(const std::wstring& name)
{
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER,
                         L"Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce", name.c_str());
}
} // namespace

// ---- check

TEST(ToolCheck, SaysResultPositionMessageAndTrimmedAddress)
{
    struct Case
    {
        std::wstring argument;
        DWORD nExitCode;
        TextLines lines;
    };
    const Case cases[] = {
        {L"joe@example.org", 0, {"1", "-1", "", "joe@example.org"}},
        {L"\"  joe@example.org \"", 0, {"1", "-1", "", "joe@example.org"}},
        {L"\"us er@example.org\"",
         1,
         {"0", "2", "invalid character in email.", "us er@example.org"}},
        {L"joe@example", 1, {"0", "4", "Invalid Domain name.", "joe@example"}},
        {L"joe", 1, {"0", "-1", "Missing  @  ", "joe"}},
        {L"\"\"", 1, {"0", "-1", "", ""}},
        {L"\"  \"", 1, {"0", "-1", "", ""}},
        {L"\"a\"\"b@example.org\"",
         1,
         {"0", "1", "invalid character in email.", "a\"b@example.org"}},
        {L"a\\@example.org", 1, {"0", "1", "invalid character in email.", "a\\@example.org"}},
    };
    for (const Case& c : cases)
    {
        const Result result = RunTool(L"check " + c.argument);
        EXPECT_EQ(result.nExitCode, c.nExitCode) << Utf8(c.argument);
        EXPECT_EQ(Lines(result.out), c.lines) << Utf8(c.argument);
        EXPECT_EQ(result.err.empty(), c.nExitCode == 0) << Utf8(c.argument);
    }
}

TEST(ToolCheck, ShowsLettersOfEveryScriptAsTheyAre)
{
    const Result result = RunTool(L"check \"" + kAllScripts + L"@example.org\"");
    EXPECT_EQ(result.nExitCode, 1U);
    EXPECT_EQ(Lines(result.out), (TextLines{"0", "2", "invalid character in email.",
                                            Utf8(kAllScripts) + "@example.org"}));
}

TEST(ToolCheck, TakesAnAddressBehindDashesForOneWhateverItLooksLike)
{
    EXPECT_EQ(Lines(RunTool(L"check -- --out").out)[3], "--out");
    EXPECT_EQ(Lines(RunTool(L"check -- \"--quiet\"").out)[3], "--quiet");
    EXPECT_EQ(Lines(RunTool(L"check -- --").out)[3], "--");
    EXPECT_EQ(RunTool(L"check -- --joe@example.org").nExitCode, 0U);
    EXPECT_EQ(RunTool(L"check --joe@example.org").nExitCode, 0U);
}

TEST(ToolCheck, TakesAnAddressOfAnyLength)
{
    const std::wstring local(20000, L'a');
    const Result result = RunTool(L"check " + local + L"@example.org");
    EXPECT_EQ(result.nExitCode, 0U);
    EXPECT_EQ(Lines(result.out)[3], Utf8(local) + "@example.org");
}

TEST(ToolCheck, WorksAHundredTimesAtOnce)
{
    std::vector<std::unique_ptr<Process>> processes;
    for (int i = 0; i < 100; ++i)
        processes.push_back(
            std::make_unique<Process>(L"check user" + std::to_wstring(i) + L"@example.org"));
    for (int i = 0; i < 100; ++i)
    {
        const Result result = processes[static_cast<std::size_t>(i)]->Finish();
        EXPECT_EQ(result.nExitCode, 0U) << i;
        EXPECT_EQ(Lines(result.out)[3], "user" + std::to_string(i) + "@example.org");
    }
}

// ---- copy

TEST(ToolCopy, CopiesFilesOfEveryName)
{
    const TempFolder folder;
    const std::wstring from = Wide(folder.MakeFolder("from")) + L"\\";
    const std::wstring to = Wide(folder / "Program Files (x86) ") + kAllScripts;
    ASSERT_TRUE(::CreateDirectoryW(to.c_str(), nullptr));
    const std::wstring names[] = {L"a.txt", L"a b.txt", kAllScripts + L".txt", L"--quiet",
                                  L"it's [1] {2} %TEMP% & ^.txt"};
    std::wstring arguments = L"copy -- " + Quoted(to);
    TextLines said;
    for (const std::wstring& name : names)
    {
        WriteWide(from + name, Utf8(name));
        arguments += L" " + Quoted(from + name);
        said.push_back("copied " + Utf8(from + name));
    }
    const Result result = RunTool(arguments);
    EXPECT_EQ(result.nExitCode, 0U) << result.err;
    EXPECT_EQ(Lines(result.out), said);
    for (const std::wstring& name : names)
        EXPECT_EQ(ReadWide(to + L"\\" + name), ReadWide(from + name)) << Utf8(name);
}

TEST(ToolCopy, TakesTheFolderWithAndWithoutASeparator)
{
    const TempFolder folder;
    WriteBytes(folder / "a b.txt", "text");
    const std::wstring file = L" " + Quoted(Wide(folder / "a b.txt"));
    for (const char* const pszEnd : {"", "\\", "/", "\\\\"})
    {
        const std::wstring to = Wide(folder.MakeFolder("to"));
        EXPECT_EQ(RunTool(L"copy " + Quoted(to + Wide(pszEnd)) + file).nExitCode, 0U) << pszEnd;
        EXPECT_EQ(TempFolder::Listing(folder / "to"), "a b.txt") << pszEnd;
        ::DeleteFileA((folder / "to\\a b.txt").c_str());
    }
    EXPECT_EQ(folder.Listing(), "a b.txt|to");
}

TEST(ToolCopy, SaysInASentenceWhatIsWrong)
{
    const TempFolder folder;
    WriteBytes(folder / "a.txt", "text");
    folder.MakeFolder("to");
    const std::wstring root = Wide(folder.Path());
    struct Case
    {
        std::wstring arguments;
        std::string words;
    };
    const Case cases[] = {
        {Quoted(root + L"\\to") + L" " + Quoted(root + L"\\none.txt"), "there is no such file"},
        {Quoted(root + L"\\none") + L" " + Quoted(root + L"\\a.txt"), "there is no such folder"},
        {Quoted(root) + L" " + Quoted(root + L"\\to"), "it is a folder"},
    };
    for (const Case& c : cases)
    {
        const Result result = RunTool(L"copy " + c.arguments);
        EXPECT_EQ(result.nExitCode, 101U) << c.words;
        EXPECT_EQ(result.out, "") << c.words;
        EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
        EXPECT_NE(result.err.find(c.words), std::string::npos) << result.err;
    }
}

TEST(ToolCopy, NamesTheSystemsReasonForAFileInUse)
{
    const TempFolder folder;
    WriteBytes(folder / "a.txt", "new");
    folder.MakeFolder("to");
    WriteBytes(folder / "to\\a.txt", "old");
    HANDLE const hInUse = ::CreateFileA((folder / "to\\a.txt").c_str(), GENERIC_READ, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(hInUse, INVALID_HANDLE_VALUE);
    const Result result =
        RunTool(L"copy " + Quoted(Wide(folder / "to")) + L" " + Quoted(Wide(folder / "a.txt")));
    ::CloseHandle(hInUse);
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
    EXPECT_NE(result.err.find("(Windows error 32)"), std::string::npos) << result.err;
    EXPECT_EQ(ReadBytes(folder / "to\\a.txt"), "old");
}

TEST(ToolCopy, StopsAtTheFirstFileThatFails)
{
    const TempFolder folder;
    folder.MakeFolder("to");
    WriteBytes(folder / "a.txt", "a");
    WriteBytes(folder / "c.txt", "c");
    Start start;
    start.folder = Wide(folder.Path());
    const Result result = RunTool(L"copy to a.txt b.txt c.txt", start);
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_EQ(result.out, "copied a.txt\r\n");
    EXPECT_NE(result.err.find("b.txt"), std::string::npos);
    EXPECT_EQ(TempFolder::Listing(folder / "to"), "a.txt");
}

// ---- config

namespace
{
// Wine writes the system's code page down anew with the first program that runs in another language than
// the one before, and takes it from that program: UTF-8, where its manifest says so.
class ToolConfig : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!RunsUnderWine())
            return;
        const std::string number = std::to_string(::GetACP());
        ASSERT_EQ(::RegSetKeyValueA(HKEY_LOCAL_MACHINE,
                                    "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", "ACP",
                                    REG_SZ, number.c_str(), static_cast<DWORD>(number.size() + 1)),
                  ERROR_SUCCESS);
    }
};
} // namespace

TEST_F(ToolConfig, WritesTheStartUpFile)
{
    for (const wchar_t* const pszOption : {L"", L" --quiet"})
    {
        const TempFolder folder;
        folder.MakeFolder("a (b) [c]\\embedch\\config");
        const Result result =
            RunTool(L"config " + Quoted(Wide(folder / "a (b) [c]\\")) + pszOption);
        EXPECT_EQ(result.nExitCode, 0U) << result.err;
        EXPECT_EQ(result.out + result.err, "");
        const std::string chrc = ReadBytes(folder / "a (b) [c]\\embedch\\config\\chrc");
        EXPECT_NE(chrc.find("a (b) [c]\\\\embedch\\\\include;\");"), std::string::npos) << chrc;
    }
}

TEST_F(ToolConfig, QuietlySaysTheReasonOnTheOutputAndShowsNoBox)
{
    const TempFolder folder;
    const std::string path = folder / "none\\embedch\\config\\chrc";
    const Result result = RunTool(L"config --quiet " + Quoted(Wide(folder / "none")));
    EXPECT_EQ(result.nExitCode, 101U);
    const std::string reason = "The path is not valid or its folder does not exist: " + path;
    EXPECT_EQ(result.out, reason + "\r\n");
    EXPECT_EQ(result.err, "tarntool: the start-up file is not written: " + reason + ".\r\n");
}

TEST_F(ToolConfig, QuietlyNamesAFileThatIsInUse)
{
    const TempFolder folder;
    folder.MakeFolder("embedch\\config");
    const std::string path = folder / "embedch\\config\\chrc";
    WriteBytes(path, "old");
    HANDLE const hInUse =
        ::CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(hInUse, INVALID_HANDLE_VALUE);
    const Result result = RunTool(L"config " + Quoted(Wide(folder.Path())) + L" --quiet");
    ::CloseHandle(hInUse);
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_EQ(result.out, path + " is in use by another program.\r\n");
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
}

TEST_F(ToolConfig, QuietlyRefusesAFolderOfSeparators)
{
    const Result result = RunTool(L"config --quiet \\\\\\");
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_EQ(Lines(result.out).size(), 1U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
}

TEST_F(ToolConfig, ShowsTheBoxWithoutTheOption)
{
    const TempFolder folder;
    Process process(L"config " + Quoted(Wide(folder / "none")));
    HWND hBox = nullptr;
    window_driver::WaitFor([&] { return (hBox = FindVisibleOf(process.GetID())) != nullptr; });
    ASSERT_NE(hBox, nullptr);
    ::PostMessageA(hBox, WM_COMMAND, IDOK, 0);
    const Result result = process.Finish();
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
}

namespace
{
// The installer in an ordinary code page: this process, which has the system's, with the DLL.
std::string ChrcOfTheDll(const TempFolder& folder, const std::string& name)
{
    wchar_t szDll[MAX_PATH] = L"";
    ::GetEnvironmentVariableW(L"TARN_DLL", szDll, MAX_PATH);
    HMODULE const hDll = ::LoadLibraryW(szDll);
    const auto pfnWrite = reinterpret_cast<int (*)(const char*)>(
        reinterpret_cast<void*>(::GetProcAddress(hDll, "Write_ch_config_File")));
    const int nResult = pfnWrite != nullptr ? pfnWrite((folder / name).c_str()) : -1;
    ::FreeLibrary(hDll);
    EXPECT_EQ(nResult, 1);
    return ReadBytes(folder / (name + "\\embedch\\config\\chrc"));
}

// A folder's name beyond ASCII that the code page of the test has.
std::string LocalName()
{
    return ::GetACP() == 932 ? "\x95\x5C\x8E\xA6 \x83\x5C\xB1 x"
                             : "pr\xFC"
                               "fung \xE9 \x80";
}
} // namespace

TEST_F(ToolConfig, WritesTheBytesThatTheDllWritesInAnOrdinaryInstaller)
{
    for (const std::string& name : {LocalName(), LocalName() + "\\", LocalName() + "\\\\deeper",
                                    std::string("plain"), LocalName() + "/deeper/"})
    {
        const TempFolder folder;
        std::string made = name + "\\embedch\\config";
        std::replace(made.begin(), made.end(), '/', '\\');
        folder.MakeFolder(made);
        const std::string written = ChrcOfTheDll(folder, name);
        ASSERT_FALSE(written.empty());
        WriteBytes(folder / (name + "\\embedch\\config\\chrc"), "old");
        const Result result = RunTool(L"config --quiet -- " + Quoted(Wide(folder / name)));
        EXPECT_EQ(result.nExitCode, 0U) << result.err;
        EXPECT_EQ(ReadBytes(folder / (name + "\\embedch\\config\\chrc")), written) << name;
    }
}

TEST_F(ToolConfig, KeepsALastCharacterWholeThatTheDllWouldCut)
{
    if (::GetACP() != 932)
        GTEST_SKIP() << "has no characters of two bytes";
    const TempFolder folder;
    const std::string name = "\x83\x5C"; // the second byte is that of a backslash
    const std::wstring path = Wide(folder.Path()) + L"\\\u30BD";
    for (const wchar_t* const pszPart : {L"", L"\\embedch", L"\\embedch\\config"})
        ASSERT_TRUE(::CreateDirectoryW((path + pszPart).c_str(), nullptr));
    EXPECT_EQ(RunTool(L"config --quiet " + Quoted(path)).nExitCode, 0U);
    const std::wstring chrc = ReadWide(path + L"\\embedch\\config\\chrc");
    const std::string bytes(chrc.begin(), chrc.end());
    EXPECT_NE(bytes.find("\\\\" + name + "\\\\embedch\\\\include;"), std::string::npos) << bytes;
}

TEST_F(ToolConfig, RefusesAFolderThatTheInterpreterCannotRead)
{
    const TempFolder folder;
    const std::wstring path = Wide(folder.Path()) + L"\\" + kAllScripts;
    for (const wchar_t* const pszPart : {L"", L"\\embedch", L"\\embedch\\config"})
        ASSERT_TRUE(::CreateDirectoryW((path + pszPart).c_str(), nullptr));
    const std::wstring chrc = path + L"\\embedch\\config\\chrc";
    WriteWide(chrc, "old");
    for (const wchar_t* const pszOption : {L"", L"--quiet "})
    {
        const Result result = RunTool(std::wstring(L"config ") + pszOption + Quoted(path));
        EXPECT_EQ(result.nExitCode, 101U);
        EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
        EXPECT_NE(result.err.find("code page, " + std::to_string(::GetACP())), std::string::npos)
            << result.err;
        EXPECT_NE(result.err.find(Utf8(path)), std::string::npos) << result.err;
        EXPECT_EQ(result.out.empty(), *pszOption == L'\0') << result.out;
        EXPECT_EQ(ReadWide(chrc), L"old");
    }
}

// ---- runonce

TEST(ToolRunOnce, QueuesTheCommandAsItIsGiven)
{
    const std::wstring command =
        L"\"C:\\Program Files\\" + kAllScripts + L"\\a.exe\" --first \"x y\"";
    const std::wstring name = L"Tarn " + kAllScripts;
    const std::wstring forms[] = {
        // doubled, escaped, and as the rest of the line
        Quoted(name) + L" \"\"\"C:\\Program Files\\" + kAllScripts +
            L"\\a.exe\"\" --first \"\"x y\"\"\"",
        Quoted(name) + L" \"\\\"C:\\Program Files\\" + kAllScripts +
            L"\\a.exe\\\" --first \\\"x y\\\"\"",
        Quoted(name) + L" -- " + command,
    };
    for (const std::wstring& form : forms)
    {
        const Result result = RunTool(L"runonce " + form);
        EXPECT_EQ(result.nExitCode, 0U) << result.err;
        EXPECT_EQ(RunOnceValue(name), command) << Utf8(form);
        DeleteRunOnceValue(name);
    }
}

TEST(ToolRunOnce, SaysWhenItCannot)
{
    const Result result = RunTool(L"runonce " + std::wstring(20000, L'n') + L" command");
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
}

// ---- version, help

TEST(ToolVersion, IsOneLine)
{
    const Result result = RunTool(L"version");
    EXPECT_EQ(result.nExitCode, 0U);
    EXPECT_EQ(result.out.compare(0, 9, "tarntool "), 0);
    EXPECT_EQ(Lines(result.out).size(), 1U);
    EXPECT_EQ(RunTool(L"--version").out, result.out);
}

TEST(ToolHelp, NamesEveryCommandAndExitCode)
{
    const Result result = RunTool(L"help");
    EXPECT_EQ(result.nExitCode, 0U);
    for (const char* const pszWord :
         {"check ADDRESS", "copy FOLDER FILE...", "runonce NAME COMMAND", "config FOLDER",
          "--quiet", "open ", "wait --id", "done --id", "run -- PROGRAM", "--patience",
          "--out FILE", "100", "101", "102", "103", "104", "105", "106", "107"})
        EXPECT_NE(result.out.find(pszWord), std::string::npos) << pszWord;
    for (const wchar_t* const pszOther : {L"--help", L"-h", L"/?"})
        EXPECT_EQ(RunTool(pszOther).out, result.out);
}

// ---- output

TEST(ToolOutput, GoesToAFileInstead)
{
    const TempFolder folder;
    const std::wstring file = Wide(folder.Path()) + L"\\" + kAllScripts + L" out.txt";
    WriteWide(file, std::string(1000, 'x')); // replaced
    for (const std::wstring& arguments :
         {L"check " + Quoted(kAllScripts) + L" --out " + Quoted(file),
          L"--out " + Quoted(file) + L" check " + Quoted(kAllScripts)})
    {
        const Result result = RunTool(arguments);
        EXPECT_EQ(result.nExitCode, 1U);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
        const std::wstring bytes = ReadWide(file);
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
                  RunTool(L"check " + Quoted(kAllScripts)).out);
    }
}

TEST(ToolOutput, ThatCannotGoToAFileIsAFailureBeforeAnythingIsDone)
{
    const TempFolder folder;
    WriteBytes(folder / "a.txt", "a");
    folder.MakeFolder("to");
    const Result result =
        RunTool(L"copy " + Quoted(Wide(folder / "to")) + L" " + Quoted(Wide(folder / "a.txt")) +
                L" --out " + Quoted(Wide(folder / "none\\out.txt")));
    EXPECT_EQ(result.nExitCode, 107U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
    EXPECT_EQ(TempFolder::Listing(folder / "to"), "");
}

TEST(ToolOutput, IsNotMissedByAHostThatTakesNone)
{
    const TempFolder folder;
    Start start;
    start.bCaptured = false;
    start.nFlags = DETACHED_PROCESS;
    EXPECT_EQ(RunTool(L"check joe@example.org", start).nExitCode, 0U);
    EXPECT_EQ(RunTool(L"check joe", start).nExitCode, 1U);
    EXPECT_EQ(RunTool(L"none", start).nExitCode, 100U);
    EXPECT_EQ(RunTool(L"version --out " + Quoted(Wide(folder / "out.txt")), start).nExitCode, 0U);
    EXPECT_EQ(ReadBytes(folder / "out.txt"), RunTool(L"version").out);
}

TEST(ToolOutput, IsAFailureWhenNobodyReadsIt)
{
    // The pipe's other end is closed.
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    HANDLE hRead = nullptr;
    HANDLE hWrite = nullptr;
    ASSERT_TRUE(::CreatePipe(&hRead, &hWrite, &inherited, 0));
    ::CloseHandle(hRead);
    std::wstring line = Quoted(Path()) + L" version";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = hWrite;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(::CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                 &startup, &process));
    ::CloseHandle(hWrite);
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD nExitCode = 0;
    ::GetExitCodeProcess(process.hProcess, &nExitCode);
    EXPECT_EQ(nExitCode, 107U);
    ::CloseHandle(process.hProcess);
    ::CloseHandle(process.hThread);
}

// ---- arguments

TEST(ToolArguments, ThatAreWrongShowNoWindowAndGetOneSentence)
{
    const std::wstring lines[] = {
        L"",
        L"none",
        L"Check joe@example.org",
        L"--quiet",
        L"check",
        L"check a b",
        L"check --quiet a",
        L"check a --out",
        L"check a --out x --out y",
        L"copy",
        L"copy C:\\",
        L"config",
        L"config C:\\A B",
        L"config C:\\A --title x",
        L"config --quiet --quiet C:\\A",
        L"runonce",
        L"runonce name",
        L"runonce name command more",
        L"runonce name command -- more",
        L"open file.txt",
        L"open --parent",
        L"open --parent x",
        L"open --parent 12x",
        L"open --parent 0x",
        L"open --parent -",
        L"open --parent \"\"",
        L"open --parent 99999999999999999999",
        L"open --parent 4294967294",
        L"open --filter \"Text files\"",
        L"open --filter \"Text files|*.txt|All||\"",
        L"open --message x",
        L"open --titel x",
        L"open -- x",
        L"wait",
        L"wait --id",
        L"wait --id \"\"",
        L"wait --title x",
        L"wait x --id y",
        L"wait --id x --patience 3",
        L"wait --id x --parent 4294967294",
        L"wait --id " + std::wstring(300, L'x'),
        L"done",
        L"done x",
        L"done --id x --title y",
        L"run",
        L"run --",
        L"run -- \"\"",
        L"run -- \"\" x",
        L"run notepad.exe",
        L"run notepad.exe -- x",
        L"run --patience 0 -- notepad.exe",
        L"run --patience 61 -- notepad.exe",
        L"run --patience -1 -- notepad.exe",
        L"run --patience 1.5 -- notepad.exe",
        L"run --patience x -- notepad.exe",
        L"run --patience \"\" -- notepad.exe",
        L"run --patience 4294967297 -- notepad.exe",
        L"run --parent 4294967294 -- notepad.exe",
        L"run --id x -- notepad.exe",
        L"inner-keep",
        L"inner-keep 0 FFFFFFFFFFFFFFFF 0 wait --id x",
        L"inner-keep FFFFFFFFFFFFFFFF FFFFFFFFFFFFFFFF 0 wait --id x",
        L"inner-guard 1 2 3",
        L"version x",
        L"help check",
        L"check \"joe@example.org",
        L"check joe\"@example.org",
        L"wait --id x --title \"a\"b",
    };
    for (const std::wstring& line : lines)
    {
        Process process(line);
        bool bWindow = false;
        while (!process.HasEnded() && !bWindow)
        {
            bWindow = FindVisibleOf(process.GetID()) != nullptr;
            ::Sleep(1);
        }
        EXPECT_FALSE(bWindow) << Utf8(line);
        const Result result = process.Finish();
        EXPECT_EQ(result.nExitCode, 100U) << Utf8(line);
        EXPECT_EQ(result.out, "") << Utf8(line);
        EXPECT_TRUE(IsOneSentence(result.err)) << Utf8(line) << ": " << result.err;
    }
    EXPECT_TRUE(window_driver::WaitFor([] { return CountTools() == 0; }));
}

TEST(ToolArguments, AreThoseOfTheWideCommandLine)
{
    // Also without a program's name of the usual kind in front.
    Start start;
    start.line = L"\"x y\\\"";
    EXPECT_EQ(Lines(RunTool(L"check " + Quoted(kAllScripts), start).out)[3], Utf8(kAllScripts));
}

TEST(ToolArguments, WithHalfACharacterAreAFailureWhereANameIsMeant)
{
    const Result result = RunTool(L"copy C:\\ \"\xD800.txt\"");
    EXPECT_EQ(result.nExitCode, 101U);
    EXPECT_TRUE(IsOneSentence(result.err)) << result.err;
}
