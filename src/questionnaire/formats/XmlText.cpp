#include "questionnaire/formats/XmlText.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace questionnaire::xml {

namespace {
// Where the characters that need a closer look begin: control characters, surrogates and
// U+FFFE/U+FFFF. Nearly every caption has none.
qsizetype FirstSuspect(const char16_t* s, qsizetype n) {
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i belowSpace = _mm_set1_epi16(0x1F);
    const __m128i surrogateMask = _mm_set1_epi16(short(0xF800));
    const __m128i surrogate = _mm_set1_epi16(short(0xD800));
    const __m128i lastAllowed = _mm_set1_epi16(short(0xFFFD));
    const __m128i zero = _mm_setzero_si128();
    for (; n - i >= 8; i += 8) {
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        const __m128i control = _mm_cmpeq_epi16(_mm_subs_epu16(c, belowSpace), zero);
        const __m128i surrogates = _mm_cmpeq_epi16(_mm_and_si128(c, surrogateMask), surrogate);
        const __m128i allowed = _mm_cmpeq_epi16(_mm_subs_epu16(c, lastAllowed), zero);
        const __m128i hits = _mm_or_si128(_mm_or_si128(control, surrogates),
                                          _mm_andnot_si128(allowed, _mm_set1_epi16(-1)));
        if (_mm_movemask_epi8(hits))
            return i;
    }
#endif
    return i;
}
} // namespace

bool IsXmlSafe(QStringView text) {
    const qsizetype n = text.size();
    const char16_t* s = text.utf16();
    for (qsizetype i = FirstSuspect(s, n); i < n; ++i) {
        const char16_t c = s[i];
        if (c >= 0x20 && c < 0xD800)
            continue;
        if (c == 0x9 || c == 0xA || c == 0xD)
            continue;
        if (c >= 0xE000 && c <= 0xFFFD)
            continue;
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(s[i + 1])) {
            ++i;
            continue;
        }
        return false;
    }
    return true;
}

void AppendHex(QStringView text, QString& hex) {
    static const char digits[] = "0123456789ABCDEF";
    hex.reserve(hex.size() + text.size() * 4);
    for (QChar c : text) {
        const char16_t u = c.unicode();
        hex.append(QLatin1Char(digits[(u >> 12) & 0xF]));
        hex.append(QLatin1Char(digits[(u >> 8) & 0xF]));
        hex.append(QLatin1Char(digits[(u >> 4) & 0xF]));
        hex.append(QLatin1Char(digits[u & 0xF]));
    }
}

bool FromHex(QStringView hex, QString& text) {
    if (hex.size() % 4 != 0)
        return false;
    text.clear();
    text.reserve(hex.size() / 4);
    for (qsizetype i = 0; i < hex.size(); i += 4) {
        bool ok = false;
        const uint u = hex.mid(i, 4).toUInt(&ok, 16);
        if (!ok)
            return false;
        text.append(QChar(char16_t(u)));
    }
    return true;
}

QLatin1StringView TypeName(QuestionType type) {
    switch (type) {
    case QuestionType::Information:
        return QLatin1StringView("information");
    case QuestionType::OpenText:
        return QLatin1StringView("text");
    case QuestionType::Numeric:
        return QLatin1StringView("numeric");
    case QuestionType::Date:
        return QLatin1StringView("date");
    case QuestionType::SingleChoice:
        return QLatin1StringView("single");
    case QuestionType::MultipleChoice:
        return QLatin1StringView("multiple");
    }
    return QLatin1StringView("single");
}

bool TypeFromName(QStringView name, QuestionType& type) {
    for (QuestionType t :
         {QuestionType::Information, QuestionType::OpenText, QuestionType::Numeric,
          QuestionType::Date, QuestionType::SingleChoice, QuestionType::MultipleChoice}) {
        if (name == TypeName(t)) {
            type = t;
            return true;
        }
    }
    return false;
}

} // namespace questionnaire::xml
