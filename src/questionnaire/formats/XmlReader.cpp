// Reads the XML form of a questionnaire (format 1, see docs/formats.md).
#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlScanner.h"
#include "questionnaire/formats/XmlText.h"
#include "util/Progress.h"
#include "util/TextFile.h"

#include <QFile>

#include <limits>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

using namespace questionnaire;
using namespace questionnaire::xml;

namespace {

// Reads format 1. Unknown elements and attributes are skipped, so that a later format that only
// adds things stays readable; anything malformed stops the read with a message.
class XmlIn {
public:
    XmlIn(XmlScanner& scanner, CQuestionnaire& q, util::Progress* progress, qint64 total)
        : m_in(scanner), m_q(q), m_progress(progress, Tr(strings::kReadingQuestionnaire), total) {}

    bool Read() {
        if (!ReadRoot())
            return false;
        while (m_in.NextChild()) {
            const QStringView name = m_in.Name();
            bool ok = true;
            if (name == u"languages")
                ok = ReadList(u"language", [this] { return ReadLanguage(); });
            else if (name == u"versions")
                ok = ReadList(u"version", [this] { return ReadVersion(); });
            else if (name == u"questions")
                ok = ReadList(u"question", [this] { return ReadQuestion(); });
            else if (name == u"routings")
                ok = ReadList(u"routing", [this] { return ReadRouting(); });
            else if (name == u"systemMessages")
                ok = ReadList(u"message", [this] { return ReadSystemMessage(); });
            else
                ok = m_in.SkipElement();
            if (!ok)
                return false;
        }
        return m_in.Finish();
    }

    QString Error() const { return m_stopped ? Tr(strings::kXmlReadingStopped) : m_in.Error(); }

private:
    bool Fail(const QString& message) { return m_in.Fail(message); }

    bool ReadRoot() {
        const XmlScanner::Token token = m_in.Next();
        if (token == XmlScanner::Token::Invalid)
            return false;
        if (token != XmlScanner::Token::StartElement || m_in.Name() != u"questionnaire")
            return Fail(Tr(strings::kNotAQuestionnaire));
        qint32 format = 0;
        if (!Int(u"format", format))
            return false;
        if (format > kFormatVersion)
            return Fail(Tr(strings::kFormatWrittenNewer).arg(format));
        QString name;
        if (!String(u"name", name, false))
            return false;
        m_q.SetName(name);
        QStringView notes;
        if (!m_in.Attribute(u"instructionsAndComments", notes, m_scratch))
            notes = {};
        m_q.SetAllowingInstructionAndComment(notes.isEmpty() || notes == u"true" || notes == u"1");
        return !m_in.Failed();
    }

    template <class F> bool ReadList(QStringView item, F readItem) {
        while (m_in.NextChild()) {
            if (m_in.Name() != item) {
                if (!m_in.SkipElement())
                    return false;
                continue;
            }
            if (!readItem())
                return false;
        }
        return !m_in.Failed();
    }

    // A whole number as the library writes them: an optional sign and decimal digits, with
    // spaces around allowed.
    static bool ParseInt(QStringView text, qint32& value) {
        text = text.trimmed();
        if (text.isEmpty())
            return false;
        const bool negative = text.front() == u'-';
        if (negative || text.front() == u'+')
            text = text.mid(1);
        if (text.isEmpty() || text.size() > 10)
            return false;
        qint64 v = 0;
        for (QChar c : text) {
            if (c < u'0' || c > u'9')
                return false;
            v = v * 10 + (c.unicode() - u'0');
        }
        v = negative ? -v : v;
        if (v < std::numeric_limits<qint32>::min() || v > std::numeric_limits<qint32>::max())
            return false;
        value = qint32(v);
        return true;
    }

    bool Int(QStringView name, qint32& value, bool required = true) {
        QStringView text;
        if (!m_in.Attribute(name, text, m_scratch) || text.isEmpty()) {
            if (m_in.Failed())
                return false;
            if (required)
                return Fail(Tr(strings::kAttributeMissing).arg(name));
            return true;
        }
        if (!ParseInt(text, value))
            return Fail(Tr(strings::kAttributeWholeNumber).arg(name));
        return true;
    }

    bool String(QStringView name, QString& value, bool required) {
        QStringView text;
        if (m_in.Attribute(name, text, m_scratch)) {
            value = text.toString();
            return true;
        }
        const QString hexName = name.toString() + QLatin1String("Hex");
        if (m_in.Attribute(hexName, text, m_scratch)) {
            if (!FromHex(text, value))
                return Fail(Tr(strings::kAttributeHexadecimal).arg(hexName));
            return true;
        }
        if (m_in.Failed())
            return false;
        if (required)
            return Fail(Tr(strings::kAttributeMissing).arg(name));
        value.clear();
        return true;
    }

    bool Versions(QList<qint32>& versions) {
        versions.clear();
        QStringView text;
        if (!m_in.Attribute(u"versions", text, m_scratch))
            return !m_in.Failed();
        for (QStringView item : text.split(u' ', Qt::SkipEmptyParts)) {
            qint32 id = 0;
            if (!ParseInt(item, id))
                return Fail(Tr(strings::kVersionsHoldsSomethingOtherThan));
            versions.append(id);
        }
        return true;
    }

    bool Bool(QStringView name) {
        QStringView text;
        if (!m_in.Attribute(name, text, m_scratch))
            return false;
        return text == u"true" || text == u"1";
    }

    // A text element: its language and its content (or its hexadecimal form).
    bool Text(qint32& language, QString& text) {
        if (!Int(u"lang", language))
            return false;
        QStringView hex;
        if (m_in.Attribute(u"hex", hex, m_scratch)) {
            if (!FromHex(hex, text))
                return Fail(Tr(strings::kAttributeHexHexadecimal));
            return m_in.SkipElement();
        }
        return !m_in.Failed() && m_in.ReadText(text);
    }

    bool ReadLanguage() {
        auto language = std::make_unique<CLanguage>();
        if (!Int(u"id", language->m_id) || !String(u"shortName", language->m_shortName, false) ||
            !String(u"name", language->m_name, false))
            return false;
        language->m_isMain = Bool(u"main");
        const qint32 id = language->m_id;
        if (m_q.AddLanguage(std::move(language)) < 0)
            return Fail(Tr(strings::kLanguageListedTwice).arg(id));
        return m_in.SkipElement();
    }

    bool ReadVersion() {
        auto version = std::make_unique<CVersion>();
        if (!Int(u"id", version->m_id) || !String(u"name", version->m_name, false))
            return false;
        const qint32 id = version->m_id;
        if (m_q.AddVersion(std::move(version)) < 0)
            return Fail(Tr(strings::kVersionListedTwice).arg(id));
        return m_in.SkipElement();
    }

    using QuestionSetter = void (CQuestion::*)(qint32, const QString&);

    // The setter of a question's text element, null for another element.
    static QuestionSetter QuestionTextOf(QStringView name) {
        static const struct {
            const char16_t* name;
            QuestionSetter set;
        } kTexts[] = {{u"long", &CQuestion::SetLocalisedLongCaption},
                      {u"short", &CQuestion::SetLocalisedShortCaption},
                      {u"instructions", &CQuestion::SetLocalisedInstructions},
                      {u"comments", &CQuestion::SetLocalisedComments}};
        for (const auto& text : kTexts)
            if (name == QStringView(text.name))
                return text.set;
        return nullptr;
    }

    bool ReadQuestion() {
        if (!m_progress.Advance(m_in.Offset())) {
            m_stopped = true;
            return Fail(QStringLiteral("stopped"));
        }
        auto question = std::make_unique<CQuestion>();
        CQuestion& qn = *question;
        QuestionType type = QuestionType::SingleChoice;
        QStringView typeName;
        if (!m_in.Attribute(u"type", typeName, m_scratch))
            typeName = {};
        if (!TypeFromName(typeName, type))
            return Fail(Tr(strings::kUnknownQuestionType).arg(typeName));
        qn.SetType(type);
        QList<qint32> versions;
        if (!Int(u"id", qn.m_id) || !String(u"shortcut", qn.m_shortcut, false) ||
            !Int(u"visible", qn.m_visible, false) || !Int(u"onScreen", qn.m_shownOnScreen, false) ||
            !Int(u"onPaper", qn.m_shownOnPaper, false) || !Versions(versions))
            return false;
        if (qn.m_id < 0)
            return Fail(Tr(strings::kQuestionIdNegative).arg(qn.m_id));
        qn.SetVersions(versions);
        qn.m_hasParent = m_in.HasAttribute(u"parent");
        if (qn.m_hasParent && !Int(u"parent", qn.m_parentId))
            return false;
        while (m_in.NextChild()) {
            const QStringView name = m_in.Name();
            if (name == u"response") {
                if (!ReadResponse(qn))
                    return false;
                continue;
            }
            const QuestionSetter set = QuestionTextOf(name);
            if (!set) {
                if (!m_in.SkipElement())
                    return false;
                continue;
            }
            qint32 language = 0;
            QString text;
            if (!Text(language, text))
                return false;
            (qn.*set)(language, text);
        }
        if (m_in.Failed())
            return false;
        const qint32 id = qn.m_id;
        if (m_q.AddQuestion(std::move(question)) < 0)
            return Fail(Tr(strings::kQuestionIdUsedTwice).arg(id));
        return true;
    }

    // The text elements named `element` of the current element, each handed to `store`; other
    // elements are skipped.
    template <class F> bool ReadTexts(QStringView element, F store) {
        while (m_in.NextChild()) {
            if (m_in.Name() != element) {
                if (!m_in.SkipElement())
                    return false;
                continue;
            }
            qint32 language = 0;
            QString text;
            if (!Text(language, text))
                return false;
            store(language, text);
        }
        return !m_in.Failed();
    }

    bool ReadResponse(CQuestion& question) {
        auto response = std::make_unique<CModalite>();
        QList<qint32> versions;
        if (!Int(u"id", response->m_id) || !String(u"code", response->m_entryCode, false) ||
            !Versions(versions))
            return false;
        if (response->m_id < 0)
            return Fail(Tr(strings::kResponseIdNegative).arg(response->m_id).arg(question.m_id));
        response->SetVersions(versions);
        if (!ReadTexts(u"caption", [&](qint32 language, const QString& text) {
                response->SetLocalisedLongCaption(language, text);
            }))
            return false;
        const qint32 id = response->m_id;
        if (question.AddModalite(std::move(response)) < 0)
            return Fail(Tr(strings::kResponseIdUsedTwiceQuestion).arg(id).arg(question.m_id));
        return true;
    }

    bool ReadRouting() {
        auto routing = std::make_unique<CFiltre>();
        if (!Int(u"id", routing->m_id) || !Int(u"kind", routing->m_kind) ||
            !Int(u"from", routing->m_sourceQuestionId, false) ||
            !Int(u"to", routing->m_targetQuestionId, false) ||
            !String(u"condition", routing->m_condition, false))
            return false;
        if (!ReadTexts(u"message", [&](qint32 language, const QString& text) {
                routing->SetLocalisedMessage(language, text);
            }))
            return false;
        const qint32 id = routing->m_id;
        if (m_q.AddFiltre(std::move(routing)) < 0)
            return Fail(Tr(strings::kRoutingIdUsedTwice).arg(id));
        return true;
    }

    bool ReadSystemMessage() {
        qint32 number = 0;
        qint32 language = 0;
        QString text;
        if (!Int(u"number", number))
            return false;
        if (number < kFirstSystemMessage || number > kLastSystemMessage)
            return Fail(Tr(strings::kSystemMessageDoesExist).arg(number));
        if (!Text(language, text))
            return false;
        m_q.SetCustomErrorMessage(language, number, text);
        return true;
    }

    XmlScanner& m_in;
    CQuestionnaire& m_q;
    util::ProgressScope m_progress;
    QString m_scratch;
    bool m_stopped = false;
};

} // namespace

namespace questionnaire {

bool ReadXmlDocument(XmlScanner& scanner, CQuestionnaire& q, util::Progress* progress,
                     qint64 total) {
    q.Clear();
    XmlIn in(scanner, q, progress, total);
    if (in.Read())
        return true;
    const QString error = in.Error();
    q.Clear();
    q.SetLastError(error);
    return false;
}

util::Outcome ReadXmlFile(const QString& path, CQuestionnaire& q, util::Progress* progress) {
    auto fail = [&q](const QString& reason) {
        q.SetLastError(reason);
        return util::Outcome::Failure(reason);
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(Tr(strings::kCannotOpenFile).arg(path, file.errorString()));
    const QByteArray head = file.read(2);
    const bool marked = head.size() == 2 && uchar(head[0]) == 0xFF && uchar(head[1]) == 0xFE;
    bool read = false;
    if (marked) {
        // UTF-16 files, the ones this program writes, are read piece by piece.
        file.close();
        util::TextFileReader reader;
        if (!reader.Open(path))
            return fail(Tr(strings::kCannotOpenFileNoReason).arg(path));
        XmlScanner scanner(reader);
        read = ReadXmlDocument(scanner, q, progress, reader.CharactersLeft());
    } else {
        const QByteArray bytes = head + file.readAll();
        if (file.error() != QFileDevice::NoError)
            return fail(Tr(strings::kCannotReadFile).arg(path, file.errorString()));
        const QString text = util::DecodeText(bytes);
        XmlScanner scanner(text);
        read = ReadXmlDocument(scanner, q, progress, text.size());
    }
    if (read)
        return {};
    return util::Outcome::Failure(q.GetLastError());
}

} // namespace questionnaire

bool CQuestionnaire::FromXML(CMarkup& doc) {
    XmlScanner scanner(doc.GetDoc());
    return ReadXmlDocument(scanner, *this, nullptr, doc.GetDoc().size());
}
