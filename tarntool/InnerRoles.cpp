#include "tarntool/InnerRoles.h"

#include "tarntool/HandleList.h"

#include <cstddef>
#include <cwchar>
#include <memory>

namespace
{
struct Role
{
    LPCWSTR pszName;
    UINT (*pfnPlay)(LPCWSTR pszArguments);
};

constexpr Role kRoles[] = {{L"inner-keep", &KeepWaitWindow}, {L"inner-guard", &GuardParent}};

constexpr std::size_t kMaxLine = 32767; // of the system
constexpr WCHAR kHexDigits[] = L"0123456789ABCDEF";

// In hexadecimal, with a blank behind it; taken off again by TakeNumber.
LPWSTR AppendNumber(LPWSTR p, ULONG_PTR n)
{
    for (int nShift = 60; nShift >= 0; nShift -= 4)
        *p++ = kHexDigits[n >> nShift & 0xF];
    *p++ = L' ';
    return p;
}
} // namespace

bool PlayInnerRole(LPCWSTR pszArguments, UINT* pnExitCode)
{
    for (const Role& role : kRoles)
    {
        const std::size_t cch = std::wcslen(role.pszName);
        if (std::wcsncmp(pszArguments, role.pszName, cch) == 0 && pszArguments[cch] == L' ')
        {
            *pnExitCode = role.pfnPlay(pszArguments + cch + 1);
            return true;
        }
    }
    return false;
}

HANDLE StartInnerRole(LPCWSTR pszProgram, LPCWSTR pszRole, const HANDLE* phHandles, int nHandles,
                      LPCWSTR pszRest)
{
    WCHAR szFolder[MAX_PATH];
    if (::GetSystemDirectoryW(szFolder, MAX_PATH) == 0)
        return nullptr;
    if (std::wcslen(pszRest) + 200 > kMaxLine)
    {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return nullptr;
    }
    const std::unique_ptr<WCHAR[]> pszLine(new WCHAR[kMaxLine + 1]);
    std::wcscpy(pszLine.get(), L"tarntool ");
    std::wcscat(pszLine.get(), pszRole);
    std::wcscat(pszLine.get(), L" ");
    LPWSTR pEnd = pszLine.get() + std::wcslen(pszLine.get());

    ScopedHandle copies[kMaxInherited];
    HANDLE hCopies[kMaxInherited];
    for (int i = 0; i < nHandles; ++i)
    {
        HANDLE hCopy = nullptr;
        if (!::DuplicateHandle(::GetCurrentProcess(), phHandles[i], ::GetCurrentProcess(), &hCopy,
                               0, TRUE, DUPLICATE_SAME_ACCESS))
            return nullptr;
        copies[i].Reset(hCopy);
        hCopies[i] = hCopy;
        pEnd = AppendNumber(pEnd, reinterpret_cast<ULONG_PTR>(hCopy));
    }
    std::wcscpy(pEnd, pszRest);

    HandleList list;
    if (!list.Set(hCopies, nHandles))
        return nullptr;
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof(startup);
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES; // none
    startup.lpAttributeList = list.Get();
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(pszProgram, pszLine.get(), nullptr, nullptr, TRUE,
                          EXTENDED_STARTUPINFO_PRESENT | DETACHED_PROCESS, nullptr, szFolder,
                          &startup.StartupInfo, &process))
        return nullptr;
    ::CloseHandle(process.hThread);
    return process.hProcess;
}

ULONG_PTR TakeNumber(LPCWSTR* ppszArguments)
{
    LPCWSTR p = *ppszArguments;
    ULONG_PTR n = 0;
    for (; *p != L'\0' && *p != L' '; ++p)
    {
        LPCWSTR const pDigit = std::wcschr(kHexDigits, *p);
        if (pDigit == nullptr)
            return 0;
        n = n << 4 | static_cast<ULONG_PTR>(pDigit - kHexDigits);
    }
    *ppszArguments = *p == L' ' ? p + 1 : p;
    return n;
}

HANDLE OpenOwnProcess()
{
    return ::OpenProcess(SYNCHRONIZE, FALSE, ::GetCurrentProcessId());
}
