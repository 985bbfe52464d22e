// What selftest.exe writes into its reports.
#include "selftest/Report.h"

#include "selftest/Options.h"
#include "selftest/Text.h"

#include <gtest/gtest.h>

namespace selftest
{
namespace
{
bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// One program with a test of each verdict, and one that does not start.
Report MixedReport()
{
    Report report;
    report.facts = {{"system", "Windows <11>"}};
    report.sendTo = "Send it there.";
    ProgramResult mixed;
    mixed.name = "install.MixedTest";
    mixed.tests = {{"Suite", "Passes", Verdict::Passed, 1500, ""},
                   {"Suite", "Fails", Verdict::Failed, 2, "a.cpp:3: Failure\nis \"1\" & not <2>\n"},
                   {"Suite", "Skips", Verdict::Skipped, 0, "a.cpp:9: Skipped\nnot on Sundays\n"},
                   {"Suite", "Crashes", Verdict::Crashed, 0, "exit code 0xC0000005\n"},
                   {"Suite", "Waits", Verdict::NotRun, 0, ""}};
    ProgramResult broken;
    broken.name = "frame.BrokenTest";
    broken.trouble = "it does not start";
    report.programs = {mixed, broken};
    return report;
}
Report GoodReport()
{
    Report report = MixedReport();
    report.programs.pop_back();
    report.programs[0].tests.resize(1);
    return report;
}
} // namespace

TEST(Report, IsGoodOnlyWhenSomethingPassedAndNothingWentWrong)
{
    EXPECT_FALSE(Report().IsGood());
    EXPECT_TRUE(GoodReport().IsGood());
    for (const Verdict verdict :
         {Verdict::Failed, Verdict::Crashed, Verdict::Hung, Verdict::NotRun})
    {
        Report report = GoodReport();
        report.programs[0].tests.push_back({"Suite", "Other", verdict, 0, ""});
        EXPECT_FALSE(report.IsGood()) << Word(verdict);
    }
    Report skipped = GoodReport();
    skipped.programs[0].tests.push_back({"Suite", "Other", Verdict::Skipped, 0, ""});
    EXPECT_TRUE(skipped.IsGood());
    skipped.programs[0].tests.erase(skipped.programs[0].tests.begin());
    EXPECT_FALSE(skipped.IsGood()) << "nothing ran at all";
    Report troubled = GoodReport();
    troubled.programs[0].trouble = "ended strangely";
    EXPECT_FALSE(troubled.IsGood());
    Report interrupted = GoodReport();
    interrupted.interrupted = "by the user";
    EXPECT_FALSE(interrupted.IsGood());
}

TEST(Report, SaysInTheTextWhatItRanOnWhatWentWrongAndWhereToSendIt)
{
    const std::string text = MixedReport().Text();
    for (const char* const pszPart :
         {"system          Windows <11>", "Send it there.", "NOT everything passed",
          "2 programs, 5 tests: 1 passed, 1 skipped, 1 FAILED, 2 NOT FINISHED; 1 programs in "
          "TROUBLE",
          "install.MixedTest Suite.Fails: FAILED\n        a.cpp:3: Failure\n        is \"1\"",
          "install.MixedTest Suite.Crashes: CRASHED", "install.MixedTest Suite.Waits: NOT RUN",
          "frame.BrokenTest: it does not start", "1: not on Sundays",
          "    passed   Suite.Passes (1500 ms)", "    skipped  Suite.Skips (0 ms)"})
    {
        EXPECT_TRUE(Contains(text, pszPart)) << pszPart << "\n" << text;
    }
    EXPECT_TRUE(
        Contains(GoodReport().Text(), "\nEverything passed: 1 programs, 1 tests: 1 passed"));
    EXPECT_FALSE(Contains(GoodReport().Text(), "What went wrong"));
}

TEST(Report, HasATestcaseForEachTestInTheXml)
{
    const std::string xml = MixedReport().Xml();
    for (const char* const pszPart :
         {"<testsuites name=\"tarn.dll\" tests=\"6\" failures=\"1\" errors=\"3\" skipped=\"1\"",
          "<testsuite name=\"install.MixedTest\" tests=\"5\" failures=\"1\" errors=\"2\" "
          "skipped=\"1\" time=\"1.502\">",
          "<testcase classname=\"install.MixedTest.Suite\" name=\"Passes\" time=\"1.500\"/>",
          "<failure message=\"FAILED\">a.cpp:3: Failure&#10;is &quot;1&quot; &amp; not &lt;2&gt;",
          "<skipped message=\"not on Sundays\"/>", "<error message=\"CRASHED\">",
          "<error message=\"NOT RUN\">", "name=\"(the program itself)\"",
          "<error message=\"it does not start\"/>",
          "<property name=\"system\" value=\"Windows &lt;11&gt;\"/>"})
    {
        EXPECT_TRUE(Contains(xml, pszPart)) << pszPart << "\n" << xml;
    }
}

TEST(ReportText, IsUtf8WhateverTheTestsPrint)
{
    EXPECT_EQ(Printable("plain\ttext\n"), "plain\ttext\n");
    EXPECT_EQ(Printable("\xC3\xA9 \xE8\xA1\xA8 \xF0\x9F\x98\x80"),
              "\xC3\xA9 \xE8\xA1\xA8 \xF0\x9F\x98\x80");
    EXPECT_EQ(Printable("\x95\x5C"), "\\x95\x5C") << "a character of code page 932";
    EXPECT_EQ(Printable("\x01\x1B[0m\r\x7F"), "\\x01\\x1B[0m\\x0D\x7F");
    EXPECT_EQ(Printable("\xC0\x80\xE0\x80\x80\xED\xA0\x80\xEF\xBF\xBF\xF5\x80\x80\x80\xC3"),
              "\\xC0\\x80\\xE0\\x80\\x80\\xED\\xA0\\x80\\xEF\\xBF\\xBF\\xF5\\x80\\x80\\x80\\xC3");
    EXPECT_EQ(Printable(std::string(1, '\0')), "\\x00");
    EXPECT_EQ(XmlEscaped("<\x95>"), "&lt;\\x95&gt;");
}

TEST(ReportText, HidesFoldersInUpperAndLowerCase)
{
    EXPECT_EQ(ReplaceAll("a C:\\Temp\\x c:\\TEMP", "C:\\Temp", "<t>"), "a <t>\\x <t>");
    EXPECT_EQ(ReplaceAll("C:\\Tem", "C:\\Temp", "<t>"), "C:\\Tem");
    EXPECT_EQ(ReplaceAll("text", "", "x"), "text");
}

TEST(Options, AreUnderstoodOrRefused)
{
    EXPECT_TRUE(ReadOptions({"--touch-user"}).bMayTouchUser);
    EXPECT_FALSE(ReadOptions({}).bMayTouchUser);
    EXPECT_EQ(ReadOptions({"--limit", "7"}).nSilenceSeconds, 7U);
    EXPECT_TRUE(ReadOptions({"--help"}).bHelp);
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--limit"},
                                                  {"--limit", "x"},
                                                  {"--limit", "0"},
                                                  {"--other"},
                                                  {""}})
    {
        EXPECT_NE(ReadOptions(words).error, "") << words[0];
    }
    const Options some = ReadOptions({"FileCopy", "frame."});
    EXPECT_EQ(some.error, "");
    EXPECT_TRUE(IsWanted(some, "install.FileCopyTest.exe"));
    EXPECT_TRUE(IsWanted(some, "frame.TarnAppTest.exe"));
    EXPECT_FALSE(IsWanted(some, "install.RunOnceTest.exe"));
    EXPECT_TRUE(IsWanted(ReadOptions({}), "anything"));
}
} // namespace selftest
