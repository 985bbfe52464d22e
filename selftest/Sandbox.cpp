#include "selftest/Sandbox.h"

#include "selftest/Paths.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

namespace selftest
{
namespace
{
std::wstring Environment(const wchar_t* pszName)
{
    std::wstring value(32767, L'\0');
    value.resize(
        ::GetEnvironmentVariableW(pszName, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

void SetVariable(const wchar_t* pszName, const std::wstring& value)
{
    ::SetEnvironmentVariableW(pszName, value.empty() ? nullptr : value.c_str());
}

std::wstring TempPath()
{
    WCHAR szPath[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH + 1, szPath);
    std::wstring path(szPath);
    while (!path.empty() && path.back() == L'\\')
        path.pop_back();
    return path;
}

// Where everybody may write; the first is the usual one, the others are for a user whose name not
// every program can write.
std::vector<std::wstring> Places()
{
    return {TempPath(), Environment(L"PUBLIC"), Environment(L"ProgramData"), OwnFolder()};
}
} // namespace

Sandbox::Sandbox() : m_tempBefore(Environment(L"TEMP")), m_tmpBefore(Environment(L"TMP"))
{
    const std::wstring name = L"tarn-selftest-" + std::to_wstring(::GetCurrentProcessId());
    for (const std::wstring& place : Places())
    {
        const std::wstring plain = PlainForm(place);
        if (plain.empty() || !::CreateDirectoryW((plain + L"\\" + name).c_str(), nullptr))
            continue;
        m_folder = plain + L"\\" + name;
        break;
    }
    if (m_folder.empty())
        throw std::runtime_error("there is no temporary folder whose path every program can use");
    MakeFolders();
    m_key = L"Software\\Tarn self-test " + std::to_wstring(::GetCurrentProcessId());
}

Sandbox::~Sandbox()
{
    RemoveKey();
    SetVariable(L"TEMP", m_tempBefore);
    SetVariable(L"TMP", m_tmpBefore);
    ::SetCurrentDirectoryW(OwnFolder().c_str()); // no folder can be removed while it is current
    RemoveTree(m_folder);
}

void Sandbox::MakeFolders() const
{
    for (const wchar_t* const pszName : {L"\\temp", L"\\work", L"\\pictures"})
        ::CreateDirectoryW((m_folder + pszName).c_str(), nullptr);
}

void Sandbox::RemoveKey() const
{
    ::RegDeleteTreeW(HKEY_CURRENT_USER, m_key.c_str());
}

std::wstring Sandbox::PlainCopyOf(const std::wstring& folder) const
{
    std::wstring plain = PlainForm(folder);
    if (!plain.empty())
        return plain;
    std::wstring copy = m_folder + L"\\programs";
    CopyFiles(folder, copy);
    return copy;
}

void Sandbox::SetEnvironment(const std::wstring& library, bool bMayTouchUser) const
{
    SetVariable(L"TEMP", m_folder + L"\\temp");
    SetVariable(L"TMP", m_folder + L"\\temp");
    SetVariable(L"TARN_DLL", library);
    SetVariable(L"TARN_SCREENSHOTS", m_folder + L"\\pictures");
    SetVariable(L"TARN_REGISTRY_KEY", m_key);
    SetVariable(L"TARN_MAY_TOUCH_USER", bMayTouchUser ? L"1" : L"");
    // What somebody's own environment may hold, and would change the outcome.
    for (const wchar_t* const pszName :
         {L"TARN_LOCALE", L"TARN_FULL_DISK", L"TARN_DENIED_FOLDER", L"TARN_DENIED_FILE",
          L"GTEST_FILTER", L"GTEST_OUTPUT", L"GTEST_REPEAT", L"GTEST_SHUFFLE", L"GTEST_BRIEF",
          L"GTEST_FAIL_FAST", L"GTEST_BREAK_ON_FAILURE", L"GTEST_CATCH_EXCEPTIONS",
          L"GTEST_ALSO_RUN_DISABLED_TESTS", L"GTEST_TOTAL_SHARDS", L"GTEST_SHARD_INDEX",
          L"TEST_PREMATURE_EXIT_FILE"})
        SetVariable(pszName, L"");
    SetVariable(L"GTEST_COLOR", L"no");
    ::SetCurrentDirectoryW((m_folder + L"\\work").c_str());
}

void Sandbox::Empty() const
{
    RemoveKey();
    for (const wchar_t* const pszName : {L"\\temp", L"\\pictures"})
        RemoveTree(m_folder + pszName);
    for (const std::wstring& name : FilesIn(m_folder + L"\\work", L""))
        ::DeleteFileW((m_folder + L"\\work\\" + name).c_str());
    MakeFolders();
}
} // namespace selftest
