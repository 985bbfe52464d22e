// What installers call their wait windows.
#include "tests/support/WindowDriver.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <string>

using namespace tool;
using window_driver::WaitFor;

TEST(WaitName, IsAnyText)
{
    // Each two of these would be one object if what they hold were not written differently.
    const std::wstring ids[] = {L"a",
                                L"A",
                                L"a b",
                                L"a_b",
                                L"a_0020b",
                                L"\"a\\b\"",
                                L"Global\\a",
                                L"\"Local\\tarntool-record-a\"",
                                L"..\\..\\a",
                                L"/a",
                                L"\u8868\u793a",
                                L"{6F1B4D1C-1F5B-4C7E-9C0A-0123456789AB}",
                                L"\"it's \"\"x\"\"\"",
                                L"%TEMP%",
                                std::wstring(200, L'x')};
    for (const std::wstring& id : ids)
    {
        const Result wait = RunTool(L"wait --title " + Quoted(L"of " + std::to_wstring(&id - ids)) +
                                    L" --id " + (id == L"a b" ? Quoted(id) : id));
        EXPECT_EQ(wait.nExitCode, 0U) << Utf8(id) << ": " << wait.err;
    }
    for (const std::wstring& id : ids)
    {
        const std::wstring title = L"of " + std::to_wstring(&id - ids);
        EXPECT_NE(FindVisible(title), nullptr) << Utf8(id);
        EXPECT_EQ(RunTool(L"done --id " + (id == L"a b" ? Quoted(id) : id)).nExitCode, 0U)
            << Utf8(id);
        EXPECT_EQ(FindVisible(title), nullptr) << Utf8(id);
    }
    EXPECT_TRUE(WaitFor([] { return CountTools() == 0 && CountCopies() == 0; }));
}
