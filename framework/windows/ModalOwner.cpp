#include "framework/windows/ModalOwner.h"

#include "framework/windows/CWnd.h"

namespace
{
constexpr UINT kAnswerMilliseconds = 200; // that a window of another thread has

bool IsOfThisThread(HWND hWnd)
{
    return ::GetWindowThreadProcessId(hWnd, nullptr) == ::GetCurrentThreadId();
}

// A thread that does not handle messages would not return from being told that its window is disabled.
bool Answers(HWND hWnd)
{
    DWORD_PTR nResult = 0;
    return ::SendMessageTimeoutA(hWnd, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kAnswerMilliseconds,
                                 &nResult) != 0;
}
} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): what is behind the count is never read
ModalOwner::ModalOwner(const CWnd* pParentWnd) : m_hWndActive(::GetActiveWindow())
{
    ::EnumWindows(&ModalOwner::Visit, reinterpret_cast<LPARAM>(this));
    for (int i = 0; i < m_nWindows; ++i)
    {
        if (RankOf(m_windows[i]) > RankOf(m_hWndOwner))
            m_hWndOwner = m_windows[i];
    }
    if (pParentWnd != nullptr && pParentWnd->GetSafeHwnd() != nullptr)
        m_hWndOwner = pParentWnd->GetSafeHwnd();
    Disable();
}

ModalOwner::~ModalOwner()
{
    for (int i = 0; i < m_nWindows; ++i)
        ::EnableWindow(m_windows[i], TRUE);
    // A window that has hidden meanwhile is not to be active again.
    HWND const hWnd =
        ::IsWindowVisible(m_hWndActive) || m_nWindows == 0 ? m_hWndActive : m_windows[0];
    if (hWnd != ::GetActiveWindow() && ::IsWindowVisible(hWnd))
        ::SetActiveWindow(hWnd);
}

BOOL CALLBACK ModalOwner::Visit(HWND hWnd, LPARAM lParam)
{
    auto& owner = *reinterpret_cast<ModalOwner*>(lParam);
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    if (nProcessID == ::GetCurrentProcessId() && ::IsWindowVisible(hWnd) && ::IsWindowEnabled(hWnd))
        owner.m_windows[owner.m_nWindows++] = hWnd;
    return owner.m_nWindows < kMaxWindows ? TRUE : FALSE;
}

int ModalOwner::RankOf(HWND hWnd) const
{
    if (!IsOfThisThread(hWnd))
        return 0;
    const bool bTopmost = (::GetWindowLongA(hWnd, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    return 1 + (hWnd == m_hWndActive ? 1 : 0) + (bTopmost ? 2 : 0);
}

// Every window but the owner, and leaves in the list those to enable again.
void ModalOwner::Disable()
{
    int nOwn = 0;
    for (int i = 0; i < m_nWindows; ++i)
        nOwn += IsOfThisThread(m_windows[i]) ? 1 : 0;
    const int nWindows = m_nWindows;
    m_nWindows = 0;
    for (int i = 0; i < nWindows; ++i)
    {
        HWND const hWnd = m_windows[i];
        if (hWnd == m_hWndOwner || (!IsOfThisThread(hWnd) && (nOwn != 1 || !Answers(hWnd))))
            continue;
        ::EnableWindow(hWnd, FALSE);
        m_windows[m_nWindows++] = hWnd;
    }
}
