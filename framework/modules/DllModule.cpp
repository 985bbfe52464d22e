// Start and end of the library as a DLL. Linked into the DLL only.
//
// The entry point is here, too, instead of the toolchain's own start-up objects. Those bring a repair
// of data imports, callbacks for thread-local storage and a list of exit functions on the heap: 7 KB
// and a dozen imports for three static objects that need none of it.
#include "framework/exceptions/CException.h"
#include "framework/modules/CWinApp.h"
#include "framework/modules/MaintainState.h"
#include "framework/modules/ModuleState.h"
#include "framework/modules/ThreadState.h"
#include "framework/windows/CWnd.h"
#include "runtime/ExceptionRuntime.h"
#include "runtime/Heap.h"
#include "runtime/Unwinder.h"

namespace
{
// The library's own module state; the last object to go, and the heap with it.
class DllModuleState : public AFX_MODULE_STATE
{
public:
    DllModuleState() noexcept : AFX_MODULE_STATE(TRUE, &AfxWndProcDllStatic) {}
    ~DllModuleState()
    {
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

void GiveUpCalls(const void* pEnd) noexcept
{
    TrackedState::DestroyBelow(pEnd);
}

void DisposeOfThrown(void* pObject) noexcept
{
    // All that is thrown in here.
    (*static_cast<CException**>(pObject))->Delete();
}

// The linker's list of constructors: a mark, the constructors, the first one last, and a null.
using StaticFunction = void(__cdecl*)();
extern "C" const StaticFunction __CTOR_LIST__[];

namespace
{
// The destructors, in the order in which the constructors registered them.
StaticFunction g_destructors[8];
unsigned int g_nDestructors = 0;

void ConstructStatics()
{
    unsigned int n = 0;
    while (__CTOR_LIST__[n + 1] != nullptr)
        ++n;
    for (; n > 0; --n)
        __CTOR_LIST__[n]();
}

void DestroyStatics()
{
    while (g_nDestructors > 0)
        g_destructors[--g_nDestructors]();
}
} // namespace

// Called by the compiler, for each static object that has a destructor.
extern "C" int __cdecl atexit(StaticFunction pfnDestructor)
{
    // One too many ends the first process that loads the library, in the first test at the latest.
    if (g_nDestructors == sizeof(g_destructors) / sizeof(g_destructors[0]))
        __builtin_trap();
    g_destructors[g_nDestructors++] = pfnDestructor;
    return 0;
}

// Called under the loader's lock: no waiting, no loading, no threads.
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE /*hInstance*/, DWORD dwReason, LPVOID lpReserved)
{
    switch (dwReason)
    {
    case DLL_PROCESS_ATTACH:
        ConstructStatics();
        return g_moduleState.m_pCurrentWinApp->InitInstance();
    case DLL_PROCESS_DETACH:
        g_moduleState.m_pCurrentWinApp->ExitInstance();
        // When the process ends, what other threads left behind, locks included, is not to be touched
        // any more, and the system takes everything back by itself.
        if (lpReserved == nullptr)
        {
            g_moduleState.OrphanWindows();
            DestroyStatics();
        }
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
