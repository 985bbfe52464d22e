// CurrentFolder: the process's current folder is another one for as long as the object lives.
#pragma once

#include <windows.h>

#include <string>

class CurrentFolder
{
public:
    explicit CurrentFolder(const std::string& path)
    {
        ::GetCurrentDirectoryA(MAX_PATH, m_szBefore);
        ::SetCurrentDirectoryA(path.c_str());
    }
    ~CurrentFolder() { ::SetCurrentDirectoryA(m_szBefore); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    char m_szBefore[MAX_PATH] = "";
};
