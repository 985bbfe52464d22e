// Console: what the person who started the self-test sees, in a window or in a file.
#pragma once

#include <windows.h>

#include <string>

namespace selftest
{
class Console
{
public:
    Console();

    // UTF-8.
    void Line(const std::string& text);
    // Replaced by whatever comes next; not shown in a file.
    void Passing(const std::string& text);
    // Waits for Enter when the window is this program's own and would close with it.
    void KeepOpen();

private:
    void Write(const std::string& text) const;

    HANDLE m_hOutput; // borrowed
    bool m_bWindow;
    std::size_t m_nPassing = 0;
};
} // namespace selftest
