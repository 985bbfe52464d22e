#include "framework/modules/MaintainState.h"

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    if (m_pThreadState != nullptr)
        m_pThreadState->m_pModuleState = m_pPrevModuleState;
    if (m_bValidActCtxCookie)
        AfxDeactivateActCtx(0, m_ulActCtxCookie);
}

void TrackedState::DestroyBelow(const void* pEnd) noexcept
{
    const ThreadState* const pState = FindThreadState();
    if (pState == nullptr)
        return;
    // What is none any more was left behind by a host that set its stack back by hand.
    while (pState->m_pInnermost != nullptr &&
           static_cast<const void*>(pState->m_pInnermost) < pEnd &&
           pState->m_pInnermost->m_pThreadState == pState)
        pState->m_pInnermost->~TrackedState();
}
