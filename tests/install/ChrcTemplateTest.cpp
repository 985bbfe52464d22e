// The template of the interpreter's start-up file, byte by byte.
#include "install/ChrcTemplate.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace
{
// What a line holds between its spaces, and how many of those stand at its two ends.
struct Line
{
    const char* pszText;
    std::size_t nSpacesAtStart;
    std::size_t nSpacesAtEnd;
};

constexpr Line kLines[] = {
    {"// Note: This file will be called each time when ch is invoked", 0, 1},
    {"//############################################################", 0, 0},
    {"//  DO NOT MODIFY THIS PART OF CODE", 0, 0},
    {"string_t chhome_;", 0, 0},
    {"chhome_ = getenv(\"CHHOME\");", 0, 0},
    {"// set system aliases", 1, 1},
    {"if(_prompt != NULL) { // interactive mode", 0, 1},
    {"__declspec(global) char *g_dirstack;", 2, 3},
    {"putenv(stradd(\"VIM=\", getenv(\"CHHOME\"), \"/config/vim\"));", 2, 0},
    {"}", 0, 0},
    {"alias(\"dirs\", \". dirs\");", 0, 1},
    {"alias(\"pushd\", \". pushd\");", 0, 1},
    {"alias(\"popd\", \". popd\");", 0, 0},
    {"alias(\"alias\", \". alias_.ch\");", 0, 0},
    {"alias(\"unalias\", \". unalias_.ch\");", 0, 0},
    {"alias(\"which\", \". which.ch\");", 0, 0},
    {"alias(\"FILE\", \"_FILE\");", 0, 1},
    {"//  DO NOT MODIFY THE CODE ABOVE", 0, 0},
    {"", 0, 0},
    {"putenv(\"PAGER=less -c\");", 0, 0},
    {"// add current path", 1, 1},
    {"_path = stradd(_path, \".;\");", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"_fpath = stradd(_fpath, \".;\");", 0, 0},
    {"", 0, 0},
    {"_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libc;\");", 0, 0},
    {"_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libch;\");", 0, 0},
    {"_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libopt;\");", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"_ipath = stradd(_ipath, \".;\");", 0, 0},
    {"", 0, 0},
    {"_ipath = stradd(_ipath, \"[KELDPATH]\\\\embedch\\\\include;\");", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"_lpath = stradd(_lpath, \".;\");", 0, 0},
    {"", 0, 0},
    {"_lpath = stradd(_lpath, \"[KELDPATH]\\\\embedch\\\\dl;\");", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"", 0, 0},
    {"if(getenv(\"TMP\") == NULL)", 0, 0},
    {"putenv(stradd(\"TMP=\", getenv(\"TEMP\")));", 2, 0},
    {"", 0, 0},
    {"/* uncomment the line below for multi-byte language", 0, 0},
    {"_setlocale = 1;", 0, 0},
    {"*/", 0, 0},
    {"", 0, 0},
    {"#if strlen(_home)==3 &&  *(*((char **)&_home)+1)==':'", 0, 2},
    {"#if !access(stradd(_home, \"_chrc\"), 4)", 0, 0},
    {"#pragma import stradd(_home, \"_chrc\");", 0, 0},
    {"#endif", 0, 0},
    {"#else", 0, 0},
    {"#if !access(stradd(_home, \"/_chrc\"), 4)", 0, 0},
    {"#pragma import stradd(_home, \"/_chrc\");", 0, 0},
    {"#endif", 0, 0},
    {"#endif", 0, 0},
};
constexpr std::size_t kLineCount = 59;
static_assert(sizeof(kLines) / sizeof(kLines[0]) == kLineCount, "a line for each");

std::vector<std::string> Split(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t nBegin = 0;
    for (std::size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', nBegin))
    {
        lines.push_back(text.substr(nBegin, i - nBegin));
        nBegin = i + 1;
    }
    if (nBegin < text.size())
        lines.push_back(text.substr(nBegin) + "(no line feed)");
    return lines;
}
} // namespace

TEST(ChrcTemplate, HasFiftyNineLinesOf1471BytesInAll)
{
    const std::string text(kChrcTemplate);
    EXPECT_EQ(text.size(), 1471U);
    EXPECT_EQ(sizeof(kChrcTemplate), 1472U) << "a zero byte inside";
    EXPECT_EQ(Split(text).size(), kLineCount);
    EXPECT_EQ(text.back(), '\n');
}

TEST(ChrcTemplate, HasEachLineWithItsSpaces)
{
    const std::vector<std::string> lines = Split(kChrcTemplate);
    ASSERT_EQ(lines.size(), kLineCount);
    for (std::size_t i = 0; i < kLineCount; ++i)
    {
        const Line& line = kLines[i];
        EXPECT_EQ(lines[i], std::string(line.nSpacesAtStart, ' ') + line.pszText +
                                std::string(line.nSpacesAtEnd, ' '))
            << "line " << i + 1;
    }
}

TEST(ChrcTemplate, SecondLineIsTwoSlashesAndSixtyNumberSigns)
{
    EXPECT_EQ(Split(kChrcTemplate).at(1), "//" + std::string(60, '#'));
}

TEST(ChrcTemplate, IsPlainTextWithoutTabsAndCarriageReturns)
{
    for (const char ch : std::string(kChrcTemplate))
        ASSERT_TRUE(ch == '\n' || (ch >= ' ' && ch <= '~')) << static_cast<int>(ch);
}

TEST(ChrcTemplate, HasTheMarkerOnceOnEachOfFiveLines)
{
    const std::string marker = "[KELDPATH]";
    EXPECT_EQ(kChrcFolderMarker, marker);
    std::vector<std::size_t> numbers;
    const std::vector<std::string> lines = Split(kChrcTemplate);
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        for (std::size_t n = lines[i].find(marker); n != std::string::npos;
             n = lines[i].find(marker, n + 1))
            numbers.push_back(i + 1);
    }
    EXPECT_EQ(numbers, (std::vector<std::size_t>{27, 28, 29, 34, 40}));
}
