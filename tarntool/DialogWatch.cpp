#include "tarntool/DialogWatch.h"

#include <cwchar>

namespace
{
using Manner = DialogWatch::Manner;

// Of the one object; hook procedures get no argument of their own.
HWND g_hWndParent = nullptr;
Manner g_manner = Manner::Ordinary;
HWND g_hDialog = nullptr;
WNDPROC g_pfnDialog = nullptr;
bool g_bUnicode = false;
bool g_bShown = false;

bool IsDialog(HWND hWnd)
{
    WCHAR szClass[16] = L"";
    ::GetClassNameW(hWnd, szClass, 16);
    return std::wcscmp(szClass, L"#32770") == 0;
}

// Before it is seen for the first time, and never without having been moved.
void OnPosChanging(HWND hWnd, WINDOWPOS& pos)
{
    if (g_manner == Manner::Quiet)
        pos.flags |= SWP_NOACTIVATE;
    if (g_bShown || (pos.flags & SWP_SHOWWINDOW) == 0)
        return;
    g_bShown = true;
    if (g_manner == Manner::Quiet)
        ::SetWindowLongPtrA(hWnd, GWL_EXSTYLE,
                            ::GetWindowLongPtrA(hWnd, GWL_EXSTYLE) | WS_EX_NOACTIVATE);
    RECT rc = {};
    ::GetWindowRect(hWnd, &rc);
    const POINT corner = CentredOver(g_hWndParent, rc.right - rc.left, rc.bottom - rc.top);
    pos.x = corner.x;
    pos.y = corner.y;
    pos.flags &= ~static_cast<UINT>(SWP_NOMOVE);
}

LRESULT CALLBACK WatchedProc(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam)
{
    if (nMessage == WM_MOUSEACTIVATE && g_manner == Manner::Quiet)
        return MA_NOACTIVATE;
    if (nMessage == WM_WINDOWPOSCHANGING)
        OnPosChanging(hWnd, *reinterpret_cast<WINDOWPOS*>(lParam));
    return g_bUnicode ? ::CallWindowProcW(g_pfnDialog, hWnd, nMessage, wParam, lParam)
                      : ::CallWindowProcA(g_pfnDialog, hWnd, nMessage, wParam, lParam);
}

void TakeDialog(HWND hWnd)
{
    g_hDialog = hWnd;
    g_bUnicode = ::IsWindowUnicode(hWnd) != FALSE;
    const auto pfnSet = g_bUnicode ? &::SetWindowLongPtrW : &::SetWindowLongPtrA;
    g_pfnDialog = reinterpret_cast<WNDPROC>(
        pfnSet(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WatchedProc)));
}

LRESULT CALLBACK CreationHook(int nCode, WPARAM wParam, LPARAM lParam)
{
    if (nCode == HCBT_CREATEWND && g_hDialog == nullptr && IsDialog(reinterpret_cast<HWND>(wParam)))
        TakeDialog(reinterpret_cast<HWND>(wParam));
    if ((nCode == HCBT_ACTIVATE || nCode == HCBT_SETFOCUS) && g_manner == Manner::Quiet)
        return TRUE; // refused
    return ::CallNextHookEx(nullptr, nCode, wParam, lParam);
}

LRESULT CALLBACK MessageHook(int nCode, WPARAM wParam, LPARAM lParam)
{
    const MSG& message = *reinterpret_cast<const MSG*>(lParam);
    if (nCode == MSGF_DIALOGBOX && message.message == WM_KEYDOWN && message.wParam == VK_RETURN)
        return TRUE; // swallowed
    return ::CallNextHookEx(nullptr, nCode, wParam, lParam);
}
} // namespace

DialogWatch::DialogWatch(HWND hWndParent, Manner manner)
{
    g_hWndParent = hWndParent;
    g_manner = manner;
    g_hDialog = nullptr;
    g_bShown = false;
    // Only when those are set. NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
    m_hCreationHook = ::SetWindowsHookExW(WH_CBT, &CreationHook, nullptr, ::GetCurrentThreadId());
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
    m_hMessageHook =
        manner == Manner::Patient
            ? ::SetWindowsHookExW(WH_MSGFILTER, &MessageHook, nullptr, ::GetCurrentThreadId())
            : nullptr;
}

DialogWatch::~DialogWatch()
{
    ::UnhookWindowsHookEx(m_hCreationHook);
    if (m_hMessageHook != nullptr)
        ::UnhookWindowsHookEx(m_hMessageHook);
}

HWND DialogWatch::GetDialog()
{
    return g_hDialog;
}

POINT CentredOver(HWND hWndParent, int cx, int cy)
{
    RECT rc = {};
    // A minimised window is far outside the screen.
    if (hWndParent == nullptr || ::IsIconic(hWndParent) || !::GetWindowRect(hWndParent, &rc))
        ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &rc, 0);
    return {(rc.left + rc.right) / 2 - cx / 2, (rc.top + rc.bottom) / 2 - cy / 2};
}
