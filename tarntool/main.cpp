// tarntool - the library's functions for installers that can start a program, but cannot load the DLL.
// docs/tarntool.md says what its users see.
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/InnerRoles.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

namespace
{
UINT Run(LPCWSTR pszArguments)
{
    const Request request(pszArguments);
    return request.GetCommand().pfnRun(request);
}

// What is thrown ends here, as an exit code and a sentence.
UINT RunAndTell(LPCWSTR pszArguments)
{
    try
    {
        UINT nExitCode = 0;
        return PlayInnerRole(pszArguments, &nExitCode) ? nExitCode : Run(pszArguments);
    }
    catch (const Failure& failure)
    {
        WriteError(failure.strSentence);
        return static_cast<UINT>(failure.exitCode);
    }
    catch (CException* pException)
    {
        char szText[512] = "";
        pException->GetErrorMessage(szText, sizeof(szText));
        pException->Delete();
        WriteError(szText);
        return static_cast<UINT>(ExitCode::SystemFailure);
    }
}
} // namespace

int WINAPI WinMain(HINSTANCE /*hInstance*/, HINSTANCE /*hPrevInstance*/, LPSTR /*pszCommandLine*/,
                   int /*nShow*/)
{
    // Whatever is still loaded comes from the system folder, and not from where the installer unpacked
    // this program. Windows 7 without its update of 2011 does not have the function.
    using SetDirectories = BOOL(WINAPI*)(DWORD);
    const auto pfnSet = reinterpret_cast<SetDirectories>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")));
    if (pfnSet != nullptr)
        pfnSet(LOAD_LIBRARY_SEARCH_SYSTEM32);
    // A drive without a disk is a failure like others, not a box that waits for somebody.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);

    const UINT nExitCode = RunAndTell(CommandLine::SkipProgram(::GetCommandLineW()));
    // Not by returning: a worker that was left to itself may still be at work.
    ::ExitProcess(nExitCode);
}
