// version
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"

UINT ShowVersion(const Request& request)
{
    Output(request.Value(Request::Out)).WriteLine("tarntool " TARN_VERSION);
    return static_cast<UINT>(ExitCode::Done);
}
