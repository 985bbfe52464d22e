#include "selftest/Process.h"

#include "selftest/Paths.h"

namespace selftest
{
namespace
{
constexpr DWORD kPollMilliseconds = 100;

class Handle
{
public:
    explicit Handle(HANDLE hObject) : m_hObject(hObject) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const { return m_hObject; }
    bool IsValid() const { return m_hObject != nullptr && m_hObject != INVALID_HANDLE_VALUE; }
    void Close()
    {
        if (IsValid())
            ::CloseHandle(m_hObject);
        m_hObject = nullptr;
    }

private:
    HANDLE m_hObject;
};

// A job that takes what is in it along when its handle is closed, also when this program is ended.
HANDLE CreateKillingJob()
{
    HANDLE const hJob = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    if (hJob != nullptr)
        ::SetInformationJobObject(hJob, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return hJob;
}

HANDLE OpenForOutput(const std::wstring& path)
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    // Appended, so that both streams and all processes write behind one another.
    return ::CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                         CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool IsSignalled(HANDLE hEvent)
{
    return hEvent != nullptr && ::WaitForSingleObject(hEvent, 0) == WAIT_OBJECT_0;
}

End WaitForEnd(HANDLE hProcess, const std::wstring& outputFile, const Limits& limits,
               const std::function<void(const std::string&)>& progress)
{
    HANDLE const handles[] = {hProcess, limits.hStop};
    const DWORD nHandles = limits.hStop != nullptr ? 2 : 1;
    const DWORD nStart = ::GetTickCount();
    DWORD nLastOutput = nStart;
    std::size_t cbSeen = 0;
    for (;;)
    {
        switch (::WaitForMultipleObjects(nHandles, handles, FALSE, kPollMilliseconds))
        {
        case WAIT_OBJECT_0:
            // The first of the handles is what is told, also when both are signalled.
            return IsSignalled(limits.hStop) ? End::Stopped : End::ByItself;
        case WAIT_OBJECT_0 + 1:
            return End::Stopped;
        default:
            break;
        }
        const std::string output = ReadAll(outputFile);
        const DWORD nNow = ::GetTickCount();
        if (output.size() != cbSeen)
        {
            cbSeen = output.size();
            nLastOutput = nNow;
            progress(output);
        }
        if (nNow - nLastOutput > limits.nSilence || nNow - nStart > limits.nWhole)
            return End::TimedOut;
    }
}

// A scanner may hold a file that was just unpacked, and a busy Wine gives up on a new process now and then.
bool StartSuspended(const std::wstring& command, STARTUPINFOW* pStartup,
                    PROCESS_INFORMATION* pProcess)
{
    for (int nTries = 10;; --nTries)
    {
        std::wstring commandLine = command; // the system may write into it
        if (::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                             CREATE_SUSPENDED | CREATE_NO_WINDOW, nullptr, nullptr, pStartup,
                             pProcess))
            return true;
        const DWORD nError = ::GetLastError();
        if (nTries == 1 || nError == ERROR_FILE_NOT_FOUND || nError == ERROR_PATH_NOT_FOUND)
            return false;
        ::Sleep(kPollMilliseconds);
    }
}
} // namespace

Outcome RunProcess(const std::wstring& command, const std::wstring& outputFile,
                   const Limits& limits,
                   const std::function<void(const std::string& output)>& progress)
{
    Outcome outcome;
    Handle output(OpenForOutput(outputFile));
    Handle job(CreateKillingJob());
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = output.Get();
    PROCESS_INFORMATION process = {};
    if (!output.IsValid() || !StartSuspended(command, &startup, &process))
    {
        outcome.nExitCode = ::GetLastError();
        output.Close();
        ::DeleteFileW(outputFile.c_str());
        return outcome;
    }
    const Handle hProcess(process.hProcess);
    {
        const Handle hThread(process.hThread);
        // Refused by old systems to a program that is in a job itself; then only what it starts is not
        // ended with it.
        if (job.IsValid())
            ::AssignProcessToJobObject(job.Get(), process.hProcess);
        ::ResumeThread(process.hThread);
    }
    output.Close();
    outcome.end = WaitForEnd(process.hProcess, outputFile, limits, progress);
    if (outcome.end == End::ByItself)
        ::GetExitCodeProcess(process.hProcess, &outcome.nExitCode);
    else
        ::TerminateProcess(process.hProcess, 1);
    job.Close();
    ::WaitForSingleObject(process.hProcess, 10000);
    outcome.output = ReadAll(outputFile);
    ::DeleteFileW(outputFile.c_str());
    return outcome;
}
} // namespace selftest
