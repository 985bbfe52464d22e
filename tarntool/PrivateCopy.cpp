#include "tarntool/PrivateCopy.h"

#include "tarntool/Failure.h"
#include "tarntool/ProgramPath.h"
#include "tarntool/Text.h"

#include <ntsecapi.h>
#include <sddl.h>

#include <cstddef>
#include <cwchar>

namespace
{
constexpr WCHAR kPrefix[] = L"tarntool-";
constexpr WCHAR kSuffix[] = L".exe";
constexpr WCHAR kHexDigits[] = L"0123456789abcdef";
constexpr int kRandomBytes = 16;
// With the names above and the random part in hexadecimal
constexpr DWORD kMaxFolder = MAX_PATH - 64;
constexpr ULONGLONG kOld = 36000000000ULL; // an hour, in units of the file system

// With a backslash at its end. False when there is none, or not one of an ordinary length.
bool GetTempFolder(LPWSTR pszFolder)
{
    const DWORD cch = ::GetTempPathW(kMaxFolder, pszFolder);
    return cch > 0 && cch < kMaxFolder;
}

// The owner, the administrators and the system. Where the installer is elevated, the owner is the
// administrators, too: the user's other programs, who may write to the folder, must not be able to
// exchange what will be run.
class OwnersOnly
{
public:
    OwnersOnly()
    {
        ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:P(A;;FA;;;OW)(A;;FA;;;BA)(A;;FA;;;SY)", SDDL_REVISION_1, &m_pDescriptor, nullptr);
        m_attributes = {sizeof(m_attributes), m_pDescriptor, FALSE};
    }
    ~OwnersOnly() { ::LocalFree(m_pDescriptor); }
    OwnersOnly(const OwnersOnly&) = delete;
    OwnersOnly& operator=(const OwnersOnly&) = delete;

    bool IsValid() const { return m_pDescriptor != nullptr; }
    LPSECURITY_ATTRIBUTES Get() { return &m_attributes; }

private:
    PSECURITY_DESCRIPTOR m_pDescriptor = nullptr;
    SECURITY_ATTRIBUTES m_attributes = {};
};

bool AppendRandomName(LPWSTR pszPath)
{
    BYTE random[kRandomBytes];
    if (!::RtlGenRandom(random, sizeof(random)))
        return false;
    std::wcscat(pszPath, kPrefix);
    LPWSTR p = pszPath + std::wcslen(pszPath);
    for (const BYTE b : random)
    {
        *p++ = kHexDigits[b >> 4];
        *p++ = kHexDigits[b & 0xF];
    }
    std::wcscpy(p, kSuffix);
    return true;
}

bool IsNameOfCopy(LPCWSTR pszName)
{
    constexpr std::size_t cchPrefix = sizeof(kPrefix) / sizeof(WCHAR) - 1;
    constexpr std::size_t cchRandom = 2 * static_cast<std::size_t>(kRandomBytes);
    return std::wcsncmp(pszName, kPrefix, cchPrefix) == 0 &&
           std::wcsspn(pszName + cchPrefix, kHexDigits) == cchRandom &&
           std::wcscmp(pszName + cchPrefix + cchRandom, kSuffix) == 0;
}

bool CopyContents(HANDLE hFrom, HANDLE hTo)
{
    BYTE buffer[16384];
    DWORD cbRead = 0;
    while (::ReadFile(hFrom, buffer, sizeof(buffer), &cbRead, nullptr))
    {
        DWORD cbWritten = 0;
        if (cbRead == 0)
            return true;
        if (!::WriteFile(hTo, buffer, cbRead, &cbWritten, nullptr))
            return false;
        if (cbWritten != cbRead)
        {
            ::SetLastError(ERROR_DISK_FULL);
            return false;
        }
    }
    return false;
}

HANDLE OpenOwnProgram()
{
    const ProgramPath path;
    return ::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                         OPEN_EXISTING, 0, nullptr);
}

bool IsSameFile(HANDLE h1, HANDLE h2)
{
    BY_HANDLE_FILE_INFORMATION info1;
    BY_HANDLE_FILE_INFORMATION info2;
    return ::GetFileInformationByHandle(h1, &info1) && ::GetFileInformationByHandle(h2, &info2) &&
           info1.nFileIndexLow == info2.nFileIndexLow &&
           info1.nFileIndexHigh == info2.nFileIndexHigh &&
           info1.dwVolumeSerialNumber == info2.dwVolumeSerialNumber;
}
} // namespace

PrivateCopy::PrivateCopy()
{
    if (!Make())
        throw Failure{ExitCode::SystemFailure, "the folder for temporary files cannot be used: " +
                                                   SystemErrorText(::GetLastError())};
}

bool PrivateCopy::Make()
{
    OwnersOnly owners;
    ScopedHandle original(OpenOwnProgram());
    if (!owners.IsValid() || !original.IsValid() || !GetTempFolder(m_szPath) ||
        !AppendRandomName(m_szPath))
        return false;
    ScopedHandle written(::CreateFileW(m_szPath, GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_DELETE, owners.Get(),
                                       CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!written.IsValid())
        return false;
    // From here on, nobody can delete or rename it until the last handle is closed: not this one, which
    // deletes the file, nor its copies. It can be run only when the first one, for writing, is closed.
    m_file.Reset(::CreateFileW(m_szPath, GENERIC_READ | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                               nullptr, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!m_file.IsValid())
    {
        const DWORD nError = ::GetLastError();
        ::DeleteFileW(m_szPath);
        ::SetLastError(nError);
        return false;
    }
    return IsSameFile(written, m_file) && CopyContents(original, written);
}

void PrivateCopy::Delete(LPCWSTR pszPath)
{
    WCHAR szFolder[MAX_PATH];
    if (!GetTempFolder(szFolder))
        return;
    const std::size_t cchFolder = std::wcslen(szFolder);
    if (std::wcslen(pszPath) > cchFolder &&
        ::CompareStringOrdinal(pszPath, static_cast<int>(cchFolder), szFolder,
                               static_cast<int>(cchFolder), TRUE) == CSTR_EQUAL &&
        IsNameOfCopy(pszPath + cchFolder))
        ::DeleteFileW(pszPath);
}

void PrivateCopy::DeleteOld()
{
    WCHAR szPath[MAX_PATH];
    if (!GetTempFolder(szPath))
        return;
    LPWSTR const pszName = szPath + std::wcslen(szPath);
    std::wcscpy(pszName, kPrefix);
    std::wcscat(pszName, L"*");
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    const auto ticks = [](const FILETIME& time) {
        return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    };
    WIN32_FIND_DATAW found;
    HANDLE const hFind = ::FindFirstFileW(szPath, &found);
    if (hFind == INVALID_HANDLE_VALUE)
        return;
    do
    {
        if (IsNameOfCopy(found.cFileName) && ticks(found.ftCreationTime) + kOld < ticks(now))
        {
            std::wcscpy(pszName, found.cFileName);
            ::DeleteFileW(szPath); // refused for one that runs
        }
    }
    while (::FindNextFileW(hFind, &found));
    ::FindClose(hFind);
}
