#include "tests/support/OpenDialogDriver.h"

#include "tests/support/WindowDriver.h"
#include "tests/support/Wine.h"

namespace open_dialog_driver
{
namespace
{
// dlgs.h: cmb13, or edt1 without the combo box; cmb1; chx1
constexpr int kFileName = 1148;
constexpr int kFileTypes = 1136;
constexpr int kReadOnly = 1040;
constexpr UINT kClickButton = WM_USER + 102; // TDM_CLICK_BUTTON

struct Descendant
{
    const char* pszClass;
    HWND hFound;
};

bool IsOfClass(HWND hWnd, const char* pszClass)
{
    char szClass[64] = "";
    ::GetClassNameA(hWnd, szClass, sizeof(szClass));
    return ::lstrcmpiA(szClass, pszClass) == 0;
}

BOOL CALLBACK VisitDescendant(HWND hWnd, LPARAM lParam)
{
    auto& search = *reinterpret_cast<Descendant*>(lParam);
    if (!IsOfClass(hWnd, search.pszClass))
        return TRUE;
    search.hFound = hWnd;
    return FALSE;
}
} // namespace

HWND FindDescendant(HWND hWnd, const char* pszClass)
{
    Descendant search = {pszClass, nullptr};
    ::EnumChildWindows(hWnd, &VisitDescendant, reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND FileNameBox(HWND hDialog)
{
    HWND const hControl = ::GetDlgItem(hDialog, kFileName);
    if (hControl == nullptr || IsOfClass(hControl, WC_EDITA))
        return hControl;
    return FindDescendant(hControl, WC_EDITA);
}

HWND FileTypes(HWND hDialog)
{
    return ::GetDlgItem(hDialog, kFileTypes);
}

HWND FilesShown(HWND hDialog)
{
    return FindDescendant(hDialog, WC_LISTVIEWA);
}

HWND ReadOnlyBox(HWND hDialog)
{
    return ::GetDlgItem(hDialog, kReadOnly);
}

bool IsReady(HWND hDialog)
{
    HWND const hName = FileNameBox(hDialog);
    return ::IsWindowVisible(hDialog) && hName != nullptr && ::IsWindowEnabled(hName);
}

void Type(HWND hDialog, const std::string& text)
{
    ::SendMessageA(FileNameBox(hDialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

std::string FileName(HWND hDialog)
{
    return window_driver::TextOf(FileNameBox(hDialog));
}

void Confirm(HWND hDialog)
{
    ::PostMessageA(hDialog, WM_COMMAND, IDOK, 0);
}

void Cancel(HWND hDialog)
{
    ::PostMessageA(hDialog, WM_COMMAND, IDCANCEL, 0);
}

void AnswerBox(HWND hBox)
{
    // The newer dialog asks by a task dialog, which knows this message instead.
    if (RunsUnderWine())
        ::PostMessageA(hBox, WM_COMMAND, IDOK, 0);
    else
        ::PostMessageA(hBox, kClickButton, IDOK, 0);
}
} // namespace open_dialog_driver
