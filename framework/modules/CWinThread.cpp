#include "framework/modules/CWinThread.h"

#include <memory>

CWinThread::CWinThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam)
    : m_pfnThreadProc(pfnThreadProc), m_pThreadParams(pParam), m_pThreadState(new ThreadState)
{
    m_pThreadState->m_pCurrentWinThread = this;
}

CWinThread::~CWinThread()
{
    delete m_pThreadState;
    if (m_hModule != nullptr)
        ::FreeLibrary(m_hModule);
    if (m_hThread != nullptr)
        ::CloseHandle(m_hThread);
}

BOOL CWinThread::InitInstance()
{
    return FALSE;
}

int CWinThread::ExitInstance()
{
    return 0;
}

BOOL CWinThread::CreateThread(UINT nStackSize, LPSECURITY_ATTRIBUTES lpSecurityAttrs)
{
    // The thread's code must not be unloaded under it.
    if (!::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                              reinterpret_cast<LPCSTR>(&CWinThread::Entry), &m_hModule))
        return FALSE;
    m_hThread = ::CreateThread(lpSecurityAttrs, nStackSize, &CWinThread::Entry, this,
                               CREATE_SUSPENDED, &m_nThreadID);
    return m_hThread != nullptr;
}

DWORD WINAPI CWinThread::Entry(LPVOID pThread)
{
    auto* const pThis = static_cast<CWinThread*>(pThread);
    const bool bStateSet = SetThreadBlock(pThis->m_pThreadState);
    DWORD nExitCode = 0;
    if (bStateSet)
        nExitCode = pThis->m_pfnThreadProc(pThis->m_pThreadParams);

    HMODULE const hModule = pThis->m_hModule;
    pThis->m_hModule = nullptr;
    if (bStateSet)
    {
        pThis->m_pThreadState = nullptr;
        FreeThreadState();
    }
    // From here on the owner may delete an object that does not delete itself, but only once the
    // thread has ended. A procedure that never ran had no chance to say that the object has an owner.
    if (pThis->m_bAutoDelete && bStateSet)
        delete pThis;
    ::FreeLibraryAndExitThread(hModule, nExitCode);
}

CWinThread* AfxBeginThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam, int nPriority,
                           UINT nStackSize, DWORD dwCreateFlags,
                           LPSECURITY_ATTRIBUTES lpSecurityAttrs)
{
    AFX_MODULE_STATE* const pModuleState = GetThreadState()->m_pModuleState;
    std::unique_ptr<CWinThread> pThread(new CWinThread(pfnThreadProc, pParam));
    pThread->m_pThreadState->m_pModuleState = pModuleState;
    if (!pThread->CreateThread(nStackSize, lpSecurityAttrs))
        return nullptr;
    if (nPriority != THREAD_PRIORITY_NORMAL)
        ::SetThreadPriority(pThread->m_hThread, nPriority);
    // Once it runs, the thread owns the object.
    CWinThread* const pStarted = pThread.release();
    if ((dwCreateFlags & CREATE_SUSPENDED) == 0)
        ::ResumeThread(pStarted->m_hThread);
    return pStarted;
}
