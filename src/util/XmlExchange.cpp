#include "util/XmlExchange.h"

#include <QFile>
#include <QFileInfo>

namespace util::xml {

bool IsXmlChar(char32_t c) {
    if (c < 0x20)
        return c == 0x9 || c == 0xA || c == 0xD;
    if (c < 0xD800)
        return true;
    if (c < 0xE000)
        return false; // a surrogate on its own
    return c <= 0xFFFD || (c >= 0x10000 && c <= 0x10FFFF);
}

namespace {

// Calls `each` for every code point of `text`, with its UTF-16 position and length; an unpaired
// surrogate is a code point of its own.
template <class Each> void ForEachCodePoint(QStringView text, Each&& each) {
    for (qsizetype i = 0; i < text.size();) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() &&
            QChar::isLowSurrogate(text[i + 1].unicode())) {
            each(QChar::surrogateToUcs4(c, text[i + 1].unicode()), i, 2);
            i += 2;
        } else {
            each(char32_t(c), i, 1);
            ++i;
        }
    }
}

} // namespace

namespace {

// The reference a character needs where it stands, or null when it goes as it is. Readers turn
// a carriage return into a line feed anywhere, and tabs and line feeds into spaces in attributes.
const char* Reference(char32_t c, bool attribute) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return attribute ? nullptr : "&gt;";
    case '"':
        return attribute ? "&quot;" : nullptr;
    case '\t':
        return attribute ? "&#9;" : nullptr;
    case '\n':
        return attribute ? "&#10;" : nullptr;
    case '\r':
        return "&#13;";
    default:
        return nullptr;
    }
}

void Append(QString& out, QStringView text, bool attribute, const UnsafeWriter* unsafe) {
    ForEachCodePoint(text, [&](char32_t c, qsizetype at, qsizetype length) {
        if (const char* reference = Reference(c, attribute))
            out.append(QLatin1String(reference));
        else if (IsXmlChar(c))
            out.append(text.mid(at, length));
        else if (unsafe)
            (*unsafe)(out, char16_t(c));
    });
}

} // namespace

void AppendContent(QString& out, QStringView text, const UnsafeWriter& unsafe) {
    Append(out, text, false, &unsafe);
}

void AppendAttribute(QString& out, QStringView text) {
    Append(out, text, true, nullptr);
}

bool AppendHexCharacter(QStringView hex, QString& text) {
    bool ok = false;
    const uint c = hex.toUInt(&ok, 16);
    if (!ok || c > 0x10FFFF)
        return false;
    if (c <= 0xFFFF)
        text.append(QChar(char16_t(c)));
    else
        text.append(QString::fromUcs4(reinterpret_cast<const char32_t*>(&c), 1));
    return true;
}

bool ReadSmallFile(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    if (file.size() > maxBytes) {
        error = QStringLiteral("larger than %1 bytes").arg(maxBytes);
        return false;
    }
    // In pieces, not in one buffer of the limit's size: most files are small.
    bytes.clear();
    bytes.reserve(file.size());
    while (!file.atEnd() && bytes.size() <= maxBytes) {
        const QByteArray piece = file.read(qint64(1) << 20);
        if (piece.isEmpty())
            break;
        bytes.append(piece);
    }
    if (bytes.size() > maxBytes) { // a file that grew, or a device without a size
        error = QStringLiteral("larger than %1 bytes").arg(maxBytes);
        return false;
    }
    if (file.error() != QFileDevice::NoError) {
        error = file.errorString();
        return false;
    }
    return true;
}

bool ReadToRootElement(QXmlStreamReader& reader, QString& error) {
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        // A declaration that only names the format's DTD is harmless (it is never fetched);
        // one with declarations of its own could define entities, and is refused.
        if (token == QXmlStreamReader::DTD &&
            (reader.text().contains(QLatin1Char('[')) || !reader.entityDeclarations().isEmpty())) {
            error = QStringLiteral("a document type declaration with an internal subset is not "
                                   "accepted");
            return false;
        }
        if (token == QXmlStreamReader::StartElement)
            return true;
    }
    error = reader.hasError() ? reader.errorString() : QStringLiteral("no element");
    return false;
}

} // namespace util::xml
