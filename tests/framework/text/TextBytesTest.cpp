#include "framework/text/TextBytes.h"

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
            ASSERT_EQ(LengthOfText(text.c_str() + nBefore), cb) << "after " << nBefore << " bytes";
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
        ASSERT_EQ(LengthOfText(pPages + kPage - 1 - cb), cb);
    ::VirtualFree(pPages, 0, MEM_RELEASE);
}

// Neither what is read nor what is written: both lie at an end of the only page that is there.
TEST(TextBytes, MoveStaysInsideBothTexts)
{
    constexpr std::size_t kPage = 4096;
    auto* const pPages =
        static_cast<char*>(::VirtualAlloc(nullptr, 3 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    auto* const pPage = pPages + kPage;
    ASSERT_EQ(::VirtualAlloc(pPage, kPage, MEM_COMMIT, PAGE_READWRITE), pPage);
    for (std::size_t cb = 0; cb < 300; ++cb)
    {
        char* const pEnd = pPage + kPage - cb;
        std::memset(pPage, 'a', kPage);
        std::memset(pEnd, 'z', cb);
        MoveText(pPage, pEnd, cb);
        ASSERT_EQ(std::string(pPage, cb + 1), std::string(cb, 'z') + 'a');
        std::memset(pPage, 'b', cb);
        MoveText(pEnd, pPage, cb);
        ASSERT_EQ(std::string(pEnd - 1, cb + 1), 'a' + std::string(cb, 'b'));
    }
    ::VirtualFree(pPages, 0, MEM_RELEASE);
}
#endif

TEST(TextBytes, MovesEveryLengthOverEveryOverlap)
{
    std::string text;
    for (int ch = 1; ch < 200; ++ch)
        text += static_cast<char>(ch);
    for (std::size_t cb = 0; cb < 110; ++cb)
    {
        for (std::size_t nDest = 0; nDest < 80; ++nDest)
        {
            std::string expected = text;
            expected.replace(nDest, cb, text.substr(40, cb));
            std::string moved = text;
            MoveText(moved.data() + nDest, moved.data() + 40, cb);
            ASSERT_EQ(moved, expected) << cb << " bytes to " << nDest;
        }
    }
}
} // namespace
