// Where the system's own DLLs are looked for, and how long they stay.
#include "runtime/SystemLibrary.h"

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
std::string g_folder;
std::string g_asked;
DWORD g_nFlags = 0;

UINT WINAPI GetFolder(LPSTR pszBuffer, UINT cbBuffer)
{
    if (g_folder.size() >= cbBuffer)
        return static_cast<UINT>(g_folder.size() + 1);
    std::strcpy(pszBuffer, g_folder.c_str());
    return static_cast<UINT>(g_folder.size());
}

HMODULE WINAPI NoteAndLoadNothing(LPCSTR pszPath, HANDLE /*hFile*/, DWORD nFlags)
{
    g_asked = pszPath;
    g_nFlags = nFlags;
    return nullptr;
}

class SystemLibrary : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.IsActive());
        ASSERT_TRUE(load.IsActive());
        g_asked.clear();
    }

    // The path that is asked for; empty when none is.
    static std::string AskedOf(const std::string& systemFolder, const char* pszName)
    {
        g_folder = systemFolder;
        EXPECT_EQ(LoadSystemLibrary(pszName), nullptr);
        return g_asked;
    }

    const ImportPatch folder{::GetModuleHandleA(nullptr), "GetSystemDirectoryA",
                             reinterpret_cast<void*>(&GetFolder)};
    const ImportPatch load{::GetModuleHandleA(nullptr), "LoadLibraryExA",
                           reinterpret_cast<void*>(&NoteAndLoadNothing)};
};
} // namespace

TEST_F(SystemLibrary, IsLookedForInTheSystemsFolder)
{
    EXPECT_EQ(AskedOf("X:\\system", "a.dll"), "X:\\system\\a.dll");
    EXPECT_EQ(g_nFlags, DWORD{LOAD_WITH_ALTERED_SEARCH_PATH}) << "what it needs, too";
}

TEST_F(SystemLibrary, IsNotLookedForWithoutAFolder)
{
    EXPECT_EQ(AskedOf("", "a.dll"), "");
}

TEST_F(SystemLibrary, IsNotLookedForByAPathThatIsCut)
{
    constexpr std::size_t kLongest = MAX_PATH - 1;
    const std::string longest(kLongest - std::strlen("\\a.dll"), 'x');
    EXPECT_EQ(AskedOf(longest, "a.dll"), longest + "\\a.dll");
    g_asked.clear();
    EXPECT_EQ(AskedOf(longest + "x", "a.dll"), "");
    EXPECT_EQ(AskedOf(longest, "ab.dll"), "");
}

// One that nothing here has loaded.
TEST(SystemLibraryThere, StaysLoadedWhoeverLetsGoOfIt)
{
    constexpr char kName[] = "cabinet.dll";
    ASSERT_EQ(::GetModuleHandleA(kName), nullptr);
    HMODULE const hModule = LoadSystemLibrary(kName);
    ASSERT_NE(hModule, nullptr);
    for (int i = 0; i < 5; ++i)
        ::FreeLibrary(hModule);
    EXPECT_EQ(::GetModuleHandleA(kName), hModule);
}
