#include "framework/text/CString.h"

#include "framework/exceptions/CSimpleException.h"
#include "framework/text/CodePage.h"
#include "framework/text/TextBytes.h"

#include <climits>
#include <cstddef>
#include <cstring>
#include <new>

namespace
{
// The block that every empty string points to.
struct EmptyBlock
{
    CStringData header;
    char chTerminator;
};
EmptyBlock g_empty = {{{CStringData::kUnshared}, 0, 0}, '\0'}; // all zeros

int TextLength(LPCSTR psz)
{
    if (psz == nullptr)
        return 0;
    const std::size_t cb = LengthOfText(psz);
    if (cb >= INT_MAX)
        AfxThrowMemoryException();
    return static_cast<int>(cb);
}

bool IsSpace(char ch)
{
    return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

// Whether a match at p, which starts on a whole character, ends on one, too: the sub-string may end
// in the first half of a character that goes on behind it.
bool EndsWhole(const char* p, const char* pEnd, int cbSub)
{
    const char* const pMatchEnd = p + cbSub;
    while (p < pMatchEnd)
        p += CharLength(p, pEnd);
    return p == pMatchEnd;
}

// First match of a sub-string in whole characters, or null.
const char* FindText(const char* p, const char* pEnd, const char* pszSub, int cbSub)
{
    while (pEnd - p >= cbSub)
    {
        // Nearly everywhere the first byte decides, without a call.
        if ((cbSub == 0 || *p == *pszSub) &&
            std::memcmp(p, pszSub, static_cast<std::size_t>(cbSub)) == 0 &&
            EndsWhole(p, pEnd, cbSub))
            return p;
        p += CharLength(p, pEnd);
    }
    return nullptr;
}

// Both copy helpers take lengths that were checked to be positive or zero.
void Copy(char* pDest, const char* pSrc, int cb)
{
    std::memmove(pDest, pSrc, static_cast<std::size_t>(cb));
}

int AddLengths(int n1, int n2)
{
    if (n1 > INT_MAX - 1 - n2)
        AfxThrowMemoryException();
    return n1 + n2;
}
} // namespace

CStringData* CString::Allocate(int nLength)
{
    const std::size_t cb = sizeof(CStringData) + static_cast<std::size_t>(nLength) + 1;
    auto* const pData = static_cast<CStringData*>(::operator new(cb));
    ::new (pData) CStringData{{1}, nLength, nLength};
    pData->data()[nLength] = '\0';
    return pData;
}

CStringData* CString::Reference(CStringData* pData)
{
    if (pData->nRefs.load(std::memory_order_relaxed) != CStringData::kUnshared)
    {
        pData->nRefs.fetch_add(1, std::memory_order_relaxed);
        return pData;
    }
    if (pData->nDataLength == 0)
        return &g_empty.header;
    CStringData* const pCopy = Allocate(pData->nDataLength);
    Copy(pCopy->data(), pData->data(), pData->nDataLength);
    return pCopy;
}

void CString::Release() noexcept
{
    CStringData* const pData = GetData();
    if (pData->nRefs.load(std::memory_order_relaxed) == CStringData::kUnshared)
        return;
    if (pData->nRefs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): a shared block, so never g_empty
        ::operator delete(pData);
}

// Whether nLength bytes may be written in place.
bool CString::CanWrite(int nLength) const noexcept
{
    const CStringData* const pData = GetData();
    const int nRefs = pData->nRefs.load(std::memory_order_acquire);
    return (nRefs == 1 || nRefs == CStringData::kUnshared) && nLength <= pData->nAllocLength;
}

void CString::SetLength(int nLength) noexcept
{
    GetData()->nDataLength = nLength;
    m_pszData[nLength] = '\0';
}

CString::CString() noexcept : CString(&g_empty.header)
{
}

CString::CString(const CString& strSrc) : m_pszData(Reference(strSrc.GetData())->data())
{
}

CString::CString(LPCSTR psz) : CString(psz, TextLength(psz))
{
}

CString::CString(const char* pch, int nLength) : CString()
{
    SetString(pch, nLength);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): one block is compared with the other
CString& CString::operator=(const CString& strSrc)
{
    if (GetData() != strSrc.GetData())
    {
        CStringData* const pData = Reference(strSrc.GetData());
        Release();
        m_pszData = pData->data();
    }
    return *this;
}

CString& CString::operator=(LPCSTR psz)
{
    SetString(psz, TextLength(psz));
    return *this;
}

CString& CString::operator+=(const CString& str)
{
    Append(str.m_pszData, str.GetLength());
    return *this;
}

CString& CString::operator+=(LPCSTR psz)
{
    Append(psz, TextLength(psz));
    return *this;
}

CString& CString::operator+=(char ch)
{
    Append(&ch, 1);
    return *this;
}

void CString::Empty() noexcept
{
    CStringData* const pData = GetData();
    if (pData->nDataLength == 0)
        return;
    if (pData->nRefs.load(std::memory_order_relaxed) == CStringData::kUnshared)
    {
        SetLength(0); // the block stays in use
        return;
    }
    Release();
    m_pszData = g_empty.header.data();
}

// The source may lie inside this string.
void CString::SetString(const char* pch, int nLength)
{
    if (nLength <= 0)
    {
        Empty();
        return;
    }
    if (CanWrite(nLength))
    {
        MoveText(m_pszData, pch, static_cast<std::size_t>(nLength));
        SetLength(nLength);
        return;
    }
    CStringData* const pData = Allocate(nLength);
    Copy(pData->data(), pch, nLength);
    Release();
    m_pszData = pData->data();
}

// The source may lie inside this string.
void CString::Append(const char* pch, int nLength)
{
    if (nLength == 0)
        return;
    const int nOldLength = GetLength();
    const int nNewLength = AddLengths(nOldLength, nLength);
    if (CanWrite(nNewLength))
    {
        Copy(m_pszData + nOldLength, pch, nLength);
        SetLength(nNewLength);
        return;
    }
    // Half as much again, so that text put together in small pieces is not copied for each.
    const int nSpare = nOldLength / 2;
    CStringData* const pData =
        Allocate(nNewLength > INT_MAX - 1 - nSpare ? nNewLength : nNewLength + nSpare);
    Copy(pData->data(), m_pszData, nOldLength);
    Copy(pData->data() + nOldLength, pch, nLength);
    Release();
    m_pszData = pData->data();
    SetLength(nNewLength);
}

char CString::GetAt(int iChar) const
{
    if (iChar < 0 || iChar > GetLength())
        AfxThrowInvalidArgException();
    return m_pszData[iChar];
}

LPSTR CString::GetBuffer(int nMinBufferLength)
{
    const int nOldLength = GetLength();
    const int nLength = nMinBufferLength > nOldLength ? nMinBufferLength : nOldLength;
    if (!CanWrite(nLength) || GetData() == &g_empty.header)
    {
        CStringData* const pData = Allocate(nLength);
        Copy(pData->data(), m_pszData, nOldLength + 1);
        Release();
        m_pszData = pData->data();
        SetLength(nOldLength);
    }
    return m_pszData;
}

void CString::ReleaseBuffer(int nNewLength)
{
    if (nNewLength == -1)
        nNewLength = TextLength(m_pszData);
    if (nNewLength < 0 || nNewLength > GetData()->nAllocLength)
        AfxThrowInvalidArgException();
    if (GetData() != &g_empty.header)
        SetLength(nNewLength);
}

CString CString::Mid(int iFirst) const
{
    return Mid(iFirst, GetLength());
}

// A range that reaches outside the string means its part inside.
CString CString::Mid(int iFirst, int nCount) const
{
    const int nLength = GetLength();
    if (iFirst < 0)
        iFirst = 0;
    if (iFirst >= nLength || nCount <= 0)
        return CString();
    if (nCount > nLength - iFirst)
        nCount = nLength - iFirst;
    if (nCount == nLength)
        return *this;
    return CString(m_pszData + iFirst, nCount);
}

CString CString::Left(int nCount) const
{
    return Mid(0, nCount);
}

int CString::Find(char ch, int iStart) const noexcept
{
    if (iStart < 0 || iStart > GetLength())
        return -1;
    const char* const pEnd = m_pszData + GetLength();
    for (const char* p = m_pszData + iStart; p < pEnd; p += CharLength(p, pEnd))
    {
        if (*p == ch && CharLength(p, pEnd) == 1)
            return static_cast<int>(p - m_pszData);
    }
    return -1;
}

int CString::ReverseFind(char ch) const noexcept
{
    // Only a walk from the start tells a trail byte from a character of its own.
    int iLast = -1;
    for (int i = Find(ch); i != -1; i = Find(ch, i + 1))
        iLast = i;
    return iLast;
}

int CString::Replace(char chOld, char chNew)
{
    int nCount = 0;
    for (int i = Find(chOld); i != -1 && chOld != chNew; i = Find(chOld, i + 1))
    {
        if (nCount++ == 0)
            GetBuffer(0);
        m_pszData[i] = chNew;
    }
    return nCount;
}

int CString::Replace(LPCSTR pszOld, LPCSTR pszNew)
{
    if (pszNew == nullptr)
        pszNew = "";
    const int cbOld = TextLength(pszOld);
    const int cbNew = TextLength(pszNew);
    if (cbOld == 0)
        return 0;
    const char* const pEnd = m_pszData + GetLength();
    int nCount = 0;
    for (const char* p = FindText(m_pszData, pEnd, pszOld, cbOld); p != nullptr;
         p = FindText(p + cbOld, pEnd, pszOld, cbOld))
        ++nCount;
    if (nCount == 0)
        return 0;

    const long long nNewLength = GetLength() + static_cast<long long>(cbNew - cbOld) * nCount;
    if (nNewLength >= INT_MAX)
        AfxThrowMemoryException();
    if (nNewLength == 0)
    {
        Empty();
        return nCount;
    }
    // Built anew, so the texts may lie inside this string.
    CStringData* const pData = Allocate(static_cast<int>(nNewLength));
    char* pDest = pData->data();
    const char* pSrc = m_pszData;
    for (const char* p = FindText(pSrc, pEnd, pszOld, cbOld); p != nullptr;
         p = FindText(pSrc, pEnd, pszOld, cbOld))
    {
        const int cbKept = static_cast<int>(p - pSrc);
        Copy(pDest, pSrc, cbKept);
        Copy(pDest + cbKept, pszNew, cbNew);
        pDest += cbKept + cbNew;
        pSrc = p + cbOld;
    }
    Copy(pDest, pSrc, static_cast<int>(pEnd - pSrc));
    Release();
    m_pszData = pData->data();
    return nCount;
}

// Byte by byte: no white space is a lead byte or a trail byte.
CString& CString::TrimLeft()
{
    int nSpaces = 0;
    while (IsSpace(m_pszData[nSpaces]))
        ++nSpaces;
    if (nSpaces > 0)
        SetString(m_pszData + nSpaces, GetLength() - nSpaces);
    return *this;
}

CString& CString::TrimRight()
{
    int nLength = GetLength();
    while (nLength > 0 && IsSpace(m_pszData[nLength - 1]))
        --nLength;
    if (nLength < GetLength())
        SetString(m_pszData, nLength);
    return *this;
}

CString operator+(const CString& str1, const CString& str2)
{
    return CString(str1) += str2;
}

CString operator+(const CString& str1, LPCSTR psz2)
{
    return CString(str1) += psz2;
}

CString operator+(LPCSTR psz1, const CString& str2)
{
    return CString(psz1) += str2;
}
