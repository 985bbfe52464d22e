// loader.cpp - the library's functions on the command line, loaded when the program runs.
//
//   loader [--library FILE] COMMAND
//
//   check ADDRESS              checks an e-mail address
//   copy FOLDER FILE...        copies files into an existing folder
//   config FOLDER              writes FOLDER\embedch\config\chrc; embedch\config must exist
//   runonce NAME COMMAND       queues a command for the user's next log-on
//   wait MILLISECONDS TEXT     shows the wait window
//   open TITLE                 lets the user pick a file, prints its path
//
// Without --library it loads the tarn.dll that lies beside the program.
//
// Exit codes: 0 done; 1 wrong arguments; 2 the function reported failure; 3 the library cannot be
// used, and the message says why.
#if !defined(_M_X64) && !defined(__x86_64__)
#error "tarn.dll is a library for 64-bit Windows on x86-64: build this program for x64"
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <tarn.h>

namespace
{

class UsageError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

std::wstring Wide(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                           wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<size_t>(length));
    return wide;
}

std::string Narrow(const std::wstring& text)
{
    std::string narrow(text.size() * 2, '\0');
    const int length =
        WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), narrow.data(),
                            static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<size_t>(length));
    return narrow;
}

std::wstring LibraryBesideProgram()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    path.resize(path.rfind(L'\\') + 1);
    return path + L"tarn.dll";
}

std::wstring FullPath(const std::wstring& file)
{
    std::wstring path(32768, L'\0');
    const DWORD size = static_cast<DWORD>(path.size());
    path.resize(GetFullPathNameW(file.c_str(), size, path.data(), nullptr));
    return path;
}

std::string SystemMessage(DWORD error)
{
    char text[256] = "";
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, sizeof(text), nullptr);
    while (length > 0 && std::strchr("\r\n. ", text[length - 1]) != nullptr)
        text[--length] = '\0';
    return text;
}

bool IsFile(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Why the library cannot be loaded, in words that tell the user what to do about it.
std::string LoadProblem(const std::wstring& path, DWORD error)
{
    std::string reason;
    if (error == ERROR_BAD_EXE_FORMAT)
        reason = "it is not a library for 64-bit Windows on x86-64, as this program is";
    else if (!IsFile(path))
        reason = "there is no such file";
    else if (error == ERROR_MOD_NOT_FOUND)
        reason = "another library that it needs is missing";
    else
        reason = SystemMessage(error);
    return "cannot load " + Narrow(path) + ": " + reason + " (Windows error " +
           std::to_string(error) + ")";
}

// The library and its functions, for as long as the object lives.
class Tarn
{
    struct Unload
    {
        void operator()(HMODULE module) const { FreeLibrary(module); }
    };

    const std::wstring m_path;
    const std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> m_module;

    static HMODULE Load(const std::wstring& path)
    {
        // With a full path and this flag, no library is picked up from the current folder or PATH; and
        // Windows 7 knows the flag without any of its updates.
        // Failing is reported here, not by a message box of the system's.
        DWORD mode = 0;
        SetThreadErrorMode(SEM_FAILCRITICALERRORS, &mode);
        HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        const DWORD error = GetLastError();
        SetThreadErrorMode(mode, nullptr);
        if (module == nullptr)
            throw std::runtime_error(LoadProblem(path, error));
        return module;
    }

    template <class Function>
    Function* Get(const char* name) const
    {
        FARPROC address = GetProcAddress(m_module.get(), name);
        if (address == nullptr)
            throw std::runtime_error(Narrow(m_path) + " has no function " + name +
                                     ": it is not tarn.dll, or one of another version");
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
    }

public:
    explicit Tarn(const std::wstring& path) : m_path(FullPath(path)), m_module(Load(m_path)) {}

    // The types are those of the header's declarations.
    decltype(::VerifyEmail)* const VerifyEmail = Get<decltype(::VerifyEmail)>("VerifyEmail");
    decltype(::FileCopy)* const FileCopy = Get<decltype(::FileCopy)>("FileCopy");
    decltype(::PutInRunOnce)* const PutInRunOnce = Get<decltype(::PutInRunOnce)>("PutInRunOnce");
    decltype(::Write_ch_config_File)* const WriteChConfigFile =
        Get<decltype(::Write_ch_config_File)>("Write_ch_config_File");
    decltype(::DoFileOpenDialog)* const DoFileOpenDialog =
        Get<decltype(::DoFileOpenDialog)>("DoFileOpenDialog");
    decltype(::DoWaitDlgModless)* const DoWaitDlgModless =
        Get<decltype(::DoWaitDlgModless)>("DoWaitDlgModless");
    decltype(::CloseWaitDlg)* const CloseWaitDlg = Get<decltype(::CloseWaitDlg)>("CloseWaitDlg");
};

// The wait window, for as long as the object lives; also when an exception ends it.
class WaitWindow
{
    const Tarn& m_tarn;

public:
    WaitWindow(const Tarn& tarn, const char* text) : m_tarn(tarn)
    {
        m_tarn.DoWaitDlgModless(nullptr, "Please wait", text);
    }
    ~WaitWindow() { m_tarn.CloseWaitDlg(); }
    WaitWindow(const WaitWindow&) = delete;
    WaitWindow& operator=(const WaitWindow&) = delete;
};

bool Check(const Tarn& tarn, std::string address)
{
    char message[TARN_EMAIL_MESSAGE_SIZE] = "";
    int position = TARN_NO_ERROR_POSITION;
    const bool accepted = tarn.VerifyEmail(address.data(), &position, message) == 1;
    address.resize(std::strlen(address.c_str())); // trimmed by the library
    if (accepted)
        std::printf("accepted: %s\n", address.c_str());
    else
        std::printf("refused: %s\n  message:  %s\n  position: %d\n", address.c_str(), message,
                    position);
    return accepted;
}

bool Copy(const Tarn& tarn, std::string folder, const std::vector<std::string>& files)
{
    folder += '\\'; // the library adds no separator
    for (const std::string& file : files)
    {
        if (tarn.FileCopy(file.c_str(), folder.c_str()) != 1)
        {
            std::fprintf(stderr, "loader: cannot copy %s to %s\n", file.c_str(), folder.c_str());
            return false;
        }
        std::printf("copied %s\n", file.c_str());
    }
    return true;
}

// The window lives on this thread, which keeps it painted by handling its messages.
bool Wait(const Tarn& tarn, DWORD milliseconds, const std::string& text)
{
    const WaitWindow window(tarn, text.c_str());
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return true;
}

bool Open(const Tarn& tarn, std::string title)
{
    char path[TARN_OPEN_PATH_SIZE] = "";
    if (tarn.DoFileOpenDialog(nullptr, title.data(), "All files (*.*)|*.*||", nullptr, path) != 1)
        return false;
    std::printf("%s\n", path);
    return true;
}

bool Run(const Tarn& tarn, const std::vector<std::string>& arguments)
{
    const std::string command = arguments.empty() ? "" : arguments[0];
    if (command == "check" && arguments.size() == 2)
        return Check(tarn, arguments[1]);
    if (command == "copy" && arguments.size() >= 3)
        return Copy(tarn, arguments[1], {arguments.begin() + 2, arguments.end()});
    if (command == "config" && arguments.size() == 2)
        return tarn.WriteChConfigFile(arguments[1].c_str()) == 1;
    if (command == "runonce" && arguments.size() == 3)
        return tarn.PutInRunOnce(arguments[1].c_str(), arguments[2].c_str()) == 1;
    if (command == "wait" && arguments.size() == 3)
        return Wait(tarn, std::strtoul(arguments[1].c_str(), nullptr, 10), arguments[2]);
    if (command == "open" && arguments.size() == 2)
        return Open(tarn, arguments[1]);
    throw UsageError("usage: loader [--library FILE] check ADDRESS | copy FOLDER FILE... |\n"
                     "       config FOLDER | runonce NAME COMMAND | wait MILLISECONDS TEXT |\n"
                     "       open TITLE");
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        std::vector<std::string> arguments(argv + 1, argv + argc);
        std::wstring library = LibraryBesideProgram();
        if (arguments.size() >= 2 && arguments[0] == "--library")
        {
            library = Wide(arguments[1]);
            arguments.erase(arguments.begin(), arguments.begin() + 2);
        }
        const Tarn tarn(library);
        return Run(tarn, arguments) ? 0 : 2;
    }
    catch (const UsageError& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "loader: %s\n", error.what());
        return 3;
    }
}
