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
        SetNativeCodePage(932);
    }
    void TearDown() override
    {
        SetNativeCodePage(1252);
    }
#endif
};
