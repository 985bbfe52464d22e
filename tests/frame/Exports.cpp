#include "tests/frame/Exports.h"

#include "include/tarn.h"

#include <commdlg.h>

#include <cstring>
#include <stdexcept>

Inside g_inside;

namespace
{
void Note()
{
    ++g_inside.nCalls;
    g_inside.hContext = HostContext::Current();
    g_inside.pModuleState = GetCurrentModuleState();
}

int WINAPI AnswerMessageBox(HWND /*hWnd*/, LPCSTR /*lpText*/, LPCSTR lpCaption, UINT /*uType*/)
{
    Note();
    g_inside.caption = lpCaption != nullptr ? lpCaption : "";
    return IDOK;
}

BOOL WINAPI CopyAsTold(LPCSTR /*lpSource*/, LPCSTR /*lpDestination*/, BOOL /*bFailIfExists*/)
{
    Note();
    return TRUE;
}

LSTATUS WINAPI SetValueAsTold(HKEY /*hKey*/, LPCSTR /*lpName*/, DWORD /*nReserved*/,
                              DWORD /*nType*/, const BYTE* /*lpData*/, DWORD /*cbData*/)
{
    Note();
    return ERROR_SUCCESS;
}

LSTATUS WINAPI FindNoKey(HKEY /*hKey*/, LPCSTR /*lpSubKey*/, DWORD /*nOptions*/, REGSAM /*nAccess*/,
                         PHKEY phResult)
{
    Note();
    *phResult = nullptr;
    return ERROR_FILE_NOT_FOUND;
}

// As on a full disk.
BOOL WINAPI WriteHalf(HANDLE /*hFile*/, LPCVOID /*lpBuffer*/, DWORD cbToWrite, LPDWORD pcbWritten,
                      LPOVERLAPPED /*lpOverlapped*/)
{
    Note();
    *pcbWritten = cbToWrite / 2;
    return TRUE;
}

BOOL WINAPI WriteNothing(HANDLE /*hFile*/, LPCVOID /*lpBuffer*/, DWORD /*cbToWrite*/,
                         LPDWORD pcbWritten, LPOVERLAPPED /*lpOverlapped*/)
{
    Note();
    *pcbWritten = 0;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

// Closes the file all the same.
BOOL WINAPI CloseBadly(HANDLE hObject)
{
    Note();
    static const auto s_pfnClose = reinterpret_cast<BOOL(WINAPI*)(HANDLE)>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("kernel32"), "CloseHandle")));
    s_pfnClose(hObject);
    ::SetLastError(ERROR_WRITE_FAULT);
    return FALSE;
}

BOOL APIENTRY ChooseFile(LPOPENFILENAMEA pofn)
{
    Note();
    ::lstrcpynA(pofn->lpstrFile, "C:\\chosen.txt", static_cast<int>(pofn->nMaxFile));
    return TRUE;
}

BOOL APIENTRY ChooseNothing(LPOPENFILENAMEA /*pofn*/)
{
    Note();
    return FALSE;
}

// The library looks for one function only.
FARPROC WINAPI GetChooseFile(HMODULE /*hModule*/, LPCSTR /*lpName*/)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ChooseFile));
}

FARPROC WINAPI GetChooseNothing(HMODULE /*hModule*/, LPCSTR /*lpName*/)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ChooseNothing));
}

HWND WINAPI CreateNoDialog(HINSTANCE /*hInstance*/, LPCSTR /*lpTemplate*/, HWND /*hParent*/,
                           DLGPROC /*pfnProc*/, LPARAM /*lParam*/)
{
    Note();
    return nullptr;
}

BOOL WINAPI DestroyAsTold(HWND hWnd)
{
    Note();
    static const auto s_pfnDestroy = reinterpret_cast<BOOL(WINAPI*)(HWND)>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("user32"), "DestroyWindow")));
    return s_pfnDestroy(hWnd);
}

int Verify(const Library& library, const std::string& text)
{
    char szAddress[2048];
    char szMessage[TARN_EMAIL_MESSAGE_SIZE];
    int nPosition = 0;
    std::strcpy(szAddress, text.c_str());
    return library.VerifyEmail(szAddress, &nPosition, szMessage);
}

template <class Function>
void* Address(Function* pfn)
{
    return reinterpret_cast<void*>(pfn);
}
} // namespace

Library::Library(Form form)
    : DoWaitDlgModless(&::DoWaitDlgModless), CloseWaitDlg(&::CloseWaitDlg),
      DoFileOpenDialog(&::DoFileOpenDialog), FileCopy(&::FileCopy), PutInRunOnce(&::PutInRunOnce),
      VerifyEmail(&::VerifyEmail), Write_ch_config_File(&::Write_ch_config_File)
{
    if (form == Form::Linked)
        return;
    m_pLoaded = std::make_unique<LoadedTarn>();
    DoWaitDlgModless = m_pLoaded->DoWaitDlgModless;
    CloseWaitDlg = m_pLoaded->CloseWaitDlg;
    DoFileOpenDialog = m_pLoaded->DoFileOpenDialog;
    FileCopy = m_pLoaded->FileCopy;
    PutInRunOnce = m_pLoaded->PutInRunOnce;
    VerifyEmail = m_pLoaded->VerifyEmail;
    Write_ch_config_File = m_pLoaded->Write_ch_config_File;
}

HMODULE Library::Module() const
{
    return m_pLoaded != nullptr ? m_pLoaded->Module() : ::GetModuleHandleA(nullptr);
}

Files::Files()
{
    if (!MakeKey("Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce"))
        throw std::runtime_error("cannot make the key for commands");
    // Stays loaded: under Wine, each time that it is loaded anew leaves a handle behind.
    static HMODULE const s_hDialogs = ::LoadLibraryA("comdlg32.dll");
    static_cast<void>(s_hDialogs);
    source = m_folder / "source.txt";
    WriteBytes(source, "text");
    destination = m_folder.MakeFolder("destination") + "\\";
    installation = m_folder.MakeFolder("installation");
    m_folder.MakeFolder("installation\\embedch\\config");
    notInstalled = m_folder.MakeFolder("empty");
}

std::vector<Situation> AllSituations(const Files& files)
{
    return {
        {"an address is accepted",
         [](const Library& library) { return Verify(library, "user@example.com"); },
         Left::ByReturning, 1},
        {"an address is refused", [](const Library& library) { return Verify(library, "user@"); },
         Left::ByReturning, 0},
        {"an empty address ends the check early",
         [](const Library& library) { return Verify(library, ""); }, Left::ByReturning, 0},
        {"an address is too long for the stack",
         [](const Library& library) { return Verify(library, std::string(1000, 'x') + "@b.c"); },
         Left::ByReturning, 1},
        {"a file is copied",
         [files = &files](const Library& library) {
             return library.FileCopy(files->source.c_str(), files->destination.c_str());
         },
         Left::ByReturning, 1},
        {"the system copies a file",
         [files = &files](const Library& library) {
             return library.FileCopy(files->source.c_str(), files->destination.c_str());
         },
         Left::ByReturning, 1, "CopyFileA", Address(&CopyAsTold)},
        {"an empty source ends the copy early",
         [](const Library& library) { return library.FileCopy("", "C:\\"); }, Left::ByReturning, 0},
        {"a missing source ends the copy early",
         [](const Library& library) { return library.FileCopy("C:\\none\\such.txt", "C:\\"); },
         Left::ByReturning, 0},
        {"a command is queued",
         [](const Library& library) { return library.PutInRunOnce("TarnTest", "command"); },
         Left::ByReturning, 1, "RegSetValueExA", Address(&SetValueAsTold)},
        {"the key for commands is missing",
         [](const Library& library) { return library.PutInRunOnce("TarnTest", "command"); },
         Left::ByReturning, 0, "RegOpenKeyExA", Address(&FindNoKey)},
        {"the start-up file is written",
         [files = &files](const Library& library) {
             return library.Write_ch_config_File(files->installation.c_str());
         },
         Left::ByReturning, 1},
        {"the start-up file cannot be opened",
         [files = &files](const Library& library) {
             return library.Write_ch_config_File(files->notInstalled.c_str());
         },
         Left::ByReturning, 0, "MessageBoxA", Address(&AnswerMessageBox)},
        {"the folder consists of separators",
         [](const Library& library) { return library.Write_ch_config_File("\\\\"); },
         Left::ByInvalidArgException, 0},
        {"the disk is full",
         [files = &files](const Library& library) {
             return library.Write_ch_config_File(files->installation.c_str());
         },
         Left::ByFileException, 0, "WriteFile", Address(&WriteHalf)},
        {"nothing can be written",
         [files = &files](const Library& library) {
             return library.Write_ch_config_File(files->installation.c_str());
         },
         Left::ByFileException, 0, "WriteFile", Address(&WriteNothing)},
        {"the start-up file cannot be closed",
         [files = &files](const Library& library) {
             return library.Write_ch_config_File(files->installation.c_str());
         },
         Left::ByFileException, 0, "CloseHandle", Address(&CloseBadly)},
        {"there is no wait window to close",
         [](const Library& library) { return library.CloseWaitDlg(); }, Left::ByReturning, 0},
        {"the wait window is shown",
         [](const Library& library) {
             return library.DoWaitDlgModless(::GetDesktopWindow(), "title", "message");
         },
         Left::ByReturning, 0},
        {"the wait window is closed",
         [](const Library& library) {
             library.DoWaitDlgModless(nullptr, "title", "message");
             return library.CloseWaitDlg();
         },
         Left::ByReturning, 0, "DestroyWindow", Address(&DestroyAsTold)},
        {"the wait window cannot be made",
         [](const Library& library) {
             return library.DoWaitDlgModless(nullptr, "title", "message");
         },
         Left::ByReturning, 0, "CreateDialogParamA", Address(&CreateNoDialog)},
        {"a file is chosen",
         [](const Library& library) {
             char szPath[TARN_OPEN_PATH_SIZE] = "";
             return library.DoFileOpenDialog(nullptr, nullptr, "All|*.*||", nullptr, szPath);
         },
         Left::ByReturning, 1, "GetProcAddress", Address(&GetChooseFile)},
        {"no file is chosen",
         [](const Library& library) {
             char szPath[TARN_OPEN_PATH_SIZE] = "a name";
             return library.DoFileOpenDialog(nullptr, nullptr, nullptr, nullptr, szPath);
         },
         Left::ByReturning, 0, "GetProcAddress", Address(&GetChooseNothing)},
    };
}
