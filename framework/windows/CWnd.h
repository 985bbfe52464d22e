// CWnd: a window of the framework.
//
// Binding: an object is attached to its window from the window's creation until WM_NCDESTROY. While
// it is attached, the window's procedure is the module's (AFX_MODULE_STATE::m_pfnWndProc) and
// GWLP_USERDATA holds the object. One thread, the window's, uses both; only Orphan may come from
// another.
#pragma once

#include "framework/modules/CCmdTarget.h"

#include <windows.h>

class AFX_MODULE_STATE;

class CWnd : public CCmdTarget
{
public:
    CWnd() = default;
    // Destroys the window; one that the system does not destroy is left behind, inert.
    ~CWnd() override;

    static CWnd* BoundTo(HWND hWnd);
    HWND GetSafeHwnd() const { return m_hWnd; }

    virtual BOOL DestroyWindow();

    BOOL ShowWindow(int nCmdShow) { return ::ShowWindow(m_hWnd, nCmdShow); }
    void UpdateWindow() { ::UpdateWindow(m_hWnd); }
    BOOL SetWindowPos(const CWnd* pWndInsertAfter, int x, int y, int cx, int cy, UINT nFlags);
    void GetWindowRect(LPRECT lpRect) const { ::GetWindowRect(m_hWnd, lpRect); }
    void SetWindowText(LPCSTR lpszString) { ::SetWindowTextA(m_hWnd, lpszString); }
    LRESULT SendDlgItemMessage(int nID, UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
    {
        return ::SendDlgItemMessageA(m_hWnd, nID, message, wParam, lParam);
    }
    UINT_PTR SetTimer(UINT_PTR nIDEvent, UINT nElapse, TIMERPROC lpfnTimer)
    {
        return ::SetTimer(m_hWnd, nIDEvent, nElapse, lpfnTimer);
    }
    BOOL KillTimer(UINT_PTR nIDEvent) { return ::KillTimer(m_hWnd, nIDEvent); }

    // Takes the window away from its object: the system's own procedure serves it from then on.
    void Orphan() noexcept;
    // The same for every window of the module, which is about to be unloaded.
    static void OrphanAll() noexcept;

    HWND m_hWnd = nullptr; // owned while attached

    static const CWnd& wndTopMost; // for SetWindowPos, which knows it by its address

protected:
    // Called for every message; those that no map and no override takes go to the procedure that the
    // window had before. A handler may end with its object deleted, by whomever its last call reached:
    // nothing here touches the object after a handler has returned.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // TRUE, with the result in *pResult, when the message has been handled.
    virtual BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult);
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // Last call for an object whose window is gone.
    virtual void PostNcDestroy();

    // Binds the object to its new window.
    void Bind(HWND hWnd);
    void Unbind() noexcept;

    DECLARE_MESSAGE_MAP()

private:
    friend LRESULT CALLBACK AfxWndProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    AFX_MODULE_STATE* m_pModuleState = nullptr; // of the attached window
    WNDPROC m_pfnSuper = nullptr;
    CWnd* m_pNextWnd = nullptr; // in the list of the module's windows
};

// The window procedure of a program. No exception leaves it: the message counts as handled.
LRESULT CALLBACK AfxWndProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

// The window procedure of a library: as AfxWndProc, with the library's module state current, since
// the message may come through the message loop of the program that loaded it.
LRESULT CALLBACK LibraryWndProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
