#include "MaintainState.h"

AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pNewState)
    : m_pThreadState(AfxGetThreadState())
{
    // NOLINTBEGIN(cppcoreguidelines-prefer-member-initializer): in this order
    m_pPrevModuleState = m_pThreadState->m_pModuleState;
    m_pThreadState->m_pModuleState = pNewState;
    m_bValidActCtxCookie = AfxActivateActCtx(pNewState->GetActivationContext(), &m_ulActCtxCookie);
    // NOLINTEND(cppcoreguidelines-prefer-member-initializer)
}

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    if (m_pThreadState != nullptr)
        m_pThreadState->m_pModuleState = m_pPrevModuleState;
    if (m_bValidActCtxCookie)
        AfxDeactivateActCtx(0, m_ulActCtxCookie);
}
