// runonce NAME COMMAND, or runonce NAME -- COMMAND LINE
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"
#include "tarntool/Text.h"

#include <tarn.h>

UINT QueueRunOnce(const Request& request)
{
    const bool bOperand = request.GetOperandCount() == 2;
    if (bOperand == (request.GetTail() != nullptr))
        throw Failure{ExitCode::WrongArguments,
                      "runonce takes a NAME and a COMMAND, the command also behind --"};
    const Output output(request.Value(Request::Out));
    const CString strName = ToExactText(request.Operand(0));
    const CString strCommand = ToExactText(bOperand ? request.Operand(1) : request.GetTail());
    if (PutInRunOnce(strName, strCommand) == 0)
        throw Failure{ExitCode::Failed, "the command cannot be queued for the next log-on"};
    return static_cast<UINT>(ExitCode::Done);
}
