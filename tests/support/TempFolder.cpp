#include "tests/support/TempFolder.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace
{
std::wstring Wide(const std::string& text)
{
    std::vector<wchar_t> buffer(text.size() + 1);
    ::MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, buffer.data(),
                          static_cast<int>(buffer.size()));
    return buffer.data();
}

// With wide names: a test may have left one that the code page does not have.
void RemoveTree(const std::wstring& folder)
{
    WIN32_FIND_DATAW found;
    HANDLE const hFind = ::FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (hFind != INVALID_HANDLE_VALUE)
    {
        do
        {
            const std::wstring name(found.cFileName);
            if (name == L"." || name == L"..")
                continue;
            const std::wstring path = folder + L"\\" + name;
            ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
                RemoveTree(path);
            else
                ::DeleteFileW(path.c_str());
        }
        while (::FindNextFileW(hFind, &found));
        ::FindClose(hFind);
    }
    ::RemoveDirectoryW(folder.c_str());
}
} // namespace

TempFolder::TempFolder()
{
    static int s_nCount = 0;
    char szRoot[MAX_PATH] = "";
    ::GetTempPathA(MAX_PATH, szRoot);
    for (int nTries = 0; nTries < 100; ++nTries)
    {
        m_path = std::string(szRoot) + "tarn-" + std::to_string(::GetCurrentProcessId()) + "-" +
                 std::to_string(::GetTickCount() % 100000) + "-" + std::to_string(++s_nCount);
        if (::CreateDirectoryA(m_path.c_str(), nullptr))
            return;
    }
    throw std::runtime_error("cannot make the folder " + m_path);
}

TempFolder::~TempFolder()
{
    RemoveTree(Wide(m_path));
}

std::string TempFolder::MakeFolder(const std::string& name) const
{
    const std::string path = *this / name;
    // Of no use to names with trail bytes that look like separators; those come one at a time.
    for (std::size_t i = name.find('\\'); i != std::string::npos; i = name.find('\\', i + 1))
        ::CreateDirectoryA((*this / name.substr(0, i)).c_str(), nullptr);
    if (!::CreateDirectoryA(path.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
        throw std::runtime_error("cannot make the folder " + path);
    return path;
}

std::string TempFolder::Listing(const std::string& folder)
{
    std::vector<std::string> names;
    WIN32_FIND_DATAA found;
    HANDLE const hFind = ::FindFirstFileA((folder + "\\*").c_str(), &found);
    if (hFind == INVALID_HANDLE_VALUE)
        return "(unreadable)";
    do
    {
        const std::string name(found.cFileName);
        if (name != "." && name != "..")
            names.push_back(name);
    }
    while (::FindNextFileA(hFind, &found));
    ::FindClose(hFind);
    std::sort(names.begin(), names.end());
    std::string listing;
    for (const std::string& name : names)
        listing += (listing.empty() ? "" : "|") + name;
    return listing;
}

std::string ReadBytes(const std::string& path)
{
    HANDLE const hFile = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return "(unreadable)";
    std::string bytes(::GetFileSize(hFile, nullptr), '\0');
    DWORD cbRead = 0;
    const BOOL bRead =
        ::ReadFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbRead, nullptr);
    ::CloseHandle(hFile);
    return bRead && cbRead == bytes.size() ? bytes : "(unreadable)";
}

void WriteBytes(const std::string& path, const std::string& bytes)
{
    HANDLE const hFile = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD cbWritten = 0;
    const bool bWritten =
        hFile != INVALID_HANDLE_VALUE &&
        ::WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr) &&
        cbWritten == bytes.size();
    if (hFile != INVALID_HANDLE_VALUE)
        ::CloseHandle(hFile);
    if (!bWritten)
        throw std::runtime_error("cannot write " + path);
}

bool Exists(const std::string& path)
{
    return ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}
