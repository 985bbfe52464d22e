#include "framework/modules/CWinApp.h"

#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"
#include "framework/text/CodePage.h"

BEGIN_MESSAGE_MAP(CWinApp, CCmdTarget)
END_MESSAGE_MAP()

namespace
{
// The name of a module's file without folder and extension.
void GetModuleTitle(HINSTANCE hInstance, char (&szTitle)[MAX_PATH])
{
    char szPath[MAX_PATH] = {};
    const DWORD cb = ::GetModuleFileNameA(hInstance, szPath, MAX_PATH);
    const char* const pEnd = szPath + (cb < MAX_PATH ? cb : MAX_PATH - 1);
    const char* pName = szPath;
    const char* pDot = pEnd;
    for (const char* p = szPath; p < pEnd; p += CharLength(p, pEnd))
    {
        if (*p == '\\')
        {
            pName = p + 1;
            pDot = pEnd;
        }
        else if (*p == '.')
            pDot = p;
    }
    ::lstrcpynA(szTitle, pName, static_cast<int>(pDot - pName) + 1);
}
} // namespace

CWinApp::CWinApp(LPCSTR lpszAppName)
    : m_pszAppName(lpszAppName), m_hInstance(GetCurrentModuleState()->m_hCurrentInstanceHandle)
{
    if (m_pszAppName == nullptr)
    {
        GetModuleTitle(m_hInstance, m_szModuleName);
        m_pszAppName = m_szModuleName;
    }
    GetCurrentModuleState()->m_pCurrentWinApp = this;
}

CWinApp::~CWinApp()
{
    AFX_MODULE_STATE* const pState = GetDefaultModuleState();
    if (pState->m_pCurrentWinApp == this)
        pState->m_pCurrentWinApp = nullptr;
}

BOOL CWinApp::InitInstance()
{
    return TRUE;
}

int CWinApp::ExitInstance()
{
    return 0;
}

CWinApp* AfxGetApp()
{
    return GetCurrentModuleState()->m_pCurrentWinApp;
}

LPCSTR AfxGetAppName()
{
    const CWinApp* const pApp = AfxGetApp();
    return pApp != nullptr ? pApp->m_pszAppName : nullptr;
}

CWinThread* AfxGetThread()
{
    const ThreadState* const pState = FindThreadState();
    if (pState != nullptr && pState->m_pCurrentWinThread != nullptr)
        return pState->m_pCurrentWinThread;
    return AfxGetApp();
}

BOOL AfxWinInit(HINSTANCE hInstance, HINSTANCE /*hPrevInstance*/, LPSTR lpCmdLine, int nCmdShow)
{
    AFX_MODULE_STATE* const pState = GetCurrentModuleState();
    pState->m_hCurrentInstanceHandle = hInstance;
    pState->m_hCurrentResourceHandle = hInstance;
    CWinApp* const pApp = AfxGetApp();
    if (pApp != nullptr)
    {
        pApp->m_hInstance = hInstance;
        pApp->m_lpCmdLine = lpCmdLine;
        pApp->m_nCmdShow = nCmdShow;
    }
    return TRUE;
}
