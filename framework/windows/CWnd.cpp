#include "framework/windows/CWnd.h"

#include "framework/exceptions/CException.h"
#include "framework/modules/MaintainState.h"
#include "framework/modules/ModuleState.h"
#include "runtime/Heap.h"

namespace
{
// A place and no object: nothing is constructed when the library is loaded.
alignas(CWnd) constexpr unsigned char kTopMost[sizeof(CWnd)] = {};
} // namespace

const CWnd& CWnd::wndTopMost = reinterpret_cast<const CWnd&>(kTopMost);

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
END_MESSAGE_MAP()

namespace
{
// The module's live windows, for the day it is unloaded before they are gone. Guarded by the heap's
// lock, because nobody is ever terminated who holds it.
CWnd* g_pFirstWnd = nullptr;
} // namespace

CWnd::~CWnd()
{
    if (m_pModuleState == nullptr)
        return;
    // Not the virtual function: this is what is left of the object.
    ::DestroyWindow(m_hWnd);
    if (m_pModuleState != nullptr)
        Orphan();
}

CWnd* CWnd::BoundTo(HWND hWnd)
{
    return reinterpret_cast<CWnd*>(::GetWindowLongPtrA(hWnd, GWLP_USERDATA));
}

BOOL CWnd::DestroyWindow()
{
    return m_hWnd != nullptr && ::DestroyWindow(m_hWnd);
}

BOOL CWnd::SetWindowPos(const CWnd* pWndInsertAfter, int x, int y, int cx, int cy, UINT nFlags)
{
    HWND hWndAfter = nullptr;
    if (pWndInsertAfter == &wndTopMost)
        hWndAfter = HWND_TOPMOST;
    else if (pWndInsertAfter != nullptr)
        hWndAfter = pWndInsertAfter->m_hWnd;
    return ::SetWindowPos(m_hWnd, hWndAfter, x, y, cx, cy, nFlags);
}

void CWnd::Bind(HWND hWnd)
{
    m_hWnd = hWnd;
    m_pModuleState = GetCurrentModuleState();
    {
        const HeapGuard guard;
        m_pNextWnd = g_pFirstWnd;
        g_pFirstWnd = this;
    }
    ::SetWindowLongPtrA(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_pfnSuper = reinterpret_cast<WNDPROC>(::SetWindowLongPtrA(
        hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pModuleState->m_pfnWndProc)));
}

void CWnd::Unbind() noexcept
{
    const HeapGuard guard;
    CWnd** ppWnd = &g_pFirstWnd;
    while (*ppWnd != nullptr && *ppWnd != this)
        ppWnd = &(*ppWnd)->m_pNextWnd;
    if (*ppWnd != nullptr)
        *ppWnd = m_pNextWnd;
    m_pModuleState = nullptr;
    m_hWnd = nullptr;
}

void CWnd::Orphan() noexcept
{
    // The window of a thread that has ended went without a message, and another may have its handle.
    if (BoundTo(m_hWnd) == this)
    {
        ::SetWindowLongPtrA(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pfnSuper));
        ::SetWindowLongPtrA(m_hWnd, GWLP_USERDATA, 0);
        // A dialog's window knows one more procedure of this module.
        ::SetWindowLongPtrA(m_hWnd, DWLP_DLGPROC, 0);
    }
    Unbind();
}

void CWnd::OrphanAll() noexcept
{
    while (g_pFirstWnd != nullptr)
        g_pFirstWnd->Orphan();
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    LRESULT lResult = 0;
    if (!OnWndMsg(message, wParam, lParam, &lResult))
        lResult = DefWindowProc(message, wParam, lParam);
    return lResult;
}

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult)
{
    if (message == WM_COMMAND && OnCommand(wParam, lParam))
        return TRUE;
    for (const AFX_MSGMAP* pMap = GetMessageMap(); pMap != nullptr;
         pMap = pMap->pfnGetBaseMap != nullptr ? pMap->pfnGetBaseMap() : nullptr)
    {
        for (const AFX_MSGMAP_ENTRY* pEntry = pMap->lpEntries;
             pEntry->pfnMessage != nullptr || pEntry->pfnTimer != nullptr; ++pEntry)
        {
            if (pEntry->nMessage != message)
                continue;
            *pResult = 0;
            if (pEntry->pfnTimer != nullptr)
                (this->*pEntry->pfnTimer)(wParam);
            else
                *pResult = (this->*pEntry->pfnMessage)(wParam, lParam);
            return TRUE;
        }
    }
    return FALSE;
}

BOOL CWnd::OnCommand(WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    return FALSE;
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    return ::CallWindowProcA(m_pfnSuper, m_hWnd, message, wParam, lParam);
}

void CWnd::PostNcDestroy()
{
}

LRESULT CALLBACK AfxWndProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    CWnd* const pWnd = CWnd::BoundTo(hWnd);
    if (pWnd == nullptr)
        return ::DefWindowProcA(hWnd, message, wParam, lParam);
    LRESULT lResult = 0;
    // The system calls this, and must not be unwound.
    try
    {
        lResult = pWnd->WindowProc(message, wParam, lParam);
    }
    catch (CException* pException)
    {
        pException->Delete();
    }
    catch (...) // NOLINT(bugprone-empty-catch): whatever it was, it ends here
    {
    }
    // The last message of all. Nothing may be set in the window any more: the system would make room
    // for it again, and never free it.
    if (message == WM_NCDESTROY)
    {
        pWnd->Unbind();
        pWnd->PostNcDestroy();
    }
    return lResult;
}

LRESULT CALLBACK LibraryWndProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    // Throws nothing: a thread that has a window of the library has its thread state.
    AFX_MANAGE_STATE(AfxGetStaticModuleState());
    return AfxWndProc(hWnd, message, wParam, lParam);
}
