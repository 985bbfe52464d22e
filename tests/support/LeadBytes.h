// The characters of the double-byte code pages, from the code pages' definitions and not from the system.
#pragma once

#include <cstddef>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

struct LeadByteRange
{
    unsigned int nCodePage;
    unsigned char chFirst;
    unsigned char chLast;
};

constexpr LeadByteRange kLeadBytes[] = {
    {932, 0x81, 0x9F}, {932, 0xE0, 0xFC}, // Japanese
    {936, 0x81, 0xFE},                    // Chinese, simplified
    {949, 0x81, 0xFE},                    // Korean
    {950, 0x81, 0xFE},                    // Chinese, traditional
};

// Bytes of the character at an index of a text. Those of UTF-8 count one by one: none of them looks like
// a separator.
inline std::size_t CharacterLength(unsigned int nCodePage, const std::string& text, std::size_t i)
{
    const auto ch = static_cast<unsigned char>(text[i]);
    for (const LeadByteRange& range : kLeadBytes)
    {
        if (range.nCodePage == nCodePage && ch >= range.chFirst && ch <= range.chLast)
            return i + 1 < text.size() ? 2 : 1;
    }
    return 1;
}

// The code page of the texts in this process.
inline unsigned int OwnCodePage()
{
#ifdef _WIN32
    return ::GetACP();
#else
    return 1252;
#endif
}
