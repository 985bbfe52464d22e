// check ADDRESS
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include <tarn.h>

UINT CheckAddress(const Request& request)
{
    Output output(request.Value(Request::Out));
    // The library looks at single bytes, and takes no others than ASCII for good.
    CString strAddress = ToUtf8(request.Operand(0));
    char szMessage[TARN_EMAIL_MESSAGE_SIZE] = "";
    int nPosition = TARN_NO_ERROR_POSITION;
    const int nAccepted =
        VerifyEmail(strAddress.GetBuffer(strAddress.GetLength()), &nPosition, szMessage);
    strAddress.ReleaseBuffer();

    output.WriteLine(NumberText(nAccepted));
    output.WriteLine(NumberText(nPosition));
    output.WriteLine(szMessage);
    output.WriteLine(strAddress);
    if (nAccepted != 0)
        return static_cast<UINT>(ExitCode::Done);
    if (strAddress.IsEmpty())
        throw Failure{ExitCode::Refused, "the address is empty"};
    throw Failure{ExitCode::Refused, CString("the address is refused: ") + szMessage};
}
