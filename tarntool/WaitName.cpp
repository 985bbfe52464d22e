#include "tarntool/WaitName.h"

#include "tarntool/Failure.h"

#include <cwchar>

namespace
{
constexpr WCHAR kHexDigits[] = L"0123456789ABCDEF";

bool IsPlain(WCHAR ch)
{
    return (ch >= L'0' && ch <= L'9') || (ch >= L'a' && ch <= L'z') || (ch >= L'A' && ch <= L'Z') ||
           ch == L'-' || ch == L'.';
}

// Everything else becomes _XXXX. False when it does not fit.
bool MakeName(LPWSTR pszName, int cchName, LPCWSTR pszKind, LPCWSTR pszID)
{
    // Local: of this session, and of nobody else's.
    std::wcscpy(pszName, L"Local\\tarntool-");
    std::wcscat(pszName, pszKind);
    LPWSTR p = pszName + std::wcslen(pszName);
    for (; *pszID != L'\0'; ++pszID)
    {
        if (p + 5 > pszName + cchName)
            return false;
        if (IsPlain(*pszID))
        {
            *p++ = *pszID;
            continue;
        }
        *p++ = L'_';
        for (int nShift = 12; nShift >= 0; nShift -= 4)
            *p++ = kHexDigits[*pszID >> nShift & 0xF];
    }
    *p = L'\0';
    return true;
}
} // namespace

WaitName::WaitName(const Request& request)
{
    LPCWSTR const pszID = request.Value(Request::ID);
    if (pszID == nullptr || *pszID == L'\0')
        throw Failure{ExitCode::WrongArguments, "--id is missing: a name for this wait window"};
    if (!MakeName(m_szRecord, kMaxName, L"record-", pszID) ||
        !MakeName(m_szDone, kMaxName, L"done-", pszID))
        throw Failure{ExitCode::WrongArguments, "the --id is too long"};
}
