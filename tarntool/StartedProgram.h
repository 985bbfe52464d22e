// StartedProgram: a program and what it starts in turn, which end together when they are ended.
#pragma once

#include "tarntool/Output.h"
#include "tarntool/ScopedHandle.h"

class StartedProgram
{
public:
    // Starts the program of a command line, which does not run before Go. Its output goes where this
    // program's does. Throws Failure.
    //
    // A bare name is looked for beside this program, in the system's folders and in PATH, never in the
    // current folder.
    StartedProgram(LPCWSTR pszCommandLine, const Output& output);
    // Ends all of it, unless the program has ended by itself: what it left running goes on then.
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    // The first time; then nothing.
    void Go();
    // True when the program has ended. Any thread.
    bool Wait(DWORD nMilliseconds) const;
    // The program and what it started.
    void End();
    UINT GetExitCode() const;

private:
    void Start(LPCWSTR pszProgram, LPCWSTR pszCommandLine, const Output& output);

    ScopedHandle m_job; // ends what is in it when the handle is closed
    ScopedHandle m_process;
    ScopedHandle m_thread; // valid until Go
};
