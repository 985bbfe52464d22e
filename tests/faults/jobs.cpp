// jobs.dll: the library as it ships, and beside its exports what only code inside of it can call: the job
// runner, and how it is inside.
#include "frame/ExportGuard.h"
#include "ui/WaitDlgModless.h"

#include <exception>

extern "C" LONGLONG RunJob(WaitJobProc pfnJob, void* pArg, const char* message, const char* title)
{
    TARN_EXPORT_GUARD();
    return RunJobWithWaitDlg(pfnJob, pArg, message, title);
}

// Whether the calling thread holds nothing of the library's, and how many exceptions the library thinks
// are under way.
extern "C" int IsAtRest(int* pnUncaught)
{
    *pnUncaught = std::uncaught_exceptions();
    const ThreadState* const pState = FindThreadState();
    return pState == nullptr ||
           (pState->m_pModuleState == nullptr && pState->m_pInnermost == nullptr);
}
