// What selftest.exe understands of the test programs' output.
#include "selftest/TestOutput.h"

#include <gtest/gtest.h>

namespace selftest
{
namespace
{
constexpr char kList[] = "Running main() from main.cpp\r\n"
                         "FileCopy.\r\n"
                         "  Copies\r\n"
                         "  Fails\r\n"
                         "  DISABLED_InAChild\r\n"
                         "Forms/Guard.\r\n"
                         "  Restores/Loaded  # GetParam() = 4-byte object <00-00 00-00>\r\n"
                         "  Restores/Linked  # GetParam() = 1\r\n"
                         "DISABLED_Parts.\r\n"
                         "  Part\r\n";

std::string NamesOf(const std::vector<TestResult>& tests)
{
    std::string names;
    for (const TestResult& test : tests)
        names += test.FullName() + "|";
    return names;
}

class Run : public testing::Test
{
protected:
    // Of the four tests of the list.
    std::string After(const std::string& output)
    {
        m_nBroken = ReadRun(output, m_tests);
        std::string verdicts;
        for (const TestResult& test : m_tests)
            verdicts += static_cast<char>('0' + static_cast<int>(test.verdict));
        return verdicts;
    }
    std::vector<TestResult> m_tests = ReadList(kList);
    std::size_t m_nBroken = 99;
};
} // namespace

TEST(TestList, HasEveryTestButTheDisabledOnes)
{
    EXPECT_EQ(NamesOf(ReadList(kList)),
              "FileCopy.Copies|FileCopy.Fails|Forms/Guard.Restores/Loaded|"
              "Forms/Guard.Restores/Linked|");
}

TEST(TestList, IsEmptyForOtherOutput)
{
    EXPECT_EQ(NamesOf(ReadList("")), "");
    EXPECT_EQ(NamesOf(ReadList("cannot open the display\n  at all\n")), "");
}

TEST_F(Run, TellsWhatBecameOfEachTest)
{
    EXPECT_EQ(After("[ RUN      ] FileCopy.Copies\r\n"
                    "[       OK ] FileCopy.Copies (12 ms)\r\n"
                    "[ RUN      ] FileCopy.Fails\r\n"
                    "a.cpp:3: Failure\r\n"
                    "[  FAILED  ] FileCopy.Fails (1 ms)\r\n"
                    "[ RUN      ] Forms/Guard.Restores/Loaded\r\n"
                    "a.cpp:9: Skipped\r\n"
                    "not here\r\n"
                    "[  SKIPPED ] Forms/Guard.Restores/Loaded (0 ms)\r\n"
                    "[ RUN      ] Forms/Guard.Restores/Linked\r\n"
                    "[  FAILED  ] Forms/Guard.Restores/Linked, where GetParam() = 1 (4 ms)\r\n"
                    "[  FAILED  ] 2 tests, listed below:\r\n"
                    "[  FAILED  ] FileCopy.Fails\r\n"),
              "0121");
    EXPECT_EQ(m_nBroken, m_tests.size());
    EXPECT_EQ(m_tests[0].nMilliseconds, 12);
    EXPECT_EQ(m_tests[0].text, "");
    EXPECT_EQ(m_tests[1].text, "a.cpp:3: Failure\n");
    EXPECT_EQ(m_tests[2].text, "a.cpp:9: Skipped\nnot here\n");
    EXPECT_EQ(m_tests[3].nMilliseconds, 4);
}

TEST_F(Run, TellsWhichTestDidNotEnd)
{
    EXPECT_EQ(After("[ RUN      ] FileCopy.Copies\n[       OK ] FileCopy.Copies (2 ms)\n"
                    "[ RUN      ] FileCopy.Fails\nhalf a li"),
              "0555");
    EXPECT_EQ(m_nBroken, 1U);
    EXPECT_EQ(m_tests[1].text, "half a li\n");
}

// A test prints without ending its line, or starts the program itself for a part of it.
TEST_F(Run, IsNotMisledByWhatTestsPrint)
{
    EXPECT_EQ(After("[ RUN      ] FileCopy.Copies\n"
                    "[ RUN      ] FileCopy.DISABLED_InAChild\n"
                    "[       OK ] FileCopy.DISABLED_InAChild (1 ms)\n"
                    "[       OK ] FileCopy.CopiesMore (1 ms)\n"
                    "no line's end[       OK ] FileCopy.Copies (3 ms)\n"),
              "0555");
    EXPECT_EQ(m_tests[0].nMilliseconds, 3);
    EXPECT_NE(m_tests[0].text.find("no line's end\n"), std::string::npos);
}

TEST_F(Run, GoesOnWhereAnEarlierOneBroke)
{
    After("[ RUN      ] FileCopy.Copies\n");
    m_tests[0].verdict = Verdict::Crashed;
    EXPECT_EQ(After("[ RUN      ] FileCopy.Fails\n[       OK ] FileCopy.Fails (2 ms)\n"), "3055");
}

TEST(Progress, CountsTheTestsThatHaveEnded)
{
    EXPECT_EQ(CountEnded(""), 0);
    EXPECT_EQ(CountEnded("[ RUN      ] A.B\n[       OK ] A.B (2 ms)\n[ RUN      ] A.C\n"
                         "[  SKIPPED ] A.C (2 ms)\n[ RUN      ] A.D\n"),
              2);
}
} // namespace selftest
