// In a coverage build of tarn.dll, stands around its entry point and writes the counts when all is done: the
// runtime would do so in a destructor that the library's own start-up code does not call, and at the end of
// a process none is called.
#include <windows.h>

extern "C" void __gcov_dump();
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE hInstance, DWORD dwReason, LPVOID lpReserved);
extern "C" BOOL WINAPI CountedEntry(HINSTANCE hInstance, DWORD dwReason, LPVOID lpReserved);

BOOL WINAPI CountedEntry(HINSTANCE hInstance, DWORD dwReason, LPVOID lpReserved)
{
    const BOOL bResult = DllMainCRTStartup(hInstance, dwReason, lpReserved);
    if (dwReason == DLL_PROCESS_DETACH)
        __gcov_dump();
    return bResult;
}
