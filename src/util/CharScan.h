#pragma once

#include <QStringView>

#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace util {

// The first of the characters Cs in [begin, end), or end. Captions are long runs of ordinary
// text between rare special characters; comparing eight characters at a time makes the export
// and the import cost little more than a copy of the text.
template <char16_t... Cs>
inline const char16_t* FindFirstOf(const char16_t* begin, const char16_t* end) {
    const char16_t* p = begin;
#if defined(__SSE2__)
    while (end - p >= 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i hits = (_mm_cmpeq_epi16(chunk, _mm_set1_epi16(static_cast<short>(Cs))) | ...);
        if (const int mask = _mm_movemask_epi8(hits))
            return p + __builtin_ctz(static_cast<unsigned>(mask)) / 2;
        p += 8;
    }
#endif
    for (; p < end; ++p)
        if (((*p == Cs) || ...))
            return p;
    return end;
}

// The first character up to carriage return (zero, tab, line feed, carriage return and the rarer
// control characters) or equal to A or B, or end. Three comparisons cover what would otherwise
// take six; callers treat the rare other control characters as ordinary text.
template <char16_t A, char16_t B>
inline const char16_t* FindControlOr(const char16_t* begin, const char16_t* end) {
    const char16_t* p = begin;
#if defined(__SSE2__)
    const __m128i carriageReturn = _mm_set1_epi16(u'\r');
    const __m128i a = _mm_set1_epi16(static_cast<short>(A));
    const __m128i b = _mm_set1_epi16(static_cast<short>(B));
    const __m128i zero = _mm_setzero_si128();
    while (end - p >= 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i control = _mm_cmpeq_epi16(_mm_subs_epu16(chunk, carriageReturn), zero);
        const __m128i hits = _mm_or_si128(
            control, _mm_or_si128(_mm_cmpeq_epi16(chunk, a), _mm_cmpeq_epi16(chunk, b)));
        if (const int mask = _mm_movemask_epi8(hits))
            return p + __builtin_ctz(static_cast<unsigned>(mask)) / 2;
        p += 8;
    }
#endif
    for (; p < end; ++p)
        if (*p <= u'\r' || *p == A || *p == B)
            return p;
    return end;
}

// Equal texts. The import compares captions by the million, most a few dozen characters long:
// sixteen bytes at a time in line, rather than a call to memcmp (itself several times quicker
// than Qt's comparison) for each.
inline bool SameText(QStringView a, QStringView b) {
    if (a.size() != b.size())
        return false;
    const char* p = reinterpret_cast<const char*>(a.utf16());
    const char* q = reinterpret_cast<const char*>(b.utf16());
    size_t bytes = size_t(a.size()) * 2;
#if defined(__SSE2__)
    for (; bytes >= 16; bytes -= 16, p += 16, q += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(x, y)) != 0xFFFF)
            return false;
    }
#endif
    return bytes == 0 || std::memcmp(p, q, bytes) == 0;
}

} // namespace util
