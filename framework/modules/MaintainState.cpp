#include "framework/modules/MaintainState.h"

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    if (m_pThreadState != nullptr)
        m_pThreadState->m_pModuleState = m_pPrevModuleState;
    if (m_bValidActCtxCookie)
        AfxDeactivateActCtx(0, m_ulActCtxCookie);
}
