// RegistryKey: an existing key of the registry, open for as long as the object lives.
#pragma once

#include <afxwin.h>

class RegistryKey
{
public:
    // Opens the key and never creates it.
    RegistryKey(HKEY hRoot, LPCSTR pszSubKey, REGSAM nAccess)
    {
        if (::RegOpenKeyExA(hRoot, pszSubKey, 0, nAccess, &m_hKey) != ERROR_SUCCESS)
            m_hKey = nullptr;
    }
    ~RegistryKey()
    {
        if (m_hKey != nullptr)
            ::RegCloseKey(m_hKey);
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    bool IsOpen() const { return m_hKey != nullptr; }

    // Sets a REG_SZ value; cbText counts the terminating zero. A null or empty name means the key's
    // default value.
    bool SetString(LPCSTR pszName, LPCSTR pszText, DWORD cbText) const
    {
        return ::RegSetValueExA(m_hKey, pszName, 0, REG_SZ, reinterpret_cast<const BYTE*>(pszText),
                                cbText) == ERROR_SUCCESS;
    }

private:
    HKEY m_hKey = nullptr; // owned; null when the key could not be opened
};
