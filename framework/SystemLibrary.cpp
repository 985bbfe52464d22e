#include "SystemLibrary.h"

SystemLibrary::SystemLibrary(LPCSTR pszFileName) noexcept
{
    // By full path: a bare name is looked for beside the installer first, where anybody may have put
    // a file of that name.
    char szPath[MAX_PATH];
    const UINT cb = ::GetSystemDirectoryA(szPath, MAX_PATH);
    const int cbName = ::lstrlenA(pszFileName);
    if (cb == 0 || cb + 1 + static_cast<UINT>(cbName) >= MAX_PATH)
        return;
    szPath[cb] = '\\';
    ::lstrcpynA(szPath + cb + 1, pszFileName, cbName + 1);
    m_hModule = ::LoadLibraryExA(szPath, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

SystemLibrary::~SystemLibrary()
{
    if (m_hModule != nullptr)
        ::FreeLibrary(m_hModule);
}

FARPROC SystemLibrary::GetProcAddress(LPCSTR pszName) const noexcept
{
    return m_hModule != nullptr ? ::GetProcAddress(m_hModule, pszName) : nullptr;
}
