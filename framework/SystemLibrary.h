// DLLs of the system that are loaded when they are first wanted.
#pragma once

#include <windows.h>

// Loads a DLL, named by its bare file name, from the system folder and from nowhere else. Null when it
// is not there. The caller owns the reference.
HMODULE AfxLoadSystemLibrary(LPCSTR pszFileName) noexcept;
