#include "selftest/Report.h"

#include "selftest/Text.h"

#include <cstdio>
#include <map>

namespace selftest
{
namespace
{
std::string Seconds(double dSeconds)
{
    char szText[32] = "";
    std::snprintf(szText, sizeof(szText), "%.3f", dSeconds);
    return szText;
}

bool IsBad(Verdict verdict)
{
    return verdict != Verdict::Passed && verdict != Verdict::Skipped;
}

std::string Indented(const std::string& text)
{
    std::string indented;
    bool bAtStart = true;
    for (const char ch : Printable(text))
    {
        if (bAtStart)
            indented += "        ";
        indented += ch;
        bAtStart = ch == '\n';
    }
    if (!indented.empty() && indented.back() != '\n')
        indented += '\n';
    return indented;
}

// GoogleTest prints "file:line: Skipped" in front of the reason.
std::string Reason(const std::string& text)
{
    const std::size_t nMark = text.find(": Skipped\n");
    std::string reason =
        nMark == std::string::npos ? text : text.substr(nMark + sizeof(": Skipped\n") - 1);
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == ' '))
        reason.pop_back();
    return reason.empty() ? "(no reason given)" : reason;
}

std::string BadTests(const std::vector<ProgramResult>& programs)
{
    std::string text;
    for (const ProgramResult& program : programs)
    {
        if (!program.trouble.empty())
            text += "  " + program.name + ": " + program.trouble + "\n";
        for (const TestResult& test : program.tests)
        {
            if (!IsBad(test.verdict))
                continue;
            text += "  " + program.name + " " + test.FullName() + ": " + Word(test.verdict) + "\n";
            text += Indented(test.text);
        }
    }
    return text;
}

std::string Skipped(const std::vector<ProgramResult>& programs)
{
    std::map<std::string, std::vector<std::string>> byReason;
    for (const ProgramResult& program : programs)
    {
        for (const TestResult& test : program.tests)
        {
            if (test.verdict == Verdict::Skipped)
                byReason[Reason(test.text)].push_back(program.name + " " + test.FullName());
        }
    }
    std::string text;
    for (const auto& each : byReason)
    {
        text += "  " + std::to_string(each.second.size()) + ": " + Printable(each.first) + "\n";
        for (const std::string& name : each.second)
            text += "        " + name + "\n";
    }
    return text;
}

std::string Attribute(const char* pszName, const std::string& value)
{
    return std::string(" ") + pszName + "=\"" + XmlEscaped(value) + "\"";
}

std::string Attribute(const char* pszName, int nValue)
{
    return Attribute(pszName, std::to_string(nValue));
}

std::string Case(const ProgramResult& program, const TestResult& test)
{
    std::string xml = "    <testcase" + Attribute("classname", program.name + "." + test.suite) +
                      Attribute("name", test.name) +
                      Attribute("time", Seconds(test.nMilliseconds / 1000.0));
    if (test.verdict == Verdict::Passed)
        return xml + "/>\n";
    xml += ">\n      ";
    if (test.verdict == Verdict::Skipped)
        xml += "<skipped" + Attribute("message", Reason(test.text)) + "/>";
    else
    {
        const char* const pszElement = test.verdict == Verdict::Failed ? "failure" : "error";
        xml += std::string("<") + pszElement + Attribute("message", Word(test.verdict)) + ">" +
               XmlEscaped(test.text) + "</" + pszElement + ">";
    }
    return xml + "\n    </testcase>\n";
}

std::string Suite(const ProgramResult& program)
{
    Counts counts;
    counts.Add(program);
    double dSeconds = 0;
    for (const TestResult& test : program.tests)
        dSeconds += test.nMilliseconds / 1000.0;
    std::string xml = "  <testsuite" + Attribute("name", program.name) +
                      Attribute("tests", counts.nTests + counts.nTroubles) +
                      Attribute("failures", counts.nFailed) +
                      Attribute("errors", counts.nUnfinished + counts.nTroubles) +
                      Attribute("skipped", counts.nSkipped) + Attribute("time", Seconds(dSeconds)) +
                      ">\n";
    for (const TestResult& test : program.tests)
        xml += Case(program, test);
    if (!program.trouble.empty())
        xml += "    <testcase" + Attribute("classname", program.name) +
               Attribute("name", "(the program itself)") + Attribute("time", "0") +
               ">\n      <error" + Attribute("message", program.trouble) + "/>\n    </testcase>\n";
    return xml + "  </testsuite>\n";
}
} // namespace

const char* Word(Verdict verdict)
{
    switch (verdict)
    {
    case Verdict::Passed:
        return "passed";
    case Verdict::Failed:
        return "FAILED";
    case Verdict::Skipped:
        return "skipped";
    case Verdict::Crashed:
        return "CRASHED";
    case Verdict::Hung:
        return "HUNG";
    case Verdict::NotRun:
        break;
    }
    return "NOT RUN";
}

std::string Report::Summary() const
{
    const Counts counts = Count(programs);
    std::string text = std::to_string(programs.size()) + " programs, " +
                       std::to_string(counts.nTests) + " tests: " + std::to_string(counts.nPassed) +
                       " passed";
    const std::pair<int, const char*> kOthers[] = {{counts.nSkipped, "skipped"},
                                                   {counts.nFailed, "FAILED"},
                                                   {counts.nUnfinished, "NOT FINISHED"}};
    for (const auto& other : kOthers)
    {
        if (other.first != 0)
            text += ", " + std::to_string(other.first) + " " + other.second;
    }
    if (counts.nTroubles != 0)
        text += "; " + std::to_string(counts.nTroubles) + " programs in TROUBLE";
    return text;
}

std::string Report::Text() const
{
    std::string text = "Self-test of tarn.dll\n\n";
    for (const auto& fact : facts)
    {
        text += "  " + fact.first;
        text.append(fact.first.size() < 16 ? 16 - fact.first.size() : 1, ' ');
        text += Printable(fact.second) + "\n";
    }
    text += "\n" + std::string(IsGood() ? "Everything passed" : "NOT everything passed") + ": " +
            Summary() + " (" + Seconds(dSeconds) + " s)\n";
    if (!interrupted.empty())
        text += "INTERRUPTED: " + interrupted + "\n";
    text += "\n" + sendTo + "\n";

    const std::string bad = BadTests(programs);
    if (!bad.empty())
        text += "\nWhat went wrong\n\n" + bad;
    const std::string skipped = Skipped(programs);
    if (!skipped.empty())
        text += "\nWhat was skipped, and why\n\n" + skipped;
    text += "\nEach test\n";
    for (const ProgramResult& program : programs)
    {
        text += "\n  " + program.name + "\n";
        for (const TestResult& test : program.tests)
        {
            const std::string word = Word(test.verdict);
            text += "    " + word + std::string(9 - word.size(), ' ') + test.FullName() + " (" +
                    std::to_string(test.nMilliseconds) + " ms)\n";
        }
    }
    return text;
}

std::string Report::Xml() const
{
    const Counts counts = Count(programs);
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + Attribute("name", "tarn.dll") +
        Attribute("tests", counts.nTests + counts.nTroubles) +
        Attribute("failures", counts.nFailed) +
        Attribute("errors", counts.nUnfinished + counts.nTroubles) +
        Attribute("skipped", counts.nSkipped) + Attribute("time", Seconds(dSeconds)) + ">\n";
    // Where readers of this format look for properties: in a suite.
    xml += "  <testsuite" + Attribute("name", "machine") + Attribute("tests", 0) +
           ">\n    <properties>\n";
    for (const auto& fact : facts)
        xml += "      <property" + Attribute("name", fact.first) + Attribute("value", fact.second) +
               "/>\n";
    if (!interrupted.empty())
        xml += "      <property" + Attribute("name", "interrupted") +
               Attribute("value", interrupted) + "/>\n";
    xml += "    </properties>\n  </testsuite>\n";
    for (const ProgramResult& program : programs)
        xml += Suite(program);
    return xml + "</testsuites>\n";
}
} // namespace selftest
