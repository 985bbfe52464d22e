// Handles of this process that are open, counted one by one: not every system keeps the number.
#pragma once

#include <windows.h>

// The low values, which the system gives first. What was opened and closed since does not count.
inline int CountOpenHandles()
{
    constexpr ULONG_PTR kEnd = 0x2000;
    int nHandles = 0;
    for (ULONG_PTR n = 4; n < kEnd; n += 4)
    {
        DWORD nFlags = 0;
        nHandles += ::GetHandleInformation(reinterpret_cast<HANDLE>(n), &nFlags) ? 1 : 0;
    }
    return nHandles;
}
