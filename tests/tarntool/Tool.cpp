#include "tests/tarntool/Tool.h"

#include "tests/support/Processes.h"
#include "tests/support/WindowDriver.h"
#include "tests/support/Wine.h"

#include <algorithm>
#include <set>
#include <stdexcept>

namespace tool
{
namespace
{
constexpr DWORD kPipeBytes = 1 << 20; // more than it ever writes

std::wstring Environment(const wchar_t* pszName)
{
    wchar_t szValue[32768] = L"";
    if (::GetEnvironmentVariableW(pszName, szValue, 32768) == 0)
        throw std::runtime_error("an environment variable is missing");
    return szValue;
}

void MakePipe(HANDLE* phRead, HANDLE* phWrite)
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    if (!::CreatePipe(phRead, phWrite, &inherited, kPipeBytes))
        throw std::runtime_error("cannot make a pipe");
    ::SetHandleInformation(*phRead, HANDLE_FLAG_INHERIT, 0);
}

std::string ReadAll(HANDLE hPipe)
{
    std::string text;
    char buffer[4096];
    DWORD cb = 0;
    while (hPipe != nullptr && ::ReadFile(hPipe, buffer, sizeof(buffer), &cb, nullptr) && cb > 0)
        text.append(buffer, cb);
    return text;
}

// Wine's desktop is a process that the first window of all starts, and that keeps the streams of whoever
// made it: it had better be this process than one whose streams are read to their end.
void MakeDesktop()
{
    static const bool s_bMade = [] {
        return ::DestroyWindow(::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr,
                                                 nullptr, nullptr, nullptr)) != FALSE;
    }();
    if (!s_bMade)
        throw std::runtime_error("cannot make a window");
}

struct Search
{
    std::wstring caption;
    DWORD nProcessID; // 0: by the caption
    HWND hFound;
};

BOOL CALLBACK VisitWindow(HWND hWnd, LPARAM lParam)
{
    auto& search = *reinterpret_cast<Search*>(lParam);
    DWORD nProcessID = 0;
    ::GetWindowThreadProcessId(hWnd, &nProcessID);
    if (!::IsWindowVisible(hWnd) || (search.nProcessID != 0 ? nProcessID != search.nProcessID
                                                            : CaptionOf(hWnd) != search.caption))
        return TRUE;
    search.hFound = hWnd;
    return FALSE;
}
} // namespace

std::wstring Path()
{
    return Environment(L"TARN_TOOL");
}

Process::Process(const std::wstring& arguments, const Start& start)
{
    MakeDesktop();
    std::wstring line = start.line.empty() ? Quoted(start.program) : start.line;
    line += L" " + arguments;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = start.nShow;
    HANDLE hOut = nullptr;
    HANDLE hErr = nullptr;
    if (start.bCaptured)
    {
        MakePipe(&m_hOut, &hOut);
        MakePipe(&m_hErr, &hErr);
        startup.dwFlags |= STARTF_USESTDHANDLES;
        startup.hStdOutput = hOut;
        startup.hStdError = hErr;
    }
    PROCESS_INFORMATION process = {};
    // A busy Wine gives up on a new process now and then, before it has run at all.
    const bool bStarted = window_driver::WaitFor([&] {
        return ::CreateProcessW(start.program.c_str(), &line[0], nullptr, nullptr, start.bCaptured,
                                start.nFlags, nullptr,
                                start.folder.empty() ? nullptr : start.folder.c_str(), &startup,
                                &process) != FALSE;
    });
    if (start.bCaptured)
    {
        ::CloseHandle(hOut);
        ::CloseHandle(hErr);
    }
    if (!bStarted)
        throw std::runtime_error("cannot start tarntool");
    ::CloseHandle(process.hThread);
    m_hProcess = process.hProcess;
    m_nID = process.dwProcessId;
}

Process::~Process()
{
    Kill();
    ::CloseHandle(m_hProcess);
    if (m_hOut != nullptr)
    {
        ::CloseHandle(m_hOut);
        ::CloseHandle(m_hErr);
    }
}

Result Process::Finish()
{
    Result result;
    result.out = ReadAll(m_hOut);
    result.err = ReadAll(m_hErr);
    ::WaitForSingleObject(m_hProcess, INFINITE);
    ::GetExitCodeProcess(m_hProcess, &result.nExitCode);
    return result;
}

void Process::Kill()
{
    ::TerminateProcess(m_hProcess, 9);
    ::WaitForSingleObject(m_hProcess, INFINITE);
}

Result RunTool(const std::wstring& arguments, const Start& start)
{
    return Process(arguments, start).Finish();
}

std::wstring Program()
{
    wchar_t szPath[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, szPath, MAX_PATH);
    const std::wstring path(szPath);
    return path.substr(0, path.rfind(L'\\') + 1) + L"tool-program.exe";
}

std::wstring Quoted(const std::wstring& text)
{
    return L"\"" + text + L"\"";
}

std::wstring Wide(const std::string& ansi)
{
    std::wstring text(ansi.size() + 1, L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, ansi.c_str(), -1, &text[0], static_cast<int>(text.size()));
    text.resize(text.find(L'\0'));
    return text;
}

std::string Utf8(const std::wstring& text)
{
    std::string bytes(text.size() * 3 + 1, '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, &bytes[0], static_cast<int>(bytes.size()),
                          nullptr, nullptr);
    bytes.resize(bytes.find('\0'));
    return bytes;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t end = text.find("\r\n", i);
        lines.push_back(text.substr(i, end - i));
        i = end == std::string::npos ? text.size() : end + 2;
    }
    return lines;
}

bool IsOneSentence(const std::string& err)
{
    const std::string begin = "tarntool: ";
    return err.compare(0, begin.size(), begin) == 0 && err.size() > begin.size() + 3 &&
           err.find("\r\n") == err.size() - 2 && err[err.size() - 3] == '.' &&
           err[err.size() - 4] != '.';
}

namespace
{
struct Copy
{
    std::wstring path;
    ULONGLONG cb;
};

std::vector<Copy> AllCopies()
{
    wchar_t szFolder[MAX_PATH] = L"";
    ::GetTempPathW(MAX_PATH, szFolder);
    const std::wstring folder(szFolder);
    std::vector<Copy> copies;
    WIN32_FIND_DATAW found;
    HANDLE const hFind = ::FindFirstFileW((folder + L"tarntool-*").c_str(), &found);
    if (hFind == INVALID_HANDLE_VALUE)
        return copies;
    do
        copies.push_back({folder + found.cFileName,
                          static_cast<ULONGLONG>(found.nFileSizeHigh) << 32 | found.nFileSizeLow});
    while (::FindNextFileW(hFind, &found));
    ::FindClose(hFind);
    return copies;
}

// Those of before this program, and those that were given up.
std::set<std::wstring> g_notCounted = [] {
    std::set<std::wstring> paths;
    for (const Copy& copy : AllCopies())
        paths.insert(copy.path);
    return paths;
}();

std::vector<Copy> Copies()
{
    std::vector<Copy> copies = AllCopies();
    copies.erase(
        std::remove_if(copies.begin(), copies.end(),
                       [](const Copy& copy) { return g_notCounted.count(copy.path) != 0; }),
        copies.end());
    return copies;
}
} // namespace

int CountCopies()
{
    return static_cast<int>(Copies().size());
}

void DeleteEmptyCopies()
{
    for (const Copy& copy : Copies())
    {
        if (copy.cb == 0)
            ::DeleteFileW(copy.path.c_str());
    }
}

int GiveUpCopiesOfHalfMadeTools()
{
    if (!RunsUnderWine() || CountTools() > 0)
        return 0;
    const std::vector<Copy> copies = Copies();
    for (const Copy& copy : copies)
        g_notCounted.insert(copy.path);
    return static_cast<int>(copies.size());
}

int CountProcesses(const std::wstring& name)
{
    return static_cast<int>(ProcessesOf(name).size());
}

int CountTools()
{
    const auto tools = ProcessesIf([](const std::wstring& program) {
        return program == L"tarntool.exe" || program.compare(0, 9, L"tarntool-") == 0;
    });
    return static_cast<int>(tools.size());
}

HWND FindVisible(const std::wstring& caption)
{
    Search search = {caption, 0, nullptr};
    ::EnumWindows(&VisitWindow, reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND FindVisibleOf(DWORD nProcessID)
{
    Search search = {L"", nProcessID, nullptr};
    ::EnumWindows(&VisitWindow, reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND WaitForVisible(const std::wstring& caption)
{
    HWND hFound = nullptr;
    window_driver::WaitFor([&] { return (hFound = FindVisible(caption)) != nullptr; });
    return hFound;
}

bool WaitUntilGone(const std::wstring& caption)
{
    return window_driver::WaitFor([&] { return FindVisible(caption) == nullptr; });
}

std::wstring CaptionOf(HWND hWnd)
{
    wchar_t szText[512] = L"";
    ::InternalGetWindowText(hWnd, szText, 512);
    return szText;
}
} // namespace tool
