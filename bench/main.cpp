// The performance table: each call of the library beside the system's bare calls for the same work,
// in one process and in turn. internals/performance.md explains the rows.
//
//   bench TARN_DLL EMPTY_DLL PLUGIN_FOLDER
//
// Exits with 1 when a limit is passed, with 2 when something cannot be measured.
#include "bench/Addresses.h"
#include "bench/Banner.h"
#include "bench/BareAddressCheck.h"
#include "bench/Compare.h"
#include "include/tarn.h"
#include "tests/support/LoadedTarn.h"
#include "tests/support/TempFolder.h"
#include "ui/resource.h"

#include <cstdlib>
#include <cstring>

namespace
{
constexpr char kTitle[] = "Setup";
constexpr char kMessage[] = "Please wait while the files are copied.";

void Require(bool bTrue, const char* pszWhat)
{
    if (bTrue)
        return;
    std::fprintf(stderr, "bench: %s\n", pszWhat);
    std::exit(2);
}

void PumpMessages()
{
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageA(&msg);
}

// The installer's own window, on a thread of its own that runs its message loop: installers work on
// another thread than the one of their window.
class ParentWindow
{
public:
    ParentWindow()
        : m_hReady(::CreateEventA(nullptr, TRUE, FALSE, nullptr)),
          m_hThread(::CreateThread(nullptr, 0, &Run, this, 0, &m_nThread))
    {
        ::WaitForSingleObject(m_hReady, INFINITE);
        Require(m_hWnd != nullptr, "no parent window");
    }
    ~ParentWindow()
    {
        ::PostThreadMessageA(m_nThread, WM_QUIT, 0, 0);
        ::WaitForSingleObject(m_hThread, INFINITE);
        ::CloseHandle(m_hThread);
        ::CloseHandle(m_hReady);
    }
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;

    HWND Handle() const { return m_hWnd; }

private:
    static DWORD WINAPI Run(LPVOID pParameter)
    {
        auto* const pThis = static_cast<ParentWindow*>(pParameter);
        pThis->m_hWnd =
            ::CreateWindowExA(0, "#32770", "Installer", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100,
                              500, 350, nullptr, nullptr, nullptr, nullptr);
        ::UpdateWindow(pThis->m_hWnd);
        ::SetEvent(pThis->m_hReady);
        MSG msg;
        while (::GetMessageA(&msg, nullptr, 0, 0) > 0)
            ::DispatchMessageA(&msg);
        ::DestroyWindow(pThis->m_hWnd);
        return 0;
    }

    HWND m_hWnd = nullptr;
    DWORD m_nThread = 0;
    HANDLE m_hReady;
    HANDLE m_hThread;
};

std::size_t FileSize(const std::string& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    Require(::GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) != FALSE,
            path.c_str());
    return data.nFileSizeLow;
}

void Size(Table& table, const std::string& tarn, const std::string& plugins)
{
    const std::size_t ours = FileSize(tarn);
    const std::size_t bare = FileSize(plugins + "\\Banner.dll") +
                             FileSize(plugins + "\\nsDialogs.dll") +
                             FileSize(plugins + "\\System.dll");
    table.Row("size of tarn.dll; three plug-ins", std::to_string(ours), std::to_string(bare),
              static_cast<double>(ours) / static_cast<double>(bare), 1);
}

Way LoadAndUnload(const std::string& path)
{
    return {[path] {
        HMODULE const hModule = ::LoadLibraryA(path.c_str());
        Require(hModule != nullptr, path.c_str());
        ::FreeLibrary(hModule);
    }};
}

void Load(Table& table, const std::string& tarn, const std::string& empty)
{
    Require(::GetModuleHandleA(tarn.c_str()) == nullptr, "the library is loaded already");
    table.Times("load and unload; an empty DLL", 1.5, 301, 1, LoadAndUnload(tarn),
                LoadAndUnload(empty));
}

// An activation context of the kind that the library activates: the one of its own manifest.
class Context
{
public:
    explicit Context(HMODULE hModule)
    {
        ACTCTXA actctx = {};
        actctx.cbSize = sizeof(actctx);
        actctx.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
        actctx.hModule = hModule;
        actctx.lpResourceName = MAKEINTRESOURCEA(3);
        m_hContext = ::CreateActCtxA(&actctx);
        Require(m_hContext != INVALID_HANDLE_VALUE, "no activation context");
    }
    ~Context() { ::ReleaseActCtx(m_hContext); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    HANDLE Handle() const { return m_hContext; }

private:
    HANDLE m_hContext;
};

struct Address
{
    explicit Address(std::size_t cb) : text(MakeAddress(cb)) {}

    Way Ours(const LoadedTarn& tarn)
    {
        return {[this, &tarn] { Check(tarn.VerifyEmail(text.data(), &nPosition, szMessage)); }};
    }
    Way Bare(const Context& context)
    {
        return {[this, &context] {
            ULONG_PTR nCookie = 0;
            ::ActivateActCtx(context.Handle(), &nCookie);
            const char* pszMessage = nullptr;
            const int nResult = BareAddressCheck(text.data(), &nPosition, &pszMessage);
            if (pszMessage != nullptr)
                std::strcpy(szMessage, pszMessage);
            ::DeactivateActCtx(0, nCookie);
            Check(nResult);
        }};
    }

    static void Check(int nResult) { Require(nResult == 1, "the address is not accepted"); }

    std::string text;
    int nPosition = 0;
    char szMessage[TARN_EMAIL_MESSAGE_SIZE] = "";
};

void VerifyEmailRows(Table& table, const LoadedTarn& tarn)
{
    const Context context(tarn.Module());
    Address a30(30);
    Address a190(190);
    table.Times("VerifyEmail, 30 bytes; context and one pass", 1.25, 301, 1000, a30.Ours(tarn),
                a30.Bare(context));
    table.Times("VerifyEmail, 190 bytes; context and one pass", 1.25, 301, 500, a190.Ours(tarn),
                a190.Bare(context));
}

void VerifyEmailGrowth(Table& table, const LoadedTarn& tarn)
{
    const Context context(tarn.Module());
    Address a1000(1000);
    Address a10000(10000);
    table.Growth("address x 10, 1,000 to 10,000 bytes", 1.05, 101, 50, a1000.Ours(tarn),
                 a10000.Ours(tarn), a1000.Bare(context), a10000.Bare(context));
}

Way CopyOurs(const LoadedTarn& tarn, const std::string& source, const std::string& folder)
{
    return {[&tarn, source, folder] {
        Require(tarn.FileCopy(source.c_str(), folder.c_str()) == 1, "FileCopy");
    }};
}

Way CopyBare(const std::string& source, const std::string& destination)
{
    return {[source, destination] {
        Require(::GetFileAttributesA(source.c_str()) != INVALID_FILE_ATTRIBUTES &&
                    ::CopyFileA(source.c_str(), destination.c_str(), FALSE),
                "CopyFileA");
    }};
}

void FileCopyRows(Table& table, const LoadedTarn& tarn)
{
    const TempFolder folder;
    const std::string target = folder.MakeFolder("target") + "\\";
    const std::string small = folder / "small.bin";
    const std::string large = folder / "large.bin";
    WriteBytes(small, std::string(64 * 1024, 's'));
    WriteBytes(large, std::string(640 * 1024, 'l'));
    table.Times("FileCopy, 64 KB; attributes and CopyFileA", 1.03, 501, 1,
                CopyOurs(tarn, small, target), CopyBare(small, target + "small.bin"));
    table.Growth("file x 10, 64 to 640 KB", 1.05, 201, 1, CopyOurs(tarn, small, target),
                 CopyOurs(tarn, large, target), CopyBare(small, target + "small.bin"),
                 CopyBare(large, target + "large.bin"));
}

void RunOnceRow(Table& table, const LoadedTarn& tarn)
{
    static constexpr char kKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Runonce";
    static constexpr char kName[] = "TarnBench";
    static constexpr char kCommand[] = "\"C:\\Program Files\\Lakeside\\setup.exe\" /finish";
    HKEY hKey = nullptr;
    Require(::RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &hKey, nullptr) == ERROR_SUCCESS,
            "no Runonce key");
    const Way ours = {
        [&tarn] { Require(tarn.PutInRunOnce(kName, kCommand) == 1, "PutInRunOnce"); }};
    const Way bare = {[] {
        HKEY hOpened = nullptr;
        Require(::RegOpenKeyExA(HKEY_CURRENT_USER, kKey, 0, KEY_ALL_ACCESS, &hOpened) ==
                        ERROR_SUCCESS &&
                    ::RegSetValueExA(hOpened, kName, 0, REG_SZ,
                                     reinterpret_cast<const BYTE*>(kCommand),
                                     sizeof(kCommand)) == ERROR_SUCCESS,
                "RegSetValueExA");
        ::RegCloseKey(hOpened);
    }};
    table.Times("PutInRunOnce; open, set, close", 1.03, 401, 10, ours, bare);
    ::RegDeleteValueA(hKey, kName);
    ::RegCloseKey(hKey);
}

// The interpreter's start-up file in an installation folder of a given length.
class StartUpFile
{
public:
    explicit StartUpFile(std::size_t cbFolder)
    {
        folders.push_back(kRoot);
        folder = folders.back() + "\\";
        folder.append(cbFolder - folder.size(), 'f');
        folders.push_back(folder);
        folders.push_back(folder + "\\embedch");
        folders.push_back(folder + "\\embedch\\config");
        path = folders.back() + "\\chrc";
        for (const std::string& name : folders)
            ::CreateDirectoryA(name.c_str(), nullptr);
    }
    ~StartUpFile()
    {
        ::DeleteFileA(path.c_str());
        while (!folders.empty())
        {
            ::RemoveDirectoryA(folders.back().c_str());
            folders.pop_back();
        }
    }
    StartUpFile(const StartUpFile&) = delete;
    StartUpFile& operator=(const StartUpFile&) = delete;

    Way Ours(const LoadedTarn& tarn) const
    {
        return {[this, &tarn] {
            Require(tarn.Write_ch_config_File(folder.c_str()) == 1, "Write_ch_config_File");
        }};
    }
    // Create, one write of ready bytes, close. The bytes are those that the library has written.
    Way Bare(const LoadedTarn& tarn)
    {
        Ours(tarn).run();
        bytes = ReadBytes(path);
        return {[this] {
            HANDLE const hFile = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
            DWORD cb = 0;
            Require(hFile != INVALID_HANDLE_VALUE &&
                        ::WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cb,
                                    nullptr) &&
                        ::CloseHandle(hFile),
                    "CreateFileA");
        }};
    }

private:
    // Short, and not in the temporary folder: paths end at 259 bytes.
    static constexpr char kRoot[] = "C:\\tarnbench";

    std::vector<std::string> folders;
    std::string folder;
    std::string path;
    std::string bytes;
};

void StartUpFileRows(Table& table, const LoadedTarn& tarn)
{
    StartUpFile ordinary(22);
    StartUpFile tenfold(220);
    table.Times("Write_ch_config_File; create, write, close", 1.10, 501, 1, ordinary.Ours(tarn),
                ordinary.Bare(tarn));
    table.Growth("folder x 10, 22 to 220 bytes", 1.05, 501, 1, ordinary.Ours(tarn),
                 tenfold.Ours(tarn), ordinary.Bare(tarn), tenfold.Bare(tarn));
}

// The same window, by bare calls.
class BareWindow
{
public:
    explicit BareWindow(HWND hWndParent) : m_hWndParent(hWndParent) {}

    void Show()
    {
        m_hWnd = ::CreateDialogParamA(::GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDD_WAITDLG),
                                      nullptr, &Procedure, 0);
        RECT rcParent;
        if (::GetWindowRect(m_hWndParent, &rcParent))
        {
            RECT rc;
            ::GetWindowRect(m_hWnd, &rc);
            ::SetWindowPos(m_hWnd, HWND_TOPMOST,
                           (rcParent.left + rcParent.right) / 2 - (rc.right - rc.left) / 2,
                           (rcParent.top + rcParent.bottom) / 2 - (rc.bottom - rc.top) / 2, 0, 0,
                           SWP_NOSIZE | SWP_SHOWWINDOW);
        }
        ::ShowWindow(m_hWnd, SW_SHOWNORMAL);
        ::UpdateWindow(m_hWnd);
    }
    void Close() { ::DestroyWindow(m_hWnd); }

private:
    static INT_PTR CALLBACK Procedure(HWND hWnd, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/)
    {
        if (message != WM_INITDIALOG)
            return FALSE;
        ::SendDlgItemMessageA(hWnd, IDC_WAITDLG_MESSAGE, WM_SETTEXT, 0,
                              reinterpret_cast<LPARAM>(kMessage));
        ::SetWindowTextA(hWnd, kTitle);
        ::SetTimer(hWnd, 333, 600, nullptr);
        ::SetWindowPos(hWnd, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
        return TRUE;
    }

    HWND m_hWndParent;
    HWND m_hWnd = nullptr;
};

void WaitWindowRows(Table& table, const LoadedTarn& tarn, const std::string& plugins)
{
    const ParentWindow parent;
    BareWindow window(parent.Handle());
    const Way ours = {[&] {
                          tarn.DoWaitDlgModless(parent.Handle(), kTitle, kMessage);
                          tarn.CloseWaitDlg();
                      },
                      &PumpMessages};
    const Way bare = {[&] {
                          window.Show();
                          window.Close();
                      },
                      &PumpMessages};
    table.Times("DoWaitDlgModless, CloseWaitDlg; the same calls", 1.10, 121, 1, ours, bare);

    Banner banner(plugins + "\\Banner.dll", parent.Handle());
    Require(banner.IsComplete(), "no Banner.dll");
    const Way firstPaint = {[&] { tarn.DoWaitDlgModless(parent.Handle(), kTitle, kMessage); },
                            [&] {
                                Require(banner.IsVisible(), "the wait window is not visible");
                                tarn.CloseWaitDlg();
                                Require(!banner.IsVisible(), "the wait window is still visible");
                                PumpMessages();
                            }};
    const Way show = {[&] { banner.Show(L"Please wait while the files are copied."); },
                      [&] {
                          banner.Destroy();
                          while (banner.IsVisible())
                              PumpMessages();
                          PumpMessages();
                      }};
    table.Times("call to first paint; banner's show to visible", 0.5, 61, 1, firstPaint, show);
}
} // namespace

int main(int argc, char** argv)
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    Require(argc == 4, "usage: bench TARN_DLL EMPTY_DLL PLUGIN_FOLDER");
    const std::string path = argv[1];
    const std::string plugins = argv[3];

    Table table;
    Size(table, path, plugins);
    Load(table, path, argv[2]);
    {
        const LoadedTarn tarn(path);
        Require(tarn.IsComplete(), "tarn.dll is not complete");
        VerifyEmailRows(table, tarn);
        FileCopyRows(table, tarn);
        RunOnceRow(table, tarn);
        StartUpFileRows(table, tarn);
        WaitWindowRows(table, tarn, plugins);
        VerifyEmailGrowth(table, tarn);
    }
    return table.AllKept() ? 0 : 1;
}
