// What the fuzz targets share: the input taken apart, and text as characters of two code pages.
#pragma once

#include "framework/text/CodePage.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pInput, std::size_t cbInput);

namespace fuzz
{
// An input that ends too early goes on with zeros.
class Input
{
public:
    Input(const std::uint8_t* p, std::size_t cb) : m_p(p), m_cb(cb) {}

    bool IsEmpty() const { return m_cb == 0; }

    unsigned Byte()
    {
        if (m_cb == 0)
            return 0;
        --m_cb;
        return *m_p++;
    }

    std::string Bytes(std::size_t cb)
    {
        std::string bytes;
        while (bytes.size() < cb)
            bytes += static_cast<char>(Byte());
        return bytes;
    }

    // The rest, up to the first zero: what a caller's text can be.
    std::string Text()
    {
        const std::string rest(reinterpret_cast<const char*>(m_p), m_cb);
        return rest.substr(0, rest.find('\0'));
    }

private:
    const std::uint8_t* m_p;
    std::size_t m_cb;
};

// The code page of this input, for library and models.
inline bool g_bJapanese = false;

inline void ChooseCodePage(unsigned nByte)
{
    g_bJapanese = nByte % 2 != 0;
    SetNativeCodePage(g_bJapanese ? 932 : 1252);
}

// A lead byte with nothing, or with a zero, behind it is a character of its own.
inline std::vector<std::string> Characters(const std::string& text)
{
    std::vector<std::string> characters;
    for (std::size_t i = 0; i < text.size(); i += characters.back().size())
    {
        const int nByte = static_cast<unsigned char>(text[i]);
        const bool bLead =
            g_bJapanese && nByte > 0x80 && nByte < 0xFD && (nByte < 0xA0 || nByte > 0xDF);
        const bool bTrail = i + 1 < text.size() && text[i + 1] != '\0';
        characters.push_back(text.substr(i, bLead && bTrail ? 2 : 1));
    }
    return characters;
}

inline void Require(bool bHolds, const char* pszWhat)
{
    if (bHolds)
        return;
    std::fprintf(stderr, "Library and model differ: %s\n", pszWhat);
    std::abort();
}
} // namespace fuzz
