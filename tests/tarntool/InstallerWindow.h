// InstallerWindow: what tarntool is told of an installer, its window.
#pragma once

#include <windows.h>

#include <string>

// A window of this process, in the foreground; destroyed with the object.
class InstallerWindow
{
public:
    InstallerWindow();
    ~InstallerWindow();
    InstallerWindow(const InstallerWindow&) = delete;
    InstallerWindow& operator=(const InstallerWindow&) = delete;

    HWND Handle() const { return m_hWnd; }
    std::wstring Number() const;

    // How often it was activated or deactivated.
    int CountActivations() const { return s_nActivations; }
    void ForgetMessages() { s_nActivations = 0; }

private:
    static LRESULT CALLBACK Procedure(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
    static int s_nActivations;

    HWND m_hWnd;
};

// Such a window in a process of its own, which handles its messages until it is killed. That process is
// this program again.
class OtherInstaller
{
public:
    OtherInstaller();
    ~OtherInstaller() { Kill(); }
    OtherInstaller(const OtherInstaller&) = delete;
    OtherInstaller& operator=(const OtherInstaller&) = delete;

    HWND Handle() const { return m_hWnd; }
    std::wstring Number() const;
    void Kill();

private:
    HANDLE m_hProcess = nullptr;
    HWND m_hWnd = nullptr;
};
