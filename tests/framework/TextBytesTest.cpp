#include "framework/TextBytes.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include <string>
#include <vector>

namespace
{
TEST(TextBytes, LengthAtEveryAlignment)
{
    for (std::size_t nBefore = 0; nBefore < 32; ++nBefore)
    {
        for (std::size_t cb = 0; cb < 70; ++cb)
        {
            // Neither the bytes before nor those behind the terminator count.
            std::string text(nBefore, '\0');
            text.append(cb, '\xFF');
            text.append(40, '\0');
            text.append(40, 'x');
            ASSERT_EQ(AfxTextLength(text.c_str() + nBefore), cb) << "after " << nBefore << " bytes";
        }
    }
}

#ifdef _WIN32
TEST(TextBytes, LengthDoesNotReachIntoTheNextPage)
{
    constexpr std::size_t kPage = 4096;
    auto* const pPages =
        static_cast<char*>(::VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    ASSERT_NE(::VirtualAlloc(pPages, kPage, MEM_COMMIT, PAGE_READWRITE), nullptr);
    std::memset(pPages, 'x', kPage - 1);
    for (std::size_t cb = 0; cb < 70; ++cb)
        ASSERT_EQ(AfxTextLength(pPages + kPage - 1 - cb), cb);
    ::VirtualFree(pPages, 0, MEM_RELEASE);
}
#endif

TEST(TextBytes, MovesEveryLengthOverEveryOverlap)
{
    std::string text;
    for (int ch = 1; ch < 200; ++ch)
        text += static_cast<char>(ch);
    for (std::size_t cb = 0; cb < 70; ++cb)
    {
        for (std::size_t nDest = 0; nDest < 80; ++nDest)
        {
            std::string expected = text;
            expected.replace(nDest, cb, text.substr(40, cb));
            std::string moved = text;
            AfxMoveText(moved.data() + nDest, moved.data() + 40, cb);
            ASSERT_EQ(moved, expected) << cb << " bytes to " << nDest;
        }
    }
}
} // namespace
