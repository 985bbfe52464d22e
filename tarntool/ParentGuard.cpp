#include "tarntool/ParentGuard.h"

#include "tarntool/InnerRoles.h"
#include "tarntool/ProgramPath.h"

ParentGuard::ParentGuard(HWND hWndParent)
{
    if (hWndParent == nullptr || !::IsWindowEnabled(hWndParent))
        return;
    const ScopedHandle self(OpenOwnProcess());
    const HANDLE handles[] = {self};
    WCHAR szWindow[20];
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the system's
    ::wsprintfW(szWindow, L"%08X", static_cast<UINT>(reinterpret_cast<UINT_PTR>(hWndParent)));
    const ProgramPath path;
    bool bReady = false; // without a guard it is done without one
    m_process.Reset(StartInnerRole(path, L"inner-guard", handles, 1, szWindow, &bReady));
}

ParentGuard::~ParentGuard()
{
    if (!m_process.IsValid())
        return;
    // Waited for: this program's file is not to be held by it.
    ::TerminateProcess(m_process, 0);
    ::WaitForSingleObject(m_process, INFINITE);
}

UINT GuardParent(LPCWSTR pszArguments)
{
    const ScopedHandle ready(reinterpret_cast<HANDLE>(TakeNumber(&pszArguments)));
    const ScopedHandle guarded(reinterpret_cast<HANDLE>(TakeNumber(&pszArguments)));
    HWND const hWnd =
        reinterpret_cast<HWND>(static_cast<LONG_PTR>(static_cast<LONG>(TakeNumber(&pszArguments))));
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    ::SetEvent(ready);
    if (!guarded.IsValid() || ::WaitForSingleObject(guarded, INFINITE) != WAIT_OBJECT_0)
        return 1;
    // The number may have been given to another window.
    DWORD nProcessIDNow = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessIDNow);
    if (nProcessIDNow != 0 && nProcessIDNow == nProcessID)
        ::EnableWindow(hWnd, TRUE);
    return 0;
}
