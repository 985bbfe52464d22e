#include "ui/WaitDlgModless.h"

#include <cstddef>
#include <memory>

namespace
{
constexpr UINT_PTR kTimerID = 333;
constexpr UINT kTickMilliseconds = 600;
constexpr int kTicksOfPatience = 100;
constexpr DWORD kSleepMilliseconds = 10; // of a worker that is to be terminated, between two looks

// What stands in the block's hWnd instead of a window, besides null; no window has these values.
HWND const kWaitJobKilled = reinterpret_cast<HWND>(static_cast<INT_PTR>(-1));
HWND const kWaitJobAbandoned = reinterpret_cast<HWND>(static_cast<INT_PTR>(-2));

bool IsWindowOrNull(HWND hWnd)
{
    return hWnd != kWaitJobKilled && hWnd != kWaitJobAbandoned;
}

HWND Exchange(WaitJobBlock& job, HWND hWnd)
{
    return static_cast<HWND>(
        ::InterlockedExchangePointer(reinterpret_cast<void* volatile*>(&job.hWnd), hWnd));
}

// By the worker: takes the window out of the block, once the block is not marked as killed (any more).
HWND TakeWindow(WaitJobBlock& job)
{
    auto* const pWindow = reinterpret_cast<void* volatile*>(&job.hWnd);
    void* pSeen = nullptr;
    do
    {
        // Killed: the dialog's thread is about to terminate this one. It had better be asleep than on
        // its way through the loader, whose lock would then never be released.
        for (pSeen = *pWindow; pSeen == kWaitJobKilled; pSeen = *pWindow)
            ::Sleep(kSleepMilliseconds);
    }
    while (::InterlockedCompareExchangePointer(pWindow, nullptr, pSeen) != pSeen);
    return static_cast<HWND>(pSeen);
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
    // Without knowing that the thread has ended, its object is better left behind than deleted.
    if (m_pThread != nullptr &&
        ::WaitForSingleObject(m_pThread->m_hThread, INFINITE) == WAIT_OBJECT_0)
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

void CWaitDlgModless::KillWorker()
{
    if (m_pThread == nullptr)
        return;
    HWND const hWnd = Exchange(m_job, kWaitJobKilled);
    const bool bInJob = hWnd != nullptr && hWnd != kWaitJobKilled;
    if (!bInJob || ::WaitForSingleObject(m_pThread->m_hThread, 0) == WAIT_OBJECT_0)
        return;
    // Termination is only asked for; until it has happened, the worker may still use the block.
    if (::TerminateThread(m_pThread->m_hThread, 0))
        ::WaitForSingleObject(m_pThread->m_hThread, INFINITE);
    else
        Exchange(m_job, hWnd); // the worker goes on, and is left to itself
}

bool CWaitDlgModless::LeaveToWorker()
{
    // A thread that somebody terminated will not delete anything.
    if (m_pThread == nullptr || ::WaitForSingleObject(m_pThread->m_hThread, 0) == WAIT_OBJECT_0)
        return false;
    HWND const hWnd = Exchange(m_job, kWaitJobAbandoned);
    return hWnd != nullptr && hWnd != kWaitJobKilled;
}

UINT WaitDlgThreadProc(LPVOID pBlock)
{
    // Before anything else: from its start the dialog owns the thread object and waits on its handle.
    CWinThread* const pThread = AfxGetThread();
    if (pThread != nullptr)
        pThread->m_bAutoDelete = FALSE;

    WaitJobBlock& job = *static_cast<WaitJobBlock*>(pBlock);
    if (job.pfnJob == nullptr)
        return 0;
    HWND const hWndForJob = job.hWnd;
    job.nResult = job.pfnJob(job.pArg, IsWindowOrNull(hWndForJob) ? hWndForJob : nullptr);

    HWND const hWnd = TakeWindow(job);
    if (hWnd == kWaitJobAbandoned)
    {
        // Both objects are this thread's now; its own goes with its end.
        CWaitDlgModless* const pDlg = CWaitDlgModless::FromBlock(&job);
        CWinThread* const pOwnThread = pDlg->m_pThread;
        pDlg->m_pThread = nullptr;
        pOwnThread->m_bAutoDelete = TRUE;
        delete pDlg;
    }
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
