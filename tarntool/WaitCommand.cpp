// wait: starts the process that keeps the window, and returns when the window is there.
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/InnerRoles.h"
#include "tarntool/Output.h"
#include "tarntool/ParentWindow.h"
#include "tarntool/PrivateCopy.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"
#include "tarntool/WaitName.h"

namespace
{
[[noreturn]] void CannotShow(const CString& strReason)
{
    throw Failure{ExitCode::SystemFailure, "the wait window cannot be shown: " + strReason};
}
} // namespace

UINT ShowWaitWindow(const Request& request)
{
    const WaitName name(request);
    GetParentWindow(request); // in time for a sentence
    const Output output(request.Value(Request::Out));
    PrivateCopy::DeleteOld();
    const PrivateCopy copy;
    const ScopedHandle self(OpenOwnProcess());
    const HANDLE handles[] = {self, copy.Handle()};

    // The keeper reads the same arguments. It is ready when the window is painted.
    bool bReady = false;
    const ScopedHandle keeper(StartInnerRole(copy.Path(), L"inner-keep", handles, 2,
                                             CommandLine::SkipProgram(::GetCommandLineW()),
                                             &bReady));
    if (!keeper.IsValid())
        CannotShow(SystemErrorText(::GetLastError()));
    if (bReady)
        return static_cast<UINT>(ExitCode::Done);
    DWORD nExitCode = 0;
    ::GetExitCodeProcess(keeper, &nExitCode);
    if (nExitCode == static_cast<DWORD>(ExitCode::WaitWindowExists))
        throw Failure{ExitCode::WaitWindowExists, "there is a wait window already with the --id " +
                                                      ToUtf8(request.Value(Request::ID))};
    CannotShow("the process that keeps it has ended");
}
