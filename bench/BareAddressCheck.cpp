#include "bench/BareAddressCheck.h"

#include <cstddef>
#include <cstring>

namespace
{
enum Class : unsigned char
{
    kLabel = 1, // may stand in a label
    kLocal = 2, // may stand in the local part
    kSpace = 4
};

struct ClassTable
{
    unsigned char of[256] = {};

    constexpr ClassTable()
    {
        for (int ch = '0'; ch <= '9'; ++ch)
            of[ch] = kLabel | kLocal;
        for (int ch = 'A'; ch <= 'Z'; ++ch)
            of[ch] = of[ch + 'a' - 'A'] = kLabel | kLocal;
        of[static_cast<int>('_')] = of[static_cast<int>('-')] = kLabel | kLocal;
        of[static_cast<int>('.')] = kLocal;
        for (int ch = '\t'; ch <= '\r'; ++ch)
            of[ch] = kSpace;
        of[static_cast<int>(' ')] = kSpace;
    }
};
constexpr ClassTable kClass;

bool Is(char ch, unsigned char cls)
{
    return (kClass.of[static_cast<unsigned char>(ch)] & cls) != 0;
}

// Where the white space at the end starts, if p is in it; else null.
char* EndOfText(char* p)
{
    char* const pEnd = p;
    while (Is(*p, kSpace))
        ++p;
    return *p == '\0' ? pEnd : nullptr;
}
} // namespace

int BareAddressCheck(char* const pszAddress, int* pnErrorPosition, const char** ppszMessage)
{
    *pnErrorPosition = -1;
    *ppszMessage = nullptr;

    char* p = pszAddress;
    while (Is(*p, kSpace))
        ++p;
    if (p != pszAddress)
    {
        std::memmove(pszAddress, p, std::strlen(p) + 1);
        p = pszAddress;
    }

    // The local part. Its first fault waits until an '@' is found.
    char* pBad = nullptr;
    for (; *p != '@'; ++p)
    {
        if (Is(*p, kLocal))
            continue;
        char* const pEnd = EndOfText(p);
        if (pEnd != nullptr)
        {
            *pEnd = '\0';
            if (pEnd != pszAddress)
                *ppszMessage = "Missing  @  ";
            return 0;
        }
        if (pBad == nullptr)
            pBad = p;
    }
    const std::ptrdiff_t nAt = p - pszAddress;

    int nLabels = 0;
    std::ptrdiff_t nPosition = -1;
    const char* pszMessage = nullptr;
    if (nAt == 0)
    {
        nPosition = 0;
        pszMessage = "@  is in invalid location in email.";
    }
    else if (pBad != nullptr)
    {
        nPosition = pBad - pszAddress;
        pszMessage = "invalid character in email.";
    }
    // The labels, one after the other, up to the first fault.
    while (pszMessage == nullptr)
    {
        char* const pStart = ++p;
        pBad = nullptr;
        bool bLast = false;
        for (; *p != '.'; ++p)
        {
            if (Is(*p, kLabel))
                continue;
            char* const pEnd = EndOfText(p);
            if (pEnd != nullptr)
            {
                *pEnd = '\0';
                bLast = true;
                break;
            }
            if (pBad == nullptr)
                pBad = p;
        }
        nPosition = pStart - pszAddress + 1;
        if (p - pStart > 64)
            pszMessage = "Invalid Domain name. Domain name length must be less than 64 characters.";
        else if (p == pStart)
            pszMessage = "Character  \".\" is in Invalid location.";
        else if (pBad != nullptr)
        {
            nPosition = pBad - pszAddress + 1;
            pszMessage = "invalid character in email.";
        }
        else
        {
            ++nLabels;
            if (!bLast)
                continue;
            if (nLabels > 1)
                return 1;
            nPosition = nAt + 1;
            pszMessage = "Invalid Domain name.";
        }
    }

    // A fault ended the walk early: what follows is still to be trimmed.
    std::size_t cb = std::strlen(pszAddress);
    while (cb > 0 && Is(pszAddress[cb - 1], kSpace))
        pszAddress[--cb] = '\0';
    *pnErrorPosition = static_cast<int>(nPosition);
    *ppszMessage = pszMessage;
    return 0;
}
