// Wine says that it is Wine. Tests of what the library does with the answers of the system ask, where
// the two systems are documented to answer differently, and expect of each what it is known for.
#pragma once

#include <windows.h>

inline bool RunsUnderWine()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}
