// Names in each code page that is tested, as bytes and as the system stores them: converted by hand, so that
// the tests do not hang on the conversion that they are about. Among them are, where the code page has
// such, names whose last byte, or a byte in whose midst, is that of a backslash (0x5C) or of a vertical
// bar (0x7C); in the others, names that end in what another code page has for the first of two bytes.
#pragma once

#include "tests/support/LeadBytes.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

struct Name
{
    std::string bytes;
    std::wstring wide;

    // Its last byte is a character's second half that looks like a separator.
    bool EndsLikeASeparator() const { return bytes.back() == '\\'; }
};

inline std::vector<Name> NamesIn(unsigned int nCodePage)
{
    switch (nCodePage)
    {
    case 874:
        return {{"\xB7\xB4\xCA\xCD\xBA", L"\x0E17\x0E14\x0E2A\x0E2D\x0E1A"},
                {"\xA1\xE0", L"\x0E01\x0E40"}};
    case 932:
        return {{"\x95\x5C", L"\x8868"},
                {"\x83\x7C", L"\x30DD"},
                {"\x83\x5C\x83\x7C\x94\x5C x", L"\x30BD\x30DD\x80FD x"},
                {"\x8E\x8E\x8C\xB1", L"\x8A66\x9A13"},
                {"\xB1\xDF", L"\xFF71\xFF9F"}};
    case 936:
        return {{"\x81\x5C", L"\x4E57"},
                {"\x83\x7C", L"\x5104"},
                {"\x81\x5C\x83\x7C\x82\x5C x", L"\x4E57\x5104\x4FD3 x"},
                {"\xB1\x5C\xC1\x7C", L"\x76F6\x7FAD"},
                {"\xB2\xE2\xCA\xD4", L"\x6D4B\x8BD5"}};
    case 949: // has no character with such a byte
        return {{"\xBD\xC3\xC7\xE8", L"\xC2DC\xD5D8"}, {"\xB0\xA1 x", L"\xAC00 x"}};
    case 950:
        return {{"\xA5\x5C", L"\x529F"},
                {"\xB3\x5C\xBB\x5C", L"\x8A31\x84CB"},
                {"\xA5\x7C", L"\x56DB"},
                {"\xA5\x5C\xA5\x7C\xB3\x5C x", L"\x529F\x56DB\x8A31 x"},
                {"\xB4\xFA\xB8\xD5", L"\x6E2C\x8A66"}};
    case 1251:
        return {{"\xCF\xF0\xEE\xE1\xE0", L"\x041F\x0440\x043E\x0431\x0430"}, {"\xE0", L"\x0430"}};
    case 1252:
        return {{"Pr\xFC"
                 "fung",
                 L"Pr\x00FC"
                 L"fung"},
                {"\x80\xE9", L"\x20AC\x00E9"}};
    case CP_UTF8:
        return {{"\xE5\x8A\x9F\xE8\xA8\xB1\xE8\x93\x8B", L"\x529F\x8A31\x84CB"},
                {"\xC3\xA9 \xD0\x9F\xD1\x80", L"\x00E9 \x041F\x0440"},
                {"\xF0\x9F\x98\x80", L"\xD83D\xDE00"}};
    default:
        return {};
    }
}

// What every test of code pages has: the names in the one that this process has.
class InItsCodePage : public testing::Test
{
protected:
    void SetUp() override
    {
        const char* const pszWanted = std::getenv("TARN_CODE_PAGE");
        if (pszWanted != nullptr)
        {
            ASSERT_EQ(OwnCodePage(), std::stoul(pszWanted)) << "not the one that was asked for";
        }
        if (names.empty())
            GTEST_SKIP() << "no names are known in code page " << OwnCodePage();
    }

    const std::vector<Name> names = NamesIn(OwnCodePage());
};
