// Started from a console, without redirection: a windowed program gets no streams then.
#include "tests/support/WindowDriver.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace tool;
using window_driver::WaitFor;

namespace
{
// A console of this process's, which is that of no test runner.
class Console
{
public:
    Console()
    {
        ::FreeConsole();
        if (!::AllocConsole())
            throw std::runtime_error("cannot make a console");
        m_hScreen =
            ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        for (int i = 0; i < 2; ++i)
        {
            m_hOwn[i] = ::GetStdHandle(kStreams[i]);
            ::SetStdHandle(kStreams[i], nullptr); // nothing for a program to inherit
        }
    }
    ~Console()
    {
        for (int i = 0; i < 2; ++i)
            ::SetStdHandle(kStreams[i], m_hOwn[i]);
        ::CloseHandle(m_hScreen);
        ::FreeConsole();
    }
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // The lines that are not empty, without the blanks at their ends.
    std::wstring Text() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        ::GetConsoleScreenBufferInfo(m_hScreen, &info);
        std::wstring text;
        for (SHORT y = 0; y <= info.dwCursorPosition.Y; ++y)
        {
            std::wstring line(static_cast<std::size_t>(info.dwSize.X), L' ');
            DWORD cch = 0;
            ::ReadConsoleOutputCharacterW(m_hScreen, &line[0], static_cast<DWORD>(line.size()),
                                          {0, y}, &cch);
            line.resize(cch);
            line.erase(line.find_last_not_of(L' ') + 1);
            if (!line.empty())
                text += line + L"\n";
        }
        return text;
    }

private:
    static constexpr DWORD kStreams[] = {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    HANDLE m_hScreen;
    HANDLE m_hOwn[2];
};

// Under Wine a program belongs to its starter's console from the beginning, which on Windows a windowed one
// does not, unless it is started like this.
constexpr DWORD kWays[] = {0, DETACHED_PROCESS};

Result RunOnConsole(const std::wstring& arguments, DWORD nFlags)
{
    Start start;
    start.bCaptured = false;
    start.nFlags = nFlags;
    return RunTool(arguments, start);
}
} // namespace

TEST(ToolConsole, ShowsOutputAndErrorsInLettersOfAnyScript)
{
    for (const DWORD nFlags : kWays)
    {
        const Console console;
        EXPECT_EQ(RunOnConsole(L"check \"pr\u00fc\u03b1\u0436@example.org\"", nFlags).nExitCode,
                  1U);
        EXPECT_EQ(console.Text(),
                  L"0\n2\ninvalid character in email.\npr\u00fc\u03b1\u0436@example.org\n"
                  L"tarntool: the address is refused: invalid character in email.\n");
    }
}

TEST(ToolConsole, ShowsWhatAProgramThatIsRunSays)
{
    for (const DWORD nFlags : kWays)
    {
        const Console console;
        EXPECT_EQ(RunOnConsole(L"run -- " + Quoted(Program()) + L" exit 7", nFlags).nExitCode, 7U);
        EXPECT_EQ(console.Text(), L"to the output\nto the error output\n");
    }
}

TEST(ToolConsole, IsLeftAloneByACommandThatSaysNothing)
{
    for (const DWORD nFlags : kWays)
    {
        const Console console;
        EXPECT_EQ(RunOnConsole(L"wait --title Silent --id console", nFlags).nExitCode, 0U);
        EXPECT_EQ(RunOnConsole(L"done --id console", nFlags).nExitCode, 0U);
        EXPECT_EQ(console.Text(), L"");
    }
}
