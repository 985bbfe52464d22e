#include "ui/WaitDlgModless.h"

#include "frame/HeapGuard.h"

#include <cstddef>
#include <memory>

namespace
{
constexpr UINT_PTR kTimerID = 333;
constexpr UINT kTickMilliseconds = 600;
constexpr int kTicksOfPatience = 100;
constexpr DWORD kSleepMilliseconds = 10; // of a worker that is held, between two looks
constexpr DWORD kEndMilliseconds = 5000; // that a terminated worker is given to be gone

// What stands in the upper half of the block's hWnd, of which a window handle needs the lower one.
enum WaitJobMark : UINT
{
    kNoMark = 0,
    kHeld = 1,     // the dialog's thread looks whether to terminate the worker, or has done so
    kAbandoned = 2 // the dialog has ended; its object is the worker's
};

WaitJobMark MarkOf(HWND hWnd)
{
    return static_cast<WaitJobMark>(reinterpret_cast<UINT_PTR>(hWnd) >> 32);
}

HWND WithMark(HWND hWnd, WaitJobMark mark)
{
    return reinterpret_cast<HWND>(static_cast<UINT_PTR>(mark) << 32 | HandleToULong(hWnd));
}

HWND WithoutMark(HWND hWnd)
{
    return static_cast<HWND>(LongToHandle(HandleToLong(hWnd)));
}

void* volatile* WindowOf(WaitJobBlock& job)
{
    return reinterpret_cast<void* volatile*>(&job.hWnd);
}

// Puts another window into the block, unless it has changed since it was looked at.
bool Exchange(WaitJobBlock& job, HWND hWndSeen, HWND hWndNew)
{
    return ::InterlockedCompareExchangePointer(WindowOf(job), hWndNew, hWndSeen) == hWndSeen;
}

// By the worker: takes the window out of the block, once it is not held (any more).
HWND TakeWindow(WaitJobBlock& job)
{
    HWND hWnd = nullptr;
    do
    {
        // Held: the dialog's thread may be about to terminate this one. It had better be asleep than
        // on its way through the loader, whose lock would then never be released.
        for (hWnd = static_cast<HWND>(*WindowOf(job)); MarkOf(hWnd) == kHeld;
             hWnd = static_cast<HWND>(*WindowOf(job)))
            ::Sleep(kSleepMilliseconds);
    }
    while (!Exchange(job, hWnd, nullptr));
    return hWnd;
}
} // namespace

static_assert(sizeof(WaitJobBlock) == 32, "four words");
static_assert(offsetof(WaitJobBlock, hWnd) == 0 && offsetof(WaitJobBlock, pArg) == 8 &&
                  offsetof(WaitJobBlock, nResult) == 16 && offsetof(WaitJobBlock, pfnJob) == 24,
              "in this order");

// The object is found from its block, so the layout counts; the compiler supports offsetof for this
// class, which is more than the language promises.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif
constexpr std::size_t kFirstMember = offsetof(CWaitDlgModless, m_strMessage);
static_assert(offsetof(CWaitDlgModless, m_strTitle) == kFirstMember + 8 &&
                  offsetof(CWaitDlgModless, m_pThread) == kFirstMember + 16 &&
                  offsetof(CWaitDlgModless, m_job) == kFirstMember + 24 &&
                  offsetof(CWaitDlgModless, m_nTicks) == kFirstMember + 56 &&
                  offsetof(CWaitDlgModless, m_nTimerID) == kFirstMember + 60 &&
                  sizeof(CWaitDlgModless) == kFirstMember + 64,
              "the members in this order, and no others");

BEGIN_MESSAGE_MAP(CWaitDlgModless, CDialog)
    ON_MESSAGE(WM_WAITDLG_JOBDONE, &CWaitDlgModless::OnJobDone)
    ON_WM_TIMER()
END_MESSAGE_MAP()

CWaitDlgModless::CWaitDlgModless(CWnd* pParent)
    : CDialog(IDD_WAITDLG, pParent), m_strMessage(""), m_strTitle("")
{
}

CWaitDlgModless::~CWaitDlgModless()
{
    // A thread deletes its object itself, unless it was terminated.
    if (MarkOf(m_job.hWnd) == kHeld && WorkerHasEnded(0))
        delete m_pThread;
}

BOOL CWaitDlgModless::OnInitDialog()
{
    if (!m_strMessage.IsEmpty())
        SendDlgItemMessage(IDC_WAITDLG_MESSAGE, WM_SETTEXT, 0,
                           reinterpret_cast<LPARAM>(static_cast<LPCTSTR>(m_strMessage)));
    if (!m_strTitle.IsEmpty())
        SetWindowText(m_strTitle);
    CDialog::OnInitDialog();
    m_nTimerID = static_cast<UINT>(SetTimer(kTimerID, kTickMilliseconds, nullptr));
    SetWindowPos(&wndTopMost, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
    m_job.hWnd = m_hWnd;
    if (m_job.pfnJob != nullptr)
        m_pThread = AfxBeginThread(WaitDlgThreadProc, &m_job);
    return TRUE;
}

void CWaitDlgModless::OnCancel()
{
}

LRESULT CWaitDlgModless::OnJobDone(WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    KillTimer(m_nTimerID);
    OnOK();
    return 0;
}

void CWaitDlgModless::OnTimer(UINT_PTR /*nIDEvent*/)
{
    if (++m_nTicks >= kTicksOfPatience)
    {
        KillWorker();
        OnJobDone(0, 0);
    }
}

CWaitDlgModless* CWaitDlgModless::FromBlock(WaitJobBlock* pBlock)
{
    return reinterpret_cast<CWaitDlgModless*>(reinterpret_cast<char*>(pBlock) -
                                              offsetof(CWaitDlgModless, m_job));
}

bool CWaitDlgModless::WorkerHasEnded(DWORD nMilliseconds) const
{
    return ::WaitForSingleObject(m_pThread->m_hThread, nMilliseconds) == WAIT_OBJECT_0;
}

bool CWaitDlgModless::HoldWorker()
{
    if (m_pThread == nullptr)
        return false;
    HWND hWnd = nullptr;
    do
    {
        hWnd = m_job.hWnd;
        if (hWnd == nullptr)
            return false;
    }
    while (!Exchange(m_job, hWnd, WithMark(hWnd, kHeld)));
    return true;
}

void CWaitDlgModless::KillWorker()
{
    // The second time, it is dead already.
    if (MarkOf(m_job.hWnd) == kHeld || !HoldWorker() || WorkerHasEnded(0))
        return;
    const HeapGuard guard;
    // Termination is only asked for; until it has happened, the worker may still use the block.
    if (::TerminateThread(m_pThread->m_hThread, 0))
        WorkerHasEnded(kEndMilliseconds);
    else
        m_job.hWnd = m_hWnd; // the worker goes on, and is left to itself
}

bool CWaitDlgModless::LeaveToWorker()
{
    if (!HoldWorker() || WorkerHasEnded(0))
        return false;
    m_job.hWnd = WithMark(m_job.hWnd, kAbandoned);
    return true;
}

UINT WaitDlgThreadProc(LPVOID pBlock)
{
    WaitJobBlock& job = *static_cast<WaitJobBlock*>(pBlock);
    if (job.pfnJob == nullptr)
        return 0;
    job.nResult = job.pfnJob(job.pArg, WithoutMark(job.hWnd));

    HWND const hWnd = TakeWindow(job);
    if (MarkOf(hWnd) == kAbandoned)
        delete CWaitDlgModless::FromBlock(&job);
    else if (hWnd != nullptr)
        ::PostMessage(hWnd, WM_WAITDLG_JOBDONE, 0, 0);
    return 0;
}

// Deletes a dialog object whose window has ended, or leaves that to its worker.
struct WaitDlgRelease
{
    void operator()(CWaitDlgModless* pDlg) const
    {
        if (!pDlg->LeaveToWorker())
            delete pDlg;
    }
};

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is part of the interface
LONGLONG RunJobWithWaitDlg(WaitJobProc pfnJob, void* pArg, CString strMessage, CString strTitle)
{
    // On the heap: the worker may outlive the window, and this call.
    const std::unique_ptr<CWaitDlgModless, WaitDlgRelease> pDlg(new CWaitDlgModless(nullptr));
    pDlg->m_strMessage = strMessage;
    pDlg->m_strTitle = strTitle;
    pDlg->m_job.pArg = pArg;
    pDlg->m_job.pfnJob = pfnJob;
    pDlg->DoModal();
    return pDlg->m_job.nResult;
}
