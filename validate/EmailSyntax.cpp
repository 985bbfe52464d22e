#include "validate/EmailSyntax.h"

namespace
{
constexpr int kMaxLabelLength = 64;

constexpr char kMissingAt[] = "Missing  @  ";
constexpr char kAtComesFirst[] = "@  is in invalid location in email.";
constexpr char kInvalidCharacter[] = "invalid character in email.";
constexpr char kLabelTooLong[] =
    "Invalid Domain name. Domain name length must be less than 64 characters.";
constexpr char kEmptyLabel[] = "Character  \".\" is in Invalid location.";
constexpr char kNoDotInDomain[] = "Invalid Domain name.";

bool IsLabelByte(char ch)
{
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') ||
           ch == '_' || ch == '-';
}

bool IsLocalByte(char ch)
{
    return IsLabelByte(ch) || ch == '.';
}

int Reject(int* pnErrorPos, int nErrorPos, CString& strMessage, LPCTSTR pszMessage)
{
    *pnErrorPos = nErrorPos;
    strMessage = pszMessage;
    return 0;
}
} // namespace

int CheckEmailSyntax(CString& strAddress, int* pnErrorPos, CString& strMessage)
{
    *pnErrorPos = -1;
    strMessage.Empty();
    strAddress.TrimLeft();
    strAddress.TrimRight();
    if (strAddress.IsEmpty())
        return 0;

    // Not by the string's own search, which goes by characters: a byte above 127 is a fault of its
    // own here, never half of something.
    const char* const pszAddress = strAddress;
    int nAt = 0;
    int nFirstBad = -1;
    while (pszAddress[nAt] != '@' && pszAddress[nAt] != '\0')
    {
        if (nFirstBad == -1 && !IsLocalByte(pszAddress[nAt]))
            nFirstBad = nAt;
        ++nAt;
    }
    if (pszAddress[nAt] == '\0')
        return Reject(pnErrorPos, -1, strMessage, kMissingAt);
    if (nAt == 0)
        return Reject(pnErrorPos, 0, strMessage, kAtComesFirst);
    if (nFirstBad != -1)
        return Reject(pnErrorPos, nFirstBad, strMessage, kInvalidCharacter);

    int nLabels = 0;
    int nStart = nAt + 1;
    for (;;)
    {
        int nEnd = nStart;
        nFirstBad = -1;
        while (pszAddress[nEnd] != '.' && pszAddress[nEnd] != '\0')
        {
            if (nFirstBad == -1 && !IsLabelByte(pszAddress[nEnd]))
                nFirstBad = nEnd;
            ++nEnd;
        }
        if (nEnd - nStart > kMaxLabelLength)
            return Reject(pnErrorPos, nStart + 1, strMessage, kLabelTooLong);
        if (nEnd == nStart)
            return Reject(pnErrorPos, nStart + 1, strMessage, kEmptyLabel);
        if (nFirstBad != -1)
            return Reject(pnErrorPos, nFirstBad + 1, strMessage, kInvalidCharacter);
        ++nLabels;
        if (pszAddress[nEnd] == '\0')
            break;
        nStart = nEnd + 1;
    }
    if (nLabels < 2)
        return Reject(pnErrorPos, nAt + 1, strMessage, kNoDotInDomain);
    return 1;
}
