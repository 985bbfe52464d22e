// Joining a folder and a file name, and taking them apart.
#include "install/PathHelpers.h"

#include "tests/support/CodePage932.h"
#include "tests/support/LeadBytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{
std::string Separated(const std::string& path)
{
    return AddTrailingSeparator(CString(path.data(), static_cast<int>(path.size()))).GetString();
}

std::string Unseparated(const std::string& path)
{
    CString strPath(path.data(), static_cast<int>(path.size()));
    RemoveTrailingSeparator(strPath);
    return strPath.GetString();
}

std::string NamePart(const std::string& path)
{
    return FileNamePart(CString(path.data(), static_cast<int>(path.size()))).GetString();
}

// The rules once more, on another string type and by other means.
std::string SeparatedModel(const std::string& path)
{
    const bool bNothingToDo = path.empty() || path.back() == '\\' || path.back() == '/';
    return bNothingToDo ? path : path + "\\";
}

std::string NamePartModel(const std::string& path, unsigned int nCodePage)
{
    std::size_t nBegin = 0;
    for (std::size_t i = 0; i < path.size();)
    {
        const std::size_t cb = CharacterLength(nCodePage, path, i);
        if (cb == 1 && (path[i] == '\\' || path[i] == '/'))
            nBegin = i + 1;
        i += cb;
    }
    return path.substr(nBegin);
}

// Paths where separators, letters and bytes of double-byte characters meet in every order.
std::string RandomPath(std::mt19937& random)
{
    static const char kBytes[] = {'\\',   '\\',   '/',    '/',    'a',    '.',
                                  ':',    ' ',    '\x95', '\x83', '\xE0', '\xFC',
                                  '\x80', '\xA0', '\xFD', '\xFF', '\x01', '\x7F'};
    std::string path(random() % 12, '\0');
    for (char& ch : path)
        ch = kBytes[random() % sizeof(kBytes)];
    return path;
}

struct Case
{
    const char* pszPath;
    const char* pszExpected;
};
} // namespace

TEST(AddTrailingSeparator, LeavesTheEmptyPathEmpty)
{
    EXPECT_EQ(Separated(""), "");
    EXPECT_EQ(AddTrailingSeparator(nullptr).GetLength(), 0);
}

TEST(AddTrailingSeparator, AppendsOneBackslashUnlessASeparatorIsThere)
{
    static constexpr Case kCases[] = {
        {"C:\\dir", "C:\\dir\\"},
        {"C:\\dir\\", "C:\\dir\\"},
        {"C:\\dir/", "C:\\dir/"},
        {"C:/dir", "C:/dir\\"},
        {"C:/dir/", "C:/dir/"},
        {"C:\\dir\\\\", "C:\\dir\\\\"},
        {"C:\\dir//", "C:\\dir//"},
        {"C:\\dir\\/", "C:\\dir\\/"},
        {"C:\\dir/\\", "C:\\dir/\\"},
        {"dir", "dir\\"},
        {"C:", "C:\\"},
        {"\\", "\\"},
        {"/", "/"},
        {".", ".\\"},
        {" ", " \\"},
        {"C:\\dir ", "C:\\dir \\"},
        {"C:\\dir.", "C:\\dir.\\"},
    };
    for (const Case& c : kCases)
        EXPECT_EQ(Separated(c.pszPath), c.pszExpected) << c.pszPath;
}

TEST(AddTrailingSeparator, WorksOnACopy)
{
    const CString strPath("C:\\dir");
    const CString strSame(strPath);
    const CString strResult = AddTrailingSeparator(strPath);
    EXPECT_STREQ(strResult, "C:\\dir\\");
    EXPECT_STREQ(strPath, "C:\\dir");
    EXPECT_STREQ(strSame, "C:\\dir");
}

TEST(AddTrailingSeparator, TakesPathsOfAnyLength)
{
    const std::string path(100000, 'x');
    EXPECT_EQ(Separated(path), path + "\\");
    EXPECT_EQ(Separated(path + "/"), path + "/");
}

TEST(RemoveTrailingSeparator, TakesOneSeparatorAndNoMore)
{
    static constexpr Case kCases[] = {
        {"", ""},
        {"C:\\dir", "C:\\dir"},
        {"C:\\dir\\", "C:\\dir"},
        {"C:\\dir/", "C:\\dir"},
        {"C:\\dir\\\\", "C:\\dir\\"},
        {"C:\\dir/\\", "C:\\dir/"},
        {"C:\\dir ", "C:\\dir "},
        {"\\", ""},
        {"/", ""},
        {"a", "a"},
    };
    for (const Case& c : kCases)
        EXPECT_EQ(Unseparated(c.pszPath), c.pszExpected) << c.pszPath;
}

TEST(RemoveTrailingSeparator, LeavesOtherStringsAlone)
{
    CString strPath("C:\\dir\\");
    const CString strSame(strPath);
    RemoveTrailingSeparator(strPath);
    EXPECT_STREQ(strPath, "C:\\dir");
    EXPECT_STREQ(strSame, "C:\\dir\\");
}

TEST(FileNamePart, IsEmptyForTheEmptyPath)
{
    EXPECT_EQ(NamePart(""), "");
    EXPECT_EQ(FileNamePart(nullptr).GetLength(), 0);
}

TEST(FileNamePart, IsWhatFollowsTheLastSeparator)
{
    static constexpr Case kCases[] = {
        {"D:\\pkg\\a.txt", "a.txt"},
        {"D:/pkg/a.txt", "a.txt"},
        {"D:\\x/y\\a.txt", "a.txt"},
        {"D:/x\\y/a.txt", "a.txt"},
        {"D:\\x\\y/a.txt", "a.txt"},
        {"D:/x/y\\a.txt", "a.txt"},
        {"a.txt", "a.txt"},
        {"C:a.txt", "C:a.txt"},
        {"\\a", "a"},
        {"/a", "a"},
        {"C:\\dir\\", ""},
        {"C:\\dir/", ""},
        {"C:/dir\\", ""},
        {"\\", ""},
        {"/", ""},
        {"\\\\", ""},
        {"a\\\\b", "b"},
        {"C:\\dir\\a b.txt ", "a b.txt "},
        {"C:\\dir\\..", ".."},
        {"C:\\dir\\a:b", "a:b"},
    };
    for (const Case& c : kCases)
        EXPECT_EQ(NamePart(c.pszPath), c.pszExpected) << c.pszPath;
}

TEST(FileNamePart, WorksOnACopy)
{
    const CString strPath("C:\\dir\\a.txt");
    const CString strSame(strPath);
    EXPECT_STREQ(FileNamePart(strPath), "a.txt");
    EXPECT_STREQ(strPath, "C:\\dir\\a.txt");
    EXPECT_STREQ(strSame, "C:\\dir\\a.txt");
}

TEST(FileNamePart, TakesPathsOfAnyLength)
{
    const std::string name(100000, 'x');
    EXPECT_EQ(NamePart("C:\\" + name), name);
    EXPECT_EQ(NamePart(std::string(100000, '\\') + "a"), "a");
}

TEST(PathHelpers, AgreeWithAModelOnRandomPaths)
{
    std::mt19937 random(20240501);
    for (int i = 0; i < 50000; ++i)
    {
        const std::string path = RandomPath(random);
        ASSERT_EQ(Separated(path), SeparatedModel(path)) << testing::PrintToString(path);
        ASSERT_EQ(NamePart(path), NamePartModel(path, OwnCodePage()))
            << testing::PrintToString(path);
    }
}

using PathHelpersCodePage932 = CodePage932;

TEST_F(PathHelpersCodePage932, ATrailByteIsNotASeparatorInAFileName)
{
    EXPECT_EQ(NamePart("C:\\dir\\\x95\x5C.txt"), "\x95\x5C.txt");
    EXPECT_EQ(NamePart("C:\\\x95\x5C\\\x83\x5C.txt"), "\x83\x5C.txt");
    EXPECT_EQ(NamePart("C:\\dir\\\x94\x5C"), "\x94\x5C");
    EXPECT_EQ(NamePart("\x95\x5C"), "\x95\x5C");
    EXPECT_EQ(NamePart("\x95\x5C\x83\x5C"), "\x95\x5C\x83\x5C");
    EXPECT_EQ(NamePart("C:\\dir\\\x95\x5C\\"), "");
}

TEST_F(PathHelpersCodePage932, AHalfWidthCharacterIsNotALeadByte)
{
    EXPECT_EQ(NamePart("\xB1\\a"), "a");
    EXPECT_EQ(NamePart("\xDF\\a"), "a");
    EXPECT_EQ(NamePart("\xA1\\a"), "a");
}

// The last byte alone decides; a character that ends in a backslash's byte passes for a separator.
TEST_F(PathHelpersCodePage932, ATrailByteAtTheEndCountsAsTrailingSeparator)
{
    EXPECT_EQ(Separated("C:\\\x95\x5C"), "C:\\\x95\x5C");
    EXPECT_EQ(Separated("C:\\\x95\x5C\\"), "C:\\\x95\x5C\\");
    EXPECT_EQ(Separated("C:\\\x88\xC0"), "C:\\\x88\xC0\\");
}

TEST_F(PathHelpersCodePage932, AgreeWithAModelOnRandomPaths)
{
    std::mt19937 random(932);
    for (int i = 0; i < 50000; ++i)
    {
        const std::string path = RandomPath(random);
        ASSERT_EQ(Separated(path), SeparatedModel(path)) << testing::PrintToString(path);
        ASSERT_EQ(NamePart(path), NamePartModel(path, 932)) << testing::PrintToString(path);
    }
}
