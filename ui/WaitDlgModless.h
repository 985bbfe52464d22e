// The wait window, and the runner that shows it modally while a job runs on a worker thread.
//
// Two threads meet here: the dialog's own, and the worker, which runs WaitDlgThreadProc and nothing
// else. They share one WaitJobBlock without a lock:
//
//   pArg, pfnJob  written before the worker starts, read by the worker only
//   nResult       written by the worker when the job has returned, before it lets go of hWnd
//   hWnd          written before the worker starts; from then on it says who acts last on the block,
//                 by its upper half, which a window handle does not need:
//                   the worker, its job done, takes the window out (null) and posts
//                   WM_WAITDLG_JOBDONE to it, its last use of the block; the thread's object is
//                   the thread's own from then on, and nobody waits for its end
//                   the dialog's thread marks it as held while it looks at the worker, so that it
//                   never terminates one that is past its job, nor uses a thread object that is
//                   gone; a worker that comes to its end meanwhile sleeps. The mark of one that was
//                   terminated stays
//                   RunJobWithWaitDlg marks it as abandoned when the dialog ended before the job:
//                   the dialog object is then the worker's to delete
#pragma once

#include <afxwin.h>

#include "ui/resource.h"

// Posted to the wait window when the job is done; both parameters 0.
#define WM_WAITDLG_JOBDONE (WM_USER + 1)

// A job. Runs on the worker thread; hWnd is the wait window. The watchdog may terminate it at any
// point, without releasing what it holds.
using WaitJobProc = LONGLONG (*)(void* pArg, HWND hWnd);

struct WaitJobBlock
{
    HWND hWnd;          // the wait window
    void* pArg;         // for the job
    LONGLONG nResult;   // the job's result
    WaitJobProc pfnJob; // null: no job
};

// The worker thread's procedure; pBlock is a WaitJobBlock. Returns 0. Without a job it does nothing.
UINT WaitDlgThreadProc(LPVOID pBlock);

class CWaitDlgModless : public CDialog
{
public:
    explicit CWaitDlgModless(CWnd* pParent = nullptr);
    // The worker, if there is one, must be past its job or terminated: the block goes with the object.
    ~CWaitDlgModless() override;

    // Set before the window is made; an empty text leaves the template's.
    CString m_strMessage;
    CString m_strTitle;

    CWinThread* m_pThread = nullptr; // the worker while it is in its job; null when there is none
    WaitJobBlock m_job = {};
    int m_nTicks = 0; // ticks of any timer of the window, never reset
    UINT m_nTimerID = 0;

protected:
    DECLARE_MESSAGE_MAP()

    BOOL OnInitDialog() override;
    void OnCancel() override; // nothing: the user cannot cancel

    afx_msg LRESULT OnJobDone(WPARAM wParam, LPARAM lParam);
    afx_msg void OnTimer(UINT_PTR nIDEvent);

private:
    friend struct WaitDlgRelease;
    friend UINT WaitDlgThreadProc(LPVOID pBlock);

    static CWaitDlgModless* FromBlock(WaitJobBlock* pBlock);
    // While the worker is held or in its job.
    bool WorkerHasEnded(DWORD nMilliseconds) const;
    // False when there is no worker, or it is past its job.
    bool HoldWorker();
    // Terminates the worker if it is still in its job.
    void KillWorker();
    // True when the worker has been left to finish on its own and will delete the object.
    bool LeaveToWorker();
};

// Runs pfnJob(pArg, window) on a worker thread behind the modal wait window, which ends when the job
// does. Returns the job's result, or 0 when the job had stored none by the time the window ended:
// after a minute, when the job is terminated, or when the user pressed Enter, when the job goes on by
// itself. Pumps messages.
LONGLONG RunJobWithWaitDlg(WaitJobProc pfnJob, void* pArg, CString strMessage, CString strTitle);
