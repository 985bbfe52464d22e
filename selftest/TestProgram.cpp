#include "selftest/TestProgram.h"

#include "selftest/Paths.h"
#include "selftest/TestOutput.h"

#include <algorithm>
#include <cstdio>

namespace selftest
{
namespace
{
std::string Hex(DWORD nCode)
{
    char szText[16] = "";
    std::snprintf(szText, sizeof(szText), "0x%08lX", nCode);
    return szText;
}

std::string NameOf(const std::wstring& program)
{
    const std::wstring file = program.substr(program.find_last_of(L'\\') + 1);
    return Utf8(file.substr(0, file.find_last_of(L'.')));
}

// For those that have not run yet. In the environment: there may be more than a command line holds.
void SelectLeft(const std::vector<TestResult>& tests)
{
    std::wstring filter;
    for (const TestResult& test : tests)
    {
        if (test.verdict == Verdict::NotRun)
            filter += (filter.empty() ? L"" : L":") + Wide(test.FullName());
    }
    ::SetEnvironmentVariableW(L"GTEST_FILTER", filter.c_str());
}

int CountLeft(const std::vector<TestResult>& tests)
{
    return static_cast<int>(std::count_if(tests.begin(), tests.end(), [](const TestResult& test) {
        return test.verdict == Verdict::NotRun;
    }));
}

std::string HowItEnded(const Outcome& outcome)
{
    switch (outcome.end)
    {
    case End::TimedOut:
        return "it took too long and was ended";
    case End::Stopped:
        return "the self-test was stopped";
    case End::NotStarted:
        return "it cannot be started: Windows error " + std::to_string(outcome.nExitCode);
    case End::ByItself:
        break;
    }
    return "it ended with exit code " + Hex(outcome.nExitCode);
}

// Returns whether another run makes sense: this one got at least one test further.
bool RunLeft(const std::wstring& command, const std::wstring& outputFile, const Limits& limits,
             const Progress& progress, ProgramResult& result)
{
    const int nTests = static_cast<int>(result.tests.size());
    const int nLeft = CountLeft(result.tests);
    SelectLeft(result.tests);
    const Outcome outcome = RunProcess(command, outputFile, limits, [&](const std::string& output) {
        progress(nTests - nLeft + CountEnded(output), nTests);
    });
    ::SetEnvironmentVariableW(L"GTEST_FILTER", nullptr);
    const std::size_t nBroken = ReadRun(outcome.output, result.tests);
    if (nBroken != result.tests.size() && outcome.end != End::Stopped)
    {
        TestResult& broken = result.tests[nBroken];
        broken.verdict = outcome.end == End::ByItself ? Verdict::Crashed : Verdict::Hung;
        broken.text += "The program did not come to the test's end: " + HowItEnded(outcome) + "\n";
        return true;
    }
    if (outcome.end == End::Stopped)
        return false;
    const bool bFailed =
        std::any_of(result.tests.begin(), result.tests.end(),
                    [](const TestResult& test) { return test.verdict == Verdict::Failed; });
    // 0 and 1 are GoogleTest's own; an end that does not fit the results is behind the last test or
    // before the first.
    if (outcome.end != End::ByItself || outcome.nExitCode > 1 ||
        (outcome.nExitCode == 1 && !bFailed))
        result.trouble = HowItEnded(outcome);
    else if (CountLeft(result.tests) != 0)
        result.trouble = "it ended before all of its tests had run";
    return false;
}
} // namespace

ProgramResult RunTests(const std::wstring& program, const std::wstring& folder,
                       const Limits& limits, const Progress& progress)
{
    ProgramResult result;
    result.name = NameOf(program);
    const std::wstring command = L"\"" + program + L"\"";
    const std::wstring outputFile = folder + L"\\output.txt";
    const Outcome list =
        RunProcess(command + L" --gtest_list_tests", outputFile, limits, [](const std::string&) {});
    result.tests = ReadList(list.output);
    if (list.end != End::ByItself || list.nExitCode != 0 || result.tests.empty())
    {
        result.trouble = "it does not list its tests: " + HowItEnded(list);
        return result;
    }
    progress(0, static_cast<int>(result.tests.size()));
    bool bGoOn = true;
    while (bGoOn && CountLeft(result.tests) != 0)
        bGoOn = RunLeft(command, outputFile, limits, progress, result);
    return result;
}
} // namespace selftest
