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
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pNewState) : m_pThreadState(GetThreadState())
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
    ThreadState* m_pThreadState;
    ULONG_PTR m_ulActCtxCookie = 0;
    BOOL m_bValidActCtxCookie = FALSE;
};

// As above, and known to its thread: for the day that somebody takes the call's frames away without
// running destructors, as after a fault of the processor's that the caller survives.
class TrackedState : public AFX_MAINTAIN_STATE2
{
public:
    explicit TrackedState(AFX_MODULE_STATE* pNewState)
        : AFX_MAINTAIN_STATE2(pNewState), m_pOuter(m_pThreadState->m_pInnermost)
    {
        // One that stands further down was left behind by a host that set its stack back by hand.
        if (m_pOuter <= this)
            m_pOuter = nullptr;
        m_pThreadState->m_pInnermost = this;
    }
    ~TrackedState() { m_pThreadState->m_pInnermost = m_pOuter; }
    TrackedState(const TrackedState&) = delete;
    TrackedState& operator=(const TrackedState&) = delete;

    // Destroys those below pEnd on the calling thread's stack.
    static void DestroyBelow(const void* pEnd) noexcept;

private:
    TrackedState* m_pOuter;
};

#define AFX_MANAGE_STATE(p) TrackedState _ctlState(p)
