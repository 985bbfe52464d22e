// CWinThread: a thread of the framework.
#pragma once

#include "framework/modules/CCmdTarget.h"
#include "framework/modules/ThreadState.h"

#include <windows.h>

using AFX_THREADPROC = UINT (*)(LPVOID);

class CWinThread : public CCmdTarget
{
public:
    CWinThread() = default;
    // Closes the thread's handle. The thread must have ended.
    ~CWinThread() override;

    virtual BOOL InitInstance();
    virtual int ExitInstance();

    BOOL m_bAutoDelete = TRUE; // the object is deleted when its thread ends
    HANDLE m_hThread = nullptr;
    DWORD m_nThreadID = 0;

private:
    friend CWinThread* AfxBeginThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam, int nPriority,
                                      UINT nStackSize, DWORD dwCreateFlags,
                                      LPSECURITY_ATTRIBUTES lpSecurityAttrs);

    CWinThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam);
    BOOL CreateThread(UINT nStackSize, LPSECURITY_ATTRIBUTES lpSecurityAttrs);
    static DWORD WINAPI Entry(LPVOID pThread);

    AFX_THREADPROC m_pfnThreadProc = nullptr;
    LPVOID m_pThreadParams = nullptr;
    // Made by the thread's creator, so that a lack of memory is the creator's to hear of; the thread
    // takes it over, and gives it back when it ends. Not null after the end: the thread was killed.
    ThreadState* m_pThreadState = nullptr;
    // Keeps the module loaded while the thread runs its code; as above.
    HMODULE m_hModule = nullptr;
};

// Starts a thread that runs pfnThreadProc(pParam) with the caller's module state current. The object
// deletes itself when the thread ends, unless the thread has cleared its m_bAutoDelete by then.
// Returns null when no thread can be made; throws CMemoryException when memory runs out.
CWinThread* AfxBeginThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam,
                           int nPriority = THREAD_PRIORITY_NORMAL, UINT nStackSize = 0,
                           DWORD dwCreateFlags = 0,
                           LPSECURITY_ATTRIBUTES lpSecurityAttrs = nullptr);
