// LoadedTarn: tarn.dll, loaded the way an installer loads it, for as long as the object lives.
#pragma once

#include <windows.h>

#include <cstdlib>
#include <string>

class LoadedTarn
{
public:
    // The file that the tests are about.
    static std::string Path()
    {
        const char* const pszPath = std::getenv("TARN_DLL");
        return pszPath != nullptr ? pszPath : "";
    }

    explicit LoadedTarn(const std::string& path = Path())
        : m_hModule(::LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
    {
        Find("DoWaitDlgModless", DoWaitDlgModless);
        Find("CloseWaitDlg", CloseWaitDlg);
        Find("DoFileOpenDialog", DoFileOpenDialog);
        Find("FileCopy", FileCopy);
        Find("PutInRunOnce", PutInRunOnce);
        Find("VerifyEmail", VerifyEmail);
        Find("Write_ch_config_File", Write_ch_config_File);
    }
    ~LoadedTarn()
    {
        if (m_hModule != nullptr)
            ::FreeLibrary(m_hModule);
    }
    LoadedTarn(const LoadedTarn&) = delete;
    LoadedTarn& operator=(const LoadedTarn&) = delete;

    // False when the library could not be loaded or lacks a function.
    bool IsComplete() const { return m_hModule != nullptr && m_nFound == kFunctions; }
    HMODULE Module() const { return m_hModule; }

    int (*DoWaitDlgModless)(HWND, const char*, const char*) = nullptr;
    int (*CloseWaitDlg)() = nullptr;
    int (*DoFileOpenDialog)(char*, char*, const char*, const char*, char*) = nullptr;
    int (*FileCopy)(const char*, const char*) = nullptr;
    int (*PutInRunOnce)(const char*, const char*) = nullptr;
    int (*VerifyEmail)(char*, int*, char*) = nullptr;
    int (*Write_ch_config_File)(const char*) = nullptr;

private:
    static constexpr int kFunctions = 7;

    template <class Function>
    void Find(const char* pszName, Function& pfn)
    {
        if (m_hModule == nullptr)
            return;
        pfn = reinterpret_cast<Function>(
            reinterpret_cast<void*>(::GetProcAddress(m_hModule, pszName)));
        if (pfn != nullptr)
            ++m_nFound;
    }

    HMODULE m_hModule;
    int m_nFound = 0;
};
