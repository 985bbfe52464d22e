// Start and end of the library as a DLL: the entry point, and the objects of static life. Linked into
// the DLL only.
//
// It stands in for the toolchain's own start-up objects. Those bring a repair of data imports, callbacks
// for thread-local storage and a list of exit functions on the heap: 7 KB and a dozen imports for three
// static objects that need none of it.
#include "runtime/ExceptionRuntime.h"
#include "runtime/Heap.h"
#include "runtime/ThreadBlock.h"

#include <windows.h>

// What is to be done beside that, by whoever builds on this; called as the system says.
extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID lpReserved);

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
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE hInstance, DWORD dwReason, LPVOID lpReserved)
{
    if (dwReason == DLL_PROCESS_ATTACH)
        ConstructStatics();
    const BOOL bResult = DllMain(hInstance, dwReason, lpReserved);
    if (dwReason == DLL_THREAD_DETACH)
        FreeThreadExceptions();
    // When the whole process ends, what other threads left behind, locks included, is not to be touched
    // any more, and the system takes everything back by itself.
    if (dwReason == DLL_PROCESS_DETACH && lpReserved == nullptr)
    {
        DestroyStatics();
        FreeThreadSlot();
        DestroyHeap();
    }
    return bResult;
}
