// Start and end of the library as a DLL. Linked into the DLL only.
#include "CWinApp.h"
#include "CWnd.h"
#include "ExceptionRuntime.h"
#include "Heap.h"
#include "ModuleState.h"
#include "ThreadState.h"

namespace
{
// TRUE once the process is ending: what other threads left behind, locks included, is not to be
// touched any more, and the system takes everything back by itself.
bool g_bProcessEnds = false;

// The library's own module state; the last object to go, and the heap with it.
class DllModuleState : public AFX_MODULE_STATE
{
public:
    DllModuleState() noexcept : AFX_MODULE_STATE(TRUE, &AfxWndProcDllStatic) {}
    ~DllModuleState()
    {
        if (g_bProcessEnds)
            return;
        AfxFreeThreadSlot();
        AfxDestroyHeap();
    }
    DllModuleState(const DllModuleState&) = delete;
    DllModuleState& operator=(const DllModuleState&) = delete;
};

// Before every other static object: the application object registers with it.
DllModuleState g_moduleState __attribute__((init_priority(101)));
} // namespace

AFX_MODULE_STATE* AfxGetStaticModuleState() noexcept
{
    return &g_moduleState;
}

AFX_MODULE_STATE* AfxGetDefaultModuleState() noexcept
{
    return &g_moduleState;
}

// Called under the loader's lock: no waiting, no loading, no threads.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*hInstance*/, DWORD dwReason, LPVOID lpReserved)
{
    CWinApp* const pApp = g_moduleState.m_pCurrentWinApp;
    switch (dwReason)
    {
    case DLL_PROCESS_ATTACH:
        return pApp->InitInstance();
    case DLL_PROCESS_DETACH:
        g_bProcessEnds = lpReserved != nullptr;
        pApp->ExitInstance();
        if (!g_bProcessEnds)
            g_moduleState.OrphanWindows();
        break;
    case DLL_THREAD_DETACH:
        AfxTermThread();
        AfxTermThreadExceptions();
        break;
    default:
        break;
    }
    return TRUE;
}
