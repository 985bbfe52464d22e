#include "tests/support/ImportPatch.h"

#include <cstring>

namespace
{
void** FindSlot(HMODULE hModule, const char* pszFunction)
{
    auto* const pBase = reinterpret_cast<BYTE*>(hModule);
    const auto* const pDos = reinterpret_cast<const IMAGE_DOS_HEADER*>(pBase);
    const auto* const pHeaders = reinterpret_cast<const IMAGE_NT_HEADERS*>(pBase + pDos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0)
        return nullptr;
    const auto* pImport =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(pBase + directory.VirtualAddress);
    for (; pImport->Name != 0; ++pImport)
    {
        const auto* pName =
            reinterpret_cast<const IMAGE_THUNK_DATA*>(pBase + pImport->OriginalFirstThunk);
        auto* pAddress = reinterpret_cast<IMAGE_THUNK_DATA*>(pBase + pImport->FirstThunk);
        for (; pName->u1.AddressOfData != 0; ++pName, ++pAddress)
        {
            if (IMAGE_SNAP_BY_ORDINAL(pName->u1.Ordinal))
                continue;
            const auto* const pByName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(pBase + pName->u1.AddressOfData);
            const char* const pszName = reinterpret_cast<const char*>(&pByName->Name[0]);
            if (std::strcmp(pszName, pszFunction) == 0)
                return reinterpret_cast<void**>(&pAddress->u1.Function);
        }
    }
    return nullptr;
}
} // namespace

ImportPatch::ImportPatch(HMODULE hModule, const char* pszFunction, void* pReplacement)
    : m_pSlot(FindSlot(hModule, pszFunction))
{
    if (m_pSlot != nullptr)
    {
        m_pOriginal = *m_pSlot;
        Write(m_pSlot, pReplacement);
    }
}

ImportPatch::~ImportPatch()
{
    if (m_pSlot != nullptr)
        Write(m_pSlot, m_pOriginal);
}

void ImportPatch::Write(void** pSlot, void* pValue)
{
    DWORD nProtection = 0;
    ::VirtualProtect(pSlot, sizeof(*pSlot), PAGE_READWRITE, &nProtection);
    *pSlot = pValue;
    ::VirtualProtect(pSlot, sizeof(*pSlot), nProtection, &nProtection);
}
