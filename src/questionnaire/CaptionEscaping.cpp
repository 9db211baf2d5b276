#include "questionnaire/CaptionEscaping.h"

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
        case u'\\': out.append(QLatin1String("\\\\")); break;
        case u'\n': out.append(QLatin1String("\\n")); break;
        case u'\r': out.append(QLatin1String("\\r")); break;
        default: out.append(QLatin1String("\\t")); break;
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

namespace {

// Replaces, left to right, each backslash followed by r, n or t with that control character, and
// then each pair of backslashes with one. Decoding shortens the text, so it is done in place.
void DecodeEscapes(QString& cell) {
    QChar* const begin = cell.data();
    const QChar* const end = begin + cell.size();
    QChar* out = begin;
    for (const QChar* in = begin; in < end; ++in) {
        if (*in == u'\\' && in + 1 < end) {
            const char16_t next = in[1].unicode();
            const char16_t decoded = next == u'r' ? u'\r' : next == u'n' ? u'\n' : next == u't' ? u'\t' : 0;
            if (decoded != 0) {
                *out++ = QChar(decoded);
                ++in;
                continue;
            }
        }
        *out++ = *in;
    }
    cell.truncate(out - begin);
    out = begin;
    const QChar* const decodedEnd = begin + cell.size();
    for (const QChar* in = begin; in < decodedEnd; ++in) {
        *out++ = *in;
        if (*in == u'\\' && in + 1 < decodedEnd && in[1] == u'\\')
            ++in;
    }
    cell.truncate(out - begin);
}

} // namespace

void UnescapeCell(QString& cell) {
    if (cell.contains(QLatin1Char('\\')))
        DecodeEscapes(cell);
    if (!cell.isEmpty() && cell.startsWith(QLatin1Char('"')) && cell.endsWith(QLatin1Char('"'))) {
        cell = cell.size() >= 2 ? cell.mid(1, cell.size() - 2) : QString();
        cell.replace(QLatin1String("\"\""), QLatin1String("\""));
    }
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
