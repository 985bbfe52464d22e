// done: ends a wait window, and returns when its process has let go of everything.
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/PrivateCopy.h"
#include "tarntool/Request.h"
#include "tarntool/ScopedHandle.h"
#include "tarntool/Text.h"
#include "tarntool/WaitName.h"

namespace
{
constexpr DWORD kEndMilliseconds = 30000;

bool ReadRecord(const WaitName& name, WaitRecord* pRecord)
{
    const ScopedHandle section(::OpenFileMappingW(FILE_MAP_READ, FALSE, name.Record()));
    if (!section.IsValid())
        return false;
    const void* const pView = ::MapViewOfFile(section, FILE_MAP_READ, 0, 0, sizeof(WaitRecord));
    if (pView == nullptr)
        return false;
    *pRecord = *static_cast<const WaitRecord*>(pView);
    ::UnmapViewOfFile(pView);
    return true;
}
} // namespace

UINT EndWaitWindow(const Request& request)
{
    const WaitName name(request);
    const Output output(request.Value(Request::Out));
    WaitRecord record = {};
    const ScopedHandle done(::OpenEventW(EVENT_MODIFY_STATE, FALSE, name.Done()));
    if (!done.IsValid() || !ReadRecord(name, &record))
        throw Failure{ExitCode::NoWaitWindow, "there is no wait window with the --id " +
                                                  ToUtf8(request.Value(Request::ID))};
    const ScopedHandle keeper(
        ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, record.nProcessID));
    WCHAR szProgram[MAX_PATH] = L"";
    DWORD cchProgram = MAX_PATH;
    ::QueryFullProcessImageNameW(keeper, 0, szProgram, &cchProgram);
    ::SetEvent(done);
    // A process that cannot be opened has ended by itself meanwhile.
    if (keeper.IsValid() && ::WaitForSingleObject(keeper, kEndMilliseconds) != WAIT_OBJECT_0)
        throw Failure{ExitCode::SystemFailure, "the wait window does not end"};
    PrivateCopy::Delete(szProgram);
    return static_cast<UINT>(ExitCode::Done);
}
