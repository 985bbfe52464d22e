#include "tarntool/CommandLine.h"

#include <cstddef>

namespace
{
bool IsBlank(wchar_t ch)
{
    return ch == L' ' || ch == L'\t';
}

// The line's end counts as one.
bool IsBlankOrEnd(wchar_t ch)
{
    return ch == L'\0' || IsBlank(ch);
}

const wchar_t* SkipBlanks(const wchar_t* psz)
{
    while (IsBlank(*psz))
        ++psz;
    return psz;
}

std::size_t LengthOf(const wchar_t* psz)
{
    std::size_t n = 0;
    while (psz[n] != L'\0')
        ++n;
    return n;
}
} // namespace

CommandLine::CommandLine(const wchar_t* pszArguments, bool bDashes)
    : m_bDashes(bDashes), m_pText(new wchar_t[LengthOf(pszArguments) + 1]),
      m_ppszArguments(new const wchar_t*[LengthOf(pszArguments) / 2 + 1]),
      m_bValid(Read(pszArguments, Way::Standard) || Read(pszArguments, Way::Plain))
{
    if (!m_bValid)
        m_nCount = 0;
}

CommandLine::~CommandLine()
{
    delete[] m_ppszArguments;
    delete[] m_pText;
}

const wchar_t* CommandLine::SkipProgram(const wchar_t* pszLine)
{
    bool bQuoted = false;
    for (; *pszLine != L'\0' && (bQuoted || !IsBlank(*pszLine)); ++pszLine)
    {
        if (*pszLine == L'"')
            bQuoted = !bQuoted;
    }
    return SkipBlanks(pszLine);
}

bool CommandLine::Read(const wchar_t* psz, Way way)
{
    m_nCount = 0;
    m_pEnd = m_pText;
    m_pszTail = nullptr;
    for (psz = SkipBlanks(psz); *psz != L'\0'; psz = SkipBlanks(psz))
    {
        if (m_bDashes && psz[0] == L'-' && psz[1] == L'-' && IsBlankOrEnd(psz[2]))
        {
            m_pszTail = SkipBlanks(psz + 2);
            return true;
        }
        m_ppszArguments[m_nCount++] = m_pEnd;
        if (*psz == L'"' ? !ReadQuoted(&psz, way) : !ReadBare(&psz, way))
            return false;
        *m_pEnd++ = L'\0';
    }
    return true;
}

bool CommandLine::ReadQuoted(const wchar_t** ppsz, Way way)
{
    const wchar_t*& psz = *ppsz;
    for (++psz; *psz != L'\0';)
    {
        if (*psz == L'\\' && way == Way::Standard)
            ReadBackslashes(ppsz);
        else if (*psz != L'"')
            *m_pEnd++ = *psz++;
        else if (way == Way::Plain && psz[1] == L'"')
        {
            *m_pEnd++ = L'"';
            psz += 2;
        }
        else
            return IsBlankOrEnd(*++psz);
    }
    return false;
}

bool CommandLine::ReadBare(const wchar_t** ppsz, Way way)
{
    const wchar_t*& psz = *ppsz;
    while (!IsBlankOrEnd(*psz))
    {
        if (*psz == L'\\' && way == Way::Standard)
            ReadBackslashes(ppsz);
        else if (*psz == L'"')
            return false;
        else
            *m_pEnd++ = *psz++;
    }
    return true;
}

// A run of backslashes, and the quotation mark behind it if that belongs to the argument.
void CommandLine::ReadBackslashes(const wchar_t** ppsz)
{
    const wchar_t*& psz = *ppsz;
    int nBackslashes = 0;
    for (; *psz == L'\\'; ++psz)
        ++nBackslashes;
    const bool bMark = *psz == L'"' && nBackslashes % 2 != 0;
    if (*psz == L'"')
        nBackslashes /= 2;
    for (; nBackslashes > 0; --nBackslashes)
        *m_pEnd++ = L'\\';
    if (bMark)
        *m_pEnd++ = *psz++;
}
