#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QXmlStreamReader>

#include <functional>

// What the writers and readers of exchange formats in XML (XLIFF for translators, TMX for
// translation memories) share: escaping every UTF-16 string the program holds, and reading files
// from outside without trusting them.
namespace util::xml {

// Whether XML 1.0 can carry the character at all: tabs and line breaks can, other control
// characters, U+FFFE, U+FFFF and unpaired surrogates cannot.
bool IsXmlChar(char32_t c);

// How a character XML cannot carry is written: the markup that stands for it, appended to `out`.
using UnsafeWriter = std::function<void(QString& out, char16_t c)>;

// Appends `text` escaped for element content: &, < and > as references, a carriage return as
// &#13; (a reader would otherwise turn it into a line feed), tabs and line feeds as they are.
// Characters XML cannot carry go through `unsafe`.
void AppendContent(QString& out, QStringView text, const UnsafeWriter& unsafe);
// Appends `text` escaped for an attribute value in double quotes; tabs and line breaks as
// references, since readers turn them into spaces. Characters XML cannot carry are left out.
void AppendAttribute(QString& out, QStringView text);

// Appends the character whose code point `hex` gives in hexadecimal, as the writers' markup for
// characters XML cannot carry names it; false, appending nothing, for anything else.
bool AppendHexCharacter(QStringView hex, QString& text);

// Reads a file of at most `maxBytes`; false with the reason in `error` otherwise. A larger file
// is refused unread.
bool ReadSmallFile(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error);

// Reads up to the document's first element. A document type declaration is accepted only when it
// declares nothing itself (tools name the format's DTD, which is never fetched): entity
// declarations are never needed in these formats. False with the reason in `error` when the
// document is not well-formed up to there or declares something.
bool ReadToRootElement(QXmlStreamReader& reader, QString& error);

// The text of the current element up to its end, nested elements' text included; `handleInline`
// is called for each nested element first and returns true when it consumed it (its end
// included). An entity reference fails the reading.
template <class Inline>
bool ReadElementText(QXmlStreamReader& reader, QString& text, Inline&& handleInline) {
    int depth = 1;
    while (depth > 0 && !reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::Characters:
            text.append(reader.text());
            break;
        case QXmlStreamReader::StartElement:
            if (!handleInline(reader, text))
                ++depth;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::EntityReference:
        case QXmlStreamReader::DTD:
            reader.raiseError(QStringLiteral("entity references are not accepted"));
            return false;
        default:
            break;
        }
    }
    return !reader.hasError();
}

} // namespace util::xml
