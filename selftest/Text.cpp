#include "selftest/Text.h"

#include <cstddef>
#include <cstdint>

namespace selftest
{
namespace
{
// Length of the UTF-8 character at the position, 0 when there is none that XML can hold.
std::size_t CharacterAt(const std::string& bytes, std::size_t i)
{
    const auto at = [&](std::size_t n) { return static_cast<std::uint8_t>(bytes[n]); };
    const std::uint8_t chLead = at(i);
    if (chLead < 0x80)
        return chLead >= 0x20 || chLead == '\n' || chLead == '\t' ? 1 : 0;
    const std::size_t cb = chLead >= 0xF0 ? 4 : chLead >= 0xE0 ? 3 : 2;
    if (chLead < 0xC2 || chLead > 0xF4 || i + cb > bytes.size())
        return 0;
    std::uint32_t nValue = chLead & (0xFFU >> (cb + 1));
    for (std::size_t k = 1; k < cb; ++k)
    {
        if ((at(i + k) & 0xC0) != 0x80)
            return 0;
        nValue = (nValue << 6) | (at(i + k) & 0x3FU);
    }
    constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool bSurrogate = nValue >= 0xD800 && nValue <= 0xDFFF;
    const bool bNoCharacter = nValue == 0xFFFE || nValue == 0xFFFF;
    return nValue < kSmallest[cb] || nValue > 0x10FFFF || bSurrogate || bNoCharacter ? 0 : cb;
}

char Lower(char ch)
{
    return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
}

bool Matches(const std::string& text, std::size_t n, const std::string& what)
{
    if (n + what.size() > text.size())
        return false;
    for (std::size_t i = 0; i < what.size(); ++i)
    {
        if (Lower(text[n + i]) != Lower(what[i]))
            return false;
    }
    return true;
}
} // namespace

std::string Printable(const std::string& bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size();)
    {
        const std::size_t cb = CharacterAt(bytes, i);
        if (cb != 0)
        {
            text.append(bytes, i, cb);
            i += cb;
            continue;
        }
        const auto ch = static_cast<std::uint8_t>(bytes[i++]);
        text += "\\x";
        text += kDigits[ch >> 4];
        text += kDigits[ch & 15];
    }
    return text;
}

std::string XmlEscaped(const std::string& text)
{
    std::string escaped;
    for (const char ch : Printable(text))
    {
        switch (ch)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\n':
            escaped += "&#10;";
            break;
        case '\t':
            escaped += "&#9;";
            break;
        default:
            escaped += ch;
        }
    }
    return escaped;
}

std::string ReplaceAll(std::string text, const std::string& what, const std::string& by)
{
    if (what.empty())
        return text;
    std::string replaced;
    for (std::size_t i = 0; i < text.size();)
    {
        if (Matches(text, i, what))
        {
            replaced += by;
            i += what.size();
        }
        else
            replaced += text[i++];
    }
    return replaced;
}
} // namespace selftest
