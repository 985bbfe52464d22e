// What belongs to the host's process, compared before and after every export and after loading and
// unloading: the library changes none of it.
#include "include/tarn.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/RegistrySandbox.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UsersSettings.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace window_driver;

namespace
{
using Settings = std::vector<std::pair<std::string, std::string>>;

LONG WINAPI HostFilter(EXCEPTION_POINTERS* /*pInfo*/)
{
    return EXCEPTION_CONTINUE_SEARCH;
}

void HostHandler(int nSignal)
{
    std::signal(nSignal, &HostHandler);
}

void HostInvalidParameter(const wchar_t* /*pszExpression*/, const wchar_t* /*pszFunction*/,
                          const wchar_t* /*pszFile*/, unsigned int /*nLine*/, uintptr_t /*n*/)
{
}

constexpr int kSignals[] = {SIGABRT, SIGFPE, SIGILL, SIGINT, SIGSEGV, SIGTERM};

template <class Value>
std::string Text(Value value)
{
    return (testing::Message() << value).GetString();
}

std::string Pointer(const void* p)
{
    return Text(reinterpret_cast<ULONG_PTR>(p));
}

// A host's own choice for each, so that a setting put to its default would be noticed.
class Host
{
public:
    Host()
    {
        ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
        ::SetDllDirectoryA("C:\\windows\\fonts");
        ::SetUnhandledExceptionFilter(&HostFilter);
        std::setlocale(LC_ALL, "C");
        std::setlocale(LC_NUMERIC, "");
        _controlfp(_RC_CHOP, _MCW_RC);
        __builtin_ia32_ldmxcsr(kMxcsr);
        SetX87(kX87);
        for (const int nSignal : kSignals)
            std::signal(nSignal, &HostHandler);
        ::SetEnvironmentVariableA("TARN_HOST", "its own");
        ::SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT));
        _set_invalid_parameter_handler(&HostInvalidParameter);
        std::srand(4711);
    }

    // Of the other floating-point unit, which the C library's functions leave alone on this machine.
    static void SetX87(unsigned short nWord) { __asm__ volatile("fldcw %0" : : "m"(nWord)); }
    static unsigned short X87()
    {
        unsigned short nWord = 0;
        __asm__ volatile("fnstcw %0" : "=m"(nWord));
        return nWord;
    }

    // Reads without changing; what can only be read by setting it is put back.
    static Settings Read()
    {
        Settings settings;
        const auto add = [&settings](const char* pszName, const std::string& value) {
            settings.emplace_back(pszName, value);
        };
        char szText[32768] = "";
        add("error mode", Text(::GetErrorMode()));
        add("thread's error mode", Text(::GetThreadErrorMode()));
        ::GetDllDirectoryA(sizeof(szText), szText);
        add("DLL search path", szText);
        LPTOP_LEVEL_EXCEPTION_FILTER const pfnFilter = ::SetUnhandledExceptionFilter(nullptr);
        ::SetUnhandledExceptionFilter(pfnFilter);
        add("unhandled-exception filter", Pointer(reinterpret_cast<void*>(pfnFilter)));
        add("locale", std::setlocale(LC_ALL, nullptr));
        add("FPU control word", Text(_controlfp(0, 0)));
        add("x87 control word", Text(X87()));
        add("SSE control word", Text(__builtin_ia32_stmxcsr() & ~kMxcsrStatus));
        for (const int nSignal : kSignals)
        {
            const auto pfnHandler = std::signal(nSignal, SIG_DFL);
            std::signal(nSignal, pfnHandler);
            add("signal handler",
                Text(nSignal) + " " + Pointer(reinterpret_cast<void*>(pfnHandler)));
        }
        const auto pfnInvalid = _set_invalid_parameter_handler(nullptr);
        _set_invalid_parameter_handler(pfnInvalid);
        add("invalid-parameter handler", Pointer(reinterpret_cast<void*>(pfnInvalid)));
        ::GetCurrentDirectoryA(sizeof(szText), szText);
        add("current folder", szText);
        std::string environment;
        char* const pEnvironment = ::GetEnvironmentStringsA();
        for (const char* p = pEnvironment; *p != '\0'; p += std::strlen(p) + 1)
            environment += std::string(p) + "\n";
        ::FreeEnvironmentStringsA(pEnvironment);
        add("environment", environment);
        add("thread's locale", Text(::GetThreadLocale()));
        add("code page of the console", Text(::GetConsoleOutputCP()));
        add("priority class", Text(::GetPriorityClass(::GetCurrentProcess())));
        add("thread's priority", Text(::GetThreadPriority(::GetCurrentThread())));
        DWORD_PTR nProcessMask = 0;
        DWORD_PTR nSystemMask = 0;
        ::GetProcessAffinityMask(::GetCurrentProcess(), &nProcessMask, &nSystemMask);
        add("affinity", Text(nProcessMask));
        return settings;
    }

private:
    static constexpr unsigned kMxcsr = 0x7F80; // all exceptions masked, rounds toward zero
    static constexpr unsigned kMxcsrStatus = 0x3F;
    static constexpr unsigned short kX87 = 0x0E7F; // all masked, double precision, toward zero
};

void ExpectSame(const Settings& before, const Settings& after)
{
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(before[i].second, after[i].second) << before[i].first;
}

class HostSettings : public testing::Test
{
protected:
    HostSettings() : source(folder / "a.txt"), target(folder.MakeFolder("target"))
    {
        WriteBytes(source, "text");
        folder.MakeFolder("target\\embedch");
        folder.MakeFolder("target\\embedch\\config");
    }

    TempFolder folder;
    CurrentFolder current{folder.Path()};
    Host host;
    std::string source;
    std::string target;
};

// The comparison notices each of them.
TEST_F(HostSettings, CanBeSeenToChange)
{
    const Settings before = Host::Read();
    ExpectSame(before, Host::Read());
    const std::pair<const char*, std::function<void()>> kChanges[] = {
        {"error mode", [] { ::SetErrorMode(SEM_NOGPFAULTERRORBOX); }},
        {"DLL search path", [] { ::SetDllDirectoryA(""); }},
        {"unhandled-exception filter", [] { ::SetUnhandledExceptionFilter(nullptr); }},
        {"locale", [] { std::setlocale(LC_ALL, ""); }},
        {"FPU control word", [] { _controlfp(_RC_UP, _MCW_RC); }},
        {"x87 control word", [] { Host::SetX87(0x037F); }},
        {"SSE control word", [] { __builtin_ia32_ldmxcsr(0x1F80); }},
        {"signal handler", [] { std::signal(SIGSEGV, SIG_DFL); }},
        {"invalid-parameter handler", [] { _set_invalid_parameter_handler(nullptr); }},
        {"current folder", [] { ::SetCurrentDirectoryA("C:\\"); }},
        {"environment", [] { ::SetEnvironmentVariableA("TARN_HOST", "another"); }},
        {"thread's locale", [] { ::SetThreadLocale(LOCALE_INVARIANT); }},
    };
    for (const auto& change : kChanges)
    {
        change.second();
        const Settings after = Host::Read();
        bool bSeen = false;
        for (std::size_t i = 0; i < before.size(); ++i)
            bSeen = bSeen || (before[i].first == change.first && before[i] != after[i]);
        EXPECT_TRUE(bSeen) << change.first;
        host = Host();
        ::SetCurrentDirectoryA(folder.Path().c_str());
    }
    ExpectSame(before, Host::Read());
}

TEST_F(HostSettings, StayAsTheyAreWhenTheLibraryIsLoadedAndUnloaded)
{
    const Settings before = Host::Read();
    {
        const LoadedTarn tarn;
        ASSERT_TRUE(tarn.IsComplete());
        ExpectSame(before, Host::Read());
        char szAddress[] = "a@b.c";
        char szMessage[TARN_EMAIL_MESSAGE_SIZE];
        int nPosition = 0;
        tarn.VerifyEmail(szAddress, &nPosition, szMessage);
    }
    ExpectSame(before, Host::Read());
}

TEST_F(HostSettings, StayAsTheyAreInEveryExport)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    const HostWindow window(100, 100, 500, 400);
    const RegistrySandbox sandbox;
    HKEY hKey = nullptr;
    ASSERT_EQ(::RegCreateKeyExA(HKEY_CURRENT_USER,
                                "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce", 0, nullptr,
                                0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr),
              ERROR_SUCCESS);
    ::RegCloseKey(hKey);
    const std::pair<const char*, std::function<void()>> kCalls[] = {
        {"DoWaitDlgModless",
         [&] { EXPECT_EQ(tarn.DoWaitDlgModless(window.Handle(), "title", "text"), 0); }},
        {"messages of the wait window", [] { PumpUntil([] { return true; }); }},
        {"CloseWaitDlg", [&] { EXPECT_EQ(tarn.CloseWaitDlg(), 0); }},
        {"FileCopy", [&] { EXPECT_EQ(tarn.FileCopy(source.c_str(), (target + "\\").c_str()), 1); }},
        {"FileCopy that fails", [&] { EXPECT_EQ(tarn.FileCopy("C:\\none", "C:\\none\\"), 0); }},
        {"PutInRunOnce", [&] { EXPECT_EQ(tarn.PutInRunOnce("Name", "x"), 1); }},
        {"PutInRunOnce that fails",
         [&] { EXPECT_EQ(tarn.PutInRunOnce(std::string(40000, 'n').c_str(), "x"), 0); }},
        {"VerifyEmail",
         [&] {
             char szAddress[] = "us er@example.com";
             char szMessage[TARN_EMAIL_MESSAGE_SIZE];
             int nPosition = 0;
             EXPECT_EQ(tarn.VerifyEmail(szAddress, &nPosition, szMessage), 0);
         }},
        {"Write_ch_config_File", [&] { EXPECT_EQ(tarn.Write_ch_config_File(target.c_str()), 1); }},
        {"an exception",
         [&] {
             bool bThrown = false;
             try
             {
                 tarn.Write_ch_config_File("\\\\");
             }
             catch (...)
             {
                 bThrown = true;
             }
             EXPECT_TRUE(bThrown);
         }},
    };
    for (const auto& call : kCalls)
    {
        SCOPED_TRACE(call.first);
        const Settings before = Host::Read();
        call.second();
        ExpectSame(before, Host::Read());
    }
}

// All but the current folder, which the system's dialog may change; that is documented.
TEST_F(HostSettings, StayAsTheyAreInTheOpenDialogButForTheCurrentFolder)
{
    const LoadedTarn tarn;
    ASSERT_TRUE(tarn.IsComplete());
    if (!MayTouchUsersSettings())
        GTEST_SKIP() << kDialogTouchesSettings;
    // What the dialog changes in a process by being there at all is not the library's.
    ASSERT_NE(::LoadLibraryA("comdlg32.dll"), nullptr);
    host = Host();
    const Settings before = Host::Read();
    char szTitle[] = "Tarn settings";
    char szPath[TARN_OPEN_PATH_SIZE] = "";
    DriverThread user([&szTitle] {
        HWND const hDialog = WaitForTopLevel(szTitle);
        WaitFor([hDialog] { return ::IsWindowVisible(hDialog) != FALSE; });
        ::PostMessageA(hDialog, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(tarn.DoFileOpenDialog(nullptr, szTitle, "All|*.*||", nullptr, szPath), 0);
    user.Join();
    ::SetCurrentDirectoryA(folder.Path().c_str());
    ExpectSame(before, Host::Read());
}
} // namespace
