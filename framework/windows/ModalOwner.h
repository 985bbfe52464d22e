// ModalOwner: what a modal window of the library stands over, and what it keeps the user away from.
#pragma once

#include <windows.h>

class CWnd;

// Lives around the call that shows the modal window.
//
// The system disables a modal window's owner and nothing else. While a window that stays on top is
// up, the modal window must be owned by that one, or it would be covered; the installer's window
// would then go on taking clicks. So the thread's other windows are disabled, too. Of another thread
// only for a thread that has but its one window: an installer's section on a thread of its own.
// Afterwards all is enabled that was, and the window that was active is active again.
class ModalOwner
{
public:
    explicit ModalOwner(const CWnd* pParentWnd);
    ~ModalOwner();
    ModalOwner(const ModalOwner&) = delete;
    ModalOwner& operator=(const ModalOwner&) = delete;

    // The given window; without one the thread's visible and enabled window that stays on top, else
    // its active one, else any. Null when the thread shows none.
    HWND Handle() const { return m_hWndOwner; }

private:
    static BOOL CALLBACK Visit(HWND hWnd, LPARAM lParam);
    int RankOf(HWND hWnd) const;
    void Disable();

    static constexpr int kMaxWindows = 64; // more than one process shows at a time

    HWND m_hWndActive; // before
    HWND m_hWndOwner = nullptr;
    int m_nWindows = 0;
    HWND m_windows[kMaxWindows]; // visible and enabled; then those that were disabled
};
