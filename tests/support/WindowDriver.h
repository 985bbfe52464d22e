// Finds windows of this process, types into them, and runs a message loop until something happened.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace window_driver
{
// Longest time that a condition is waited for. Only a failure takes that long.
constexpr DWORD kLimitMilliseconds = 20000;

// Polls without a message loop; for driver threads. False when the limit has passed.
bool WaitFor(const std::function<bool()>& condition, DWORD nLimit = kLimitMilliseconds);

// As WaitFor, and dispatches the thread's messages as an installer's loop does, dialog keys included
// when hDialog is given.
bool PumpUntil(const std::function<bool()>& condition, HWND hDialog = nullptr,
               DWORD nLimit = kLimitMilliseconds);

// A top-level window of this process with this caption, or null.
HWND FindTopLevel(const std::string& caption);
// Waits for it.
HWND WaitForTopLevel(const std::string& caption);
// Top-level dialog windows of this process.
int CountDialogs();
// One of them that is visible, or null.
HWND FindVisibleDialog();

std::string TextOf(HWND hWnd);

// Posts a key to a window as the keyboard would.
void PostKey(HWND hWnd, WPARAM nKey);

// Runs a function on a thread of its own; the destructor waits for its end.
class DriverThread
{
public:
    explicit DriverThread(std::function<void()> function);
    ~DriverThread() { Join(); }
    DriverThread(const DriverThread&) = delete;
    DriverThread& operator=(const DriverThread&) = delete;
    void Join();

private:
    static DWORD WINAPI Run(LPVOID pThis);
    std::function<void()> m_function;
    HANDLE m_hThread;
};

// A plain popup window for use as an installer's window; destroyed with the object.
class HostWindow
{
public:
    HostWindow(int nLeft, int nTop, int nRight, int nBottom);
    ~HostWindow();
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;
    HWND Handle() const { return m_hWnd; }

private:
    HWND m_hWnd;
};

// Saves the screen as a PNG under the folder that TARN_SCREENSHOTS names; false without one or when
// it cannot be written.
bool SaveScreenshot(const std::string& name);
} // namespace window_driver
