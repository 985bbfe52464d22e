// Sandbox: the only places in which the test programs leave something while they run: a folder and a
// registry key of their own. Both are gone afterwards.
#pragma once

#include <string>

namespace selftest
{
class Sandbox
{
public:
    // Throws std::runtime_error when there is no place for it.
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    const std::wstring& Folder() const { return m_folder; }
    // Under HKEY_CURRENT_USER.
    const std::wstring& RegistryKey() const { return m_key; }

    // A plain path of the folder that holds the programs: its own one, or that of a copy.
    std::wstring PlainCopyOf(const std::wstring& folder) const;

    // Of this process, for those that it starts.
    void SetEnvironment(const std::wstring& library, bool bMayTouchUser) const;

    // What a program left, for instance one that crashed; to be called when none runs.
    void Empty() const;

private:
    void MakeFolders() const;
    void RemoveKey() const;

    std::wstring m_folder;
    std::wstring m_key;
    // Of this process, put back at the end.
    std::wstring m_tempBefore;
    std::wstring m_tmpBefore;
};
} // namespace selftest
