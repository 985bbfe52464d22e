#include "selftest/Machine.h"

#include "selftest/Paths.h"

#include <windows.h>

#include <wincrypt.h>

#include <cstdio>

namespace selftest
{
namespace
{
template <class Function>
Function Find(const char* pszModule, const char* pszName)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA(pszModule), pszName)));
}

std::string Number(ULONG n)
{
    return std::to_string(n);
}

// The version itself, which GetVersionEx hides from programs that do not name it in their manifest.
std::string Version()
{
    RTL_OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    const auto get = Find<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>("ntdll.dll", "RtlGetVersion");
    if (get == nullptr || get(&version) != 0)
        return "unknown";
    return Number(version.dwMajorVersion) + "." + Number(version.dwMinorVersion) + "." +
           Number(version.dwBuildNumber);
}

std::string WindowsValue(const wchar_t* pszName)
{
    WCHAR szValue[256] = L"";
    DWORD cb = sizeof(szValue);
    const LSTATUS nError =
        ::RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
                       pszName, RRF_RT_REG_SZ, nullptr, szValue, &cb);
    return nError == ERROR_SUCCESS ? Utf8(szValue) : "";
}

std::string System()
{
    const auto wineVersion = Find<const char*(CDECL*)()>("ntdll.dll", "wine_get_version");
    if (wineVersion != nullptr)
    {
        std::string text = std::string("Wine ") + wineVersion() + ", as Windows " + Version();
        const auto host =
            Find<void(CDECL*)(const char**, const char**)>("ntdll.dll", "wine_get_host_version");
        if (host != nullptr)
        {
            const char* pszName = "";
            const char* pszRelease = "";
            host(&pszName, &pszRelease);
            text += std::string(", on ") + pszName + " " + pszRelease;
        }
        return text;
    }
    const std::string name = WindowsValue(L"ProductName");
    const std::string release = WindowsValue(L"DisplayVersion");
    DWORD nRevision = 0;
    DWORD cb = sizeof(nRevision);
    ::RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"UBR",
                   RRF_RT_REG_DWORD, nullptr, &nRevision, &cb);
    return (name.empty() ? "Windows" : name) + (release.empty() ? "" : " " + release) + ", " +
           Version() + "." + Number(nRevision);
}

std::string Language()
{
    WCHAR szUser[LOCALE_NAME_MAX_LENGTH] = L"";
    WCHAR szSystem[LOCALE_NAME_MAX_LENGTH] = L"";
    ::GetUserDefaultLocaleName(szUser, LOCALE_NAME_MAX_LENGTH);
    ::GetSystemDefaultLocaleName(szSystem, LOCALE_NAME_MAX_LENGTH);
    char szDisplay[16] = "";
    std::snprintf(szDisplay, sizeof(szDisplay), "0x%04X", ::GetUserDefaultUILanguage());
    return Utf8(szUser) + ", system " + Utf8(szSystem) + ", display " + szDisplay;
}

std::string Screen()
{
    HDC const hScreen = ::GetDC(nullptr);
    const int nDpi = ::GetDeviceCaps(hScreen, LOGPIXELSX);
    ::ReleaseDC(nullptr, hScreen);
    return std::to_string(nDpi) + " (" + std::to_string(nDpi * 100 / 96) + " %), " +
           std::to_string(::GetSystemMetrics(SM_CXSCREEN)) + " x " +
           std::to_string(::GetSystemMetrics(SM_CYSCREEN)) +
           (::GetSystemMetrics(SM_REMOTESESSION) != 0 ? ", remote session" : "");
}

std::string Processor()
{
    SYSTEM_INFO info;
    ::GetNativeSystemInfo(&info);
    WCHAR szName[256] = L"";
    ::GetEnvironmentVariableW(L"PROCESSOR_IDENTIFIER", szName, 256);
    return Number(info.dwNumberOfProcessors) + " of " + Utf8(szName);
}

std::string Rights()
{
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    PSID pAdministrators = nullptr;
    BOOL bMember = FALSE;
    if (::AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID,
                                   DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0, &pAdministrators))
    {
        ::CheckTokenMembership(nullptr, pAdministrators, &bMember);
        ::FreeSid(pAdministrators);
    }
    return bMember ? "administrator's" : "an ordinary user's";
}

std::string Now()
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    char szText[32] = "";
    std::snprintf(szText, sizeof(szText), "%04u-%02u-%02u %02u:%02u UTC", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute);
    return szText;
}

std::string Sha256(const std::string& bytes)
{
    HCRYPTPROV hProvider = 0;
    HCRYPTHASH hHash = 0;
    BYTE digest[32] = {};
    DWORD cb = sizeof(digest);
    const bool bHashed =
        ::CryptAcquireContextW(&hProvider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) &&
        ::CryptCreateHash(hProvider, CALG_SHA_256, 0, 0, &hHash) &&
        ::CryptHashData(hHash, reinterpret_cast<const BYTE*>(bytes.data()),
                        static_cast<DWORD>(bytes.size()), 0) &&
        ::CryptGetHashParam(hHash, HP_HASHVAL, digest, &cb, 0);
    if (hHash != 0)
        ::CryptDestroyHash(hHash);
    if (hProvider != 0)
        ::CryptReleaseContext(hProvider, 0);
    if (!bHashed)
        return "unknown";
    std::string text;
    for (const BYTE each : digest)
    {
        char szByte[4] = "";
        std::snprintf(szByte, sizeof(szByte), "%02x", each);
        text += szByte;
    }
    return text;
}
} // namespace

Facts DescribeMachine()
{
    return {{"system", System()},
            {"code pages", "ANSI " + Number(::GetACP()) + ", OEM " + Number(::GetOEMCP())},
            {"language", Language()},
            {"DPI", Screen()},
            {"processors", Processor()},
            {"rights", Rights()},
            {"time", Now()}};
}

std::string DescribeFile(const std::wstring& path)
{
    const std::string bytes = ReadAll(path);
    return std::to_string(bytes.size()) + " bytes, SHA-256 " + Sha256(bytes);
}
} // namespace selftest
