#include "questionnaire/formats/XmlScanner.h"

#include "questionnaire/Strings.h"
#include "util/TextFile.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>

using questionnaire::Tr;
namespace strings = questionnaire::strings;
#endif

namespace questionnaire {

namespace {

constexpr size_t kNpos = size_t(-1);
constexpr size_t kPieceChars = size_t(1) << 20;
constexpr size_t kSmallestPiece = 4096;
constexpr size_t kLongestReference = 12; // "&#x10FFFF;" and a little more

bool IsSpace(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

bool IsNameStart(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c == u':' ||
           c >= 0xC0;
}

bool IsNameChar(char16_t c) {
    return IsNameStart(c) || (c >= u'0' && c <= u'9') || c == u'-' || c == u'.' || c == 0xB7;
}

// A character XML 1.0 allows in a document, surrogates apart, which come in pairs.
bool IsAllowedSingle(char16_t c) {
    return c >= 0x20 ? c < 0xFFFE : (c == u'\t' || c == u'\n' || c == u'\r');
}

// The first character of [p, end) that text cannot simply be copied over: markup ('<', '&'), a
// carriage return (line ends are normalised), another control character, a surrogate (checked
// for its pair) or U+FFFE/U+FFFF. Captions are long runs of ordinary letters.
const char16_t* FindTextStop(const char16_t* p, const char16_t* end) {
#if defined(__SSE2__)
    const __m128i belowSpace = _mm_set1_epi16(0x1F);
    const __m128i lessThan = _mm_set1_epi16(u'<');
    const __m128i ampersand = _mm_set1_epi16(u'&');
    const __m128i surrogateMask = _mm_set1_epi16(short(0xF800));
    const __m128i surrogate = _mm_set1_epi16(short(0xD800));
    const __m128i lastAllowed = _mm_set1_epi16(short(0xFFFD));
    const __m128i zero = _mm_setzero_si128();
    const __m128i ones = _mm_set1_epi16(-1);
    while (end - p >= 8) {
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i control = _mm_cmpeq_epi16(_mm_subs_epu16(c, belowSpace), zero);
        const __m128i markup =
            _mm_or_si128(_mm_cmpeq_epi16(c, lessThan), _mm_cmpeq_epi16(c, ampersand));
        const __m128i surrogates = _mm_cmpeq_epi16(_mm_and_si128(c, surrogateMask), surrogate);
        const __m128i beyond =
            _mm_xor_si128(_mm_cmpeq_epi16(_mm_subs_epu16(c, lastAllowed), zero), ones);
        const __m128i hits =
            _mm_or_si128(_mm_or_si128(control, markup), _mm_or_si128(surrogates, beyond));
        if (const int mask = _mm_movemask_epi8(hits))
            return p + __builtin_ctz(unsigned(mask)) / 2;
        p += 8;
    }
#endif
    for (; p < end; ++p) {
        const char16_t c = *p;
        if (c < 0x20 || c == u'<' || c == u'&' || (c & 0xF800) == 0xD800 || c >= 0xFFFE)
            return p;
    }
    return end;
}

// The line feeds in [p, end), and where the last one is (untouched when there is none).
qint64 CountLineFeeds(const char16_t* p, const char16_t* end, const char16_t*& last) {
    qint64 count = 0;
#if defined(__SSE2__)
    const __m128i lineFeed = _mm_set1_epi16(u'\n');
    while (end - p >= 8) {
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        if (const int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(c, lineFeed))) {
            count += __builtin_popcount(unsigned(mask)) / 2;
            last = p + (31 - __builtin_clz(unsigned(mask))) / 2;
        }
        p += 8;
    }
#endif
    for (; p < end; ++p) {
        if (*p == u'\n') {
            ++count;
            last = p;
        }
    }
    return count;
}

bool ParseDecimal(QStringView digits, int base, char32_t& value) {
    if (digits.isEmpty())
        return false;
    char32_t v = 0;
    for (QChar ch : digits) {
        const char16_t c = ch.unicode();
        int d;
        if (c >= u'0' && c <= u'9')
            d = c - u'0';
        else if (base == 16 && c >= u'a' && c <= u'f')
            d = c - u'a' + 10;
        else if (base == 16 && c >= u'A' && c <= u'F')
            d = c - u'A' + 10;
        else
            return false;
        v = v * char32_t(base) + char32_t(d);
        if (v > 0x10FFFF)
            return false;
    }
    value = v;
    return true;
}

} // namespace

XmlScanner::XmlScanner(QStringView text) {
    // A mark left at the start of a decoded text is not part of the document.
    if (!text.isEmpty() && text.front() == QChar(0xFEFF))
        text = text.mid(1);
    m_buffer.assign(text.utf16(), text.utf16() + text.size());
    m_end = m_buffer.size();
    m_atEnd = true;
}

XmlScanner::XmlScanner(util::TextFileReader& reader, size_t pieceChars) : m_reader(&reader) {
    // A small file is read through a buffer of its own size.
    const qint64 left = reader.CharactersLeft() + 1;
    m_buffer.resize(pieceChars > 0 ? pieceChars
                                   : std::clamp<size_t>(size_t(std::max<qint64>(left, 0)),
                                                        kSmallestPiece, kPieceChars));
}

// --- the buffer ---

void XmlScanner::Compact() {
    if (m_pos == 0)
        return;
    // The characters passed over still count for the position of a later error.
    const char16_t* begin = m_buffer.data();
    const char16_t* lastBreak = nullptr;
    m_line += CountLineFeeds(begin, begin + m_pos, lastBreak);
    m_column = lastBreak ? qint64(begin + m_pos - lastBreak) : m_column + qint64(m_pos);
    m_consumed += qint64(m_pos);
    std::memmove(m_buffer.data(), m_buffer.data() + m_pos, (m_end - m_pos) * sizeof(char16_t));
    m_end -= m_pos;
    m_pos = 0;
}

bool XmlScanner::Refill() {
    if (m_atEnd)
        return false;
    Compact();
    if (m_end == m_buffer.size())
        m_buffer.resize(m_buffer.size() * 2);
    const qsizetype got =
        m_reader->Read(m_buffer.data() + m_end, qsizetype(m_buffer.size() - m_end));
    if (got <= 0) {
        m_atEnd = true;
        m_readFailed = got < 0;
        return false;
    }
    m_end += size_t(got);
    return true;
}

bool XmlScanner::Ensure(size_t count) {
    while (m_end - m_pos < count)
        if (!Refill())
            return false;
    return true;
}

size_t XmlScanner::FindFrom(size_t from, char16_t c) {
    for (;;) {
        const char16_t* begin = m_buffer.data() + m_pos + from;
        const char16_t* end = m_buffer.data() + m_end;
        const char16_t* hit = std::find(begin, end, c);
        if (hit != end)
            return size_t(hit - (m_buffer.data() + m_pos));
        from = m_end - m_pos;
        if (!Refill())
            return kNpos;
    }
}

size_t XmlScanner::FindFrom(size_t from, QStringView what) {
    for (;;) {
        const size_t at = FindFrom(from, char16_t(what.front().unicode()));
        if (at == kNpos || !Ensure(at + size_t(what.size())))
            return kNpos;
        if (QStringView(m_buffer.data() + m_pos + at, what.size()) == what)
            return at;
        from = at + 1;
    }
}

bool XmlScanner::Fail(const QString& message) {
    if (!m_error.isEmpty())
        return false;
    qint64 line = m_line;
    qint64 column = m_column;
    for (size_t i = 0; i < m_pos && i < m_end; ++i) {
        if (m_buffer[i] == u'\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    m_error = Tr(strings::kXmlPosition).arg(line).arg(column).arg(message);
    return false;
}

// --- tags ---

bool XmlScanner::ReadName(size_t& at, Span& name) {
    if (at >= m_end - m_pos || !IsNameStart(m_buffer[m_pos + at]))
        return Fail(Tr(strings::kNameExpected));
    const size_t begin = at;
    while (at < m_end - m_pos && IsNameChar(m_buffer[m_pos + at]))
        ++at;
    name = {m_pos + begin, at - begin};
    return true;
}

// The whole tag from m_pos is in the buffer; `at` is just past its name.
bool XmlScanner::ReadAttributes(size_t& at) {
    m_attributes.clear();
    const char16_t* s = m_buffer.data() + m_pos;
    for (;;) {
        const bool spaced = IsSpace(s[at]);
        while (IsSpace(s[at]))
            ++at;
        if (s[at] == u'>') {
            ++at;
            m_emptyElement = false;
            return true;
        }
        if (s[at] == u'/') {
            if (s[at + 1] != u'>')
                return Fail(Tr(strings::kSlashWithoutGreaterThan));
            at += 2;
            m_emptyElement = true;
            return true;
        }
        if (!spaced)
            return Fail(Tr(strings::kSpaceExpectedBetweenAttributes));
        AttributeSpan attribute;
        if (!ReadName(at, attribute.name))
            return false;
        while (IsSpace(s[at]))
            ++at;
        if (s[at] != u'=')
            return Fail(Tr(strings::kExpectedAfterAttributeName));
        ++at;
        while (IsSpace(s[at]))
            ++at;
        const char16_t quote = s[at];
        if (quote != u'"' && quote != u'\'')
            return Fail(Tr(strings::kAttributeValueMustQuoted));
        const size_t begin = ++at;
        while (s[at] != quote) {
            const char16_t c = s[at];
            if (c == u'<')
                return Fail(Tr(strings::kLessThanInAttribute));
            if (c == u'&' || c == u'\t' || c == u'\n' || c == u'\r')
                attribute.needsDecoding = true;
            ++at;
        }
        attribute.value = {m_pos + begin, at - begin};
        ++at;
        if (!CheckCharacters(m_pos + begin, m_pos + at - 1))
            return false;
        for (const AttributeSpan& other : m_attributes)
            if (View(other.name) == View(attribute.name))
                return Fail(Tr(strings::kAttributeGivenTwice).arg(View(attribute.name)));
        m_attributes.push_back(attribute);
    }
}

// At '<' of a start or end tag: reads the tag whole and consumes it.
bool XmlScanner::ReadTag(bool& isEnd) {
    // The tag ends at the first '>' outside quotes; read on until it is in the buffer.
    size_t at = 1;
    char16_t quote = 0;
    for (;;) {
        if (at >= m_end - m_pos && !Ensure(at + 1))
            return Fail(Tr(strings::kDocumentEndsInsideTag));
        const char16_t c = m_buffer[m_pos + at];
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'>') {
            break;
        }
        ++at;
    }
    isEnd = m_buffer[m_pos + 1] == u'/';
    at = isEnd ? 2 : 1;
    if (!ReadName(at, m_name))
        return false;
    if (isEnd) {
        while (IsSpace(m_buffer[m_pos + at]))
            ++at;
        if (m_buffer[m_pos + at] != u'>')
            return Fail(Tr(strings::kExpectedEndTag));
        ++at;
    } else if (!ReadAttributes(at)) {
        return false;
    }
    m_pos += at;
    return true;
}

// At "<!" or "<?" between tags: passes over a comment, a processing instruction or a CDATA
// section; refuses a document type declaration.
bool XmlScanner::SkipMarkup() {
    if (!Ensure(2))
        return Fail(Tr(strings::kDocumentEndsInsideMarkup));
    QStringView ending;
    size_t from = 2;
    if (m_buffer[m_pos + 1] == u'?') {
        ending = u"?>";
    } else if (Ensure(4) && QStringView(m_buffer.data() + m_pos, 4) == u"<!--") {
        ending = u"-->";
        from = 4;
    } else if (Ensure(9) && QStringView(m_buffer.data() + m_pos, 9) == u"<![CDATA[") {
        if (m_openStarts.empty())
            return Fail(Tr(strings::kCharacterDataOutsideRootElement));
        ending = u"]]>";
        from = 9;
    } else if (Ensure(9) && QStringView(m_buffer.data() + m_pos, 9) == u"<!DOCTYPE") {
        return Fail(Tr(strings::kDocumentTypeDeclarationsAccepted));
    } else {
        return Fail(Tr(strings::kUnknownMarkup));
    }
    const size_t at = FindFrom(from, ending);
    if (at == kNpos)
        return Fail(Tr(strings::kDocumentEndsInsideMarkup));
    if (!CheckCharacters(m_pos + from, m_pos + at))
        return false;
    m_pos += at + size_t(ending.size());
    return true;
}

bool XmlScanner::CheckCharacters(size_t from, size_t to) {
    const char16_t* p = m_buffer.data() + from;
    const char16_t* end = m_buffer.data() + to;
    while ((p = FindTextStop(p, end)) != end) {
        const char16_t c = *p;
        if (c == u'<' || c == u'&' || c == u'\r' || c == u'\t' || c == u'\n') {
            ++p;
            continue;
        }
        if (QChar::isHighSurrogate(c) && p + 1 < end && QChar::isLowSurrogate(p[1])) {
            p += 2;
            continue;
        }
        m_pos = from; // near enough for the message
        return Fail(Tr(strings::kCharacterUAllowedXML).arg(uint(c), 4, 16, QLatin1Char('0')));
    }
    return true;
}

// Character data between tags, where it is passed over: up to the next '<'.
bool XmlScanner::SkipCharacterData() {
    for (;;) {
        const bool outside = m_openStarts.empty();
        size_t i = m_pos;
        while (i < m_end && m_buffer[i] != u'<' && m_buffer[i] != u'&') {
            if (outside && !IsSpace(m_buffer[i])) {
                m_pos = i;
                return Fail(m_seenRoot ? Tr(strings::kTextAfterRootElement)
                                       : Tr(strings::kStartTagExpected));
            }
            ++i;
        }
        if (!CheckCharacters(m_pos, i))
            return false;
        m_pos = i;
        if (i < m_end && m_buffer[i] == u'&') {
            if (outside)
                return Fail(Tr(strings::kReferenceOutsideRootElement));
            // A reference passed over must still name something.
            QString ignored;
            if (!AppendReferenceAtPosition(ignored))
                return false;
            continue;
        }
        if (i < m_end || !Refill())
            return true; // at '<', or at the end, which the caller judges
    }
}

XmlScanner::Token XmlScanner::Next() {
    for (;;) {
        if (Failed())
            return Token::Invalid;
        if (!SkipCharacterData())
            return Token::Invalid;
        if (m_pos == m_end) {
            if (m_readFailed) {
                Fail(Tr(strings::kFileCouldReadEnd));
                return Token::Invalid;
            }
            if (!m_rootClosed) {
                Fail(m_seenRoot ? Tr(strings::kDocumentEndsBeforeRootElement)
                                : Tr(strings::kDocumentHoldsElement));
                return Token::Invalid;
            }
            return Token::EndOfDocument;
        }
        if (!Ensure(2)) {
            Fail(Tr(strings::kDocumentEndsInsideTag));
            return Token::Invalid;
        }
        const char16_t second = m_buffer[m_pos + 1];
        if (second == u'!' || second == u'?') {
            if (!SkipMarkup())
                return Token::Invalid;
            continue;
        }
        bool isEnd = false;
        if (!ReadTag(isEnd))
            return Token::Invalid;
        if (isEnd) {
            if (!CloseElement())
                return Token::Invalid;
            return Token::EndElement;
        }
        if (m_rootClosed) {
            Fail(Tr(strings::kSecondRootElement));
            return Token::Invalid;
        }
        m_seenRoot = true;
        m_openStarts.push_back(m_openNames.size());
        const QStringView name = Name();
        m_openNames.insert(m_openNames.end(), name.utf16(), name.utf16() + name.size());
        if (m_emptyElement) {
            // Its end comes with its start; the caller sees the start only.
            m_openNames.resize(m_openStarts.back());
            m_openStarts.pop_back();
            m_rootClosed = m_openStarts.empty();
        }
        return Token::StartElement;
    }
}

bool XmlScanner::CloseElement() {
    if (m_openStarts.empty())
        return Fail(Tr(strings::kEndTagWithoutStartTag));
    const size_t start = m_openStarts.back();
    const QStringView open(m_openNames.data() + start, qsizetype(m_openNames.size() - start));
    if (open != Name())
        return Fail(Tr(strings::kEndTagDoesMatchStart).arg(Name(), open));
    m_openNames.resize(start);
    m_openStarts.pop_back();
    m_rootClosed = m_openStarts.empty();
    return true;
}

bool XmlScanner::HasAttribute(QStringView name) const {
    return std::any_of(m_attributes.begin(), m_attributes.end(),
                       [&](const AttributeSpan& a) { return View(a.name) == name; });
}

bool XmlScanner::Attribute(QStringView name, QStringView& value, QString& scratch) {
    for (const AttributeSpan& a : m_attributes) {
        if (View(a.name) != name)
            continue;
        if (!a.needsDecoding) {
            value = View(a.value);
            return true;
        }
        // Literal line ends and tabs read as spaces; references keep what they stand for.
        scratch.clear();
        const size_t end = a.value.begin + a.value.size;
        for (size_t i = a.value.begin; i < end; ++i) {
            const char16_t c = m_buffer[i];
            if (c == u'&') {
                const char16_t* p = m_buffer.data() + i;
                if (!AppendReference(p, m_buffer.data() + end, scratch))
                    return false;
                i = size_t(p - m_buffer.data()) - 1;
            } else if (c == u'\r' && i + 1 < end && m_buffer[i + 1] == u'\n') {
                // One space for the line end.
            } else {
                scratch.append(IsSpace(c) ? QChar(u' ') : QChar(c));
            }
        }
        value = scratch;
        return true;
    }
    return false;
}

// At the '&' at `p`: appends what the reference stands for and moves `p` past it. The reference
// ends before `end`.
bool XmlScanner::AppendReference(const char16_t*& p, const char16_t* end, QString& out) {
    const char16_t* last = end - p > qsizetype(kLongestReference) ? p + kLongestReference + 1 : end;
    const char16_t* semicolon = std::find(p + 1, last, u';');
    if (semicolon == last)
        return Fail(Tr(strings::kAmpersandWithoutReference));
    const QStringView name(p + 1, semicolon - (p + 1));
    p = semicolon + 1;
    if (name.startsWith(u'#')) {
        char32_t code = 0;
        const bool hex = name.size() > 1 && name[1] == u'x';
        if (!ParseDecimal(name.mid(hex ? 2 : 1), hex ? 16 : 10, code) ||
            (code < 0x10000 && !IsAllowedSingle(char16_t(code))) ||
            (code >= 0xD800 && code < 0xE000))
            return Fail(Tr(strings::kReferenceNotACharacter).arg(name));
        if (code >= 0x10000) {
            out.append(QChar(QChar::highSurrogate(code)));
            out.append(QChar(QChar::lowSurrogate(code)));
        } else {
            out.append(QChar(char16_t(code)));
        }
        return true;
    }
    static constexpr struct {
        const char16_t* name;
        char16_t value;
    } kPredefined[] = {
        {u"lt", u'<'}, {u"gt", u'>'}, {u"amp", u'&'}, {u"quot", u'"'}, {u"apos", u'\''}};
    for (const auto& entity : kPredefined) {
        if (name == QStringView(entity.name)) {
            out.append(QChar(entity.value));
            return true;
        }
    }
    return Fail(Tr(strings::kEntityDefined).arg(name));
}

// At the '&' at the position, in text read piece by piece.
bool XmlScanner::AppendReferenceAtPosition(QString& out) {
    Ensure(kLongestReference + 1); // the document may end sooner
    const char16_t* p = m_buffer.data() + m_pos;
    if (!AppendReference(p, m_buffer.data() + m_end, out))
        return false;
    m_pos = size_t(p - m_buffer.data());
    return true;
}

bool XmlScanner::NextChild() {
    if (m_emptyElement) {
        // An element written "<name/>" ends as soon as it is entered.
        m_emptyElement = false;
        return false;
    }
    return Next() == Token::StartElement;
}

bool XmlScanner::Finish() {
    if (Failed())
        return false;
    if (Next() == Token::EndOfDocument)
        return true;
    return Fail(Tr(strings::kSecondRootElement));
}

bool XmlScanner::SkipElement() {
    if (m_emptyElement) {
        m_emptyElement = false;
        return !Failed();
    }
    const size_t depth = m_openStarts.size() - 1;
    while (m_openStarts.size() > depth) {
        const Token token = Next();
        if (token == Token::Invalid)
            return false;
        if (token == Token::StartElement)
            m_emptyElement = false;
    }
    return true;
}

bool XmlScanner::ReadText(QString& text) {
    text.clear();
    if (m_emptyElement) {
        m_emptyElement = false;
        return !Failed();
    }
    for (;;) {
        const char16_t* begin = m_buffer.data() + m_pos;
        const char16_t* end = m_buffer.data() + m_end;
        const char16_t* stop = FindTextStop(begin, end);
        if (stop != begin) {
            // Most captions are one run: their string gets exactly their size.
            if (text.isEmpty() && stop != end && *stop == u'<')
                text = QString(reinterpret_cast<const QChar*>(begin), stop - begin);
            else
                text.append(reinterpret_cast<const QChar*>(begin), stop - begin);
        }
        m_pos = size_t(stop - m_buffer.data());
        if (stop == end) {
            if (!Refill())
                return Fail(m_readFailed ? Tr(strings::kFileCouldReadEnd)
                                         : Tr(strings::kDocumentEndsInsideElement));
            continue;
        }
        const char16_t c = *stop;
        if (c == u'\t' || c == u'\n') {
            text.append(QChar(c));
            ++m_pos;
        } else if (c == u'\r') {
            // A line end in the text is a line feed, whatever the file used.
            text.append(QChar(u'\n'));
            ++m_pos;
            if (Ensure(1) && m_buffer[m_pos] == u'\n')
                ++m_pos;
        } else if (QChar::isHighSurrogate(c)) {
            if (!Ensure(2) || !QChar::isLowSurrogate(m_buffer[m_pos + 1]))
                return Fail(Tr(strings::kSurrogateWithoutPair));
            text.append(reinterpret_cast<const QChar*>(m_buffer.data() + m_pos), 2);
            m_pos += 2;
        } else if (c == u'&') {
            if (!AppendReferenceAtPosition(text))
                return false;
        } else if (c == u'<') {
            if (!Ensure(2))
                return Fail(Tr(strings::kDocumentEndsInsideElement));
            const char16_t second = m_buffer[m_pos + 1];
            if (second == u'/') {
                bool isEnd = false;
                return ReadTag(isEnd) && CloseElement();
            }
            if (second == u'!' && Ensure(9) &&
                QStringView(m_buffer.data() + m_pos, 9) == u"<![CDATA[") {
                const size_t close = FindFrom(9, u"]]>");
                if (close == kNpos)
                    return Fail(Tr(strings::kDocumentEndsInsideCDATASection));
                if (!CheckCharacters(m_pos + 9, m_pos + close))
                    return false;
                text.append(reinterpret_cast<const QChar*>(m_buffer.data() + m_pos + 9),
                            qsizetype(close - 9));
                m_pos += close + 3;
            } else if (second == u'!' || second == u'?') {
                if (!SkipMarkup())
                    return false;
            } else {
                return Fail(Tr(strings::kElementWhereOnlyTextExpected));
            }
        } else {
            return Fail(Tr(strings::kCharacterUAllowedXML).arg(uint(c), 4, 16, QLatin1Char('0')));
        }
    }
}

} // namespace questionnaire
