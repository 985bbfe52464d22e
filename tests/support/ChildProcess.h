// Runs a test of this program in a process of its own, for what ends a process.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

// Returns how the process ended. The test is a disabled one, "Suite.DISABLED_Name", so that it runs
// nowhere else.
inline DWORD ExitCodeOfChild(const std::string& test)
{
    char szProgram[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, szProgram, MAX_PATH);
    std::string command =
        "\"" + std::string(szProgram) + "\" --gtest_also_run_disabled_tests --gtest_filter=" + test;
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &process))
        throw std::runtime_error("cannot run " + command);
    DWORD nExitCode = STILL_ACTIVE;
    if (::WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0)
        ::GetExitCodeProcess(process.hProcess, &nExitCode);
    else
        ::TerminateProcess(process.hProcess, 1);
    ::CloseHandle(process.hProcess);
    ::CloseHandle(process.hThread);
    return nExitCode;
}
