// FirstSection: the section headers of an image, as IMAGE_FIRST_SECTION has them.
#pragma once

#include <windows.h>

// The macro takes the const away, which not every compiler lets pass.
inline const IMAGE_SECTION_HEADER* FirstSection(const IMAGE_NT_HEADERS* pHeaders)
{
    return reinterpret_cast<const IMAGE_SECTION_HEADER*>(
        reinterpret_cast<const BYTE*>(&pHeaders->OptionalHeader) +
        pHeaders->FileHeader.SizeOfOptionalHeader);
}
