// AFX_MANAGE_STATE: makes a module state current for the extent of a block.
#pragma once

#include "framework/modules/ActCtx.h"
#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"

// Lives on the stack of the call that it guards. Switches the calling thread to a module state and
// activates that module's context; puts both back when it is destroyed.
class AFX_MAINTAIN_STATE2
{
public:
    // In line: a call of its own is a tenth of what the guard costs.
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pNewState) : m_pThreadState(AfxGetThreadState())
    {
        // NOLINTBEGIN(cppcoreguidelines-prefer-member-initializer): in this order
        m_pPrevModuleState = m_pThreadState->m_pModuleState;
        m_pThreadState->m_pModuleState = pNewState;
        m_bValidActCtxCookie =
            AfxActivateActCtx(pNewState->GetActivationContext(), &m_ulActCtxCookie);
        // NOLINTEND(cppcoreguidelines-prefer-member-initializer)
    }
    ~AFX_MAINTAIN_STATE2();
    AFX_MAINTAIN_STATE2(const AFX_MAINTAIN_STATE2&) = delete;
    AFX_MAINTAIN_STATE2& operator=(const AFX_MAINTAIN_STATE2&) = delete;

protected:
    AFX_MODULE_STATE* m_pPrevModuleState = nullptr;
    _AFX_THREAD_STATE* m_pThreadState;
    ULONG_PTR m_ulActCtxCookie = 0;
    BOOL m_bValidActCtxCookie = FALSE;
};

#define AFX_MANAGE_STATE(p) AFX_MAINTAIN_STATE2 _ctlState(p)
