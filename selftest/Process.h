// Process: runs one program to its end, or to the end of its time, with everything that it starts.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace selftest
{
enum class End
{
    ByItself,
    TimedOut, // it printed nothing for too long, or ran for too long altogether
    Stopped,  // the user stops the self-test
    NotStarted
};

struct Outcome
{
    End end = End::NotStarted;
    DWORD nExitCode =
        0;              // of a program that ended by itself; the system's error for one not started
    std::string output; // both streams, in the order in which they were written
};

struct Limits
{
    DWORD nSilence = 180000; // milliseconds without output; one test of the library takes a minute
    DWORD nWhole = 1200000;
    HANDLE hStop = nullptr; // borrowed; an event that ends the program
};

// The command line begins with the program's path, in quotes. The output goes through the file, which is
// removed afterwards. Meanwhile, progress is told of what it printed so far.
Outcome RunProcess(const std::wstring& command, const std::wstring& outputFile,
                   const Limits& limits,
                   const std::function<void(const std::string& output)>& progress);
} // namespace selftest
