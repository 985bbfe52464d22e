// The text of the interpreter's start-up file for an installation folder.
#include "install/ChrcText.h"

#include "tests/install/ChrcModel.h"
#include "tests/support/CodePage932.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{
std::string TextFor(const std::string& folder)
{
    return MakeChrcText(CString(folder.data(), static_cast<int>(folder.size()))).GetString();
}

// Runs of 1 to 6 backslashes between names, slashes among them, and up to 3 separators at the end.
std::string RandomFolder(std::mt19937& random)
{
    static const char* const kNames[] = {
        "C:",
        "App",
        "Program Files",
        "a",
        "/",
        "//",
        "\x95\x5C",
        "\x83\x5C",
        "\x94\x5C",
        "\x83\x5C\x83\x5C",
        "x\x95\x5Cy",
        "\xB1\xB2",
        "[KELDPATH]",
        "..",
        "%TEMP%",
        "\"",
        "\xE0\x5C\x5C",
        "\x81",
        "\x88\xC0\x91",
        "$",
    };
    std::string folder = random() % 4 == 0 ? std::string(1 + random() % 6, '\\') : "";
    const std::size_t nNames = 1 + random() % 5;
    for (std::size_t i = 0; i < nNames; ++i)
    {
        if (i > 0)
            folder += std::string(1 + random() % 6, '\\');
        folder += kNames[random() % (sizeof(kNames) / sizeof(kNames[0]))];
    }
    const std::size_t nTrailing = random() % 4;
    for (std::size_t i = 0; i < nTrailing; ++i)
        folder += random() % 2 == 0 ? '\\' : '/';
    return folder;
}

void ExpectAgreementOnRandomFolders(unsigned int nSeed, unsigned int nCodePage)
{
    std::mt19937 random(nSeed);
    int nChecked = 0;
    for (int i = 0; i < 5000; ++i)
    {
        const std::string folder = RandomFolder(random);
        if (folder.find_first_not_of("\\/") == std::string::npos)
            continue; // the caller's mistake, see below
        const std::string escaped = EscapedModel(folder, nCodePage);
        const std::string text = TextFor(folder);
        ASSERT_EQ(text, TemplateWith(escaped)) << testing::PrintToString(folder);
        ASSERT_EQ(text.size(), 1471 - 50 + 5 * escaped.size()) << testing::PrintToString(folder);
        ++nChecked;
    }
    EXPECT_GT(nChecked, 4000);
}

struct Case
{
    const char* pszFolder;
    const char* pszInserted;
};
} // namespace

TEST(ChrcText, IsTheTemplateWithTheEscapedFolder)
{
    static constexpr Case kCases[] = {
        {"C:\\Program Files\\App", "C:\\\\Program Files\\\\App"},
        {"C:\\Program Files\\App\\", "C:\\\\Program Files\\\\App"},
        {"C:\\App\\\\", "C:\\\\App"},
        {"C:/App/", "C:/App"},
        {"C:/App", "C:/App"},
        {"C:\\App/", "C:\\\\App"},
        {"C:\\App\\/\\/", "C:\\\\App"},
        {"C:\\", "C:"},
        {"C:", "C:"},
        {"", ""},
        {"\\\\Server\\Share\\App", "\\\\\\Server\\\\Share\\\\App"},
        {"C:\\A\\\\\\B", "C:\\\\A\\\\\\\\B"},
        {"A\\B", "A\\\\B"},
        {"A\\\\B", "A\\\\\\B"},
        {"A\\\\\\B", "A\\\\\\\\B"},
        {"A\\\\\\\\B", "A\\\\\\\\\\\\B"},
        {"A\\\\\\\\\\B", "A\\\\\\\\\\\\\\B"},
        {"A\\\\\\\\\\\\B", "A\\\\\\\\\\\\\\\\B"},
        {"\\A", "\\\\A"},
        {"A/\\B", "A/\\\\B"},
        {" ", " "},
        {"C:\\[KELDPATH]", "C:\\\\[KELDPATH]"},
        {"[KELDPATH]", "[KELDPATH]"},
    };
    for (const Case& c : kCases)
        EXPECT_EQ(TextFor(c.pszFolder), TemplateWith(c.pszInserted)) << c.pszFolder;
}

TEST(ChrcText, TakesANullFolderAsEmpty)
{
    const CString strText = MakeChrcText(nullptr);
    EXPECT_EQ(std::string(strText), TemplateWith(""));
    EXPECT_EQ(strText.GetLength(), 1421);
}

TEST(ChrcText, HasTheFolderInItsTwentySeventhLine)
{
    const std::string text = TextFor("C:\\Program Files\\App");
    EXPECT_EQ(text.size(), 1531U);
    EXPECT_NE(text.find("\n_fpath = stradd(_fpath, \"C:\\\\Program "
                        "Files\\\\App\\\\embedch\\\\lib\\\\libc;\");\n"),
              std::string::npos);
}

TEST(ChrcText, LeavesTheCallersFolderAsItIs)
{
    const CString strFolder("C:\\App\\\\");
    MakeChrcText(strFolder);
    EXPECT_STREQ(strFolder, "C:\\App\\\\");
}

TEST(ChrcText, AgreesWithAModelOnRandomFolders)
{
    ExpectAgreementOnRandomFolders(1471, OwnCodePage());
}

TEST(ChrcText, TakesAFolderOfAnyLength)
{
    std::string folder = "C:";
    for (int i = 0; i < 10000; ++i)
        folder += "\\\\ab";
    EXPECT_EQ(TextFor(folder), TemplateWith(EscapedModel(folder, OwnCodePage())));
}

TEST(ChrcText, RefusesAFolderOfSeparatorsOnly)
{
    for (const char* const pszFolder : {"\\", "/", "\\\\", "//", "\\/\\", "\\\\\\\\\\\\"})
        EXPECT_THROW(MakeChrcText(pszFolder), CInvalidArgException*) << pszFolder;
}

using ChrcTextCodePage932 = CodePage932;

TEST_F(ChrcTextCodePage932, ATrailByteIsNotDoubled)
{
    EXPECT_EQ(TextFor("C:\\\x95\x5C\\App"), TemplateWith("C:\\\\\x95\x5C\\\\App"));
    EXPECT_EQ(TextFor("C:\\\x83\x5Cx"), TemplateWith("C:\\\\\x83\x5Cx"));
    EXPECT_EQ(TextFor("\x94\x5C\x94\x5C\\\\x"), TemplateWith("\x94\x5C\x94\x5C\\\\\\x"));
    EXPECT_EQ(TextFor("\x95\x5C\\\\\\a"), TemplateWith("\x95\x5C\\\\\\\\a"));
}

// The last byte alone decides what is a trailing separator.
TEST_F(ChrcTextCodePage932, ATrailByteAtTheEndIsTakenForASeparator)
{
    EXPECT_EQ(TextFor("C:\\\x95\x5C"), TemplateWith("C:\\\\\x95"));
    EXPECT_EQ(TextFor("C:\\\x83\x5C\\"), TemplateWith("C:\\\\\x83"));
    EXPECT_EQ(TextFor("C:\\\x94\x5C/"), TemplateWith("C:\\\\\x94"));
    EXPECT_EQ(TextFor("C:\\\x88\xC0\\"), TemplateWith("C:\\\\\x88\xC0"));
}

TEST_F(ChrcTextCodePage932, AgreesWithAModelOnRandomFolders)
{
    ExpectAgreementOnRandomFolders(932, 932);
}
