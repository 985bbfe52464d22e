// The platform's types: from the system's header or, for builds off Windows (sanitizers, fuzzing,
// benchmarks), the few that the portable classes are declared with.
#pragma once

#ifdef _WIN32

#include <windows.h>

#else

using BOOL = int;
using UINT = unsigned int;
using LONG = int;
using LPSTR = char*;
using LPCSTR = const char*;
using LPCTSTR = LPCSTR;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

#endif
