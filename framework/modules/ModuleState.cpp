#include "framework/modules/ModuleState.h"

#include "framework/modules/ThreadState.h"

// The module that this code is linked into, whoever loaded it.
extern "C" IMAGE_DOS_HEADER __ImageBase;

AFX_MODULE_STATE::AFX_MODULE_STATE(BOOL bDLL, WNDPROC pfnAfxWndProc) noexcept
    : m_hCurrentInstanceHandle(reinterpret_cast<HINSTANCE>(&__ImageBase)),
      m_hCurrentResourceHandle(m_hCurrentInstanceHandle), m_pfnWndProc(pfnAfxWndProc),
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

AFX_MODULE_STATE* GetCurrentModuleState() noexcept
{
    const ThreadState* const pThreadState = FindThreadState();
    return pThreadState != nullptr && pThreadState->m_pModuleState != nullptr
               ? pThreadState->m_pModuleState
               : GetDefaultModuleState();
}

AFX_MODULE_STATE* SetCurrentModuleState(AFX_MODULE_STATE* pNewState)
{
    AFX_MODULE_STATE* const pOldState = GetCurrentModuleState();
    GetThreadState()->m_pModuleState = pNewState;
    return pOldState;
}

HINSTANCE AfxGetInstanceHandle()
{
    return GetCurrentModuleState()->m_hCurrentInstanceHandle;
}

HINSTANCE AfxGetResourceHandle()
{
    return GetCurrentModuleState()->m_hCurrentResourceHandle;
}
