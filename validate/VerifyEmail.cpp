#include "frame/ExportGuard.h"
#include "include/tarn.h"
#include "validate/EmailSyntax.h"

#include "framework/TextBytes.h"

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
    AfxMoveText(address, strAddress, static_cast<std::size_t>(strAddress.GetLength()) + 1);
    if (!strMessage.IsEmpty())
        AfxMoveText(message, strMessage, static_cast<std::size_t>(strMessage.GetLength()) + 1);
    return nResult != 0 ? 1 : 0;
}
