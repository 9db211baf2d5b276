// The XML form of a questionnaire (format 1, see docs/formats.md).
#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"

#include <QXmlStreamReader>

namespace {

constexpr int kFormatVersion = 1;

// XML 1.0 cannot carry every UTF-16 string: control characters, U+FFFE/U+FFFF and unpaired
// surrogates have no representation. Such strings are written as hexadecimal code units.
bool IsXmlSafe(const QString& text) {
    const qsizetype n = text.size();
    const QChar* s = text.constData();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = s[i].unicode();
        if (c >= 0x20 && c < 0xD800)
            continue;
        if (c == 0x9 || c == 0xA || c == 0xD)
            continue;
        if (c >= 0xE000 && c <= 0xFFFD)
            continue;
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(s[i + 1].unicode())) {
            ++i;
            continue;
        }
        return false;
    }
    return true;
}

QString ToHex(const QString& text) {
    QString hex;
    hex.reserve(text.size() * 4);
    static const char digits[] = "0123456789ABCDEF";
    for (QChar c : text) {
        const char16_t u = c.unicode();
        hex.append(QLatin1Char(digits[(u >> 12) & 0xF]));
        hex.append(QLatin1Char(digits[(u >> 8) & 0xF]));
        hex.append(QLatin1Char(digits[(u >> 4) & 0xF]));
        hex.append(QLatin1Char(digits[u & 0xF]));
    }
    return hex;
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

// A small writer of our own: deterministic output, and carriage returns kept as character
// references so that a reader does not fold them into line feeds.
class XmlOut {
public:
    explicit XmlOut(QString& out) : m_out(out) {}

    void Open(QLatin1StringView name) {
        CloseStartTag();
        Indent();
        m_out += QLatin1Char('<');
        m_out += name;
        m_tagOpen = true;
        ++m_depth;
    }
    void Attribute(QLatin1StringView name, const QString& value) {
        m_out += QLatin1Char(' ');
        m_out += name;
        m_out += QLatin1String("=\"");
        Escape(value, true);
        m_out += QLatin1Char('"');
    }
    void Attribute(QLatin1StringView name, qint64 value) {
        Attribute(name, QString::number(value));
    }
    // A string attribute that may hold characters XML cannot carry.
    void StringAttribute(QLatin1StringView name, const QString& value) {
        if (IsXmlSafe(value)) {
            Attribute(name, value);
        } else {
            const QString hexName = QString(name) + QLatin1String("Hex");
            m_out += QLatin1Char(' ') + hexName + QLatin1String("=\"") + ToHex(value) +
                     QLatin1Char('"');
        }
    }
    // An element whose content is a text.
    void TextElement(QLatin1StringView name, qint32 language, const QString& text,
                     QLatin1StringView extraName = {}, qint64 extraValue = 0) {
        Open(name);
        if (!extraName.isEmpty())
            Attribute(extraName, extraValue);
        Attribute(QLatin1StringView("lang"), language);
        if (!IsXmlSafe(text)) {
            Attribute(QLatin1StringView("hex"), ToHex(text));
            CloseEmpty();
            return;
        }
        if (text.isEmpty()) {
            CloseEmpty();
            return;
        }
        m_out += QLatin1Char('>');
        m_tagOpen = false;
        Escape(text, false);
        --m_depth;
        m_out += QLatin1String("</") + name + QLatin1Char('>');
    }
    void Close(QLatin1StringView name) {
        --m_depth;
        if (m_tagOpen) {
            m_out += QLatin1String("/>");
            m_tagOpen = false;
            return;
        }
        Indent();
        m_out += QLatin1String("</") + name + QLatin1Char('>');
    }

private:
    void CloseEmpty() {
        m_out += QLatin1String("/>");
        m_tagOpen = false;
        --m_depth;
    }
    void CloseStartTag() {
        if (m_tagOpen) {
            m_out += QLatin1Char('>');
            m_tagOpen = false;
        }
    }
    void Indent() {
        if (!m_out.isEmpty())
            m_out += QLatin1Char('\n');
        for (int i = 0; i < m_depth; ++i)
            m_out += QLatin1String("  ");
    }
    void Escape(const QString& text, bool inAttribute) {
        for (QChar c : text) {
            switch (c.unicode()) {
            case u'&': m_out += QLatin1String("&amp;"); break;
            case u'<': m_out += QLatin1String("&lt;"); break;
            case u'>': m_out += QLatin1String("&gt;"); break;
            case u'\r': m_out += QLatin1String("&#13;"); break;
            case u'"':
                m_out += inAttribute ? QLatin1String("&quot;") : QLatin1String("\"");
                break;
            case u'\n':
                m_out += inAttribute ? QLatin1String("&#10;") : QLatin1String("\n");
                break;
            case u'\t':
                m_out += inAttribute ? QLatin1String("&#9;") : QLatin1String("\t");
                break;
            default: m_out += c;
            }
        }
    }

    QString& m_out;
    int m_depth = 0;
    bool m_tagOpen = false;
};

QLatin1StringView TypeName(QuestionType type) {
    switch (type) {
    case QuestionType::Information: return QLatin1StringView("information");
    case QuestionType::OpenText: return QLatin1StringView("text");
    case QuestionType::Numeric: return QLatin1StringView("numeric");
    case QuestionType::Date: return QLatin1StringView("date");
    case QuestionType::SingleChoice: return QLatin1StringView("single");
    case QuestionType::MultipleChoice: return QLatin1StringView("multiple");
    }
    return QLatin1StringView("single");
}

bool TypeFromName(QStringView name, QuestionType& type) {
    for (QuestionType t : {QuestionType::Information, QuestionType::OpenText, QuestionType::Numeric,
                           QuestionType::Date, QuestionType::SingleChoice,
                           QuestionType::MultipleChoice}) {
        if (name == TypeName(t)) {
            type = t;
            return true;
        }
    }
    return false;
}

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
    out.Attribute(QLatin1StringView("type"), QString(TypeName(question.GetType())));
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

} // namespace

void CQuestionnaire::GetQuestionsAsXML(CMarkup& doc, bool includeTexts,
                                       bool includeRoutings) const {
    QString xml;
    XmlOut out(xml);
    out.Open(QLatin1StringView("questionnaire"));
    out.Attribute(QLatin1StringView("format"), kFormatVersion);
    out.StringAttribute(QLatin1StringView("name"), m_name);
    out.Attribute(QLatin1StringView("instructionsAndComments"),
                  m_allowInstructionsAndComments ? QStringLiteral("true") : QStringLiteral("false"));

    out.Open(QLatin1StringView("languages"));
    for (const auto& language : m_languages) {
        out.Open(QLatin1StringView("language"));
        out.Attribute(QLatin1StringView("id"), language->m_id);
        out.StringAttribute(QLatin1StringView("shortName"), language->m_shortName);
        out.StringAttribute(QLatin1StringView("name"), language->m_name);
        if (language->m_isMain)
            out.Attribute(QLatin1StringView("main"), QStringLiteral("true"));
        out.Close(QLatin1StringView("language"));
    }
    out.Close(QLatin1StringView("languages"));

    out.Open(QLatin1StringView("versions"));
    for (const auto& version : m_versions) {
        out.Open(QLatin1StringView("version"));
        out.Attribute(QLatin1StringView("id"), version->m_id);
        out.StringAttribute(QLatin1StringView("name"), version->m_name);
        out.Close(QLatin1StringView("version"));
    }
    out.Close(QLatin1StringView("versions"));

    out.Open(QLatin1StringView("questions"));
    for (const auto& question : m_questions)
        WriteQuestion(out, *question, includeTexts);
    out.Close(QLatin1StringView("questions"));

    if (includeRoutings) {
        out.Open(QLatin1StringView("routings"));
        for (const auto& routing : m_filtres) {
            out.Open(QLatin1StringView("routing"));
            out.Attribute(QLatin1StringView("id"), routing->m_id);
            out.Attribute(QLatin1StringView("kind"), routing->m_kind);
            out.Attribute(QLatin1StringView("from"), routing->m_sourceQuestionId);
            out.Attribute(QLatin1StringView("to"), routing->m_targetQuestionId);
            out.StringAttribute(QLatin1StringView("condition"), routing->m_condition);
            if (includeTexts)
                WriteTexts(out, QLatin1StringView("message"), routing->Message());
            out.Close(QLatin1StringView("routing"));
        }
        out.Close(QLatin1StringView("routings"));
    }

    if (includeTexts) {
        out.Open(QLatin1StringView("systemMessages"));
        for (qint32 number = questionnaire::kFirstSystemMessage;
             number <= questionnaire::kLastSystemMessage; ++number) {
            for (const auto& [language, text] : GetCustomErrorMessages(number).Entries())
                out.TextElement(QLatin1StringView("message"), language, text,
                                QLatin1StringView("number"), number);
        }
        out.Close(QLatin1StringView("systemMessages"));
    }
    out.Close(QLatin1StringView("questionnaire"));
    xml += QLatin1Char('\n');
    doc.SetDoc(xml);
}

namespace {

// Reads format 1. Unknown elements and attributes are skipped, so that a later format that only
// adds things stays readable; anything malformed stops the read with a message.
class XmlIn {
public:
    XmlIn(const QString& xml, CQuestionnaire& q) : m_reader(xml), m_q(q) {}

    bool Read() {
        if (!ReadRoot())
            return false;
        while (m_reader.readNextStartElement()) {
            const QStringView name = m_reader.name();
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
                m_reader.skipCurrentElement();
            if (!ok)
                return false;
        }
        return !m_reader.hasError() || Fail(m_reader.errorString());
    }

    const QString& Error() const { return m_error; }

private:
    bool Fail(const QString& message) {
        if (m_error.isEmpty())
            m_error = QStringLiteral("XML line %1, column %2: %3")
                          .arg(m_reader.lineNumber())
                          .arg(m_reader.columnNumber())
                          .arg(message);
        return false;
    }

    bool ReadRoot() {
        while (!m_reader.atEnd()) {
            const QXmlStreamReader::TokenType token = m_reader.readNext();
            // Entity declarations are the door to entity bombs and external fetches; our files
            // never carry one.
            if (token == QXmlStreamReader::DTD)
                return Fail(QStringLiteral("document type declarations are not accepted"));
            if (token == QXmlStreamReader::StartElement)
                break;
        }
        if (m_reader.hasError())
            return Fail(m_reader.errorString());
        if (m_reader.tokenType() != QXmlStreamReader::StartElement ||
            m_reader.name() != u"questionnaire")
            return Fail(QStringLiteral("this is not a questionnaire (no <questionnaire> element)"));
        qint32 format = 0;
        if (!Int(QLatin1StringView("format"), format))
            return false;
        if (format > kFormatVersion)
            return Fail(QStringLiteral("format %1 was written by a newer version of the program")
                            .arg(format));
        QString name;
        if (!String(QLatin1StringView("name"), name, false))
            return false;
        m_q.SetName(name);
        const QStringView notes = m_reader.attributes().value(QLatin1StringView("instructionsAndComments"));
        m_q.SetAllowingInstructionAndComment(notes.isEmpty() || notes == u"true" || notes == u"1");
        return true;
    }

    template <class F> bool ReadList(QStringView item, F readItem) {
        while (m_reader.readNextStartElement()) {
            if (m_reader.name() != item) {
                m_reader.skipCurrentElement();
                continue;
            }
            if (!readItem())
                return false;
        }
        return !m_reader.hasError() || Fail(m_reader.errorString());
    }

    bool Int(QLatin1StringView name, qint32& value, bool required = true) {
        const QStringView text = m_reader.attributes().value(name);
        if (text.isEmpty()) {
            if (required)
                return Fail(QStringLiteral("attribute '%1' is missing").arg(name));
            return true;
        }
        bool ok = false;
        value = text.toInt(&ok);
        if (!ok)
            return Fail(QStringLiteral("attribute '%1' is not a whole number").arg(name));
        return true;
    }

    bool String(QLatin1StringView name, QString& value, bool required) {
        const QXmlStreamAttributes attributes = m_reader.attributes();
        if (attributes.hasAttribute(name)) {
            value = attributes.value(name).toString();
            return true;
        }
        const QString hexName = QString(name) + QLatin1String("Hex");
        if (attributes.hasAttribute(hexName)) {
            if (!FromHex(attributes.value(hexName), value))
                return Fail(QStringLiteral("attribute '%1' is not hexadecimal").arg(hexName));
            return true;
        }
        if (required)
            return Fail(QStringLiteral("attribute '%1' is missing").arg(name));
        value.clear();
        return true;
    }

    bool Versions(QList<qint32>& versions) {
        versions.clear();
        const QStringView text = m_reader.attributes().value(QLatin1StringView("versions"));
        for (QStringView item : text.split(u' ', Qt::SkipEmptyParts)) {
            bool ok = false;
            versions.append(item.toInt(&ok));
            if (!ok)
                return Fail(QStringLiteral("'versions' holds something other than ids"));
        }
        return true;
    }

    bool Bool(QLatin1StringView name) const {
        const QStringView text = m_reader.attributes().value(name);
        return text == u"true" || text == u"1";
    }

    // A text element: its language and its content (or its hexadecimal form).
    bool Text(qint32& language, QString& text) {
        if (!Int(QLatin1StringView("lang"), language))
            return false;
        const QXmlStreamAttributes attributes = m_reader.attributes();
        if (attributes.hasAttribute(QLatin1StringView("hex"))) {
            if (!FromHex(attributes.value(QLatin1StringView("hex")), text))
                return Fail(QStringLiteral("attribute 'hex' is not hexadecimal"));
            m_reader.skipCurrentElement();
            return true;
        }
        text = m_reader.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
        return !m_reader.hasError() || Fail(m_reader.errorString());
    }

    bool ReadLanguage() {
        auto language = std::make_unique<CLanguage>();
        if (!Int(QLatin1StringView("id"), language->m_id) || !String(QLatin1StringView("shortName"), language->m_shortName, false) ||
            !String(QLatin1StringView("name"), language->m_name, false))
            return false;
        language->m_isMain = Bool(QLatin1StringView("main"));
        const qint32 id = language->m_id;
        if (m_q.AddLanguage(std::move(language)) < 0)
            return Fail(QStringLiteral("language %1 is listed twice").arg(id));
        m_reader.skipCurrentElement();
        return true;
    }

    bool ReadVersion() {
        auto version = std::make_unique<CVersion>();
        if (!Int(QLatin1StringView("id"), version->m_id) || !String(QLatin1StringView("name"), version->m_name, false))
            return false;
        const qint32 id = version->m_id;
        if (m_q.AddVersion(std::move(version)) < 0)
            return Fail(QStringLiteral("version %1 is listed twice").arg(id));
        m_reader.skipCurrentElement();
        return true;
    }

    bool ReadQuestion() {
        auto question = std::make_unique<CQuestion>();
        CQuestion& qn = *question;
        QuestionType type = QuestionType::SingleChoice;
        const QStringView typeName = m_reader.attributes().value(QLatin1StringView("type"));
        if (!TypeFromName(typeName, type))
            return Fail(QStringLiteral("unknown question type '%1'").arg(typeName));
        qn.SetType(type);
        QList<qint32> versions;
        if (!Int(QLatin1StringView("id"), qn.m_id) || !String(QLatin1StringView("shortcut"), qn.m_shortcut, false) ||
            !Int(QLatin1StringView("visible"), qn.m_visible, false) || !Int(QLatin1StringView("onScreen"), qn.m_shownOnScreen, false) ||
            !Int(QLatin1StringView("onPaper"), qn.m_shownOnPaper, false) || !Versions(versions))
            return false;
        qn.SetVersions(versions);
        qn.m_hasParent = m_reader.attributes().hasAttribute(QLatin1StringView("parent"));
        if (qn.m_hasParent && !Int(QLatin1StringView("parent"), qn.m_parentId))
            return false;
        while (m_reader.readNextStartElement()) {
            const QStringView name = m_reader.name();
            if (name == u"response") {
                if (!ReadResponse(qn))
                    return false;
                continue;
            }
            qint32 language = 0;
            QString text;
            if (name == u"long" || name == u"short" || name == u"instructions" ||
                name == u"comments") {
                const QString element = name.toString();
                if (!Text(language, text))
                    return false;
                if (element == u"long")
                    qn.SetLocalisedLongCaption(language, text);
                else if (element == u"short")
                    qn.SetLocalisedShortCaption(language, text);
                else if (element == u"instructions")
                    qn.SetLocalisedInstructions(language, text);
                else
                    qn.SetLocalisedComments(language, text);
                continue;
            }
            m_reader.skipCurrentElement();
        }
        if (m_reader.hasError())
            return Fail(m_reader.errorString());
        const qint32 id = qn.m_id;
        if (m_q.AddQuestion(std::move(question)) < 0)
            return Fail(QStringLiteral("question id %1 is used twice").arg(id));
        return true;
    }

    bool ReadResponse(CQuestion& question) {
        auto response = std::make_unique<CModalite>();
        QList<qint32> versions;
        if (!Int(QLatin1StringView("id"), response->m_id) || !String(QLatin1StringView("code"), response->m_entryCode, false) ||
            !Versions(versions))
            return false;
        response->SetVersions(versions);
        while (m_reader.readNextStartElement()) {
            if (m_reader.name() != u"caption") {
                m_reader.skipCurrentElement();
                continue;
            }
            qint32 language = 0;
            QString text;
            if (!Text(language, text))
                return false;
            response->SetLocalisedLongCaption(language, text);
        }
        if (m_reader.hasError())
            return Fail(m_reader.errorString());
        const qint32 id = response->m_id;
        if (question.AddModalite(std::move(response)) < 0)
            return Fail(QStringLiteral("response id %1 is used twice in question %2")
                            .arg(id)
                            .arg(question.m_id));
        return true;
    }

    bool ReadRouting() {
        auto routing = std::make_unique<CFiltre>();
        if (!Int(QLatin1StringView("id"), routing->m_id) || !Int(QLatin1StringView("kind"), routing->m_kind) ||
            !Int(QLatin1StringView("from"), routing->m_sourceQuestionId, false) ||
            !Int(QLatin1StringView("to"), routing->m_targetQuestionId, false) ||
            !String(QLatin1StringView("condition"), routing->m_condition, false))
            return false;
        while (m_reader.readNextStartElement()) {
            if (m_reader.name() != u"message") {
                m_reader.skipCurrentElement();
                continue;
            }
            qint32 language = 0;
            QString text;
            if (!Text(language, text))
                return false;
            routing->SetLocalisedMessage(language, text);
        }
        if (m_reader.hasError())
            return Fail(m_reader.errorString());
        const qint32 id = routing->m_id;
        if (m_q.AddFiltre(std::move(routing)) < 0)
            return Fail(QStringLiteral("routing id %1 is used twice").arg(id));
        return true;
    }

    bool ReadSystemMessage() {
        qint32 number = 0;
        qint32 language = 0;
        QString text;
        if (!Int(QLatin1StringView("number"), number))
            return false;
        if (number < questionnaire::kFirstSystemMessage ||
            number > questionnaire::kLastSystemMessage)
            return Fail(QStringLiteral("system message %1 does not exist (2 to 43)").arg(number));
        if (!Text(language, text))
            return false;
        m_q.SetCustomErrorMessage(language, number, text);
        return true;
    }

    QXmlStreamReader m_reader;
    CQuestionnaire& m_q;
    QString m_error;
};

} // namespace

bool CQuestionnaire::FromXML(CMarkup& doc) {
    Clear();
    XmlIn in(doc.GetDoc(), *this);
    if (in.Read())
        return true;
    const QString error = in.Error();
    Clear();
    m_lastError = error;
    return false;
}
