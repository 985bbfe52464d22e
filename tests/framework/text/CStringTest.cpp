#include <afx.h>

#include "framework/text/CodePage.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
// Characters of code page 932 whose second byte is a backslash, and one where it is a vertical bar.
constexpr char kHyou[] = "\x95\x5C";
constexpr char kSo[] = "\x83\x5C";
constexpr char kNou[] = "\x94\x5C";
constexpr char kPo[] = "\x83\x7C";

// All bytes, whatever they are.
std::string Bytes(const CString& str)
{
    return std::string(str.GetString(), static_cast<std::size_t>(str.GetLength()));
}

LPCSTR NullText()
{
    return nullptr;
}

#ifdef _WIN32
// The code page is the process's: every test that needs 932 says what it expects without it, too.
bool IsJapanese()
{
    return ::GetACP() == 932;
}
class CStringCharacters : public testing::Test
{
};
TEST(CStringEnvironment, HasTheCodePageThatTheTestRunAsksFor)
{
    const char* const pszLocale = std::getenv("TARN_LOCALE");
    if (pszLocale == nullptr)
        GTEST_SKIP() << "nobody asks for a code page; it is " << ::GetACP();
    EXPECT_EQ(::GetACP(), std::strncmp(pszLocale, "ja_JP", 5) == 0 ? 932U : 1252U);
}
#else
bool IsJapanese()
{
    return IsLeadByte(0x95);
}
class CStringCharacters : public testing::TestWithParam<unsigned>
{
protected:
    CStringCharacters() { SetNativeCodePage(GetParam()); }
    ~CStringCharacters() override { SetNativeCodePage(1252); }
};
INSTANTIATE_TEST_SUITE_P(BothCodePages, CStringCharacters, testing::Values(1252U, 932U));
#undef TEST_F
#define TEST_F TEST_P
#endif

TEST(CString, IsEmptyToStartWith)
{
    const CString str;
    EXPECT_TRUE(str.IsEmpty());
    EXPECT_EQ(str.GetLength(), 0);
    EXPECT_STREQ(str, "");
}

TEST(CString, TakesANullPointerForTheEmptyString)
{
    CString str(NullText());
    EXPECT_STREQ(str, "");
    str = "text";
    str = NullText();
    EXPECT_STREQ(str, "");
    str = "text";
    str += NullText();
    EXPECT_STREQ(str, "text");
    EXPECT_STREQ(str + NullText(), "text");
    EXPECT_STREQ(NullText() + str, "text");
    EXPECT_EQ(str.Replace(NullText(), "x"), 0);
    EXPECT_EQ(str.Replace("t", NullText()), 2);
    EXPECT_STREQ(str, "ex");
}

TEST(CString, KeepsTheTextThatItWasMadeFrom)
{
    char szText[] = "before";
    const CString str(szText);
    std::strcpy(szText, "after");
    EXPECT_STREQ(str, "before");
    EXPECT_EQ(str.GetLength(), 6);
    EXPECT_STREQ(CString("abcdef", 3), "abc");
    EXPECT_EQ(Bytes(CString("a\0b", 3)), std::string("a\0b", 3));
}

TEST(CString, IsAValue)
{
    CString strFirst("first");
    CString strSecond(strFirst);
    CString strThird;
    strThird = strSecond;
    strSecond += " and more";
    EXPECT_STREQ(strFirst, "first");
    EXPECT_STREQ(strSecond, "first and more");
    EXPECT_STREQ(strThird, "first");
    strFirst = "other";
    EXPECT_STREQ(strThird, "first");
    strThird.Empty();
    EXPECT_STREQ(strThird, "");
    EXPECT_STREQ(strSecond, "first and more");
}

TEST(CString, CopiesCharactersToABufferAndNothingElse)
{
    for (int n = 0; n <= 70; ++n)
    {
        const CString strSource(std::string(static_cast<std::size_t>(n), 'x').c_str());
        std::string buffer(100, '-');
        CString::CopyChars(&buffer[10], strSource, n + 1);
        EXPECT_EQ(buffer, std::string(10, '-') + strSource.GetString() + '\0' +
                              std::string(static_cast<std::size_t>(100 - 10 - n - 1), '-'));
        CString::CopyChars(&buffer[0], "abc", 0);
        EXPECT_EQ(buffer[0], '-');
    }
}

TEST(CString, HasNothingToDoInTheseCases)
{
    CString str;
    str.ReleaseBuffer();
    EXPECT_STREQ(str, "");
    EXPECT_STREQ(CString(), "") << "the block that empty strings share";
    str = "aba";
    EXPECT_EQ(str.Replace('a', 'a'), 0);
    EXPECT_STREQ(str, "aba");
}

TEST(CString, LeavesCopiesAloneWhateverIsDoneToIt)
{
    const CString strOriginal("  a,b,a  ");
    const std::vector<void (*)(CString&)> changes = {
        [](CString& str) { str.Replace("a", "xyz"); },
        [](CString& str) { str.Replace('a', 'x'); },
        [](CString& str) { str.Replace("a", ""); },
        [](CString& str) { str.TrimLeft(); },
        [](CString& str) { str.TrimRight(); },
        [](CString& str) { str += 'x'; },
        [](CString& str) { str = "y"; },
        [](CString& str) { str.Empty(); },
        [](CString& str) {
            str.GetBuffer(1)[0] = 'x';
            str.ReleaseBuffer();
        },
    };
    for (const auto change : changes)
    {
        CString strChanged(strOriginal);
        change(strChanged);
        EXPECT_STREQ(strOriginal, "  a,b,a  ");
        EXPECT_STRNE(strChanged, "  a,b,a  ");
    }
}

TEST(CString, SurvivesBeingAssignedItsOwnText)
{
    CString str("0123456789");
    str = str.GetString();
    EXPECT_STREQ(str, "0123456789");
    str = str.GetString() + 4;
    EXPECT_STREQ(str, "456789");
    const CString& strSame = str;
    str = strSame;
    EXPECT_STREQ(str, "456789");
    str += str;
    EXPECT_STREQ(str, "456789456789");
    str += str.GetString() + 8;
    EXPECT_STREQ(str, "4567894567896789");
    CString strShared(str);
    str = str.GetString() + 12;
    EXPECT_STREQ(str, "6789");
    EXPECT_STREQ(strShared, "4567894567896789");
    strShared = strShared.Mid(12);
    EXPECT_STREQ(strShared, "6789");
}

TEST(CString, ReplacesByTextsOfItsOwn)
{
    CString str("ab-ab-ab");
    EXPECT_EQ(str.Replace(str.GetString() + 6, str.GetString()), 3);
    EXPECT_STREQ(str, "ab-ab-ab-ab-ab-ab-ab-ab-ab");
}

TEST(CString, ConcatenatesStringsAndTexts)
{
    const CString str("b");
    EXPECT_STREQ(str + CString("c"), "bc");
    EXPECT_STREQ(str + "c", "bc");
    EXPECT_STREQ("a" + str, "ab");
    EXPECT_STREQ("a" + str + "cd" + str, "abcdb");
    EXPECT_STREQ(str, "b");
    EXPECT_STREQ(CString() + "" + CString(), "");
}

TEST(CString, GrowsPieceByPiece)
{
    CString str;
    std::string model;
    for (int i = 0; i < 5000; ++i)
    {
        const std::string piece(static_cast<std::size_t>(i % 7), static_cast<char>('a' + i % 26));
        str += piece.c_str();
        str += '.';
        model += piece + '.';
        ASSERT_EQ(str.GetLength(), static_cast<int>(model.size()));
    }
    EXPECT_EQ(Bytes(str), model);
}

TEST(CString, CutsPiecesThatLieInside)
{
    const CString str("0123456789");
    EXPECT_STREQ(str.Mid(3), "3456789");
    EXPECT_STREQ(str.Mid(3, 2), "34");
    EXPECT_STREQ(str.Mid(3, 1), "3");
    EXPECT_STREQ(str.Mid(0), "0123456789");
    EXPECT_STREQ(str.Mid(9), "9");
    EXPECT_STREQ(str.Left(4), "0123");
    EXPECT_STREQ(str.Left(10), "0123456789");
}

TEST(CString, CutsPiecesThatReachOutsideToWhatIsThere)
{
    const CString str("0123456789");
    EXPECT_STREQ(str.Mid(10), "");
    EXPECT_STREQ(str.Mid(11), "");
    EXPECT_STREQ(str.Mid(-3), "0123456789");
    EXPECT_STREQ(str.Mid(-3, 2), "01");
    EXPECT_STREQ(str.Mid(8, 5), "89");
    EXPECT_STREQ(str.Mid(8, -1), "");
    EXPECT_STREQ(str.Mid(8, INT_MAX), "89");
    EXPECT_STREQ(str.Mid(INT_MAX), "");
    EXPECT_STREQ(str.Mid(INT_MAX, INT_MAX), "");
    EXPECT_STREQ(str.Mid(INT_MIN, INT_MAX), "0123456789");
    EXPECT_STREQ(str.Left(-1), "");
    EXPECT_STREQ(str.Left(0), "");
    EXPECT_STREQ(str.Left(11), "0123456789");
    EXPECT_STREQ(str.Left(INT_MIN), "");
    EXPECT_STREQ(CString().Mid(0), "");
    EXPECT_STREQ(CString().Left(1), "");
}

TEST(CString, GivesItsBytesAndItsTerminatorByIndex)
{
    const CString str("ab\xE9");
    EXPECT_EQ(str.GetAt(0), 'a');
    EXPECT_EQ(str.GetAt(1), 'b');
    EXPECT_EQ(str.GetAt(2), '\xE9');
    EXPECT_EQ(str.GetAt(3), '\0');
    EXPECT_EQ(CString().GetAt(0), '\0');
}

TEST(CString, ThrowsTheInvalidArgumentExceptionForAnIndexOutOfBounds)
{
    for (const int iChar : {-1, 4, 5, INT_MAX, INT_MIN})
    {
        SCOPED_TRACE(iChar);
        const CString str("abc");
        CInvalidArgException* pCaught = nullptr;
        try
        {
            str.GetAt(iChar);
        }
        catch (CInvalidArgException* pException)
        {
            pCaught = pException;
            pException->Delete();
        }
        EXPECT_NE(pCaught, nullptr);
        EXPECT_THROW(str.GetAt(iChar), CInvalidArgException*);
        EXPECT_THROW(CString().GetAt(iChar), CException*);
    }
}

TEST(CString, FindsCharacters)
{
    const CString str("one two one");
    EXPECT_EQ(str.Find('o'), 0);
    EXPECT_EQ(str.Find('o', 1), 6);
    EXPECT_EQ(str.Find('e', 10), 10);
    EXPECT_EQ(str.Find('x'), -1);
    EXPECT_EQ(str.ReverseFind('o'), 8);
    EXPECT_EQ(str.ReverseFind('t'), 4);
    EXPECT_EQ(str.ReverseFind('x'), -1);
    EXPECT_EQ(CString().Find('x'), -1);
    EXPECT_EQ(CString().ReverseFind('x'), -1);
}

TEST(CString, FindsNothingFromAStartOutside)
{
    const CString str("abc");
    for (const int iStart : {-1, 4, INT_MAX, INT_MIN})
    {
        EXPECT_EQ(str.Find('a', iStart), -1);
    }
    EXPECT_EQ(str.Find('c', 3), -1);
}

TEST(CString, ReplacesEveryMatchAndCountsThem)
{
    CString str("a,b,,c");
    EXPECT_EQ(str.Replace(",", "; "), 3);
    EXPECT_STREQ(str, "a; b; ; c");
    EXPECT_EQ(str.Replace("; ", ""), 3);
    EXPECT_STREQ(str, "abc");
    EXPECT_EQ(str.Replace("abc", ""), 1);
    EXPECT_STREQ(str, "");
    EXPECT_EQ(str.Replace("a", "b"), 0);

    str = "aXbX";
    EXPECT_EQ(str.Replace('X', 'Y'), 2);
    EXPECT_STREQ(str, "aYbY");
    EXPECT_EQ(str.Replace('X', 'Z'), 0);
    EXPECT_EQ(str.Replace("", "x"), 0);
    EXPECT_STREQ(str, "aYbY");
    EXPECT_EQ(str.Replace("Y", "Y"), 2);
    EXPECT_STREQ(str, "aYbY");
}

TEST(CString, DoesNotLookAgainAtWhatItPutIn)
{
    CString str("a\\b");
    EXPECT_EQ(str.Replace("\\", "\\\\"), 1);
    EXPECT_STREQ(str, "a\\\\b");
    str = "aaaa";
    EXPECT_EQ(str.Replace("aa", "a"), 2);
    EXPECT_STREQ(str, "aa");
    str = "aaaaa";
    EXPECT_EQ(str.Replace("aa", "b"), 2);
    EXPECT_STREQ(str, "bba");
    str = "ab";
    EXPECT_EQ(str.Replace("a", "ba"), 1);
    EXPECT_STREQ(str, "bab");
}

TEST(CString, ReplacesByAZeroByte)
{
    CString str("a|b||");
    EXPECT_EQ(str.Replace('|', '\0'), 3);
    EXPECT_EQ(Bytes(str), std::string("a\0b\0\0", 5));
}

TEST(CString, TrimsTheSixKindsOfWhiteSpace)
{
    CString str(" \t\n\v\f\r x \r\f\v\n\t ");
    EXPECT_STREQ(str.TrimLeft(), "x \r\f\v\n\t ");
    EXPECT_STREQ(str.TrimRight(), "x");
    EXPECT_STREQ(str.TrimLeft().TrimRight(), "x");
    str = " \t\r\n";
    EXPECT_STREQ(str.TrimLeft(), "");
    str = " \t\r\n";
    EXPECT_STREQ(str.TrimRight(), "");
    EXPECT_STREQ(str.TrimLeft().TrimRight(), "");
    str = "a b";
    EXPECT_STREQ(str.TrimLeft().TrimRight(), "a b");
    // Neither the no-break space nor a control character is one.
    str = "\xA0\x1F\x08\x0E";
    EXPECT_STREQ(str.TrimLeft().TrimRight(), "\xA0\x1F\x08\x0E");
}

TEST(CString, LendsABufferToWriteInto)
{
    CString str("abc");
    LPSTR pszBuffer = str.GetBuffer(100);
    EXPECT_STREQ(pszBuffer, "abc");
    std::memset(pszBuffer, 'x', 100);
    str.ReleaseBuffer(100);
    EXPECT_EQ(Bytes(str), std::string(100, 'x'));
    EXPECT_EQ(str.GetBuffer(0), pszBuffer) << "there is room, and nobody shares it";
    pszBuffer[5] = '\0';
    str.ReleaseBuffer();
    EXPECT_STREQ(str, "xxxxx");
    EXPECT_EQ(str.GetLength(), 5);
    str.GetBuffer(1);
    str.ReleaseBuffer(0);
    EXPECT_TRUE(str.IsEmpty());
    EXPECT_THROW(str.ReleaseBuffer(101), CInvalidArgException*);
    EXPECT_THROW(str.ReleaseBuffer(-2), CInvalidArgException*);
}

TEST(CString, NeverWritesIntoWhatEmptyStringsShare)
{
    CString str;
    std::strcpy(str.GetBuffer(3), "abc");
    str.ReleaseBuffer();
    EXPECT_STREQ(str, "abc");
    EXPECT_STREQ(CString(), "");
    CString strOther;
    EXPECT_NE(strOther.GetBuffer(0), CString().GetString());
    strOther.ReleaseBuffer();
    EXPECT_STREQ(strOther, "");
    strOther += 'x';
    EXPECT_STREQ(CString(), "");
}

TEST_F(CStringCharacters, FindTakesNoTrailByteForABackslash)
{
    const CString str(CString("x\\") + kHyou + "y");
    EXPECT_EQ(str.Find('\\'), 1);
    EXPECT_EQ(str.Find('\\', 2), IsJapanese() ? -1 : 3);
    EXPECT_EQ(str.Find('y'), 4);
    EXPECT_EQ(CString(kPo).Find('|'), IsJapanese() ? -1 : 1);
}

TEST_F(CStringCharacters, ReverseFindTakesNoTrailByteForABackslash)
{
    const CString str(CString("C:\\") + kHyou + "\\" + kSo + kNou);
    EXPECT_EQ(str.ReverseFind('\\'), IsJapanese() ? 5 : 9);
    EXPECT_EQ(CString(kNou).ReverseFind('\\'), IsJapanese() ? -1 : 1);
    EXPECT_EQ((CString(kNou) + "\\").ReverseFind('\\'), 2);
}

TEST_F(CStringCharacters, ReplaceTakesNoTrailByteForABackslash)
{
    CString str(CString("\\") + kHyou + "\\" + kSo + kNou + "\\");
    EXPECT_EQ(str.Replace("\\", "\\\\"), IsJapanese() ? 3 : 6);
    EXPECT_EQ(Bytes(str), IsJapanese() ? "\\\\\x95\x5C\\\\\x83\x5C\x94\x5C\\\\"
                                       : "\\\\\x95\\\\\\\\\x83\\\\\x94\\\\\\\\");
    str = CString("a|") + kPo + "|";
    EXPECT_EQ(str.Replace('|', '/'), IsJapanese() ? 2 : 3);
    EXPECT_EQ(Bytes(str), IsJapanese() ? "a/\x83\x7C/" : "a/\x83//");
    str = CString(kHyou) + kSo;
    EXPECT_EQ(str.Replace(kSo, "so"), 1);
    EXPECT_EQ(Bytes(str), "\x95\x5Cso");
}

TEST_F(CStringCharacters, AZeroBehindALeadByteIsNoTrailByte)
{
    const CString str("\x95\0\\\x95\\", 5);
    EXPECT_EQ(str.Find('\\'), 2);
    EXPECT_EQ(str.ReverseFind('\\'), IsJapanese() ? 2 : 4);
    EXPECT_EQ(str.Find('\0'), 1);
}

TEST_F(CStringCharacters, HalfACharacterMatchesNothing)
{
    CString str(CString(kHyou) + "a");
    EXPECT_EQ(str.Find('\x95'), IsJapanese() ? -1 : 0);
    EXPECT_EQ(str.ReverseFind('\x95'), IsJapanese() ? -1 : 0);
    EXPECT_EQ(str.Replace('\x95', 'x'), IsJapanese() ? 0 : 1);
    str = CString(kHyou) + "a";
    EXPECT_EQ(str.Replace("\x95", "x"), IsJapanese() ? 0 : 1);
    // A lead byte at the end has no other half: it stands for itself.
    str = "a\x95";
    EXPECT_EQ(str.Find('\x95'), 1);
}

TEST_F(CStringCharacters, TrimmingKeepsWholeCharacters)
{
    CString str(CString(" ") + kHyou + " ");
    EXPECT_EQ(Bytes(str.TrimLeft().TrimRight()), kHyou);
    // White space is no trail byte, so it goes after a lead byte, too.
    str = "\x81 ";
    EXPECT_EQ(Bytes(str.TrimRight()), "\x81");
}

// Text as a list of characters, which makes searching plain.
std::vector<std::string> Split(const std::string& text)
{
    std::vector<std::string> characters;
    for (std::size_t i = 0; i < text.size(); i += characters.back().size())
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool bLead = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
        const bool bDouble = IsJapanese() && bLead && i + 1 < text.size();
        characters.push_back(text.substr(i, bDouble ? 2 : 1));
    }
    return characters;
}

struct Searched
{
    std::vector<int> matches; // without overlaps, in bytes
    std::string replaced;
};

Searched Search(const std::string& text, const std::string& sub, const std::string& by)
{
    Searched searched;
    const std::vector<std::string> in = Split(text);
    const std::vector<std::string> what = Split(sub);
    int nOffset = 0;
    for (std::size_t i = 0; i < in.size();)
    {
        bool bMatch = i + what.size() <= in.size();
        for (std::size_t k = 0; bMatch && k < what.size(); ++k)
            bMatch = in[i + k] == what[k];
        const std::size_t nCharacters = bMatch ? what.size() : 1;
        if (bMatch)
            searched.matches.push_back(nOffset);
        searched.replaced += bMatch ? by : in[i];
        for (std::size_t k = 0; k < nCharacters; ++k)
            nOffset += static_cast<int>(in[i + k].size());
        i += nCharacters;
    }
    return searched;
}

TEST_F(CStringCharacters, SearchesAndReplacesAsACharacterByCharacterModelDoes)
{
    std::mt19937 random(5);
    const std::string bytes = "\\\\a|\x95\x5C\x83\x7C\xFC";
    const auto make = [&](std::size_t nMost) {
        std::string text;
        for (std::size_t n = random() % (nMost + 1); n > 0; --n)
            text += bytes[random() % bytes.size()];
        return text;
    };
    for (int i = 0; i < 20000; ++i)
    {
        const std::string text = make(16);
        const std::string sub = "\\" + make(1);
        const std::string by = make(3);
        const Searched searched = Search(text, sub, by);
        const Searched single = Search(text, sub.substr(0, 1), "/");
        // Put into words only where it is needed: for most it would take longer than the test.
        const auto of = [&] { return testing::PrintToString(std::make_pair(text, sub)); };
        CString str(text.c_str());
        ASSERT_EQ(str.Find(sub[0]), single.matches.empty() ? -1 : single.matches[0]) << of();
        ASSERT_EQ(str.ReverseFind(sub[0]), single.matches.empty() ? -1 : single.matches.back())
            << of();
        ASSERT_EQ(str.Replace(sub.c_str(), by.c_str()), static_cast<int>(searched.matches.size()))
            << of();
        ASSERT_EQ(Bytes(str), searched.replaced) << of();
        str = text.c_str();
        ASSERT_EQ(str.Replace(sub[0], '/'), static_cast<int>(single.matches.size())) << of();
        ASSERT_EQ(Bytes(str), single.replaced) << of();
    }
}

using FixedString = CFixedStringT<CString, 8>;

bool IsInside(const FixedString& str)
{
    const auto* const pObject = reinterpret_cast<const char*>(&str);
    return str.GetString() >= pObject && str.GetString() < pObject + sizeof(str);
}

TEST(CFixedString, KeepsOrdinaryTextInItself)
{
    FixedString str("12345678");
    EXPECT_TRUE(IsInside(str));
    EXPECT_STREQ(str, "12345678");
    str.Empty();
    EXPECT_STREQ(str, "");
    str += "ab";
    str += 'c';
    str = str.GetString() + 1;
    EXPECT_STREQ(str.TrimLeft(), "bc");
    EXPECT_TRUE(IsInside(str));
    EXPECT_TRUE(IsInside(FixedString()));
    EXPECT_TRUE(IsInside(FixedString(nullptr)));
}

TEST(CFixedString, IsEmptyAtFirst)
{
    const FixedString str;
    EXPECT_EQ(str.GetLength(), 0);
    EXPECT_STREQ(str, "");
}

// What stands behind the characters in the object is the pointer to them: there is room for all of the text
// and its end, whatever gap the alignment leaves.
template <int t_nChars>
void ExpectRoomFor()
{
    const std::string text(t_nChars, 'x');
    CFixedStringT<CString, t_nChars> str;
    const LPCSTR pszInside = str;
    str = text.c_str();
    ASSERT_EQ(str.GetString(), pszInside) << t_nChars;
    EXPECT_EQ(Bytes(str), text);
    EXPECT_EQ(pszInside[t_nChars], '\0');
    EXPECT_LT(pszInside + t_nChars, reinterpret_cast<LPCSTR>(static_cast<CString*>(&str)));
}

TEST(CFixedString, HasRoomForTheEndOfATextOfEachLength)
{
    ExpectRoomFor<1>();
    ExpectRoomFor<2>();
    ExpectRoomFor<3>();
    ExpectRoomFor<4>();
    ExpectRoomFor<5>();
    ExpectRoomFor<6>();
    ExpectRoomFor<7>();
    ExpectRoomFor<8>();
}

TEST(CFixedString, GivesLongerTextToTheHeap)
{
    FixedString str("123456789");
    EXPECT_FALSE(IsInside(str));
    EXPECT_STREQ(str, "123456789");
    FixedString strGrown("1234567");
    strGrown += "890";
    EXPECT_FALSE(IsInside(strGrown));
    EXPECT_STREQ(strGrown, "1234567890");
}

TEST(CFixedString, SharesNothingWithItsCopies)
{
    CString strCopy;
    CString strEmptyCopy;
    {
        FixedString str("text");
        strCopy = str;
        const CString strMade(str);
        str += "!";
        EXPECT_STREQ(strMade, "text");
        EXPECT_STREQ(str.Mid(1), "ext!");
        const CString strAll(str.Mid(0));
        str = "other";
        EXPECT_STREQ(strAll, "text!");
        strEmptyCopy = FixedString();
    }
    EXPECT_STREQ(strCopy, "text");
    EXPECT_STREQ(strEmptyCopy, "");
    static_assert(!std::is_copy_constructible_v<FixedString>, "a copy would share the block");
    static_assert(!std::is_copy_assignable_v<FixedString>, "a copy would share the block");
}
} // namespace
