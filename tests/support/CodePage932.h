// Tests that need 932 (Japanese) as the multi-byte code page: characters of two bytes, the second of
// which may be 0x5C, a backslash's.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include "framework/text/CodePage.h"
#endif

class CodePage932 : public testing::Test
{
protected:
#ifdef _WIN32
    // The code page comes from the locale that the program was started in.
    void SetUp() override
    {
        if (::GetACP() == 932)
            return;
        const char* const pszLocale = std::getenv("TARN_LOCALE");
        ASSERT_TRUE(pszLocale == nullptr || std::strstr(pszLocale, "ja_JP") == nullptr)
            << "the Japanese locale gives code page " << ::GetACP();
        GTEST_SKIP() << "the ANSI code page is " << ::GetACP() << ", not 932";
    }
#else
    void SetUp() override
    {
        AfxSetNativeCodePage(932);
    }
    void TearDown() override
    {
        AfxSetNativeCodePage(1252);
    }
#endif
};

// True when a double-byte character may stand in the texts of the process's own code page.
inline bool IsCodePage932()
{
#ifdef _WIN32
    return ::GetACP() == 932;
#else
    return false;
#endif
}

// Length of the character at an index of a text in code page 932. From the code page's definition:
// lead bytes are 0x81 to 0x9F and 0xE0 to 0xFC.
inline std::size_t CharacterLength932(const std::string& text, std::size_t i)
{
    const auto ch = static_cast<unsigned char>(text[i]);
    const bool bLead = (ch >= 0x81 && ch <= 0x9F) || (ch >= 0xE0 && ch <= 0xFC);
    return bLead && i + 1 < text.size() ? 2 : 1;
}
