// The commands. Each is a file of its own.
#pragma once

#include <afx.h>

class Request;

// Does what is asked for and returns the exit code. Throws Failure.
using CommandProc = UINT (*)(const Request& request);

struct Command
{
    LPCWSTR pszName;
    int nMinOperands;
    int nMaxOperands;
    UINT nOptions; // bits of Options::Option
    bool bTail;    // takes a line behind --
    LPCSTR pszNeeds;
    CommandProc pfnRun;
};

// Null when there is no such command.
const Command* FindCommand(LPCWSTR pszName);

UINT CheckAddress(const Request& request);
UINT CopyFiles(const Request& request);
UINT QueueRunOnce(const Request& request);
UINT WriteConfig(const Request& request);
UINT OpenFile(const Request& request);
UINT ShowWaitWindow(const Request& request);
UINT EndWaitWindow(const Request& request);
UINT RunProgram(const Request& request);
UINT ShowVersion(const Request& request);
UINT ShowHelp(const Request& request);
