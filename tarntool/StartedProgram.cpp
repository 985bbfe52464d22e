#include "tarntool/StartedProgram.h"

#include "tarntool/Failure.h"
#include "tarntool/HandleList.h"
#include "tarntool/ProgramPath.h"
#include "tarntool/Text.h"

#include <cstddef>
#include <cwchar>
#include <memory>

namespace
{
constexpr DWORD kMaxPath = 32768;
constexpr DWORD kEndMilliseconds = 10000;

using WideText = std::unique_ptr<WCHAR[]>;

[[noreturn]] void CannotStart(LPCWSTR pszProgram, DWORD nError)
{
    throw Failure{ExitCode::CannotStart,
                  "cannot start " + ToUtf8(pszProgram) + ": " + SystemErrorText(nError)};
}

// The first word of a command line, without its quotation marks.
WideText ProgramOf(LPCWSTR pszCommandLine)
{
    const std::size_t cch = std::wcslen(pszCommandLine);
    WideText pszProgram(new WCHAR[cch + 1]);
    LPWSTR p = pszProgram.get();
    bool bQuoted = false;
    for (LPCWSTR q = pszCommandLine; *q != L'\0' && (bQuoted || (*q != L' ' && *q != L'\t')); ++q)
    {
        if (*q == L'"')
            bQuoted = !bQuoted;
        else
            *p++ = *q;
    }
    *p = L'\0';
    return pszProgram;
}

// Beside this program; the system's folders; PATH.
WideText SearchFolders()
{
    const DWORD cchPath = ::GetEnvironmentVariableW(L"PATH", nullptr, 0);
    WideText pszFolders(new WCHAR[kMaxPath + 2 * MAX_PATH + cchPath + 4]);
    LPWSTR p = pszFolders.get();
    const ProgramPath own;
    LPCWSTR const pEnd = std::wcsrchr(own, L'\\');
    for (LPCWSTR q = own; pEnd != nullptr && q < pEnd; ++q)
        *p++ = *q;
    *p++ = L';';
    p += ::GetSystemDirectoryW(p, MAX_PATH);
    *p++ = L';';
    p += ::GetWindowsDirectoryW(p, MAX_PATH);
    *p++ = L';';
    *p = L'\0';
    if (cchPath > 0)
        ::GetEnvironmentVariableW(L"PATH", p, cchPath);
    return pszFolders;
}

// By full path: the system would look into the current folder for a bare name, and for a path with a
// blank in it also for its first words.
WideText FindProgram(LPCWSTR pszProgram)
{
    WideText pszFull(new WCHAR[kMaxPath]);
    const bool bBare = std::wcspbrk(pszProgram, L"\\/:") == nullptr;
    DWORD cch = 0;
    if (bBare)
        cch = ::SearchPathW(SearchFolders().get(), pszProgram, L".exe", kMaxPath, pszFull.get(),
                            nullptr);
    else
    {
        cch = ::GetFullPathNameW(pszProgram, kMaxPath, pszFull.get(), nullptr);
        // As for a bare name, ".exe" goes without saying.
        if (cch > 0 && cch + 4 < kMaxPath &&
            ::GetFileAttributesW(pszFull.get()) == INVALID_FILE_ATTRIBUTES)
            std::wcscpy(pszFull.get() + cch, L".exe");
    }
    if (cch == 0 || cch >= kMaxPath)
        CannotStart(pszProgram, bBare ? ERROR_FILE_NOT_FOUND : ::GetLastError());
    return pszFull;
}

// A stream of this process that the program inherits: a copy of it, or one that leads nowhere.
void MakeInheritable(HANDLE hStream, ScopedHandle* pCopy)
{
    HANDLE hCopy = nullptr;
    if (hStream != nullptr &&
        ::DuplicateHandle(::GetCurrentProcess(), hStream, ::GetCurrentProcess(), &hCopy, 0, TRUE,
                          DUPLICATE_SAME_ACCESS))
    {
        pCopy->Reset(hCopy);
        return;
    }
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    pCopy->Reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0,
                               nullptr));
}

bool SetJobLimits(HANDLE hJob, DWORD nLimits)
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = nLimits;
    return ::SetInformationJobObject(hJob, JobObjectExtendedLimitInformation, &limits,
                                     sizeof(limits)) != FALSE;
}
} // namespace

StartedProgram::StartedProgram(LPCWSTR pszCommandLine, const Output& output)
    : m_job(::CreateJobObjectW(nullptr, nullptr))
{
    const WideText pszProgram = ProgramOf(pszCommandLine);
    if (pszProgram[0] == L'\0')
        throw Failure{ExitCode::WrongArguments, "run needs a program behind --"};
    if (!m_job.IsValid() || !SetJobLimits(m_job, JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE))
        CannotStart(pszProgram.get(), ::GetLastError());
    Start(FindProgram(pszProgram.get()).get(), pszCommandLine, output);
}

void StartedProgram::Start(LPCWSTR pszProgram, LPCWSTR pszCommandLine, const Output& output)
{
    ScopedHandle streams[3];
    HANDLE const hError = GetStream(STD_ERROR_HANDLE);
    MakeInheritable(GetStream(STD_INPUT_HANDLE), &streams[0]);
    MakeInheritable(output.GetHandle(), &streams[1]);
    MakeInheritable(hError, &streams[2]);
    HANDLE hStreams[] = {streams[0], streams[1], streams[2]};
    HandleList list;
    if (!list.Set(hStreams, 3))
        CannotStart(pszProgram, ::GetLastError());

    // The system writes into it.
    const std::size_t cch = std::wcslen(pszCommandLine);
    const WideText pszLine(new WCHAR[cch + 1]);
    std::wcscpy(pszLine.get(), pszCommandLine);
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof(startup);
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = hStreams[0];
    startup.StartupInfo.hStdOutput = hStreams[1];
    startup.StartupInfo.hStdError = hStreams[2];
    startup.lpAttributeList = list.Get();
    // A program for the console opens none: it has that of this process, or one without a window.
    const DWORD nFlags = EXTENDED_STARTUPINFO_PRESENT | CREATE_SUSPENDED |
                         (IsAttachedToConsole() ? 0U : CREATE_NO_WINDOW);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(pszProgram, pszLine.get(), nullptr, nullptr, TRUE, nFlags, nullptr,
                          nullptr, &startup.StartupInfo, &process))
        CannotStart(pszProgram, ::GetLastError());
    m_process.Reset(process.hProcess);
    m_thread.Reset(process.hThread);
    if (!::AssignProcessToJobObject(m_job, m_process))
    {
        const DWORD nError = ::GetLastError();
        ::TerminateProcess(m_process, 1);
        CannotStart(pszProgram, nError);
    }
}

StartedProgram::~StartedProgram()
{
    if (m_process.IsValid() && Wait(0))
        SetJobLimits(m_job, 0);
}

void StartedProgram::Go()
{
    if (m_thread.IsValid())
        ::ResumeThread(m_thread);
    m_thread.Close();
}

bool StartedProgram::Wait(DWORD nMilliseconds) const
{
    return ::WaitForSingleObject(m_process, nMilliseconds) == WAIT_OBJECT_0;
}

void StartedProgram::End()
{
    ::TerminateJobObject(m_job, 1);
    // Termination is only asked for.
    Wait(kEndMilliseconds);
}

UINT StartedProgram::GetExitCode() const
{
    DWORD nExitCode = 0;
    ::GetExitCodeProcess(m_process, &nExitCode);
    return nExitCode;
}
