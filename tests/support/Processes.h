// Processes of any program, by the names of their files.
#pragma once

#include <windows.h>

#include <tlhelp32.h>

#include <string>
#include <vector>

template <class Wanted>
std::vector<DWORD> ProcessesIf(const Wanted& wanted)
{
    std::vector<DWORD> processes;
    HANDLE const hSnapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL bMore = ::Process32FirstW(hSnapshot, &entry); bMore;
         bMore = ::Process32NextW(hSnapshot, &entry))
    {
        if (wanted(std::wstring(entry.szExeFile)))
            processes.push_back(entry.th32ProcessID);
    }
    ::CloseHandle(hSnapshot);
    return processes;
}

inline std::vector<DWORD> ProcessesOf(const std::wstring& program)
{
    return ProcessesIf([&program](const std::wstring& file) { return file == program; });
}

// False when there is no such process.
inline bool EndProcess(DWORD nProcessID)
{
    HANDLE const hProcess = ::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, nProcessID);
    const bool bEnded = ::TerminateProcess(hProcess, 9) &&
                        ::WaitForSingleObject(hProcess, INFINITE) == WAIT_OBJECT_0;
    ::CloseHandle(hProcess);
    return bEnded;
}
