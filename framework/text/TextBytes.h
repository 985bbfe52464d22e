// Length and copying of text, for the calls that a user waits for: the C library's own go byte by byte
// on some systems, and are a call away on all.
#pragma once

#include <cstddef>
#include <cstring>

#if defined(_WIN32) && defined(__SSE2__)

#include <emmintrin.h>

// As strlen. Reads whole aligned blocks of 16 bytes, which never reach into a page that the text does
// not touch.
inline std::size_t LengthOfText(const char* psz) noexcept
{
    const auto zeros = [](const __m128i* p) {
        return static_cast<unsigned int>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_load_si128(p), _mm_setzero_si128())));
    };
    const std::size_t nBefore = reinterpret_cast<std::size_t>(psz) % 16;
    const char* pBlock = psz - nBefore;
    unsigned int nZeros = zeros(reinterpret_cast<const __m128i*>(pBlock)) >> nBefore << nBefore;
    while (nZeros == 0)
    {
        pBlock += 16;
        nZeros = zeros(reinterpret_cast<const __m128i*>(pBlock));
    }
    return static_cast<std::size_t>(pBlock - psz) +
           static_cast<unsigned int>(__builtin_ctz(nZeros));
}

// As memmove, without a call from 16 bytes on, unless more than 32 go to a place inside the source.
inline void MoveText(char* pDest, const char* pSrc, std::size_t cb) noexcept
{
    const auto load = [](const char* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    };
    const auto store = [](char* p, __m128i block) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), block);
    };
    const std::size_t nAhead =
        reinterpret_cast<std::size_t>(pDest) - reinterpret_cast<std::size_t>(pSrc);
    if (cb < 16 || (cb > 32 && nAhead < cb))
    {
        std::memmove(pDest, pSrc, cb);
        return;
    }
    // The last block, which overlaps the one before, is read before anything is written; a block that
    // is written lies before those that are still to be read.
    const __m128i last = load(pSrc + cb - 16);
    std::size_t n = 0;
    do
    {
        store(pDest + n, load(pSrc + n));
        n += 16;
    }
    while (n + 16 < cb);
    store(pDest + cb - 16, last);
}

#else

inline std::size_t LengthOfText(const char* psz) noexcept
{
    return std::strlen(psz);
}

inline void MoveText(char* pDest, const char* pSrc, std::size_t cb) noexcept
{
    std::memmove(pDest, pSrc, cb);
}

#endif
