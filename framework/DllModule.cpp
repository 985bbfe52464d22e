// The library as a DLL: its module state, and what the framework does when it is loaded and unloaded.
// Linked into the DLL only.
#include "framework/exceptions/CException.h"
#include "framework/modules/CWinApp.h"
#include "framework/modules/MaintainState.h"
#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"
#include "framework/windows/CWnd.h"
#include "runtime/Unwinder.h"

namespace
{
// Before every other static object: the application object registers with it.
AFX_MODULE_STATE g_moduleState __attribute__((init_priority(101))) (TRUE, &LibraryWndProc);
} // namespace

AFX_MODULE_STATE* AfxGetStaticModuleState() noexcept
{
    return &g_moduleState;
}

AFX_MODULE_STATE* GetDefaultModuleState() noexcept
{
    return &g_moduleState;
}

void GiveUpCalls(const void* pEnd) noexcept
{
    TrackedState::DestroyBelow(pEnd);
}

void DisposeOfThrown(void* pObject) noexcept
{
    // All that is thrown in here.
    (*static_cast<CException**>(pObject))->Delete();
}

// Called by the entry point, when the static objects are there.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*hInstance*/, DWORD dwReason, LPVOID lpReserved)
{
    switch (dwReason)
    {
    case DLL_PROCESS_ATTACH:
        return g_moduleState.m_pCurrentWinApp->InitInstance();
    case DLL_PROCESS_DETACH:
        g_moduleState.m_pCurrentWinApp->ExitInstance();
        if (lpReserved == nullptr) // the process goes on
            CWnd::OrphanAll();
        break;
    case DLL_THREAD_DETACH:
        FreeThreadState();
        break;
    default:
        break;
    }
    return TRUE;
}
