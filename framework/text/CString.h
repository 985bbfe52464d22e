// CString: the counted string of 8-bit characters.
//
// Strings share their characters until one of them is changed (reference counts are atomic, so
// copies may live on different threads; one object is for one thread at a time). Text is in the
// process's multi-byte code page: searching and replacing go by whole characters, lengths and
// indexes count bytes. A null pointer given as text is the empty string.
#pragma once

#include "framework/text/TextBytes.h"
#include "runtime/PlatformTypes.h"

#include <atomic>

// What stands in memory before a string's characters.
struct CStringData
{
    // References to a shared block. kUnshared: the block belongs to one place (the empty string, a
    // CFixedStringT) and is neither counted nor freed.
    std::atomic<int> nRefs;
    int nDataLength;  // bytes in use, without the terminator
    int nAllocLength; // bytes that fit, without the terminator

    static constexpr int kUnshared = 0;

    char* data() noexcept { return reinterpret_cast<char*>(this + 1); }
};

class CString
{
public:
    CString() noexcept;
    CString(const CString& strSrc);
    CString(LPCSTR psz);
    CString(const char* pch, int nLength);
    ~CString() { Release(); }

    CString& operator=(const CString& strSrc);
    CString& operator=(LPCSTR psz);

    CString& operator+=(const CString& str);
    CString& operator+=(LPCSTR psz);
    CString& operator+=(char ch);

    int GetLength() const noexcept { return GetData()->nDataLength; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    void Empty() noexcept;

    operator LPCSTR() const noexcept { return m_pszData; }
    LPCSTR GetString() const noexcept { return m_pszData; }

    // The byte at an index; the terminator may be asked for too. Any other index throws
    // CInvalidArgException.
    char GetAt(int iChar) const;

    // A buffer of at least nMinBufferLength bytes and a terminator, writable until ReleaseBuffer
    // says how many bytes it holds (-1: up to the first zero).
    LPSTR GetBuffer(int nMinBufferLength);
    void ReleaseBuffer(int nNewLength = -1);

    CString Mid(int iFirst) const;
    CString Mid(int iFirst, int nCount) const;
    CString Left(int nCount) const;

    // Index of the first match at or after iStart, or -1.
    int Find(char ch, int iStart = 0) const noexcept;
    // Index of the last match, or -1.
    int ReverseFind(char ch) const noexcept;

    // Replaces every match, left to right, without looking again at what was put in. Returns the
    // number of matches.
    int Replace(char chOld, char chNew);
    int Replace(LPCSTR pszOld, LPCSTR pszNew);

    // Copies nChars bytes (0 or more) to a buffer that is not this string's.
    static void CopyChars(LPSTR pchDest, LPCSTR pchSrc, int nChars) noexcept
    {
        MoveText(pchDest, pchSrc, static_cast<std::size_t>(nChars));
    }

    // Removes white space: space, tab, line feed, vertical tab, form feed, carriage return.
    CString& TrimLeft();
    CString& TrimRight();

protected:
    // For CFixedStringT: starts with an empty block of its own.
    explicit CString(CStringData* pFixed) noexcept : m_pszData(pFixed->data()) {}

    void SetString(const char* pch, int nLength);

private:
    CStringData* GetData() const noexcept { return reinterpret_cast<CStringData*>(m_pszData) - 1; }

    static CStringData* Allocate(int nLength);
    static CStringData* Reference(CStringData* pData);
    void Release() noexcept;
    bool CanWrite(int nLength) const noexcept;
    void Append(const char* pch, int nLength);
    void SetLength(int nLength) noexcept;

    char* m_pszData; // the characters of a CStringData
};

CString operator+(const CString& str1, const CString& str2);
CString operator+(const CString& str1, LPCSTR psz2);
CString operator+(LPCSTR psz1, const CString& str2);
