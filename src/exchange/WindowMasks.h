#pragma once

#include <QtGlobal>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace exchange {

// Where, among 64 characters, cells end and plain cutting must stop: one bit per character.
struct WindowMasks {
    quint64 tabs = 0;
    quint64 backslashes = 0;
    quint64 others = 0; // quotes, and control characters other than tab
};

// One character at a time: what processors without SSE2 use, what the others are held to, and
// what the last characters of a text, fewer than 64, are read with.
inline WindowMasks MasksOfOneByOne(const char16_t* window, int count = 64) {
    WindowMasks masks;
    for (int i = 0; i < count; ++i) {
        const char16_t c = window[i];
        const quint64 bit = quint64(1) << i;
        if (c == u'\t')
            masks.tabs |= bit;
        else if (c == u'\\')
            masks.backslashes |= bit;
        else if (c <= u'\r' || c == u'"')
            masks.others |= bit;
    }
    return masks;
}

inline WindowMasks MasksOf(const char16_t* window) {
#if defined(__SSE2__)
    // Sixteen characters pack into sixteen bytes with signed saturation: those below 128 keep
    // their value and all others become 0x7F or 0x80 to 0xFF, none of which is looked for.
    WindowMasks masks;
    const __m128i carriageReturn = _mm_set1_epi8('\r');
    const __m128i tab = _mm_set1_epi8('\t');
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 16) {
        const __m128i bytes =
            _mm_packs_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(window + i)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(window + i + 8)));
        const __m128i tabs = _mm_cmpeq_epi8(bytes, tab);
        const __m128i controls = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, carriageReturn), zero);
        const __m128i others =
            _mm_or_si128(_mm_andnot_si128(tabs, controls), _mm_cmpeq_epi8(bytes, quote));
        auto bits = [&](__m128i hits) {
            return quint64(quint16(_mm_movemask_epi8(hits))) << i;
        };
        masks.tabs |= bits(tabs);
        masks.backslashes |= bits(_mm_cmpeq_epi8(bytes, backslash));
        masks.others |= bits(others);
    }
    return masks;
#else
    return MasksOfOneByOne(window);
#endif
}

} // namespace exchange
