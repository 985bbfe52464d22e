// ReactingHost: an installer's window that calls something from within its handling of a message.
#pragma once

#include <windows.h>

#include <functional>

class ReactingHost
{
public:
    struct Trigger
    {
        UINT nMessage;
        int nParam; // low word of the message's first parameter, or -1 for any
    };

    ReactingHost();
    ~ReactingHost();
    ReactingHost(const ReactingHost&) = delete;
    ReactingHost& operator=(const ReactingHost&) = delete;

    HWND Handle() const { return m_hWnd; }

    // From now on: calls the reaction when the message arrives, up to so many times, and not again
    // from within that many calls of itself.
    void React(Trigger trigger, std::function<void()> reaction, int nTimes = 1, int nDepth = 1);
    // Returns how often it has been called.
    int Stop();

private:
    static LRESULT CALLBACK Procedure(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
    void Handle(UINT nMessage, WPARAM wParam);

    HWND m_hWnd = nullptr;
    Trigger m_trigger = {};
    std::function<void()> m_reaction;
    int m_nLeft = 0;
    int m_nCalls = 0;
    int m_nDepth = 0;
    int m_nMaxDepth = 0;
};
