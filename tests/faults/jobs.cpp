// jobs.dll: the library as it ships, and beside its exports what only code inside of it can call: the job
// runner, its exceptions, and how it is inside.
#include "frame/ExportGuard.h"
#include "framework/exceptions/CSimpleException.h"
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

namespace
{
struct Counted
{
    int& n;
    ~Counted() { ++n; }
};

__attribute__((noinline)) void Throw(bool bNumber)
{
    if (bNumber)
        throw 1;
    AfxThrowMemoryException();
}

__attribute__((noinline)) void Pass(bool bNumber, int& nCleaned)
{
    const Counted outer{nCleaned};
    try
    {
        const Counted inner{nCleaned};
        Throw(bNumber);
    }
    catch (char)
    {
        nCleaned = -1;
    }
}
} // namespace

// Catches what comes through a frame that has objects to destroy, and a catch for something else. 1: a
// number, 2: an exception of the framework's. *pnCleaned: the objects.
extern "C" int CatchInside(int bNumber, int* pnCleaned)
{
    *pnCleaned = 0;
    try
    {
        Pass(bNumber != 0, *pnCleaned);
    }
    catch (int)
    {
        return 1;
    }
    catch (CException* pException)
    {
        pException->Delete();
        return 2;
    }
    return 0;
}
