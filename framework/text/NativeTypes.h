// The few platform types that the portable classes are declared with, for builds off Windows
// (sanitizers, fuzzing, benchmarks).
#pragma once

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
