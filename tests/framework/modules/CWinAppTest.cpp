// What an application object knows of its program: the name, however long the path is, and what the
// program hands on of its start.
#include <afxwin.h>

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
std::string g_path;

// In the place of the system's: a path that does not fit is cut off, and has no zero then.
DWORD WINAPI GetPath(HMODULE /*hModule*/, LPSTR pszPath, DWORD cchPath)
{
    const auto cch = static_cast<DWORD>(g_path.size());
    std::memcpy(pszPath, g_path.c_str(), cch < cchPath ? cch + 1 : cchPath);
    return cch < cchPath ? cch : cchPath;
}

std::string NameForPath(const std::string& path)
{
    g_path = path;
    const ImportPatch patch(::GetModuleHandleA(nullptr), "GetModuleFileNameA",
                            reinterpret_cast<void*>(&GetPath));
    EXPECT_TRUE(patch.IsActive());
    const CWinApp app;
    return app.m_pszAppName;
}
} // namespace

TEST(CWinAppName, IsTheFilesWithoutFolderAndLastExtension)
{
    EXPECT_EQ(NameForPath("C:\\a folder\\setup.exe"), "setup");
    EXPECT_EQ(NameForPath("C:\\a.folder\\setup"), "setup");
    EXPECT_EQ(NameForPath("C:\\setup.1.exe"), "setup.1");
    EXPECT_EQ(NameForPath("setup.exe"), "setup");
    EXPECT_EQ(NameForPath("C:\\.exe"), "");
    EXPECT_EQ(NameForPath(""), "");
}

TEST(CWinAppName, EndsWithAPathOf259BytesAndIsCutOffThere)
{
    const std::string longest(MAX_PATH - 1 - 3, 'x');
    EXPECT_EQ(NameForPath("C:\\" + longest), longest);
    EXPECT_EQ(NameForPath("C:\\" + longest + "y"), longest);
    EXPECT_EQ(NameForPath("C:\\" + longest + "yy"), longest);
}

TEST(CWinApp, IsGivenTheInstanceThatTheProgramStartsWith)
{
    const CWinApp app; // the latest is the current one
    HINSTANCE const hBefore = app.m_hInstance;
    HINSTANCE const hOther = ::GetModuleHandleA("kernel32.dll"); // not what it was made with
    ASSERT_NE(hOther, hBefore);
    EXPECT_TRUE(AfxWinInit(hOther, nullptr, nullptr, SW_SHOW));
    EXPECT_EQ(app.m_hInstance, hOther);
    EXPECT_TRUE(AfxWinInit(hBefore, nullptr, nullptr, SW_SHOW));
    EXPECT_EQ(app.m_hInstance, hBefore);
}
