// The watchdog of a wait window or of a job, without waiting for a minute.
#pragma once

#include <windows.h>

constexpr int kWatchdogTicks = 100;
constexpr UINT_PTR kWatchdogTimer = 333;

// All of them have been handled when it returns. Only the last is waited for, which saves the turns of two
// threads: what is sent to a window arrives in order.
inline void Tick(HWND hWnd, int nTicks = kWatchdogTicks, UINT_PTR nTimerID = kWatchdogTimer)
{
    for (int i = 1; i < nTicks; ++i)
        ::SendNotifyMessageA(hWnd, WM_TIMER, nTimerID, 0);
    ::SendMessageA(hWnd, WM_TIMER, nTimerID, 0);
}
