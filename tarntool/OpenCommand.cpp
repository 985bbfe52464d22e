// open: the system's Open dialog, owned by the installer's window.
//
// Not by DoFileOpenDialog, which takes the caller's active window as the owner, where there is none here,
// and has room for 259 bytes of a path.
#include "tarntool/Commands.h"
#include "tarntool/DialogWatch.h"
#include "tarntool/Failure.h"
#include "tarntool/FirstShow.h"
#include "tarntool/Output.h"
#include "tarntool/ParentGuard.h"
#include "tarntool/ParentWindow.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include "runtime/SystemLibrary.h"

#include <commdlg.h>

#include <cstddef>
#include <cwchar>
#include <memory>

namespace
{
constexpr DWORD kMaxPath = 32768;

// "Licence files|*.lic||" as the system wants it: zeros instead of bars, two at the end.
std::unique_ptr<WCHAR[]> MakeFilter(LPCWSTR pszFilter)
{
    if (pszFilter == nullptr || *pszFilter == L'\0')
        return nullptr;
    const std::size_t cch = std::wcslen(pszFilter);
    std::unique_ptr<WCHAR[]> pszList(new WCHAR[cch + 2]);
    std::size_t nParts = 1;
    for (std::size_t i = 0; i < cch; ++i)
    {
        const bool bBar = pszFilter[i] == L'|';
        pszList[i] = bBar ? L'\0' : pszFilter[i];
        // Those at the end close the list.
        if (bBar && pszFilter[i + 1] != L'|' && pszFilter[i + 1] != L'\0')
            ++nParts;
    }
    pszList[cch] = L'\0';
    pszList[cch + 1] = L'\0';
    if (nParts % 2 != 0)
        throw Failure{ExitCode::WrongArguments,
                      "--filter needs pairs of a text and a pattern, as in \"Text files|*.txt||\""};
    return pszList;
}

struct OpenDialogs
{
    BOOL(WINAPI* pfnOpen)(LPOPENFILENAMEW);
    DWORD(WINAPI* pfnError)();
};

OpenDialogs LoadDialogs()
{
    OpenDialogs dialogs = {};
    HMODULE const hDialogs = LoadSystemLibrary("comdlg32.dll");
    if (hDialogs != nullptr)
    {
        dialogs.pfnOpen = reinterpret_cast<decltype(dialogs.pfnOpen)>(
            reinterpret_cast<void*>(::GetProcAddress(hDialogs, "GetOpenFileNameW")));
        dialogs.pfnError = reinterpret_cast<decltype(dialogs.pfnError)>(
            reinterpret_cast<void*>(::GetProcAddress(hDialogs, "CommDlgExtendedError")));
    }
    if (dialogs.pfnOpen == nullptr || dialogs.pfnError == nullptr)
        throw Failure{ExitCode::SystemFailure, "the system has no Open dialog"};
    return dialogs;
}
} // namespace

UINT OpenFile(const Request& request)
{
    HWND const hWndParent = GetParentWindow(request);
    const std::unique_ptr<WCHAR[]> pszFilter = MakeFilter(request.Value(Request::Filter));
    const std::unique_ptr<WCHAR[]> pszPath(new WCHAR[kMaxPath]());
    LPCWSTR const pszFile = request.Value(Request::File);
    if (pszFile != nullptr)
        std::wcsncpy(pszPath.get(), pszFile, kMaxPath - 1);
    LPCWSTR pszExtension = request.Value(Request::Extension);
    if (pszExtension != nullptr && *pszExtension == L'.')
        ++pszExtension;
    Output output(request.Value(Request::Out));
    const OpenDialogs dialogs = LoadDialogs();

    OPENFILENAMEW ofn = {};
    ofn.lStructSize = sizeof(ofn);
    // Of a window whose thread does not handle messages, the dialog would have to wait for it.
    const bool bOwned = hWndParent != nullptr && Answers(hWndParent);
    ofn.hwndOwner = bOwned ? hWndParent : nullptr;
    ofn.lpstrFilter = pszFilter.get();
    ofn.lpstrFile = pszPath.get();
    ofn.nMaxFile = kMaxPath;
    ofn.lpstrInitialDir = request.Value(Request::Folder);
    ofn.lpstrTitle = request.Value(Request::Title);
    ofn.lpstrDefExt = pszExtension;
    ofn.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    EndWithInstaller(hWndParent);
    SpendFirstShow();
    BOOL bChosen = FALSE;
    const bool bEnabled = ::IsWindowEnabled(ofn.hwndOwner) != FALSE;
    {
        const ParentGuard guard(ofn.hwndOwner);
        const DialogWatch watch(hWndParent, DialogWatch::Manner::Ordinary);
        bChosen = dialogs.pfnOpen(&ofn);
    }
    // Wine's dialog enables it in any case.
    if (bOwned && !bEnabled)
        EnableForeignWindow(hWndParent, FALSE);
    if (!bChosen)
    {
        const DWORD nError = dialogs.pfnError();
        if (nError == 0)
            throw Failure{ExitCode::Cancelled, "no file was chosen"};
        throw Failure{ExitCode::SystemFailure,
                      "the Open dialog cannot be shown: its error " + NumberText(nError)};
    }
    output.WriteLine(ToUtf8(pszPath.get()));
    return static_cast<UINT>(ExitCode::Done);
}
