#include "tarntool/FirstShow.h"

#include <windows.h>

void SpendFirstShow()
{
    STARTUPINFOW startup = {};
    ::GetStartupInfoW(&startup);
    if ((startup.dwFlags & STARTF_USESHOWWINDOW) == 0 || startup.wShowWindow != SW_HIDE)
        return;
    HWND const hWnd = ::CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0,
                                        0, 0, nullptr, nullptr, nullptr, nullptr);
    ::ShowWindow(hWnd, SW_SHOWDEFAULT);
    ::DestroyWindow(hWnd);
}
