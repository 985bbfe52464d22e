#include "tarntool/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using Words = std::vector<std::wstring>;

Words Read(const std::wstring& line)
{
    const CommandLine read(line.c_str());
    Words words;
    for (int i = 0; i < read.GetCount(); ++i)
        words.push_back(read[i]);
    return read.IsValid() ? words : Words{L"(refused)"};
}

// As the libraries of C#, Python, Go, Rust and others write an argument.
std::wstring Standard(const std::wstring& argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos)
        return argument;
    std::wstring text = L"\"";
    std::size_t nBackslashes = 0;
    for (const wchar_t ch : argument)
    {
        if (ch == L'"')
            text.append(nBackslashes + 1, L'\\');
        nBackslashes = ch == L'\\' ? nBackslashes + 1 : 0;
        text += ch;
    }
    return text.append(nBackslashes, L'\\') + L"\"";
}

// As a script writes it: quotation marks around everything, and those inside doubled.
std::wstring Plain(const std::wstring& argument)
{
    std::wstring text = L"\"";
    for (const wchar_t ch : argument)
        text.append(ch == L'"' ? 2 : 1, ch);
    return text + L"\"";
}

template <class Write>
std::wstring Join(const Words& words, Write write)
{
    std::wstring line;
    for (const std::wstring& word : words)
        line += (line.empty() ? L"" : L" ") + write(word);
    return line;
}
} // namespace

TEST(CommandLine, TakesWordsApartAtBlanksAndTabs)
{
    EXPECT_EQ(Read(L""), Words{});
    EXPECT_EQ(Read(L"  \t "), Words{});
    EXPECT_EQ(Read(L"a"), Words{L"a"});
    EXPECT_EQ(Read(L" check\t joe@example.org "), (Words{L"check", L"joe@example.org"}));
    EXPECT_EQ(Read(L"a b c"), (Words{L"a", L"b", L"c"}));
}

TEST(CommandLine, KeepsBlanksInsideQuotationMarks)
{
    EXPECT_EQ(Read(L"copy \"C:\\Program Files (x86)\\A\" \"a b.txt\""),
              (Words{L"copy", L"C:\\Program Files (x86)\\A", L"a b.txt"}));
    EXPECT_EQ(Read(L"\" a \""), Words{L" a "});
    EXPECT_EQ(Read(L"a \"\" b"), (Words{L"a", L"", L"b"}));
    EXPECT_EQ(Read(L"\"\""), Words{L""});
}

TEST(CommandLine, TakesABackslashBeforeTheClosingMarkForOne)
{
    EXPECT_EQ(Read(L"copy \"C:\\Target\\\" \"a b.txt\""),
              (Words{L"copy", L"C:\\Target\\", L"a b.txt"}));
    EXPECT_EQ(Read(L"copy \"C:\\\" a.txt"), (Words{L"copy", L"C:\\", L"a.txt"}));
    EXPECT_EQ(Read(L"config \"C:\\Program Files\\\""), (Words{L"config", L"C:\\Program Files\\"}));
    EXPECT_EQ(Read(L"config \"C:\\\" --quiet"), (Words{L"config", L"C:\\", L"--quiet"}));
    EXPECT_EQ(Read(L"copy \"C:\\A\\\" \"D:\\B\\\""), (Words{L"copy", L"C:\\A\\", L"D:\\B\\"}));
    EXPECT_EQ(Read(L"copy \"C:\\A\\\" \"D:\\B\\\" \"E:\\C\\\""),
              (Words{L"copy", L"C:\\A\\", L"D:\\B\\", L"E:\\C\\"}));
    EXPECT_EQ(Read(L"copy \"\\\\server\\share\\\" \"a b.txt\""),
              (Words{L"copy", L"\\\\server\\share\\", L"a b.txt"}));
    EXPECT_EQ(Read(L"\"C:\\\""), Words{L"C:\\"});
    EXPECT_EQ(Read(L"C:\\ \"C:\\\""), (Words{L"C:\\", L"C:\\"}));
}

TEST(CommandLine, UnderstandsWhatLibrariesWrite)
{
    EXPECT_EQ(Read(L"copy \"C:\\My Target\\\\\" \"a b.txt\""),
              (Words{L"copy", L"C:\\My Target\\", L"a b.txt"}));
    EXPECT_EQ(Read(L"runonce Name \"\\\"C:\\a b.exe\\\" --first-run\""),
              (Words{L"runonce", L"Name", L"\"C:\\a b.exe\" --first-run"}));
    EXPECT_EQ(Read(L"a\\\"b"), Words{L"a\"b"});
    EXPECT_EQ(Read(L"\\\"a\\\""), Words{L"\"a\""});
    EXPECT_EQ(Read(L"\"a\\\\\\\"b c\""), Words{L"a\\\"b c"});
}

TEST(CommandLine, UnderstandsDoubledMarks)
{
    EXPECT_EQ(Read(L"runonce Name \"\"\"C:\\a b.exe\"\" --first-run\""),
              (Words{L"runonce", L"Name", L"\"C:\\a b.exe\" --first-run"}));
    EXPECT_EQ(Read(L"\"\"\"\""), Words{L"\""});
    EXPECT_EQ(Read(L"\"say \"\"hi\"\"\" \"C:\\A\\\""), (Words{L"say \"hi\"", L"C:\\A\\"}));
}

TEST(CommandLine, LeavesBackslashesAloneElsewhere)
{
    EXPECT_EQ(Read(L"\\\\server\\share\\a.txt"), Words{L"\\\\server\\share\\a.txt"});
    EXPECT_EQ(Read(L"\"\\\\server\\my share\\a.txt\""), Words{L"\\\\server\\my share\\a.txt"});
    EXPECT_EQ(Read(L"a\\b\\\\c"), Words{L"a\\b\\\\c"});
    EXPECT_EQ(Read(L"a\\ b"), (Words{L"a\\", L"b"}));
}

TEST(CommandLine, RefusesWhatIsRightInNeitherWay)
{
    EXPECT_EQ(Read(L"\"a"), Words{L"(refused)"});
    EXPECT_EQ(Read(L"a\""), Words{L"(refused)"});
    EXPECT_EQ(Read(L"\""), Words{L"(refused)"});
    EXPECT_EQ(Read(L"\"a\"b"), Words{L"(refused)"});
    EXPECT_EQ(Read(L"C:\\\"Program Files\"\\a"), Words{L"(refused)"});
    EXPECT_EQ(Read(L"copy \"C:\\A\\\" \"say \\\"hi\\\"\""), Words{L"(refused)"});
}

TEST(CommandLine, ReadsBackEveryListOfWordsWrittenEitherWay)
{
    // Each three of them in each order: the ends of a word are where the two ways disagree.
    const Words words = {L"a",           L"a b",          L"",      L"C:\\",    L"C:\\A B\\",
                         L"\"",          L"\"a b\" -c",   L"a\"b",  L"--title", L"\\\\s\\x y\\",
                         L"über 漢字 x", L"C:\\A B\\\"c", L"\" \\", L"\\",      L"'a b'",
                         L"a|b",         L"%TEMP%",       L"{A-B}", L"a\\\\",   L"--x",
                         L"a=b c",       L"a\"\"b c",     L"^&|<>", L"$x",      L"a \""};
    int nLines = 0;
    for (const std::wstring& first : words)
    {
        for (const std::wstring& second : words)
        {
            for (const std::wstring& third : words)
            {
                const Words list = {first, second, third};
                ASSERT_EQ(Read(Join(list, Standard)), list)
                    << "standard " << testing::PrintToString(Join(list, Standard));
                ++nLines;
            }
        }
    }
    EXPECT_EQ(nLines, 15625);
}

TEST(CommandLine, ReadsBackEveryListOfWordsWrittenPlainly)
{
    // Not those that end in a backslash and a quotation mark, or begin with a blank.
    const Words words = {
        L"a",     L"a b",          L"",          L"C:\\",  L"C:\\A B\\", L"\"a b\" -c",
        L"a\"b",  L"\\\\s\\x y\\", L"über 漢字", L"\\",    L"'a b'",     L"a|b",
        L"{A-B}", L"a=b c",        L"--x",       L"^&|<>", L"say \"x\"", L"x \"y\" z"};
    for (const std::wstring& first : words)
    {
        for (const std::wstring& second : words)
        {
            for (const std::wstring& third : words)
            {
                const Words list = {L"copy", first, second, third};
                ASSERT_EQ(Read(L"copy " + Join({first, second, third}, Plain)), list)
                    << testing::PrintToString(Join(list, Plain));
            }
        }
    }
}

TEST(CommandLine, EndsAtTwoDashesAndKeepsTheRestAsItStands)
{
    const std::wstring line = L"run --title \"A\\\" --   \"C:\\a b\\c.exe\" \"x\\\"y\"  z ";
    const CommandLine read(line.c_str());
    ASSERT_TRUE(read.IsValid());
    ASSERT_EQ(read.GetCount(), 3);
    EXPECT_STREQ(read[2], L"A\\");
    EXPECT_STREQ(read.GetTail(), L"\"C:\\a b\\c.exe\" \"x\\\"y\"  z ");
}

TEST(CommandLine, TakesTwoDashesInsideQuotationMarksForText)
{
    const CommandLine read(L"check \"--\" a");
    ASSERT_EQ(read.GetCount(), 3);
    EXPECT_STREQ(read[1], L"--");
    EXPECT_EQ(read.GetTail(), nullptr);
}

TEST(CommandLine, HasAnEmptyTailBehindDashesAtTheEnd)
{
    const CommandLine read(L"run --");
    EXPECT_EQ(read.GetCount(), 1);
    ASSERT_NE(read.GetTail(), nullptr);
    EXPECT_STREQ(read.GetTail(), L"");
}

TEST(CommandLine, DoesNotEndAtDashesWhenTheyMeanNothing)
{
    const CommandLine read(L"a -- b", false);
    ASSERT_EQ(read.GetCount(), 3);
    EXPECT_STREQ(read[1], L"--");
}

TEST(CommandLine, SkipsTheProgramsName)
{
    EXPECT_STREQ(CommandLine::SkipProgram(L"\"C:\\a b\\tarntool.exe\"  check x"), L"check x");
    EXPECT_STREQ(CommandLine::SkipProgram(L"tarntool check x"), L"check x");
    EXPECT_STREQ(CommandLine::SkipProgram(L"C:\\\"a b\"\\tarntool check x"), L"check x");
    EXPECT_STREQ(CommandLine::SkipProgram(L"\"C:\\a b\\\" check"), L"check");
    EXPECT_STREQ(CommandLine::SkipProgram(L"tarntool"), L"");
    EXPECT_STREQ(CommandLine::SkipProgram(L""), L"");
}
