#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "validate/EmailSyntax.h"

namespace
{
// Longer addresses go to the heap; no ordinary one does.
constexpr int kOrdinaryAddressLength = 255;
} // namespace

extern "C" int VerifyEmail(char* address, int* errorPosition, char* message)
{
    TARN_EXPORT_GUARD();
    CFixedStringT<CString, kOrdinaryAddressLength> strAddress(address);
    CFixedStringT<CString, TARN_EMAIL_MESSAGE_SIZE> strMessage;
    const int nResult = CheckEmailSyntax(strAddress, errorPosition, strMessage);
    // Trimmed, so never longer than what the caller gave.
    CString::CopyChars(address, strAddress, strAddress.GetLength() + 1);
    if (!strMessage.IsEmpty())
        CString::CopyChars(message, strMessage, strMessage.GetLength() + 1);
    return nResult != 0 ? 1 : 0;
}
