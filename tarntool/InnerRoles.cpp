#include "tarntool/InnerRoles.h"

#include "tarntool/Failure.h"
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
constexpr std::size_t kMaxRoleText = 200;
constexpr DWORD kStartMilliseconds = 120000;
constexpr WCHAR kHexDigits[] = L"0123456789ABCDEF";

// In hexadecimal, with a blank behind it; taken off again by TakeNumber.
LPWSTR AppendNumber(LPWSTR p, ULONG_PTR n)
{
    for (int nShift = 60; nShift >= 0; nShift -= 4)
        *p++ = kHexDigits[n >> nShift & 0xF];
    *p++ = L' ';
    return p;
}

// Only this program starts a role, with an event that is not set yet; what a user types is a command that
// there is not.
bool BeginsWithEvent(LPCWSTR pszArguments)
{
    const ULONG_PTR n = TakeNumber(&pszArguments);
    return n != 0 && n <= 0x7FFFFFFF && // no pseudo handle
           ::WaitForSingleObject(reinterpret_cast<HANDLE>(n), 0) == WAIT_TIMEOUT;
}
} // namespace

bool PlayInnerRole(LPCWSTR pszArguments, UINT* pnExitCode)
{
    for (const Role& role : kRoles) // NOLINT(readability-use-anyofallof): it acts
    {
        const std::size_t cch = std::wcslen(role.pszName);
        if (std::wcsncmp(pszArguments, role.pszName, cch) == 0 && pszArguments[cch] == L' ' &&
            BeginsWithEvent(pszArguments + cch + 1))
        {
            *pnExitCode = role.pfnPlay(pszArguments + cch + 1);
            return true;
        }
    }
    return false;
}

namespace
{
// From before a role exists until it is ready: what is in the job, this process and what it starts, ends
// when the handle is closed, as it is for a process that is killed. A process that is killed while it
// starts another would leave that behind for ever, about to begin.
class StartUpJob
{
public:
    StartUpJob() : m_job(::CreateJobObjectW(nullptr, nullptr))
    {
        // Refused by Windows 7 to a process that is in a job already. Then it goes without.
        if (!Limit(JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE) ||
            !::AssignProcessToJobObject(m_job, ::GetCurrentProcess()))
            m_job.Close();
    }
    ~StartUpJob() { Limit(0); }
    StartUpJob(const StartUpJob&) = delete;
    StartUpJob& operator=(const StartUpJob&) = delete;

private:
    bool Limit(DWORD nFlags)
    {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = nFlags;
        return ::SetInformationJobObject(m_job, JobObjectExtendedLimitInformation, &limits,
                                         sizeof(limits)) != FALSE;
    }

    ScopedHandle m_job;
};

// The handles' copies, which are inherited, and their numbers in the role's command line.
HANDLE CreateRole(LPCWSTR pszProgram, LPWSTR pszLine, LPWSTR pEnd, const HANDLE* phHandles,
                  int nHandles, LPCWSTR pszRest)
{
    WCHAR szFolder[MAX_PATH];
    if (::GetSystemDirectoryW(szFolder, MAX_PATH) == 0)
        return nullptr;
    ScopedHandle copies[kMaxInherited + 1];
    HANDLE hCopies[kMaxInherited + 1];
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
    if (!::CreateProcessW(pszProgram, pszLine, nullptr, nullptr, TRUE,
                          EXTENDED_STARTUPINFO_PRESENT | DETACHED_PROCESS, nullptr, szFolder,
                          &startup.StartupInfo, &process))
        return nullptr;
    ::CloseHandle(process.hThread);
    return process.hProcess;
}
} // namespace

HANDLE StartInnerRole(LPCWSTR pszProgram, LPCWSTR pszRole, const HANDLE* phHandles, int nHandles,
                      LPCWSTR pszRest, bool* pbReady)
{
    *pbReady = false;
    if (std::wcslen(pszRest) + kMaxRoleText > kMaxLine)
    {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return nullptr;
    }
    const std::unique_ptr<WCHAR[]> pszLine(new WCHAR[kMaxLine + 1]);
    std::wcscpy(pszLine.get(), L"tarntool ");
    std::wcscat(pszLine.get(), pszRole);
    std::wcscat(pszLine.get(), L" ");
    LPWSTR const pEnd = pszLine.get() + std::wcslen(pszLine.get());

    const ScopedHandle ready(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE handles[kMaxInherited + 1] = {ready};
    for (int i = 0; i < nHandles; ++i)
        handles[i + 1] = phHandles[i];
    const StartUpJob job;
    HANDLE const hProcess =
        CreateRole(pszProgram, pszLine.get(), pEnd, handles, nHandles + 1, pszRest);
    if (hProcess == nullptr)
        return nullptr;
    const HANDLE awaited[] = {ready, hProcess};
    const DWORD nEvent = ::WaitForMultipleObjects(2, awaited, FALSE, kStartMilliseconds);
    *pbReady = nEvent == WAIT_OBJECT_0;
    if (nEvent == WAIT_TIMEOUT)
        ::TerminateProcess(hProcess, static_cast<UINT>(ExitCode::SystemFailure));
    return hProcess;
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
