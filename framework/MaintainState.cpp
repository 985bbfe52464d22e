#include "MaintainState.h"

AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pNewState)
    : m_pPrevModuleState(nullptr), m_pThreadState(AfxGetThreadState())
{
    m_pPrevModuleState = m_pThreadState->m_pModuleState;
    m_pThreadState->m_pModuleState = pNewState;
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): the state comes first
    m_bValidActCtxCookie = AfxActivateActCtx(pNewState->GetActivationContext(), &m_ulActCtxCookie);
}

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    if (m_pThreadState != nullptr)
        m_pThreadState->m_pModuleState = m_pPrevModuleState;
    if (m_bValidActCtxCookie)
        AfxDeactivateActCtx(0, m_ulActCtxCookie);
}
