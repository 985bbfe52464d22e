// Characters of the process's multi-byte code page.
#pragma once

// True when ch starts a double-byte character. Only bytes from 0x80 up do, in every code page that
// Windows uses as a process code page, so plain text never asks.
bool IsLeadByte(unsigned char ch) noexcept;

// Bytes of the character at p, which is before pEnd: 2 for a lead byte that has a trail byte, else 1.
inline int CharLength(const char* p, const char* pEnd) noexcept
{
    const auto ch = static_cast<unsigned char>(*p);
    const bool bDouble = ch >= 0x80 && p + 1 < pEnd && p[1] != '\0' && IsLeadByte(ch);
    return bDouble ? 2 : 1;
}

#ifndef _WIN32
// Chooses the code page that IsLeadByte knows: 932 (Japanese) or any single-byte one, such as
// 1252, which is what it starts with. Windows has its own; elsewhere nobody else says.
void SetNativeCodePage(unsigned int nCodePage) noexcept;
#endif
