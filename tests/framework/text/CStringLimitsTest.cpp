// CString and texts that no string holds: more than INT_MAX - 1 bytes.
#include <afx.h>

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace
{
constexpr std::size_t kPiece = 1 << 20;
constexpr std::size_t kPieces = 2048;

// INT_MAX + 1 bytes of text that take 1 MB of memory, which is there again and again. A zero ends it.
class HugeText
{
public:
    HugeText()
    {
        // Reserved and let go: the pieces cannot be mapped into a reserved range.
        m_pText = static_cast<char*>(
            ::VirtualAlloc(nullptr, (kPieces + 1) * kPiece, MEM_RESERVE, PAGE_NOACCESS));
        ::VirtualFree(m_pText, 0, MEM_RELEASE);
        HANDLE const hMapping =
            ::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kPiece, nullptr);
        for (; m_nPieces < kPieces; ++m_nPieces)
        {
            char* const pPiece = m_pText + m_nPieces * kPiece;
            if (::MapViewOfFileEx(hMapping, FILE_MAP_WRITE, 0, 0, kPiece, pPiece) != pPiece)
                break;
        }
        ::CloseHandle(hMapping);
        m_pEnd = ::VirtualAlloc(m_pText + kPieces * kPiece, kPiece, MEM_RESERVE | MEM_COMMIT,
                                PAGE_READONLY);
        if (m_nPieces > 0)
            std::memset(m_pText, 'x', kPiece);
    }
    ~HugeText()
    {
        for (std::size_t i = 0; i < m_nPieces; ++i)
            ::UnmapViewOfFile(m_pText + i * kPiece);
        ::VirtualFree(m_pEnd, 0, MEM_RELEASE);
    }
    HugeText(const HugeText&) = delete;
    HugeText& operator=(const HugeText&) = delete;

    bool IsThere() const { return m_nPieces == kPieces && m_pEnd != nullptr; }
    // Its last bytes.
    LPCSTR Last(int nLength) const
    {
        return m_pText + kPieces * kPiece - static_cast<std::size_t>(nLength);
    }
    LPCSTR Whole() const { return m_pText; }

private:
    char* m_pText;
    std::size_t m_nPieces = 0;
    void* m_pEnd;
};

class CStringLimits : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(text.IsThere()); }

    HugeText text;
};

// Not the program's import, which is replaced.
using AllocFunction = LPVOID(WINAPI*)(HANDLE, DWORD, SIZE_T);
const auto g_pfnAlloc = reinterpret_cast<AllocFunction>(
    reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("kernel32.dll"), "HeapAlloc")));
SIZE_T g_cbAsked = 0;

LPVOID WINAPI AllocUpTo1GB(HANDLE hHeap, DWORD nFlags, SIZE_T cb)
{
    if (cb < 1 << 30)
        return g_pfnAlloc(hHeap, nFlags, cb);
    g_cbAsked = cb;
    return nullptr;
}

template <class Action>
bool ThrowsMemoryException(const Action& action)
{
    try
    {
        action();
    }
    catch (CMemoryException* pException)
    {
        pException->Delete();
        return true;
    }
    return false;
}
} // namespace

TEST_F(CStringLimits, NoTextIsTakenOfINT_MAXBytesOrMore)
{
    CString str("before");
    for (const char* const psz : {text.Whole(), text.Last(INT_MAX)})
    {
        EXPECT_TRUE(ThrowsMemoryException([&] { str = psz; }));
        EXPECT_STREQ(str, "before");
    }
}

TEST_F(CStringLimits, NoTextIsAppendedThatMakesItINT_MAXBytes)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "HeapAlloc",
                            reinterpret_cast<void*>(&AllocUpTo1GB));
    ASSERT_TRUE(patch.IsActive());
    CString str("before");
    g_cbAsked = 0;
    EXPECT_TRUE(ThrowsMemoryException([&] { str += text.Last(INT_MAX - 6); }));
    EXPECT_EQ(g_cbAsked, 0U) << "one byte too many, and nobody is asked for memory";
    EXPECT_STREQ(str, "before");

    // One byte less: memory is all that it lacks, and not even room to grow is asked for.
    EXPECT_TRUE(ThrowsMemoryException([&] { str += text.Last(INT_MAX - 7); }));
    EXPECT_EQ(g_cbAsked, sizeof(CStringData) + INT_MAX);
    EXPECT_STREQ(str, "before");
}

// Half of the six bytes that are there.
TEST_F(CStringLimits, RoomToGrowIsAskedForAsLongAsItFitsAsWell)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "HeapAlloc",
                            reinterpret_cast<void*>(&AllocUpTo1GB));
    ASSERT_TRUE(patch.IsActive());
    CString str("before");
    EXPECT_TRUE(ThrowsMemoryException([&] { str += text.Last(INT_MAX - 1 - 3 - 6); }));
    EXPECT_EQ(g_cbAsked, sizeof(CStringData) + INT_MAX);
    EXPECT_TRUE(ThrowsMemoryException([&] { str += text.Last(INT_MAX - 1 - 2 - 6); }));
    EXPECT_EQ(g_cbAsked, sizeof(CStringData) + INT_MAX - 2);
    EXPECT_STREQ(str, "before");
}

TEST(CStringReplace, MakesNoTextOfINT_MAXBytesOrMore)
{
    const std::string old(1 << 16, 'a');
    const std::string part(1 << 15, 'b');
    CString str(old.c_str());
    EXPECT_TRUE(ThrowsMemoryException([&] { str.Replace("a", part.c_str()); }));
    EXPECT_STREQ(str, old.c_str());
}

// 65,535 pieces of 32,768 bytes, and 32,767 bytes that stay.
TEST(CStringReplace, AsksForNoMemoryForATextOfINT_MAXBytes)
{
    const ImportPatch patch(::GetModuleHandleA(nullptr), "HeapAlloc",
                            reinterpret_cast<void*>(&AllocUpTo1GB));
    ASSERT_TRUE(patch.IsActive());
    const std::string part(1 << 15, 'b');
    std::string old = std::string((1 << 16) - 1, 'a') + std::string((1 << 15) - 1, 'x');
    CString str(old.c_str());
    g_cbAsked = 0;
    EXPECT_TRUE(ThrowsMemoryException([&] { str.Replace("a", part.c_str()); }));
    EXPECT_EQ(g_cbAsked, 0U);
    EXPECT_STREQ(str, old.c_str());

    old.pop_back();
    str = old.c_str();
    EXPECT_TRUE(ThrowsMemoryException([&] { str.Replace("a", part.c_str()); }));
    EXPECT_EQ(g_cbAsked, sizeof(CStringData) + INT_MAX)
        << "one byte less: memory is all that it lacks";
    EXPECT_STREQ(str, old.c_str());
}
