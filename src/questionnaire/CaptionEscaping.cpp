#include "questionnaire/CaptionEscaping.h"

#include "util/CharScan.h"

#include <algorithm>

namespace questionnaire {

void AppendEscapedCaption(QString& out, const QString& text) {
    const QChar* s = text.constData();
    const qsizetype n = text.size();
    qsizetype run = 0; // start of the characters not yet copied
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = s[i].unicode();
        if (c > u'\\' || (c != u'\\' && c != u'\n' && c != u'\r' && c != u'\t'))
            continue;
        out.append(s + run, i - run);
        switch (c) {
        case u'\\':
            out.append(QLatin1String("\\\\"));
            break;
        case u'\n':
            out.append(QLatin1String("\\n"));
            break;
        case u'\r':
            out.append(QLatin1String("\\r"));
            break;
        default:
            out.append(QLatin1String("\\t"));
            break;
        }
        run = i + 1;
    }
    out.append(s + run, n - run);
}

QString EscapeCaption(const QString& text) {
    QString out;
    out.reserve(text.size() + 8);
    AppendEscapedCaption(out, text);
    return out;
}

QString UnescapeCaption(QStringView text) {
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != QLatin1Char('\\') || i + 1 == text.size()) {
            out.append(c);
            continue;
        }
        switch (text[i + 1].unicode()) {
        case u'\\':
            out.append(QLatin1Char('\\'));
            break;
        case u'n':
            out.append(QLatin1Char('\n'));
            break;
        case u'r':
            out.append(QLatin1Char('\r'));
            break;
        case u't':
            out.append(QLatin1Char('\t'));
            break;
        default:
            out.append(c);
            continue; // the backslash alone: the next character is read as it comes
        }
        ++i;
    }
    return out;
}

namespace {

// "\r", "\n" and "\t" decoded first, then "\\"; with `quotes`, then a cell enclosed in double
// quotes loses them and has its doubled quotes halved.
void Decode(QStringView cell, QString& out, bool quotes) {
    out.resize(cell.size()); // keeps the storage of earlier cells
    const char16_t* in = cell.utf16();
    const char16_t* const end = in + cell.size();
    char16_t* const begin = reinterpret_cast<char16_t*>(out.data());
    char16_t* o = begin;
    char16_t* kept = nullptr; // the first backslash left standing, where pairs may start
    // Each backslash followed by r, n or t becomes that control character, left to right...
    while (in < end) {
        const char16_t* backslash = util::FindFirstOf<u'\\'>(in, end);
        std::copy(in, backslash, o);
        o += backslash - in;
        in = backslash;
        if (in == end)
            break;
        const char16_t next = in + 1 < end ? in[1] : 0;
        const char16_t decoded = next == u'r'   ? u'\r'
                                 : next == u'n' ? u'\n'
                                 : next == u't' ? u'\t'
                                                : 0;
        if (decoded == 0 && !kept)
            kept = o;
        *o++ = decoded != 0 ? decoded : *in;
        in += decoded != 0 ? 2 : 1;
    }
    // ...then each pair of backslashes becomes one.
    char16_t* w = kept ? kept : o;
    for (const char16_t* r = w; r < o; ++r) {
        *w++ = *r;
        if (*r == u'\\' && r + 1 < o && r[1] == u'\\')
            ++r;
    }
    // A cell enclosed in double quotes loses them and has its doubled quotes halved.
    const qsizetype length = w - begin;
    if (quotes && length > 0 && begin[0] == u'"' && begin[length - 1] == u'"') {
        char16_t* q = begin;
        for (const char16_t* r = begin + 1; r < begin + length - 1; ++r) {
            *q++ = *r;
            if (*r == u'"' && r + 1 < begin + length - 1 && r[1] == u'"')
                ++r;
        }
        w = q;
    }
    out.truncate(w - begin);
}

} // namespace

void UnescapeCellInto(QStringView cell, QString& out) {
    Decode(cell, out, true);
}

QString UnescapeTypedText(const QString& typed) {
    if (!typed.contains(QLatin1Char('\\')))
        return typed;
    QString out;
    Decode(typed, out, false);
    return out;
}

void UnescapeCell(QString& cell) {
    const bool enclosed = cell.startsWith(QLatin1Char('"')) && cell.endsWith(QLatin1Char('"'));
    if (!enclosed && !cell.contains(QLatin1Char('\\')))
        return;
    QString out;
    UnescapeCellInto(cell, out);
    cell = std::move(out);
}

bool CaptionSurvivesRoundTrip(const QString& text, bool sourceColumn) {
    if (text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"')))
        return false;
    // The escaped text is what a spreadsheet cell holds.
    qsizetype escapedLength = text.size();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == QLatin1Char('\\')) {
            ++escapedLength;
            const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
            if (next == QLatin1Char('n') || next == QLatin1Char('r') || next == QLatin1Char('t'))
                return false;
            if (sourceColumn && next == QLatin1Char('\\'))
                return false;
        } else if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QLatin1Char('\t')) {
            ++escapedLength;
        } else if (c.unicode() == 0) {
            return false; // the reader stops at the first zero character
        }
    }
    return escapedLength <= kSpreadsheetCellLimit;
}

} // namespace questionnaire
