#include "validate/EmailSyntax.h"

#include <cstring>

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

// What each byte is good for: a table, so that an address is passed over once.
constexpr unsigned char kLabelByte = 1;
constexpr unsigned char kLocalByte = 2;

struct ByteClasses
{
    unsigned char classes[256] = {};

    constexpr ByteClasses()
    {
        for (const char ch : "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-")
            classes[static_cast<unsigned char>(ch)] = kLabelByte | kLocalByte;
        classes[static_cast<unsigned char>('.')] = kLocalByte;
        classes[0] = 0; // the terminator, which the loop has met as well
    }
};
constexpr ByteClasses kByteClasses;

// Index of the first byte at or after i that is not of the class; the terminator is of none.
int SkipBytes(const char* psz, int i, unsigned char nClass)
{
    const char* p = psz + i;
    while ((kByteClasses.classes[static_cast<unsigned char>(*p)] & nClass) != 0)
        ++p;
    return static_cast<int>(p - psz);
}

int Reject(int* pnErrorPos, int nErrorPos, CString& strMessage, LPCTSTR pszMessage)
{
    *pnErrorPos = nErrorPos;
    strMessage = pszMessage;
    return 0;
}
// The domain, which starts after the '@'.
int CheckDomain(const char* pszAddress, int nAt, int* pnErrorPos, CString& strMessage)
{
    int nLabels = 0;
    int nStart = nAt + 1;
    for (;;)
    {
        const int nGoodEnd = SkipBytes(pszAddress, nStart, kLabelByte);
        // The label goes on to the dot, past a bad byte, and its length is looked at first.
        int nEnd = nGoodEnd;
        while (pszAddress[nEnd] != '.' && pszAddress[nEnd] != '\0')
            ++nEnd;
        if (nEnd - nStart > kMaxLabelLength)
            return Reject(pnErrorPos, nStart + 1, strMessage, kLabelTooLong);
        if (nEnd == nStart)
            return Reject(pnErrorPos, nStart + 1, strMessage, kEmptyLabel);
        if (nGoodEnd != nEnd)
            return Reject(pnErrorPos, nGoodEnd + 1, strMessage, kInvalidCharacter);
        ++nLabels;
        if (pszAddress[nEnd] == '\0')
            break;
        nStart = nEnd + 1;
    }
    return nLabels >= 2 ? 1 : Reject(pnErrorPos, nAt + 1, strMessage, kNoDotInDomain);
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
    const int nLocalEnd = SkipBytes(pszAddress, 0, kLocalByte);
    if (pszAddress[nLocalEnd] != '@')
    {
        if (std::strchr(pszAddress + nLocalEnd, '@') == nullptr)
            return Reject(pnErrorPos, -1, strMessage, kMissingAt);
        return Reject(pnErrorPos, nLocalEnd, strMessage, kInvalidCharacter);
    }
    if (nLocalEnd == 0)
        return Reject(pnErrorPos, 0, strMessage, kAtComesFirst);
    return CheckDomain(pszAddress, nLocalEnd, pnErrorPos, strMessage);
}
