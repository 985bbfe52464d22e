// The library linked statically into a program (tarn_core), instead of loaded as a DLL. For programs of
// this project: the tests that reach what the DLL does not export, and command-line tools that must not
// depend on a file beside them. Such a program has a module state of its own, the application's, besides
// the library's. DllModule.cpp is the counterpart.
#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"
#include "framework/windows/CWnd.h"

// The resources of the library that such a program needs; this reference brings them in.
extern "C" const char tarn_core_resources;
extern "C" const char* const tarn_core_resources_used;
extern "C" __attribute__((used)) const char* const tarn_core_resources_used = &tarn_core_resources;

namespace
{
// Before every other static object: application objects register with them.
AFX_MODULE_STATE g_appModuleState __attribute__((init_priority(101))) (FALSE, &AfxWndProc);
AFX_MODULE_STATE g_libraryModuleState __attribute__((init_priority(101))) (TRUE, &LibraryWndProc);

void NTAPI OnThread(PVOID /*hModule*/, DWORD dwReason, PVOID /*pReserved*/)
{
    if (dwReason == DLL_THREAD_DETACH)
        FreeThreadState();
}

// In the program's list of what the loader calls when a thread ends, as it calls a DLL's entry point.
__attribute__((section(".CRT$XLC"), used)) const PIMAGE_TLS_CALLBACK g_pfnOnThread = &OnThread;
} // namespace

AFX_MODULE_STATE* AfxGetStaticModuleState() noexcept
{
    return &g_libraryModuleState;
}

AFX_MODULE_STATE* GetDefaultModuleState() noexcept
{
    return &g_appModuleState;
}
