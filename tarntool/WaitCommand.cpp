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
constexpr DWORD kStartMilliseconds = 30000;

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
    const ScopedHandle painted(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const ScopedHandle self(OpenOwnProcess());
    const HANDLE handles[] = {painted, self, copy.Handle()};

    // The keeper reads the same arguments.
    const ScopedHandle keeper(StartInnerRole(copy.Path(), L"inner-keep", handles, 3,
                                             CommandLine::SkipProgram(::GetCommandLineW())));
    if (!keeper.IsValid())
        CannotShow(SystemErrorText(::GetLastError()));
    const HANDLE awaited[] = {painted, keeper};
    const DWORD nEnded = ::WaitForMultipleObjects(2, awaited, FALSE, kStartMilliseconds);
    if (nEnded == WAIT_OBJECT_0)
        return static_cast<UINT>(ExitCode::Done);
    DWORD nExitCode = 0;
    if (nEnded == WAIT_TIMEOUT)
    {
        ::TerminateProcess(keeper, static_cast<UINT>(ExitCode::SystemFailure));
        CannotShow("it took too long");
    }
    ::GetExitCodeProcess(keeper, &nExitCode);
    if (nExitCode == static_cast<DWORD>(ExitCode::WaitWindowExists))
        throw Failure{ExitCode::WaitWindowExists, "there is a wait window already with the --id " +
                                                      ToUtf8(request.Value(Request::ID))};
    CannotShow("the process that keeps it has ended");
}
