#include "framework/modules/ModuleState.h"

#include "framework/modules/CWinApp.h"
#include "framework/modules/ThreadState.h"
#include "framework/windows/CWnd.h"

// The module that this code is linked into, whoever loaded it.
extern "C" IMAGE_DOS_HEADER __ImageBase;

AFX_MODULE_STATE::AFX_MODULE_STATE(BOOL bDLL, WNDPROC pfnAfxWndProc) noexcept
    : m_hCurrentInstanceHandle(reinterpret_cast<HINSTANCE>(&__ImageBase)),
      m_hCurrentResourceHandle(m_hCurrentInstanceHandle), m_pfnAfxWndProc(pfnAfxWndProc),
      m_bDLL(bDLL ? TRUE : FALSE)
{
}

AFX_MODULE_STATE::~AFX_MODULE_STATE()
{
    if (m_hActCtx != INVALID_HANDLE_VALUE)
        ::ReleaseActCtx(m_hActCtx);
}

HANDLE AFX_MODULE_STATE::MakeActivationContext() noexcept
{
    ACTCTXA actctx = {};
    actctx.cbSize = sizeof(actctx);
    actctx.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    actctx.hModule = m_hCurrentInstanceHandle;
    // Not the number that the loader looks for: it would make a context at load, for static imports
    // that do not need one.
    actctx.lpResourceName =
        MAKEINTRESOURCEA(3); // ISOLATIONAWARE_NOSTATICIMPORT_MANIFEST_RESOURCE_ID
    HANDLE const hNew = ::CreateActCtxA(&actctx);
    if (hNew == INVALID_HANDLE_VALUE)
        return hNew;
    HANDLE const hOther =
        ::InterlockedCompareExchangePointer(&m_hActCtx, hNew, INVALID_HANDLE_VALUE);
    if (hOther == INVALID_HANDLE_VALUE)
        return hNew;
    ::ReleaseActCtx(hNew); // another thread was first
    return hOther;
}

void AFX_MODULE_STATE::AddWindow(CWnd* pWnd) noexcept
{
    ::AcquireSRWLockExclusive(&m_lock);
    pWnd->m_pNextWnd = m_pFirstWnd;
    m_pFirstWnd = pWnd;
    ::ReleaseSRWLockExclusive(&m_lock);
}

void AFX_MODULE_STATE::RemoveWindow(CWnd* pWnd) noexcept
{
    ::AcquireSRWLockExclusive(&m_lock);
    CWnd** ppWnd = &m_pFirstWnd;
    while (*ppWnd != nullptr && *ppWnd != pWnd)
        ppWnd = &(*ppWnd)->m_pNextWnd;
    if (*ppWnd != nullptr)
        *ppWnd = pWnd->m_pNextWnd;
    ::ReleaseSRWLockExclusive(&m_lock);
}

void AFX_MODULE_STATE::OrphanWindows() noexcept
{
    while (m_pFirstWnd != nullptr)
        m_pFirstWnd->Orphan();
}

AFX_MODULE_STATE* AfxGetModuleState() noexcept
{
    const _AFX_THREAD_STATE* const pThreadState = AfxFindThreadState();
    return pThreadState != nullptr && pThreadState->m_pModuleState != nullptr
               ? pThreadState->m_pModuleState
               : AfxGetDefaultModuleState();
}

AFX_MODULE_STATE* AfxSetModuleState(AFX_MODULE_STATE* pNewState)
{
    AFX_MODULE_STATE* const pOldState = AfxGetModuleState();
    AfxGetThreadState()->m_pModuleState = pNewState;
    return pOldState;
}

CWinApp* AfxGetApp()
{
    return AfxGetModuleState()->m_pCurrentWinApp;
}

LPCSTR AfxGetAppName()
{
    const CWinApp* const pApp = AfxGetApp();
    return pApp != nullptr ? pApp->m_pszAppName : nullptr;
}

HINSTANCE AfxGetInstanceHandle()
{
    return AfxGetModuleState()->m_hCurrentInstanceHandle;
}

HINSTANCE AfxGetResourceHandle()
{
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}
