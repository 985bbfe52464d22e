// The library linked statically into a program: the program has a module state of its own, the
// application's, besides the library's. Not linked into the DLL.
#include "framework/modules/ModuleState.h"
#include "framework/windows/CWnd.h"

// The resources of the library that such a program needs; this reference brings them in.
extern "C" const char tarn_core_resources;
extern "C" const char* const tarn_core_resources_used;
extern "C" __attribute__((used)) const char* const tarn_core_resources_used = &tarn_core_resources;

namespace
{
// Before every other static object: application objects register with them.
AFX_MODULE_STATE g_appModuleState __attribute__((init_priority(101))) (FALSE, &AfxWndProc);
AFX_MODULE_STATE g_libraryModuleState
    __attribute__((init_priority(101))) (TRUE, &AfxWndProcDllStatic);
} // namespace

AFX_MODULE_STATE* AfxGetStaticModuleState() noexcept
{
    return &g_libraryModuleState;
}

AFX_MODULE_STATE* AfxGetDefaultModuleState() noexcept
{
    return &g_appModuleState;
}
