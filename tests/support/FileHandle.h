// FileHandle: a file that another program holds open, so to speak.
#pragma once

#include <windows.h>

#include <string>

class FileHandle
{
public:
    FileHandle(const std::string& path, DWORD nAccess, DWORD nShare)
        : m_hFile(::CreateFileA(path.c_str(), nAccess, nShare, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr))
    {
    }
    ~FileHandle()
    {
        if (IsOpen())
            ::CloseHandle(m_hFile);
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    bool IsOpen() const { return m_hFile != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_hFile;
};

// False when somebody has the file open in any way.
inline bool IsClosed(const std::string& path)
{
    return FileHandle(path, GENERIC_READ | GENERIC_WRITE, 0).IsOpen();
}

// Whether the system keeps this user from writing to a read-only file. It does not bind the system
// user of some systems.
inline bool BindsReadOnly(const std::string& readOnlyFile)
{
    return !FileHandle(readOnlyFile, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE).IsOpen();
}
