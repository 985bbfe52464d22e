#include "tarntool/Output.h"

#include "tarntool/Failure.h"
#include "tarntool/Text.h"

#include <cstring>
#include <memory>

namespace
{
bool g_bAttachTried = false;
HANDLE g_hConsole = nullptr; // for the rest of the process

HANDLE GetConsole() noexcept
{
    if (!g_bAttachTried)
    {
        g_bAttachTried = true;
        // Under Wine a windowed program belongs to its starter's console already.
        if (::AttachConsole(ATTACH_PARENT_PROCESS) || ::GetLastError() == ERROR_ACCESS_DENIED)
        {
            SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
            g_hConsole = ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                       OPEN_EXISTING, 0, nullptr);
            if (g_hConsole == INVALID_HANDLE_VALUE)
                g_hConsole = nullptr;
        }
    }
    return g_hConsole;
}

bool WriteBytes(HANDLE hStream, LPCSTR p, DWORD cb) noexcept
{
    while (cb > 0)
    {
        DWORD cbWritten = 0;
        if (!::WriteFile(hStream, p, cb, &cbWritten, nullptr) || cbWritten == 0)
            return false;
        p += cbWritten;
        cb -= cbWritten;
    }
    return true;
}

// A console shows what it is given in its own code page, unless it is given UTF-16.
bool WriteToConsole(HANDLE hConsole, LPCSTR psz)
{
    const int cch = ::MultiByteToWideChar(CP_UTF8, 0, psz, -1, nullptr, 0);
    const std::unique_ptr<WCHAR[]> pText(new WCHAR[static_cast<std::size_t>(cch)]);
    ::MultiByteToWideChar(CP_UTF8, 0, psz, -1, pText.get(), cch);
    DWORD cchWritten = 0;
    return ::WriteConsoleW(hConsole, pText.get(), static_cast<DWORD>(cch) - 1, &cchWritten,
                           nullptr) != FALSE;
}

// All of it at once: what several processes write into one file stays whole lines.
bool WriteText(HANDLE hStream, const CString& strText)
{
    DWORD nMode = 0;
    if (::GetConsoleMode(hStream, &nMode))
        return WriteToConsole(hStream, strText);
    return WriteBytes(hStream, strText, static_cast<DWORD>(strText.GetLength()));
}
} // namespace

HANDLE GetStream(DWORD nStream) noexcept
{
    HANDLE const h = ::GetStdHandle(nStream);
    const bool bUsable =
        h != nullptr && h != INVALID_HANDLE_VALUE && ::GetFileType(h) != FILE_TYPE_UNKNOWN;
    if (bUsable)
        return h;
    return nStream == STD_INPUT_HANDLE ? nullptr : GetConsole();
}

bool IsAttachedToConsole() noexcept
{
    return g_hConsole != nullptr;
}

Output::Output(LPCWSTR pszFile)
{
    if (pszFile == nullptr)
    {
        m_hStream = GetStream(STD_OUTPUT_HANDLE);
        return;
    }
    m_file.Reset(::CreateFileW(pszFile, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!m_file.IsValid())
        throw Failure{ExitCode::SystemFailure, "cannot write to " + ToUtf8(pszFile) + ": " +
                                                   SystemErrorText(::GetLastError())};
    m_hStream = m_file;
}

void Output::WriteLine(LPCSTR pszLine)
{
    if (m_hStream != nullptr && !WriteText(m_hStream, CString(pszLine) + "\r\n"))
        throw Failure{ExitCode::SystemFailure,
                      "the output cannot be written: " + SystemErrorText(::GetLastError())};
}

void WriteError(LPCSTR pszSentence) noexcept
{
    HANDLE const hStream = GetStream(STD_ERROR_HANDLE);
    if (hStream == nullptr)
        return;
    try
    {
        const CString strSentence = "tarntool: " + CString(pszSentence);
        // Those of the library have a full stop already.
        const bool bStop = strSentence.GetAt(strSentence.GetLength() - 1) == '.';
        WriteText(hStream, strSentence + (bStop ? "\r\n" : ".\r\n"));
    }
    catch (...) // without memory, as much as can be said
    {
        WriteBytes(hStream, pszSentence, static_cast<DWORD>(std::strlen(pszSentence)));
    }
}
