#include "selftest/Console.h"

#include "selftest/Paths.h"

namespace selftest
{
Console::Console() : m_hOutput(::GetStdHandle(STD_OUTPUT_HANDLE))
{
    DWORD nMode = 0;
    m_bWindow = ::GetConsoleMode(m_hOutput, &nMode) != FALSE;
}

void Console::Line(const std::string& text)
{
    Passing("");
    Write(text + "\r\n");
}

void Console::Passing(const std::string& text)
{
    if (!m_bWindow)
        return;
    if (m_nPassing != 0)
        Write("\r" + std::string(m_nPassing, ' ') + "\r");
    Write(text);
    m_nPassing = text.size();
}

void Console::KeepOpen()
{
    DWORD nProcess = 0;
    if (!m_bWindow || ::GetConsoleProcessList(&nProcess, 1) != 1)
        return;
    Line("Press Enter to close this window.");
    char chKey = 0;
    DWORD cbRead = 0;
    ::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), &chKey, 1, &cbRead, nullptr);
}

void Console::Write(const std::string& text) const
{
    DWORD nWritten = 0;
    if (m_bWindow)
    {
        const std::wstring wide = Wide(text);
        ::WriteConsoleW(m_hOutput, wide.data(), static_cast<DWORD>(wide.size()), &nWritten,
                        nullptr);
    }
    else
        ::WriteFile(m_hOutput, text.data(), static_cast<DWORD>(text.size()), &nWritten, nullptr);
}
} // namespace selftest
