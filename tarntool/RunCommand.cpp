// run: a program behind the modal wait window, by the library's job runner.
#include "tarntool/Commands.h"
#include "tarntool/DialogWatch.h"
#include "tarntool/Failure.h"
#include "tarntool/FirstShow.h"
#include "tarntool/Output.h"
#include "tarntool/ParentGuard.h"
#include "tarntool/ParentWindow.h"
#include "tarntool/Request.h"
#include "tarntool/StartedProgram.h"
#include "tarntool/Text.h"

#include "ui/WaitDlgModless.h"

namespace
{
constexpr DWORD kLongestPatience = 60; // seconds; the library's watchdog takes no longer
constexpr DWORD kMillisecondsPerSecond = 1000;

DWORD GetPatience(const Request& request)
{
    LPCWSTR psz = request.Value(Request::Patience);
    if (psz == nullptr)
        return kLongestPatience;
    DWORD n = 0;
    for (LPCWSTR p = psz; *p != L'\0' && n <= kLongestPatience; ++p)
        n = *p >= L'0' && *p <= L'9' ? n * 10 + static_cast<DWORD>(*p - L'0')
                                     : kLongestPatience + 1;
    if (n < 1 || n > kLongestPatience)
        throw Failure{ExitCode::WrongArguments,
                      "--patience needs a number of seconds from 1 to 60, not \"" + ToUtf8(psz) +
                          "\""};
    return n;
}

// The installer's window, disabled while the wait window is there.
class DisabledParent
{
public:
    explicit DisabledParent(HWND hWnd)
        : m_hWnd(hWnd != nullptr && ::IsWindowEnabled(hWnd) && Answers(hWnd) ? hWnd : nullptr),
          m_guard(m_hWnd)
    {
        if (m_hWnd != nullptr)
            EnableForeignWindow(m_hWnd, FALSE);
    }
    ~DisabledParent() { Enable(); }
    DisabledParent(const DisabledParent&) = delete;
    DisabledParent& operator=(const DisabledParent&) = delete;

    // While the wait window is still there, so that the focus goes back to the installer, and not to
    // whatever window lies below.
    void Enable()
    {
        HWND const hWnd = m_hWnd;
        m_hWnd = nullptr;
        if (hWnd == nullptr)
            return;
        EnableForeignWindow(hWnd, TRUE);
        DWORD nProcessID = 0;
        ::GetWindowThreadProcessId(::GetForegroundWindow(), &nProcessID);
        if (nProcessID == ::GetCurrentProcessId())
            ::SetForegroundWindow(hWnd);
    }

private:
    HWND m_hWnd;
    const ParentGuard m_guard;
};

struct Job
{
    StartedProgram& program;
    DisabledParent& parent;
    DWORD nPatience; // milliseconds; INFINITE: the watchdog's
};

// The job runner's; on the worker thread.
LONGLONG WaitForProgram(void* pArg, HWND /*hWnd*/)
{
    Job& job = *static_cast<Job*>(pArg);
    job.program.Go();
    job.program.Wait(job.nPatience);
    job.parent.Enable();
    return 0;
}
} // namespace

UINT RunProgram(const Request& request)
{
    HWND const hWndParent = GetParentWindow(request);
    const DWORD nSeconds = GetPatience(request);
    if (request.GetTail() == nullptr || *request.GetTail() == L'\0')
        throw Failure{ExitCode::WrongArguments, "run needs a program behind --"};
    const Output output(request.Value(Request::Out));
    StartedProgram program(request.GetTail(),
                           output); // ends with this process, should that be ended
    EndWithInstaller(hWndParent);
    DisabledParent parent(hWndParent);
    const ULONGLONG nEnd = ::GetTickCount64() + ULONGLONG{nSeconds} * kMillisecondsPerSecond;
    Job job = {program, parent,
               nSeconds == kLongestPatience ? INFINITE : nSeconds * kMillisecondsPerSecond};
    SpendFirstShow();
    {
        const DialogWatch watch(hWndParent, DialogWatch::Manner::Patient);
        RunJobWithWaitDlg(&WaitForProgram, &job, ToDisplayText(request.Value(Request::Message)),
                          ToDisplayText(request.Value(Request::Title)));
    }
    // Without a window, when there could be none, or when somebody has closed it.
    program.Go();
    const ULONGLONG nNow = ::GetTickCount64();
    if (!program.Wait(nNow < nEnd ? static_cast<DWORD>(nEnd - nNow) : 0))
    {
        program.End();
        parent.Enable();
        throw Failure{ExitCode::TimedOut, "the program was ended after " + NumberText(nSeconds) +
                                              (nSeconds == 1 ? " second" : " seconds")};
    }
    return program.GetExitCode();
}
