// DLLs of the system that are loaded when they are first wanted.
#pragma once

#include <windows.h>

// Loads a DLL, named by its bare file name, from the system folder and from nowhere else. Null when it
// is not there. It stays loaded for the rest of the process: the shell's extensions may still be at work
// in it when its caller has done.
HMODULE LoadSystemLibrary(LPCSTR pszFileName) noexcept;
