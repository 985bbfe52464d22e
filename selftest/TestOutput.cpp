#include "selftest/TestOutput.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace selftest
{
namespace
{
constexpr char kRun[] = "[ RUN      ] ";
constexpr std::pair<const char*, Verdict> kEnds[] = {{"[       OK ] ", Verdict::Passed},
                                                     {"[  FAILED  ] ", Verdict::Failed},
                                                     {"[  SKIPPED ] ", Verdict::Skipped}};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t nBegin = 0; nBegin < text.size();)
    {
        std::size_t nEnd = text.find('\n', nBegin);
        if (nEnd == std::string::npos)
            nEnd = text.size();
        std::string line = text.substr(nBegin, nEnd - nBegin);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(std::move(line));
        nBegin = nEnd + 1;
    }
    return lines;
}

// Up to the comment that tells a parameter's value.
std::string WithoutComment(const std::string& line)
{
    const std::size_t nEnd = line.find_last_not_of(' ', line.find("  #") - 1);
    return line.find("  #") == std::string::npos ? line : line.substr(0, nEnd + 1);
}

// Where the line says that the test ended, or npos. A test's own text may stand in front.
std::size_t FindEnd(const std::string& line, const std::string& test, Verdict& verdict)
{
    for (const auto& end : kEnds)
    {
        const std::string words = end.first + test;
        const std::size_t n = line.find(words);
        if (n == std::string::npos)
            continue;
        const char chNext = n + words.size() < line.size() ? line[n + words.size()] : '\0';
        if (chNext != ' ' && chNext != ',')
            continue;
        verdict = end.second;
        return n;
    }
    return std::string::npos;
}

// "... (12 ms)"
int Milliseconds(const std::string& line)
{
    const std::size_t n = line.rfind('(');
    return n == std::string::npos ? 0 : std::atoi(line.c_str() + n + 1);
}
} // namespace

std::vector<TestResult> ReadList(const std::string& list)
{
    std::vector<TestResult> tests;
    std::string suite;
    for (const std::string& each : Lines(list))
    {
        const std::string line = WithoutComment(each);
        if (line.size() > 2 && line.compare(0, 2, "  ") == 0)
        {
            TestResult test;
            test.suite = suite;
            test.name = line.substr(2);
            if (!suite.empty() && test.FullName().find("DISABLED_") == std::string::npos)
                tests.push_back(std::move(test));
        }
        else if (line.size() > 1 && line.back() == '.')
            suite = line.substr(0, line.size() - 1);
        else
            suite.clear();
    }
    return tests;
}

std::size_t ReadRun(const std::string& output, std::vector<TestResult>& tests)
{
    std::size_t nCurrent = tests.size();
    for (const std::string& line : Lines(output))
    {
        const std::size_t nRun = line.find(kRun);
        if (nCurrent == tests.size() && nRun != std::string::npos)
        {
            const std::string name = line.substr(nRun + sizeof(kRun) - 1);
            nCurrent = static_cast<std::size_t>(
                std::find_if(tests.begin(), tests.end(),
                             [&](const TestResult& test) { return test.FullName() == name; }) -
                tests.begin());
            if (nCurrent != tests.size())
                tests[nCurrent].text.clear();
            continue;
        }
        if (nCurrent == tests.size())
            continue;
        TestResult& test = tests[nCurrent];
        Verdict verdict = Verdict::NotRun;
        const std::size_t nEnd = FindEnd(line, test.FullName(), verdict);
        const std::string said = line.substr(0, nEnd);
        if (!said.empty())
            test.text += said + "\n";
        if (nEnd == std::string::npos)
            continue;
        test.verdict = verdict;
        test.nMilliseconds = Milliseconds(line);
        nCurrent = tests.size();
    }
    return nCurrent;
}

int CountEnded(const std::string& output)
{
    int nEnded = 0;
    for (const auto& end : kEnds)
    {
        for (std::size_t n = output.find(end.first); n != std::string::npos;
             n = output.find(end.first, n + 1))
            ++nEnded;
    }
    return nEnded;
}
} // namespace selftest
