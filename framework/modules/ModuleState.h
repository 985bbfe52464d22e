// Module state: what the framework keeps for each module (program or library) that uses it.
#pragma once

#include <windows.h>

class CWinApp;

class AFX_MODULE_STATE
{
public:
    // bDLL: the state of a library, not of a program. pfnAfxWndProc: the window procedure that the
    // module's windows get.
    AFX_MODULE_STATE(BOOL bDLL, WNDPROC pfnAfxWndProc) noexcept;
    ~AFX_MODULE_STATE(); // releases the context
    AFX_MODULE_STATE(const AFX_MODULE_STATE&) = delete;
    AFX_MODULE_STATE& operator=(const AFX_MODULE_STATE&) = delete;

    // The context of the module's manifest, made on first use; INVALID_HANDLE_VALUE when there is no
    // manifest or no context can be made, in which case the next call tries again.
    HANDLE GetActivationContext() noexcept
    {
        HANDLE const hActCtx = m_hActCtx;
        return hActCtx != INVALID_HANDLE_VALUE ? hActCtx : MakeActivationContext();
    }

    CWinApp* m_pCurrentWinApp = nullptr; // borrowed; objects of static life
    HINSTANCE m_hCurrentInstanceHandle;
    HINSTANCE m_hCurrentResourceHandle;
    WNDPROC m_pfnWndProc;
    BYTE m_bDLL;

private:
    __attribute__((noinline)) HANDLE MakeActivationContext() noexcept;

    HANDLE volatile m_hActCtx = INVALID_HANDLE_VALUE; // owned
};

// The state of the module that this call is compiled into.
AFX_MODULE_STATE* AfxGetStaticModuleState() noexcept;

// The state that is current when a thread has set none.
AFX_MODULE_STATE* GetDefaultModuleState() noexcept;

// The state that is current on the calling thread.
AFX_MODULE_STATE* GetCurrentModuleState() noexcept;

// Makes a state current on the calling thread (null: the default one) and returns the one before.
AFX_MODULE_STATE* SetCurrentModuleState(AFX_MODULE_STATE* pNewState);

// Of the current module state.
HINSTANCE AfxGetInstanceHandle();
HINSTANCE AfxGetResourceHandle();
