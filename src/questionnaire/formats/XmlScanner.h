#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace util {
class TextFileReader;
}

namespace questionnaire {

// A small XML pull parser for the questionnaire's own files: it moves from tag to tag, reads the
// text of an element whole, and checks that the document is well formed. A questionnaire file of
// several hundred megabytes is read piece by piece, its captions copied once into their strings.
// Document type declarations are refused (with them come entity bombs and external fetches), and
// so is every entity but the five predefined ones and character references.
class XmlScanner {
public:
    // Over a text held whole, which must outlive the scanner.
    explicit XmlScanner(QStringView text);
    // Over a file's text, read piece by piece; `pieceChars` (0 for the usual size) lets tests
    // cut the text anywhere.
    explicit XmlScanner(util::TextFileReader& reader, size_t pieceChars = 0);

    enum class Token { StartElement, EndElement, EndOfDocument, Invalid };

    // Moves to the next start or end tag. Character data between tags, comments and processing
    // instructions are passed over. EndOfDocument comes once the root element is closed. An
    // element written "<name/>" gives its start tag only.
    Token Next();
    // Enters the element of the start tag just read, or goes on inside the current one, to its
    // next child: true at the child's start tag; false at the end tag of the element (which is
    // consumed), or on an error. Each child must be read, entered or skipped before the next.
    bool NextChild();
    // After the root element: only comments and processing instructions may follow.
    bool Finish();
    // The name of the current start or end tag; valid until the next call of Next, ReadText or
    // SkipElement, as are attribute views.
    QStringView Name() const { return View(m_name); }
    // The root element and everything in it has been read.
    int Depth() const { return int(m_openStarts.size()); }

    // The value of an attribute of the current start tag, with its references decoded; false
    // when the tag has no such attribute. The view points into the document or into `scratch`.
    bool Attribute(QStringView name, QStringView& value, QString& scratch);
    bool HasAttribute(QStringView name) const;

    // Reads the text of the current start tag's element up to its end tag, which is consumed; an
    // element inside is an error.
    bool ReadText(QString& text);
    // Passes over the current start tag's element and everything in it, up to its end tag.
    bool SkipElement();

    // Records an error at the current position, unless one is already recorded; returns false.
    bool Fail(const QString& message);
    bool Failed() const { return !m_error.isEmpty(); }
    // "XML line L, column C: message".
    const QString& Error() const { return m_error; }
    // Characters of the document read so far.
    qint64 Offset() const { return m_consumed + qint64(m_pos); }

private:
    struct Span {
        size_t begin = 0;
        size_t size = 0;
    };
    struct AttributeSpan {
        Span name;
        Span value;
        bool needsDecoding = false; // holds a reference or a character to normalise
    };

    QStringView View(Span span) const {
        return QStringView(m_buffer.data() + span.begin, qsizetype(span.size));
    }
    // At least `count` characters available from the position, unless the text ends first.
    bool Ensure(size_t count);
    bool Refill();
    // Index of the first `c` at or after `from`, reading more as needed; npos when none.
    size_t FindFrom(size_t from, char16_t c);
    size_t FindFrom(size_t from, QStringView what);

    bool ReadTag(bool& isEnd);
    bool ReadName(size_t& at, Span& name);
    bool ReadAttributes(size_t& at);
    bool SkipMarkup(); // a comment, processing instruction or CDATA section outside text
    bool SkipCharacterData();
    bool CloseElement();
    bool AppendReference(const char16_t*& p, const char16_t* end, QString& out);
    bool AppendReferenceAtPosition(QString& out);
    bool AppendText(size_t from, size_t to, QString& out);
    bool CheckCharacters(size_t from, size_t to);
    void Compact();

    util::TextFileReader* m_reader = nullptr;
    std::vector<char16_t> m_buffer;
    size_t m_pos = 0;     // next character to read
    size_t m_end = 0;     // characters held
    bool m_atEnd = false; // the whole text is in the buffer
    bool m_readFailed = false;

    Span m_name;
    bool m_emptyElement = false;    // the current start tag ends with "/>"
    bool m_startTagPending = false; // a start tag whose element has not been entered yet
    std::vector<AttributeSpan> m_attributes;
    std::vector<char16_t> m_openNames; // the names of the open elements, one after the other
    std::vector<size_t> m_openStarts;
    bool m_seenRoot = false;
    bool m_rootClosed = false;

    // Where the buffer starts in the document, for the position of errors.
    qint64 m_consumed = 0; // characters dropped from the front of the buffer
    qint64 m_line = 1;
    qint64 m_column = 1;
    QString m_error;
};

} // namespace questionnaire
