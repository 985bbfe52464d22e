// CFixedStringT: a string that keeps up to t_nChars characters in the object itself, so that text
// of ordinary length needs no heap; longer text goes to the heap like any other string's.
#pragma once

#include "CString.h"

template <class StringType, int t_nChars>
class CFixedStringT : public StringType
{
public:
    // The base keeps a pointer to the block, which is constructed after it.
    CFixedStringT() noexcept : StringType(&m_fixed.header) {}
    CFixedStringT(LPCSTR psz) : CFixedStringT() { StringType::operator=(psz); }
    ~CFixedStringT() = default;

    // A copy would share or outlive the block; nothing needs one.
    CFixedStringT(const CFixedStringT&) = delete;
    CFixedStringT& operator=(const CFixedStringT&) = delete;

    using StringType::operator=;

private:
    struct Fixed
    {
        CStringData header{{CStringData::kUnshared}, 0, t_nChars};
        char szText[static_cast<unsigned int>(t_nChars) + 1] = "";
    };
    Fixed m_fixed;
};
