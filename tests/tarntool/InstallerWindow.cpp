#include "tests/tarntool/InstallerWindow.h"

#include "tests/support/WindowDriver.h"
#include "tests/tarntool/Tool.h"

#include <gtest/gtest.h>

#include <stdexcept>

int InstallerWindow::s_nActivations = 0;

InstallerWindow::InstallerWindow()
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &InstallerWindow::Procedure;
    windowClass.lpszClassName = L"Tarn test installer";
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    ::RegisterClassW(&windowClass);
    m_hWnd = ::CreateWindowExW(0, windowClass.lpszClassName, L"Installer",
                               WS_OVERLAPPEDWINDOW | WS_VISIBLE, 200, 150, 601, 403, nullptr,
                               nullptr, nullptr, nullptr);
    ::SetForegroundWindow(m_hWnd);
    ::SetFocus(m_hWnd);
    window_driver::PumpUntil([] { return true; });
}

InstallerWindow::~InstallerWindow()
{
    ::DestroyWindow(m_hWnd);
}

std::wstring InstallerWindow::Number() const
{
    return std::to_wstring(reinterpret_cast<UINT_PTR>(m_hWnd));
}

LRESULT CALLBACK InstallerWindow::Procedure(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam)
{
    if (nMessage == WM_ACTIVATE || nMessage == WM_ACTIVATEAPP || nMessage == WM_KILLFOCUS)
        ++s_nActivations;
    return ::DefWindowProcW(hWnd, nMessage, wParam, lParam);
}

// Runs in the other process: is ended by being killed.
TEST(OtherInstallerProcess, DISABLED_HasAWindow)
{
    const InstallerWindow window;
    ::SetWindowTextW(window.Handle(), L"Other installer");
    window_driver::PumpUntil([] { return false; }, nullptr, 120000);
}

OtherInstaller::OtherInstaller()
{
    wchar_t szProgram[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, szProgram, MAX_PATH);
    std::wstring line = tool::Quoted(szProgram) + L" --gtest_also_run_disabled_tests "
                                                  L"--gtest_filter=OtherInstallerProcess.*";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process))
        throw std::runtime_error("cannot start another installer");
    ::CloseHandle(process.hThread);
    m_hProcess = process.hProcess;
    m_hWnd = tool::WaitForVisible(L"Other installer");
}

std::wstring OtherInstaller::Number() const
{
    return std::to_wstring(reinterpret_cast<UINT_PTR>(m_hWnd));
}

void OtherInstaller::Kill()
{
    if (m_hProcess == nullptr)
        return;
    ::TerminateProcess(m_hProcess, 9);
    ::WaitForSingleObject(m_hProcess, INFINITE);
    ::CloseHandle(m_hProcess);
    m_hProcess = nullptr;
}
