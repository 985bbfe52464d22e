#include "tests/support/Host.h"

#include "tests/support/TempFolder.h"

HostContext::HostContext()
{
    const TempFolder folder;
    const std::string path = folder / "host.manifest";
    WriteBytes(path, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                     "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">"
                     "<assemblyIdentity type=\"win32\" name=\"Host\" version=\"1.0.0.0\"/>"
                     "</assembly>\n");
    ACTCTXA actctx = {};
    actctx.cbSize = sizeof(actctx);
    actctx.lpSource = path.c_str();
    m_hActCtx = ::CreateActCtxA(&actctx);
    if (m_hActCtx != INVALID_HANDLE_VALUE)
        m_bActivated = ::ActivateActCtx(m_hActCtx, &m_ulCookie);
}

HostContext::~HostContext()
{
    if (m_bActivated)
        ::DeactivateActCtx(0, m_ulCookie);
    if (m_hActCtx != INVALID_HANDLE_VALUE)
        ::ReleaseActCtx(m_hActCtx);
}

HANDLE HostContext::Current()
{
    HANDLE hActCtx = nullptr;
    if (!::GetCurrentActCtx(&hActCtx))
        return INVALID_HANDLE_VALUE;
    if (hActCtx != nullptr)
        ::ReleaseActCtx(hActCtx);
    return hActCtx;
}

CallOutcome CallAsHost(const std::function<int()>& function)
{
    const AFX_MODULE_STATE* const pState = GetCurrentModuleState();
    HANDLE const hContext = HostContext::Current();
    CallOutcome outcome;
    try
    {
        outcome.nResult = function();
    }
    catch (CMemoryException* pException)
    {
        outcome.left = Left::ByMemoryException;
        pException->Delete();
    }
    catch (CInvalidArgException* pException)
    {
        outcome.left = Left::ByInvalidArgException;
        pException->Delete();
    }
    catch (CFileException* pException)
    {
        outcome.left = Left::ByFileException;
        pException->Delete();
    }
    catch (...)
    {
        outcome.left = Left::BySomethingElse;
    }
    outcome.bStateKept = GetCurrentModuleState() == pState;
    outcome.bContextKept = HostContext::Current() == hContext;
    return outcome;
}
