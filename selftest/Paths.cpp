#include "selftest/Paths.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace selftest
{
std::string Utf8(const std::wstring& text)
{
    const int nWide = static_cast<int>(text.size());
    const int cb =
        ::WideCharToMultiByte(CP_UTF8, 0, text.c_str(), nWide, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(cb), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.c_str(), nWide, utf8.data(), cb, nullptr, nullptr);
    return utf8;
}

std::wstring Wide(const std::string& utf8)
{
    const int cb = static_cast<int>(utf8.size());
    const int nWide = ::MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), cb, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(nWide), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), cb, text.data(), nWide);
    return text;
}

std::wstring OwnFolder()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

bool IsFile(const std::wstring& path)
{
    const DWORD nAttributes = ::GetFileAttributesW(path.c_str());
    return nAttributes != INVALID_FILE_ATTRIBUTES && (nAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::vector<std::wstring> FilesIn(const std::wstring& folder, const std::wstring& extension)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    HANDLE const hFind = ::FindFirstFileW((folder + L"\\*" + extension).c_str(), &found);
    if (hFind == INVALID_HANDLE_VALUE)
        return names;
    do
    {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.emplace_back(found.cFileName);
    }
    while (::FindNextFileW(hFind, &found));
    ::FindClose(hFind);
    std::sort(names.begin(), names.end());
    return names;
}

void CopyFiles(const std::wstring& from, const std::wstring& to)
{
    ::CreateDirectoryW(to.c_str(), nullptr);
    for (const std::wstring& name : FilesIn(from, L""))
    {
        if (!::CopyFileW((from + L"\\" + name).c_str(), (to + L"\\" + name).c_str(), FALSE))
            throw std::runtime_error("cannot copy " + Utf8(name) + " to " + Utf8(to));
    }
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the folders, which its own programs have made
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
            const bool bFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (bFolder && (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
                RemoveTree(path);
            else if (bFolder)
                ::RemoveDirectoryW(path.c_str());
            else
            {
                ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
                ::DeleteFileW(path.c_str());
            }
        }
        while (::FindNextFileW(hFind, &found));
        ::FindClose(hFind);
    }
    ::SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_NORMAL);
    ::RemoveDirectoryW(folder.c_str());
}

std::string ReadAll(const std::wstring& path)
{
    // The program that writes the file has it open.
    HANDLE const hFile =
        ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::string bytes;
    if (hFile == INVALID_HANDLE_VALUE)
        return bytes;
    char buffer[16384];
    DWORD cbRead = 0;
    while (::ReadFile(hFile, buffer, sizeof(buffer), &cbRead, nullptr) && cbRead != 0)
        bytes.append(buffer, cbRead);
    ::CloseHandle(hFile);
    return bytes;
}

bool WriteAll(const std::wstring& path, const std::string& bytes)
{
    HANDLE const hFile = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return false;
    DWORD cbWritten = 0;
    const bool bWritten =
        ::WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr) &&
        cbWritten == bytes.size();
    return ::CloseHandle(hFile) && bWritten;
}

bool IsPlain(const std::wstring& path)
{
    return std::all_of(path.begin(), path.end(),
                       [](wchar_t ch) { return ch >= L' ' && ch <= L'~'; });
}

std::wstring PlainForm(const std::wstring& path)
{
    if (IsPlain(path))
        return path;
    std::wstring shortForm(32768, L'\0');
    shortForm.resize(
        ::GetShortPathNameW(path.c_str(), shortForm.data(), static_cast<DWORD>(shortForm.size())));
    return IsPlain(shortForm) ? shortForm : L"";
}
} // namespace selftest
