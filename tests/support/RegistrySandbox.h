// RegistrySandbox: HKEY_CURRENT_USER of this process is a throwaway key, empty at first, for as long
// as the object lives. The user's own keys stay out of it.
#pragma once

#include <windows.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

class RegistrySandbox
{
public:
    RegistrySandbox() : m_path(Parent() + "\\Tarn tests " + std::to_string(::GetCurrentProcessId()))
    {
        if (::RegCreateKeyExA(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &m_hKey, nullptr) != ERROR_SUCCESS)
            throw std::runtime_error("cannot make the key " + m_path);
        if (::RegOverridePredefKey(HKEY_CURRENT_USER, m_hKey) != ERROR_SUCCESS)
            throw std::runtime_error("cannot redirect HKEY_CURRENT_USER");
    }
    ~RegistrySandbox()
    {
        ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        ::RegCloseKey(m_hKey);
        ::RegDeleteTreeA(HKEY_CURRENT_USER, m_path.c_str());
    }
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

private:
    // Whoever starts the tests may name a key, and removes it afterwards, whatever became of them.
    static std::string Parent()
    {
        const char* const pszKey = std::getenv("TARN_REGISTRY_KEY");
        return pszKey != nullptr ? pszKey : "Software";
    }

    std::string m_path;
    HKEY m_hKey = nullptr;
};

// A value as the registry holds it.
struct RegistryValue
{
    bool bExists = false;
    DWORD nType = REG_NONE;
    std::string bytes; // with the terminating zero, if one is stored
};

inline bool MakeKey(const char* pszKey)
{
    HKEY hKey = nullptr;
    const bool bMade = ::RegCreateKeyExA(HKEY_CURRENT_USER, pszKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &hKey, nullptr) == ERROR_SUCCESS;
    if (bMade)
        ::RegCloseKey(hKey);
    return bMade;
}

inline bool KeyExists(const char* pszKey)
{
    HKEY hKey = nullptr;
    const bool bExists =
        ::RegOpenKeyExA(HKEY_CURRENT_USER, pszKey, 0, KEY_READ, &hKey) == ERROR_SUCCESS;
    if (bExists)
        ::RegCloseKey(hKey);
    return bExists;
}

// Null or an empty name: the key's default value.
inline RegistryValue ReadValue(const char* pszKey, const char* pszName)
{
    RegistryValue value;
    HKEY hKey = nullptr;
    if (::RegOpenKeyExA(HKEY_CURRENT_USER, pszKey, 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return value;
    DWORD cb = 0;
    if (::RegQueryValueExA(hKey, pszName, nullptr, &value.nType, nullptr, &cb) == ERROR_SUCCESS)
    {
        value.bytes.resize(cb);
        value.bExists =
            ::RegQueryValueExA(hKey, pszName, nullptr, &value.nType,
                               reinterpret_cast<BYTE*>(value.bytes.data()), &cb) == ERROR_SUCCESS &&
            cb == value.bytes.size();
    }
    ::RegCloseKey(hKey);
    return value;
}
