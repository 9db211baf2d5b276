// Writes the XML form of a questionnaire (format 1, see docs/formats.md).
#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlText.h"
#include "util/CharScan.h"
#include "util/FileSystem.h"
#include "util/Progress.h"

#include <QSaveFile>

#include <cstdio>
#include <cstring>
#include <vector>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

using namespace questionnaire;
using namespace questionnaire::xml;

namespace {

// Text is handed on in pieces of about this many characters.
constexpr size_t kPieceChars = size_t(1) << 18;

// A small writer of our own: deterministic output, carriage returns kept as character references
// so that a reader does not fold them into line feeds, and the document handed on in pieces so
// that a questionnaire of hundreds of megabytes is never held whole as text.
class XmlOut {
public:
    explicit XmlOut(const XmlTextSink& sink) : m_sink(sink) {
        m_buffer.reserve(kPieceChars + 1024);
    }

    void Open(QLatin1StringView name) {
        CloseStartTag();
        Indent();
        Put(u'<');
        Put(name);
        m_tagOpen = true;
        ++m_depth;
    }
    void Attribute(QLatin1StringView name, QStringView value) {
        Put(u' ');
        Put(name);
        Put(u'=');
        Put(u'"');
        Escape(value, true);
        Put(u'"');
    }
    void Attribute(QLatin1StringView name, QLatin1StringView value) {
        Put(u' ');
        Put(name);
        Put(u'=');
        Put(u'"');
        Put(value);
        Put(u'"');
    }
    void Attribute(QLatin1StringView name, qint64 value) {
        char digits[24];
        const int n = std::snprintf(digits, sizeof digits, "%lld", static_cast<long long>(value));
        Put(u' ');
        Put(name);
        Put(u'=');
        Put(u'"');
        Put(QLatin1StringView(digits, n));
        Put(u'"');
    }
    // A string attribute that may hold characters XML cannot carry.
    void StringAttribute(QLatin1StringView name, const QString& value) {
        if (IsXmlSafe(value)) {
            Attribute(name, value);
            return;
        }
        m_hex.clear();
        AppendHex(value, m_hex);
        Put(u' ');
        Put(name);
        Put(QLatin1StringView("Hex=\""));
        Put(m_hex);
        Put(u'"');
    }
    // An element whose content is a text.
    void TextElement(QLatin1StringView name, qint32 language, const QString& text,
                     QLatin1StringView extraName = {}, qint64 extraValue = 0) {
        Open(name);
        if (!extraName.isEmpty())
            Attribute(extraName, extraValue);
        Attribute(QLatin1StringView("lang"), language);
        if (!IsXmlSafe(text)) {
            m_hex.clear();
            AppendHex(text, m_hex);
            Attribute(QLatin1StringView("hex"), m_hex);
            CloseEmpty();
            return;
        }
        if (text.isEmpty()) {
            CloseEmpty();
            return;
        }
        Put(u'>');
        m_tagOpen = false;
        Escape(text, false);
        --m_depth;
        Put(u'<');
        Put(u'/');
        Put(name);
        Put(u'>');
    }
    void Close(QLatin1StringView name) {
        --m_depth;
        if (m_tagOpen) {
            Put(u'/');
            Put(u'>');
            m_tagOpen = false;
            return;
        }
        Indent();
        Put(u'<');
        Put(u'/');
        Put(name);
        Put(u'>');
    }
    // Ends the document; false when the sink refused a piece.
    bool Finish() {
        Put(u'\n');
        Flush();
        return m_ok;
    }
    bool Ok() const { return m_ok; }

private:
    void Put(char16_t c) { m_buffer.push_back(c); }
    void Put(QLatin1StringView text) {
        for (char c : text)
            m_buffer.push_back(char16_t(uchar(c)));
    }
    void Put(const char16_t* s, qsizetype n) { m_buffer.insert(m_buffer.end(), s, s + n); }
    void Put(QStringView text) { Put(text.utf16(), text.size()); }

    void FlushIfFull() {
        if (m_buffer.size() >= kPieceChars)
            Flush();
    }
    void Flush() {
        if (m_ok && !m_buffer.empty())
            m_ok = m_sink(QStringView(m_buffer.data(), qsizetype(m_buffer.size())));
        m_buffer.clear();
    }
    void CloseEmpty() {
        Put(u'/');
        Put(u'>');
        m_tagOpen = false;
        --m_depth;
    }
    void CloseStartTag() {
        if (m_tagOpen) {
            Put(u'>');
            m_tagOpen = false;
        }
    }
    void Indent() {
        FlushIfFull();
        if (m_started)
            Put(u'\n');
        m_started = true;
        for (int i = 0; i < m_depth; ++i) {
            Put(u' ');
            Put(u' ');
        }
    }
    void Escape(QStringView text, bool inAttribute) {
        const char16_t* s = text.utf16();
        const char16_t* const end = s + text.size();
        for (;;) {
            const char16_t* hit =
                inAttribute ? util::FindFirstOf<u'&', u'<', u'>', u'\r', u'"', u'\n', u'\t'>(s, end)
                            : util::FindFirstOf<u'&', u'<', u'>', u'\r'>(s, end);
            Put(s, hit - s);
            if (hit == end)
                return;
            switch (*hit) {
            case u'&':
                Put(QLatin1StringView("&amp;"));
                break;
            case u'<':
                Put(QLatin1StringView("&lt;"));
                break;
            case u'>':
                Put(QLatin1StringView("&gt;"));
                break;
            case u'\r':
                Put(QLatin1StringView("&#13;"));
                break;
            case u'"':
                Put(QLatin1StringView("&quot;"));
                break;
            case u'\n':
                Put(QLatin1StringView("&#10;"));
                break;
            case u'\t':
                Put(QLatin1StringView("&#9;"));
                break;
            }
            s = hit + 1;
        }
    }

    const XmlTextSink& m_sink;
    std::vector<char16_t> m_buffer;
    QString m_hex;
    int m_depth = 0;
    bool m_tagOpen = false;
    bool m_started = false;
    bool m_ok = true;
};

QString VersionList(const QList<qint32>& versions) {
    QString text;
    for (qint32 id : versions) {
        if (!text.isEmpty())
            text += QLatin1Char(' ');
        text += QString::number(id);
    }
    return text;
}

void WriteTexts(XmlOut& out, QLatin1StringView element, const CLocalisedText& texts) {
    for (const auto& [language, text] : texts.Entries())
        out.TextElement(element, language, text);
}

void WriteQuestion(XmlOut& out, const CQuestion& question, bool includeTexts) {
    out.Open(QLatin1StringView("question"));
    out.Attribute(QLatin1StringView("id"), question.m_id);
    out.StringAttribute(QLatin1StringView("shortcut"), question.m_shortcut);
    out.Attribute(QLatin1StringView("type"), TypeName(question.GetType()));
    out.Attribute(QLatin1StringView("visible"), question.m_visible);
    out.Attribute(QLatin1StringView("onScreen"), question.m_shownOnScreen);
    out.Attribute(QLatin1StringView("onPaper"), question.m_shownOnPaper);
    if (question.m_hasParent)
        out.Attribute(QLatin1StringView("parent"), question.m_parentId);
    if (!question.GetVersions().isEmpty())
        out.Attribute(QLatin1StringView("versions"), VersionList(question.GetVersions()));
    if (includeTexts) {
        WriteTexts(out, QLatin1StringView("long"), question.LongCaption());
        WriteTexts(out, QLatin1StringView("short"), question.ShortCaption());
        WriteTexts(out, QLatin1StringView("instructions"), question.Instructions());
        WriteTexts(out, QLatin1StringView("comments"), question.Comments());
    }
    for (int r = 0; r < question.GetNbreModalite(); ++r) {
        const CModalite& response = question.GetModalite(r);
        out.Open(QLatin1StringView("response"));
        out.Attribute(QLatin1StringView("id"), response.m_id);
        out.StringAttribute(QLatin1StringView("code"), response.m_entryCode);
        if (!response.GetVersions().isEmpty())
            out.Attribute(QLatin1StringView("versions"), VersionList(response.GetVersions()));
        if (includeTexts)
            WriteTexts(out, QLatin1StringView("caption"), response.Caption());
        out.Close(QLatin1StringView("response"));
    }
    out.Close(QLatin1StringView("question"));
}

void WriteHead(XmlOut& out, const CQuestionnaire& q) {
    out.Open(QLatin1StringView("questionnaire"));
    out.Attribute(QLatin1StringView("format"), kFormatVersion);
    out.StringAttribute(QLatin1StringView("name"), q.GetName());
    out.Attribute(QLatin1StringView("instructionsAndComments"), q.IsAllowingInstructionAndComment()
                                                                    ? QStringView(u"true")
                                                                    : QStringView(u"false"));

    out.Open(QLatin1StringView("languages"));
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& language = q.GetLanguage(i);
        out.Open(QLatin1StringView("language"));
        out.Attribute(QLatin1StringView("id"), language.m_id);
        out.StringAttribute(QLatin1StringView("shortName"), language.m_shortName);
        out.StringAttribute(QLatin1StringView("name"), language.m_name);
        if (language.m_isMain)
            out.Attribute(QLatin1StringView("main"), QStringView(u"true"));
        out.Close(QLatin1StringView("language"));
    }
    out.Close(QLatin1StringView("languages"));

    out.Open(QLatin1StringView("versions"));
    for (int i = 0; i < q.GetVersionCount(); ++i) {
        const CVersion& version = q.GetVersion(i);
        out.Open(QLatin1StringView("version"));
        out.Attribute(QLatin1StringView("id"), version.m_id);
        out.StringAttribute(QLatin1StringView("name"), version.m_name);
        out.Close(QLatin1StringView("version"));
    }
    out.Close(QLatin1StringView("versions"));
}

void WriteTail(XmlOut& out, const CQuestionnaire& q, bool includeTexts, bool includeRoutings) {
    if (includeRoutings) {
        out.Open(QLatin1StringView("routings"));
        for (int i = 0; i < q.GetNbreFiltre(); ++i) {
            const CFiltre& routing = q.GetFiltre(i);
            out.Open(QLatin1StringView("routing"));
            out.Attribute(QLatin1StringView("id"), routing.m_id);
            out.Attribute(QLatin1StringView("kind"), routing.m_kind);
            out.Attribute(QLatin1StringView("from"), routing.m_sourceQuestionId);
            out.Attribute(QLatin1StringView("to"), routing.m_targetQuestionId);
            out.StringAttribute(QLatin1StringView("condition"), routing.m_condition);
            if (includeTexts)
                WriteTexts(out, QLatin1StringView("message"), routing.Message());
            out.Close(QLatin1StringView("routing"));
        }
        out.Close(QLatin1StringView("routings"));
    }
    if (includeTexts) {
        out.Open(QLatin1StringView("systemMessages"));
        for (qint32 number = kFirstSystemMessage; number <= kLastSystemMessage; ++number) {
            for (const auto& [language, text] : q.GetCustomErrorMessages(number).Entries())
                out.TextElement(QLatin1StringView("message"), language, text,
                                QLatin1StringView("number"), number);
        }
        out.Close(QLatin1StringView("systemMessages"));
    }
    out.Close(QLatin1StringView("questionnaire"));
}

} // namespace

namespace questionnaire {

bool WriteQuestionnaireXml(const CQuestionnaire& q, bool includeTexts, bool includeRoutings,
                           const XmlTextSink& sink, util::Progress* progress) {
    XmlOut out(sink);
    WriteHead(out, q);
    out.Open(QLatin1StringView("questions"));
    util::ProgressScope scope(progress, Tr(strings::kWritingQuestionnaire), q.GetNbreQuestion());
    for (int i = 0; i < q.GetNbreQuestion() && out.Ok(); ++i) {
        if (!scope.Advance(i))
            return false;
        WriteQuestion(out, q.GetQuestion(i), includeTexts);
    }
    out.Close(QLatin1StringView("questions"));
    WriteTail(out, q, includeTexts, includeRoutings);
    return out.Finish();
}

bool WriteXmlDocument(const CQuestionnaire& q, bool includeTexts, bool includeRoutings,
                      const XmlByteSink& sink, util::Progress* progress) {
    // The file is UTF-16LE: the text's own code units on a little-endian machine.
    std::vector<char16_t> swapped;
    auto bytes = [&sink, &swapped](QStringView text) {
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
        Q_UNUSED(swapped);
        return sink(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
#else
        swapped.assign(text.utf16(), text.utf16() + text.size());
        qToLittleEndian<quint16>(swapped.data(), swapped.size(), swapped.data());
        return sink(reinterpret_cast<const char*>(swapped.data()), text.size() * 2);
#endif
    };
    const QString head = QString::fromUtf16(kXmlDeclaration) + QStringLiteral("\r\n");
    return sink("\xFF\xFE", 2) && bytes(head) &&
           WriteQuestionnaireXml(q, includeTexts, includeRoutings, bytes, progress);
}

util::Outcome WriteXmlFile(const QString& path, const CQuestionnaire& q, util::Progress* progress) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return util::Outcome::Failure(Tr(strings::kCannotCreateFile).arg(path, file.errorString()));
    // The old file's mode, not the process's rights: root would make a read-only file writable.
    file.setPermissions(util::ReplacementPermissions(util::ReplacementTarget(path)));
    const bool written = WriteXmlDocument(
        q, true, true,
        [&file](const char* data, qint64 size) { return file.write(data, size) == size; },
        progress);
    if (!written || !file.commit()) {
        if (!written && progress && file.error() == QFileDevice::NoError)
            return util::Outcome::Failure(Tr(strings::kSavingStopped).arg(path));
        return util::Outcome::Failure(Tr(strings::kCannotWriteFile).arg(path, file.errorString()));
    }
    return {};
}

} // namespace questionnaire

void CQuestionnaire::GetQuestionsAsXML(CMarkup& doc, bool includeTexts,
                                       bool includeRoutings) const {
    QString xml;
    WriteQuestionnaireXml(*this, includeTexts, includeRoutings, [&xml](QStringView piece) {
        xml.append(piece);
        return true;
    });
    doc.SetDoc(xml);
}
