#include "runtime/SystemLibrary.h"

HMODULE LoadSystemLibrary(LPCSTR pszFileName) noexcept
{
    // By full path: a bare name is looked for beside the installer first, where anybody may have put
    // a file of that name.
    char szPath[MAX_PATH];
    const UINT cb = ::GetSystemDirectoryA(szPath, MAX_PATH);
    const int cbName = ::lstrlenA(pszFileName);
    if (cb == 0 || cb + 1 + static_cast<UINT>(cbName) >= MAX_PATH)
        return nullptr;
    szPath[cb] = '\\';
    ::lstrcpynA(szPath + cb + 1, pszFileName, cbName + 1);
    HMODULE const hModule = ::LoadLibraryExA(szPath, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    HMODULE hPinned = nullptr;
    if (hModule == nullptr || !::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN |
                                                        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                                    reinterpret_cast<LPCSTR>(hModule), &hPinned))
        return hModule;
    ::FreeLibrary(hModule); // the pin holds it
    return hPinned;
}
