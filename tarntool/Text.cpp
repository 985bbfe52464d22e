#include "tarntool/Text.h"

#include "tarntool/Failure.h"

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace
{
// False when the text cannot be converted without loss, if bExact asks for that.
bool Convert(LPCWSTR psz, UINT nCodePage, bool bExact, CString* pstr)
{
    DWORD dwFlags = 0;
    BOOL bLost = FALSE;
    BOOL* pbLost = nullptr;
    if (bExact && nCodePage == CP_UTF8)
        dwFlags = WC_ERR_INVALID_CHARS;
    else if (bExact)
    {
        dwFlags = WC_NO_BEST_FIT_CHARS;
        pbLost = &bLost;
    }
    const int cb = ::WideCharToMultiByte(nCodePage, dwFlags, psz, -1, nullptr, 0, nullptr, pbLost);
    if (cb == 0 || bLost)
        return false;
    ::WideCharToMultiByte(nCodePage, dwFlags, psz, -1, pstr->GetBuffer(cb - 1), cb, nullptr,
                          pbLost);
    pstr->ReleaseBuffer(cb - 1);
    return true;
}

// The process's code page to UTF-16.
std::unique_ptr<WCHAR[]> ToWide(LPCSTR psz)
{
    const int cch = ::MultiByteToWideChar(CP_ACP, 0, psz, -1, nullptr, 0);
    std::unique_ptr<WCHAR[]> pszWide(new WCHAR[static_cast<std::size_t>(cch)]);
    ::MultiByteToWideChar(CP_ACP, 0, psz, -1, pszWide.get(), cch);
    return pszWide;
}
} // namespace

CString ToUtf8(LPCWSTR psz)
{
    CString str;
    Convert(psz, CP_UTF8, false, &str);
    return str;
}

CString ToExactText(LPCWSTR psz)
{
    CString str;
    if (!Convert(psz, ::GetACP(), true, &str))
        throw Failure{ExitCode::Failed,
                      "this version of Windows cannot name it to the library: " + ToUtf8(psz)};
    return str;
}

CString ToDisplayText(LPCWSTR psz)
{
    CString str;
    if (psz != nullptr)
        Convert(psz, ::GetACP(), false, &str);
    return str;
}

CString TextToUtf8(LPCSTR psz)
{
    return ::GetACP() == CP_UTF8 ? CString(psz) : ToUtf8(ToWide(psz).get());
}

bool ToSystemCodePage(const CString& strText, CString* pstrResult)
{
    const UINT nCodePage = GetSystemCodePage();
    if (nCodePage == ::GetACP())
    {
        *pstrResult = strText;
        return true;
    }
    return Convert(ToWide(strText).get(), nCodePage, true, pstrResult);
}

// Not what the system's language has by itself: it may be set to UTF-8 for all programs.
UINT GetSystemCodePage()
{
    char szNumber[16] = "";
    DWORD cb = sizeof(szNumber);
    const LSTATUS nStatus =
        ::RegGetValueA(HKEY_LOCAL_MACHINE, "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage",
                       "ACP", RRF_RT_REG_SZ, nullptr, szNumber, &cb);
    const auto nCodePage = static_cast<UINT>(std::strtoul(szNumber, nullptr, 10));
    return nStatus == ERROR_SUCCESS && ::IsValidCodePage(nCodePage) ? nCodePage : ::GetACP();
}

CString NumberText(LONGLONG n)
{
    char szDigits[24];
    char* p = szDigits + sizeof(szDigits);
    *--p = '\0';
    ULONGLONG nLeft = n < 0 ? 0 - static_cast<ULONGLONG>(n) : static_cast<ULONGLONG>(n);
    do
        *--p = static_cast<char>('0' + nLeft % 10);
    while ((nLeft /= 10) != 0);
    if (n < 0)
        *--p = '-';
    return p;
}

CString SystemErrorText(DWORD nError)
{
    WCHAR szText[512] = L"";
    DWORD cch =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                         nError, 0, szText, sizeof(szText) / sizeof(szText[0]), nullptr);
    while (cch > 0 && (szText[cch - 1] <= L' ' || szText[cch - 1] == L'.'))
        szText[--cch] = L'\0';
    const CString strNumber = "Windows error " + NumberText(nError);
    return cch == 0 ? strNumber : ToUtf8(szText) + " (" + strNumber + ")";
}
