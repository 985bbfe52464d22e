// jobs.dll: the library as it ships, and beside its exports the job runner, which only code inside of
// it can call.
#include "frame/ExportGuard.h"
#include "ui/WaitDlgModless.h"

extern "C" LONGLONG RunJob(WaitJobProc pfnJob, void* pArg, const char* message, const char* title)
{
    TARN_EXPORT_GUARD();
    return RunJobWithWaitDlg(pfnJob, pArg, message, title);
}
