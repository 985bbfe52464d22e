// Which bytes begin a character of two bytes, seen through the string class: a backslash behind one
// that does is the character's second half, and is not found.
#include <afx.h>

#include "tests/support/CodePage932.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
bool Begins(int nByte)
{
    const char szText[] = {static_cast<char>(nByte), '\\', '\0'};
    return CString(szText).ReverseFind('\\') == -1;
}

using CodePageJapanese = CodePage932;
} // namespace

TEST_F(CodePageJapanese, HasLeadBytesFrom81To9FAndFromE0ToFC)
{
    for (int nByte = 1; nByte < 256; ++nByte)
    {
        const bool bLead = (nByte >= 0x81 && nByte <= 0x9F) || (nByte >= 0xE0 && nByte <= 0xFC);
        EXPECT_EQ(Begins(nByte), bLead) << "byte " << nByte;
    }
}

TEST(CodePage1252, HasNoLeadBytes)
{
#ifdef _WIN32
    if (::GetACP() != 1252)
        GTEST_SKIP() << "the ANSI code page is " << ::GetACP();
#endif
    for (int nByte = 1; nByte < 256; ++nByte)
        EXPECT_FALSE(Begins(nByte)) << "byte " << nByte;
}

// The first half of a character with nothing behind it is a character of its own.
TEST_F(CodePageJapanese, TakesALeadByteAtTheEndAsItStands)
{
    EXPECT_EQ(CString("a\x95").ReverseFind('\x95'), 1);
    EXPECT_EQ(CString("\\\x95").ReverseFind('\\'), 0);
}
