// The process that keeps a wait window. It has no thread but this one, and shares no input with the
// installer, so that its window is painted whatever the installer is doing.
//
// The end comes by "done", by the end of the process that the installer's window belongs to, or by the
// library's watchdog.
#include "tarntool/DialogWatch.h"
#include "tarntool/Failure.h"
#include "tarntool/InnerRoles.h"
#include "tarntool/ParentWindow.h"
#include "tarntool/PrivateCopy.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"
#include "tarntool/WaitName.h"

#include <tarn.h>

#include <cwchar>

namespace
{
// How often it is looked where the installer's window is.
constexpr DWORD kLookMilliseconds = 50;
// The watchdog takes a minute. Should its timer fail, the window goes all the same.
constexpr ULONGLONG kLongestMilliseconds = 65000;

// Under which this process is found. Invalid when another one has the name.
class Presence
{
public:
    explicit Presence(const WaitName& name)
        : m_section(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                         sizeof(WaitRecord), name.Record()))
    {
        if (!m_section.IsValid() || ::GetLastError() == ERROR_ALREADY_EXISTS)
            return;
        auto* const pRecord = static_cast<WaitRecord*>(
            ::MapViewOfFile(m_section, FILE_MAP_WRITE, 0, 0, sizeof(WaitRecord)));
        if (pRecord == nullptr)
            return;
        pRecord->nProcessID = ::GetCurrentProcessId();
        ::UnmapViewOfFile(pRecord);
        m_done.Reset(::CreateEventW(nullptr, TRUE, FALSE, name.Done()));
    }

    bool IsValid() const { return m_done.IsValid(); }
    HANDLE Done() const { return m_done; }

private:
    ScopedHandle m_section;
    ScopedHandle m_done;
};

// Keeps the wait window where the installer's is.
class Follower
{
public:
    Follower(HWND hWnd, HWND hWndParent) : m_hWnd(hWnd), m_hWndParent(hWndParent) {}

    void Follow()
    {
        if (m_hWndParent == nullptr)
            return;
        const bool bHide = ::IsIconic(m_hWndParent) != FALSE;
        if (bHide != m_bHidden)
        {
            m_bHidden = bHide;
            ::ShowWindow(m_hWnd, bHide ? SW_HIDE : SW_SHOWNOACTIVATE);
        }
        if (bHide)
            return;
        RECT rc;
        ::GetWindowRect(m_hWnd, &rc);
        const POINT corner = CentredOver(m_hWndParent, rc.right - rc.left, rc.bottom - rc.top);
        const bool bMoved = corner.x != rc.left || corner.y != rc.top;
        const bool bCovered = IsCovered();
        if (bMoved || bCovered)
            ::SetWindowPos(m_hWnd, HWND_TOPMOST, corner.x, corner.y, 0, 0,
                           SWP_NOSIZE | SWP_NOACTIVATE | (bMoved ? 0U : SWP_NOMOVE));
    }

    // By this object, and not by the watchdog.
    bool IsHidden() const { return m_bHidden; }

private:
    // An installer's window that is topmost itself may have come to lie above.
    bool IsCovered() const
    {
        if ((::GetWindowLongPtrW(m_hWndParent, GWL_EXSTYLE) & WS_EX_TOPMOST) == 0)
            return false;
        HWND hWnd = m_hWnd;
        while ((hWnd = ::GetWindow(hWnd, GW_HWNDPREV)) != nullptr)
        {
            if (hWnd == m_hWndParent)
                return true;
        }
        return false;
    }

    HWND const m_hWnd;
    HWND const m_hWndParent;
    bool m_bHidden = false;
};

bool IsRunning(HANDLE hProcess)
{
    return ::WaitForSingleObject(hProcess, 0) == WAIT_TIMEOUT;
}

void HandleMessages()
{
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageW(&message);
}

// Until the window is to go.
void Keep(HWND hWnd, HWND hWndParent, HANDLE hDone)
{
    const ScopedHandle installer(OpenInstaller(hWndParent));
    const HANDLE ends[] = {hDone, installer};
    const DWORD nEnds = installer.IsValid() ? 2 : 1;
    const ULONGLONG nEnd = ::GetTickCount64() + kLongestMilliseconds;
    Follower follower(hWnd, hWndParent);
    for (;;)
    {
        const DWORD nEvent =
            ::MsgWaitForMultipleObjects(nEnds, ends, FALSE, kLookMilliseconds, QS_ALLINPUT);
        if (nEvent < WAIT_OBJECT_0 + nEnds || ::GetTickCount64() > nEnd)
            return;
        HandleMessages();
        if (!follower.IsHidden() && !::IsWindowVisible(hWnd))
            return;
        // Of another user's process, there is only the window to go by.
        if (hWndParent != nullptr && !installer.IsValid() && !::IsWindow(hWndParent))
            return;
        follower.Follow();
    }
}
} // namespace

UINT KeepWaitWindow(LPCWSTR pszArguments)
{
    const ScopedHandle painted(reinterpret_cast<HANDLE>(TakeNumber(&pszArguments)));
    const ScopedHandle starter(reinterpret_cast<HANDLE>(TakeNumber(&pszArguments)));
    TakeNumber(&pszArguments); // of the file, which is held until the process has ended
    if (!IsRunning(starter))
        return static_cast<UINT>(ExitCode::WrongArguments);
    const Request request(pszArguments);
    HWND const hWndParent = GetParentWindow(request);
    const Presence presence{WaitName(request)};
    if (!presence.IsValid())
        return static_cast<UINT>(ExitCode::WaitWindowExists);

    const DialogWatch watch(hWndParent, DialogWatch::Manner::Quiet);
    const CString strTitle = ToDisplayText(request.Value(Request::Title));
    const CString strMessage = ToDisplayText(request.Value(Request::Message));
    DoWaitDlgModless(hWndParent, strTitle, strMessage);
    HWND const hWnd = DialogWatch::GetDialog();
    if (!::IsWindow(hWnd)) // it may have been there and gone: without a display
        return static_cast<UINT>(ExitCode::SystemFailure);
    HandleMessages();
    ::RedrawWindow(hWnd, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    // Nobody waits for the window any more if the process that was to show it has been ended.
    if (IsRunning(starter))
    {
        ::SetEvent(painted);
        Keep(hWnd, hWndParent, presence.Done());
    }
    CloseWaitDlg();
    return static_cast<UINT>(ExitCode::Done);
}
