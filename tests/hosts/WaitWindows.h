// The wait windows that there are, without asking the library.
#pragma once

#include <windows.h>

#include <vector>

constexpr int kMessageControl = 14000; // by which a wait window is told from other dialogs

inline std::vector<HWND> WaitWindowsOfThisThread()
{
    std::vector<HWND> windows;
    ::EnumThreadWindows(
        ::GetCurrentThreadId(),
        [](HWND hWnd, LPARAM lParam) -> BOOL {
            if (::GetDlgItem(hWnd, kMessageControl) != nullptr)
                reinterpret_cast<std::vector<HWND>*>(lParam)->push_back(hWnd);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&windows));
    return windows;
}
