// Runs tarntool.exe as installers do: started with a command line of their own, its output captured.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tool
{
// The program that was built; from the environment variable TARN_TOOL.
std::wstring Path();

struct Result
{
    DWORD nExitCode = STILL_ACTIVE;
    std::string out;
    std::string err;
};

struct Start
{
    std::wstring program = Path();
    std::wstring folder;        // the current one; empty: this process's
    WORD nShow = SW_SHOWNORMAL; // what installers wish for the first window
    bool bCaptured = true;      // false: no streams at all
    DWORD nFlags = 0;           // of CreateProcess
    std::wstring line;          // instead of the program's name, if not empty
};

// tarntool while it runs; killed with the object, if it still does.
class Process
{
public:
    // arguments: as they are to stand in the command line.
    explicit Process(const std::wstring& arguments, const Start& start = Start());
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // To the end of its output, and of the process.
    Result Finish();
    bool HasEnded() const { return ::WaitForSingleObject(m_hProcess, 0) == WAIT_OBJECT_0; }
    void Kill();
    DWORD GetID() const { return m_nID; }

private:
    HANDLE m_hProcess = nullptr;
    DWORD m_nID = 0;
    HANDLE m_hOut = nullptr; // the ends to read from
    HANDLE m_hErr = nullptr;
};

Result RunTool(const std::wstring& arguments, const Start& start = Start());

// The program that "run" is given; see Program.c.
std::wstring Program();

// The command line's form of a path, for a folder with blanks.
std::wstring Quoted(const std::wstring& text);
std::wstring Wide(const std::string& ansi);
std::string Utf8(const std::wstring& text);
std::vector<std::string> Lines(const std::string& text);

// "tarntool: " and one sentence.
bool IsOneSentence(const std::string& err);

// Copies of the program that wait windows run from, in the folder for temporary files: those that were made
// since this program began.
int CountCopies();
// Those of tools that were killed before they had written any of it.
void DeleteEmptyCopies();
// Wine: a process that is killed while it makes another leaves that half made, without a thread and in no
// list, and what it was to inherit stays open as long as Wine runs. What is there when no tool is there any
// more is not counted from now on. Returns how many these are; none on Windows.
int GiveUpCopiesOfHalfMadeTools();
// Processes that run a program of this name.
int CountProcesses(const std::wstring& name);
// Processes of tarntool and its copies.
int CountTools();

// A visible top-level window of any process.
HWND FindVisible(const std::wstring& caption);
HWND WaitForVisible(const std::wstring& caption);
bool WaitUntilGone(const std::wstring& caption);
// A visible top-level window of this process, or null.
HWND FindVisibleOf(DWORD nProcessID);
// Without waiting for its thread.
std::wstring CaptionOf(HWND hWnd);
} // namespace tool
