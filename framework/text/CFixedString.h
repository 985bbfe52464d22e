// CFixedStringT: a string that keeps up to t_nChars characters in the object itself, so that text
// of ordinary length needs no heap; longer text goes to the heap like any other string's.
#pragma once

#include "framework/text/CString.h"

template <int t_nChars>
struct CFixedStringBlock
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): what is behind the end is never read
    CFixedStringBlock() noexcept { m_szText[0] = '\0'; }

    CStringData m_header{{CStringData::kUnshared}, 0, t_nChars};
    char m_szText[static_cast<unsigned int>(t_nChars) + 1];
};

// The block is a base, and the first, because the string wants it made when its own turn comes.
template <class StringType, int t_nChars>
class CFixedStringT : private CFixedStringBlock<t_nChars>, public StringType
{
public:
    CFixedStringT() noexcept : StringType(&this->m_header) {}
    CFixedStringT(LPCSTR psz) : CFixedStringT() { StringType::operator=(psz); }
    ~CFixedStringT() = default;

    // A copy would share or outlive the block; nothing needs one.
    CFixedStringT(const CFixedStringT&) = delete;
    CFixedStringT& operator=(const CFixedStringT&) = delete;

    using StringType::operator=;
};
