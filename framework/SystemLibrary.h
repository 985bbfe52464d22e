// SystemLibrary: a DLL of the system's own folder, loaded for as long as the object lives.
#pragma once

#include <windows.h>

class SystemLibrary
{
public:
    // pszFileName: a bare file name. It is looked for in the system folder and nowhere else.
    explicit SystemLibrary(LPCSTR pszFileName) noexcept;
    ~SystemLibrary();
    SystemLibrary(const SystemLibrary&) = delete;
    SystemLibrary& operator=(const SystemLibrary&) = delete;

    // Null when the library or the function is not there.
    FARPROC GetProcAddress(LPCSTR pszName) const noexcept;

private:
    HMODULE m_hModule = nullptr; // owned
};
