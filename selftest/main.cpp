// selftest.exe: runs the tests of tarn.dll wherever it is unpacked, and reports what came of them.
#include "selftest/Console.h"
#include "selftest/Machine.h"
#include "selftest/Options.h"
#include "selftest/Paths.h"
#include "selftest/Report.h"
#include "selftest/Sandbox.h"
#include "selftest/TestProgram.h"
#include "selftest/Text.h"

#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace
{
using namespace selftest;

// Set when the user presses Ctrl+C or closes the window.
HANDLE g_hStop = nullptr;
HANDLE g_hDone = nullptr;

BOOL WINAPI OnControl(DWORD nEvent)
{
    ::SetEvent(g_hStop);
    // The process ends as soon as this returns.
    if (nEvent != CTRL_C_EVENT && nEvent != CTRL_BREAK_EVENT)
        ::WaitForSingleObject(g_hDone, 15000);
    return TRUE;
}

bool IsStopped()
{
    return ::WaitForSingleObject(g_hStop, 0) == WAIT_OBJECT_0;
}

std::vector<std::string> Words()
{
    std::vector<std::string> words;
    int nWords = 0;
    LPWSTR* const ppszWords = ::CommandLineToArgvW(::GetCommandLineW(), &nWords);
    for (int i = 1; i < nWords; ++i)
        words.push_back(Utf8(ppszWords[i]));
    ::LocalFree(ppszWords);
    return words;
}

// "  [ 3/45] install.FileCopyTest"
std::string Numbered(std::size_t n, std::size_t nAll, const std::string& name)
{
    char szNumber[32] = "";
    std::snprintf(szNumber, sizeof(szNumber), "[%2u/%u] ", static_cast<unsigned int>(n),
                  static_cast<unsigned int>(nAll));
    return szNumber + name;
}

std::string Outcome(const ProgramResult& program)
{
    Counts counts;
    counts.Add(program);
    std::string text = std::to_string(counts.nPassed) + " passed";
    if (counts.nSkipped != 0)
        text += ", " + std::to_string(counts.nSkipped) + " skipped";
    if (counts.nFailed + counts.nUnfinished != 0)
        text += ", " + std::to_string(counts.nFailed + counts.nUnfinished) + " FAILED";
    if (!program.trouble.empty())
        text += ", TROUBLE: " + program.trouble;
    return text;
}

// The folders' places on this machine are nobody's business, and would hold the user's name.
void HideFolders(Report& report, const Sandbox& sandbox, const std::wstring& programs)
{
    for (ProgramResult& program : report.programs)
    {
        for (TestResult& test : program.tests)
        {
            test.text = ReplaceAll(test.text, Utf8(sandbox.Folder()), "<sandbox>");
            test.text = ReplaceAll(test.text, Utf8(programs), "<programs>");
            test.text = ReplaceAll(test.text, Utf8(OwnFolder()), "<self-test>");
        }
    }
}

void RunAll(const Options& options, Console& console, Report& report)
{
    const std::wstring own = OwnFolder();
    if (!IsFile(own + L"\\tests\\tarn.dll"))
        throw std::runtime_error(
            "there is no tests\\tarn.dll beside this program; unpack the whole "
            "zip into a folder of its own");
    const Sandbox sandbox;
    const std::wstring folder = sandbox.PlainCopyOf(own + L"\\tests");
    sandbox.SetEnvironment(folder + L"\\tarn.dll", options.bMayTouchUser);
    report.facts = DescribeMachine();
    report.facts.emplace_back("self-test", TARN_SELFTEST_VERSION);
    report.facts.emplace_back("tarn.dll", DescribeFile(own + L"\\tests\\tarn.dll"));
    report.facts.emplace_back(
        "user's settings", options.bMayTouchUser ? "may be touched (--touch-user)" : "left alone");
    for (const auto& fact : report.facts)
        console.Line("  " + fact.first + ": " + fact.second);
    console.Line("");

    std::vector<std::wstring> programs = FilesIn(folder, L".exe");
    programs.erase(
        std::remove_if(programs.begin(), programs.end(),
                       [&](const std::wstring& name) { return !IsWanted(options, Utf8(name)); }),
        programs.end());
    Limits limits;
    limits.nSilence = options.nSilenceSeconds * 1000;
    limits.hStop = g_hStop;
    for (std::size_t i = 0; i < programs.size() && !IsStopped(); ++i)
    {
        const std::string heading = Numbered(i + 1, programs.size(), Utf8(programs[i]));
        const auto progress = [&](int nEnded, int nTests) {
            console.Passing(heading + "  " + std::to_string(nEnded) + " of " +
                            std::to_string(nTests));
        };
        report.programs.push_back(
            RunTests(folder + L"\\" + programs[i], sandbox.Folder(), limits, progress));
        console.Line(heading + "  " + Outcome(report.programs.back()));
        for (const TestResult& test : report.programs.back().tests)
        {
            if (test.verdict != Verdict::Passed && test.verdict != Verdict::Skipped)
                console.Line(std::string("        ") + Word(test.verdict) + " " + test.FullName());
        }
        sandbox.Empty();
    }
    if (IsStopped())
        report.interrupted = "stopped before all programs had run";
    HideFolders(report, sandbox, folder);
}

// Beside the program, or where one may write.
std::wstring WriteReports(const Report& report)
{
    WCHAR szTemp[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH + 1, szTemp);
    for (const std::wstring& folder : {OwnFolder() + L"\\", std::wstring(szTemp)})
    {
        if (WriteAll(folder + L"report.txt", ReplaceAll(report.Text(), "\n", "\r\n")) &&
            WriteAll(folder + L"report.xml", report.Xml()))
            return folder;
    }
    return L"";
}

int Run(const Options& options, Console& console)
{
    Report report;
    report.sendTo = TARN_SELFTEST_SEND_TO;
    const ULONGLONG nStart = ::GetTickCount64();
    console.Line(std::string("Self-test of tarn.dll ") + TARN_SELFTEST_VERSION);
    try
    {
        RunAll(options, console, report);
    }
    catch (const std::exception& exception)
    {
        report.interrupted = exception.what();
    }
    report.dSeconds = static_cast<double>(::GetTickCount64() - nStart) / 1000;
    console.Line("");
    console.Line((report.IsGood() ? "Everything passed: " : "NOT everything passed: ") +
                 report.Summary());
    if (!report.interrupted.empty())
        console.Line("INTERRUPTED: " + report.interrupted);
    const std::wstring folder = WriteReports(report);
    if (folder.empty())
    {
        console.Line("The reports cannot be written.");
        return 2;
    }
    console.Line("Reports: " + Utf8(folder) + "report.txt and report.xml");
    console.Line(report.sendTo);
    return report.IsGood() ? 0 : 1;
}
} // namespace

int main()
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    g_hStop = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    g_hDone = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::SetConsoleCtrlHandler(&OnControl, TRUE);
    Console console;
    const Options options = ReadOptions(Words());
    if (options.bHelp || !options.error.empty())
    {
        if (!options.error.empty())
            console.Line(options.error);
        console.Line(kUsage);
        console.KeepOpen();
        return options.error.empty() ? 0 : 2;
    }
    const int nResult = Run(options, console);
    ::SetEvent(g_hDone);
    console.KeepOpen();
    return nResult;
}
