// ProgramPath: the full path of this program.
#pragma once

#include <windows.h>

#include <memory>

class ProgramPath
{
public:
    ProgramPath() : m_pszPath(new WCHAR[kMaxPath])
    {
        if (::GetModuleFileNameW(nullptr, m_pszPath.get(), kMaxPath) == 0)
            m_pszPath[0] = L'\0';
    }
    operator LPCWSTR() const { return m_pszPath.get(); }

private:
    static constexpr DWORD kMaxPath = 32768;
    const std::unique_ptr<WCHAR[]> m_pszPath;
};
