// ImportPatch: replaces a system function for one module.
//
// The module's import table gets another address, so the module that ships is tested as it is, without
// a seam for tests in it, while the rest of the process goes on using the system's function.
#pragma once

#include <windows.h>

class ImportPatch
{
public:
    // The import of that name, whatever DLL it comes from.
    ImportPatch(HMODULE hModule, const char* pszFunction, void* pReplacement);
    ~ImportPatch(); // puts the system's function back
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // False when the module has no such import.
    bool IsActive() const { return m_pSlot != nullptr; }
    void* Original() const { return m_pOriginal; }

private:
    static void Write(void** pSlot, void* pValue);

    void** m_pSlot = nullptr;
    void* m_pOriginal = nullptr;
};
