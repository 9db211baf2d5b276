#include "exchange/ExportFile.h"

#include "questionnaire/CaptionEscaping.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"
#include "util/CharScan.h"
#include "util/FileSystem.h"
#include "util/MessageSink.h"

#include <QFileInfo>
#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace exchange {

using namespace questionnaire;

namespace {

constexpr qsizetype kChunkChars = 1 << 17; // 256 KB: written out while still in the processor's cache
constexpr int kWarningKeys = 10;

const char16_t* Utf16(const QString& text) {
    return reinterpret_cast<const char16_t*>(text.constData());
}

// The file's text gathers in a fixed buffer written out whenever it fills: the export's memory
// stays flat however large the questionnaire.
class OutBuffer {
public:
    explicit OutBuffer(util::ReplacingFile& file) : m_file(file), m_data(kChunkChars) {}

    void Append(const char16_t* s, qsizetype n) {
        if (n > kChunkChars - m_used) {
            Flush();
            if (n > kChunkChars) {
                Write(s, n);
                return;
            }
        }
        std::memcpy(m_data.data() + m_used, s, size_t(n) * 2);
        m_used += n;
    }
    void Append(const QString& text) { Append(Utf16(text), text.size()); }
    void Append(char16_t c) {
        if (m_used == kChunkChars)
            Flush();
        m_data[m_used++] = c;
    }
    bool Ok() const { return m_ok; }
    // False when any write failed.
    bool Finish() {
        Flush();
        return m_ok;
    }

private:
    void Flush() {
        Write(m_data.data(), m_used);
        m_used = 0;
    }
    void Write(const char16_t* s, qsizetype n) {
        if (!m_ok || n == 0)
            return;
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
        std::vector<char16_t> le(s, s + n);
        qToLittleEndian<quint16>(le.data(), n, le.data());
        s = le.data();
#endif
        m_ok = m_file.Write(reinterpret_cast<const char*>(s), n * 2);
    }

    util::ReplacingFile& m_file;
    std::vector<char16_t> m_data;
    qsizetype m_used = 0;
    bool m_ok = true;
};

bool NeedsQuotes(const QString& cell) {
    const char16_t* end = Utf16(cell) + cell.size();
    return util::FindFirstOf<u'"', u'\t', u'\r', u'\n'>(Utf16(cell), end) != end;
}

// The caption row resolved once: where its texts are, and what goes in the extra columns.
struct ResolvedRow {
    bool keep = false;
    const CLocalisedText* texts = nullptr; // null: empty in every language, or system message
    bool systemMessage = false;
    const CQuestion* question = nullptr;
    const CModalite* response = nullptr;
};

class Exporter {
public:
    Exporter(const CQuestionnaire& q, const ExportOptions& options)
        : m_q(q), m_options(options), m_columns(options.languages) {
        if (options.excludeNonVisible)
            m_visibility = std::make_unique<VisibilityFilter>(q);
    }

    ResolvedRow Resolve(qint32 questionId, qint32 responseId) const;
    // Writes the line of one row to `out`; false when a filter drops it.
    bool WriteLine(qint32 questionId, qint32 responseId, OutBuffer& out);

    ExportReport report;

private:
    void WriteCaptionCell(OutBuffer& out, const QString& text, bool sourceColumn,
                          qint32 questionId, qint32 responseId);
    void NoteUnsafe(const QString& text, bool sourceColumn, qint32 questionId, qint32 responseId);

    const CQuestionnaire& m_q;
    const ExportOptions& m_options;
    const LanguageColumns m_columns;
    std::unique_ptr<VisibilityFilter> m_visibility;
    QSet<QString> m_seenReferences;
    QString m_cell; // the extra columns of a row
    const QString m_empty;
    std::vector<const QString*> m_texts; // the row's caption in each exported language
    QList<QString> m_messageTexts;       // a system message's texts, which are computed
};

ResolvedRow Exporter::Resolve(qint32 questionId, qint32 responseId) const {
    ResolvedRow row;
    const CaptionKindFilter& kinds = m_options.kinds;
    if (questionId == kSystemMessageMarker) {
        row.keep = !kinds.excludeSystemMessages;
        row.systemMessage = true;
        return row;
    }
    int index = 0;
    if (questionId == kRoutingMarker) {
        row.keep = !kinds.excludeRoutings;
        if (m_q.FindRoutingById(responseId, index))
            row.texts = &m_q.GetFiltre(index).Message();
        return row;
    }
    if (!m_q.FindQuestionById(questionId, index))
        return row;
    const CQuestion& question = m_q.GetQuestion(index);
    if ((m_visibility && !m_visibility->IsKept(index)) ||
        !QuestionPassesVersions(question, m_options.versions) ||
        kinds.Excludes(questionId, responseId))
        return row;
    row.question = &question;
    switch (responseId) {
    case kLongCaption: row.texts = &question.LongCaption(); break;
    case kShortCaption: row.texts = &question.ShortCaption(); break;
    case kInstructions: row.texts = &question.Instructions(); break;
    case kComments: row.texts = &question.Comments(); break;
    default:
        if (!question.FindModaliteById(responseId, row.response) ||
            !ResponsePassesVersions(question, *row.response, m_options.versions))
            return row;
        row.texts = &row.response->Caption();
    }
    row.keep = true;
    return row;
}

void Exporter::NoteUnsafe(const QString& text, bool sourceColumn, qint32 questionId,
                          qint32 responseId) {
    if (CaptionSurvivesRoundTrip(text, sourceColumn))
        return;
    ++report.unsafeCaptions;
    const QString key = QStringLiteral("%1/%2").arg(questionId).arg(responseId);
    if (report.unsafeKeys.size() < kWarningKeys && !report.unsafeKeys.contains(key))
        report.unsafeKeys.append(key);
}

void Exporter::WriteCaptionCell(OutBuffer& out, const QString& text, bool sourceColumn,
                                qint32 questionId, qint32 responseId) {
    const char16_t* s = Utf16(text);
    const char16_t* const end = s + text.size();
    const char16_t* hit = util::FindControlOr<u'\\', u'"'>(s, end);
    // Nearly every caption holds nothing to escape, quote or warn about: it goes out as it is.
    if (hit == end) {
        out.Append(s, text.size());
        if (text.size() > kSpreadsheetCellLimit)
            NoteUnsafe(text, sourceColumn, questionId, responseId);
        return;
    }
    // Escaping leaves no tab or line break, so only a double quote calls for quoting.
    const bool quoted = util::FindFirstOf<u'"'>(hit, end) != end;
    bool suspect = text.size() > kSpreadsheetCellLimit / 2 || *s == u'"';
    if (quoted)
        out.Append(u'"');
    while (hit != end) {
        out.Append(s, hit - s);
        switch (*hit) {
        case u'\\': out.Append(u'\\'); out.Append(u'\\'); suspect = true; break;
        case u'\n': out.Append(u'\\'); out.Append(u'n'); break;
        case u'\r': out.Append(u'\\'); out.Append(u'r'); break;
        case u'\t': out.Append(u'\\'); out.Append(u't'); break;
        case u'"': out.Append(u'"'); out.Append(u'"'); break;
        default: out.Append(*hit); suspect = true; break; // zero, or another control character
        }
        s = hit + 1;
        hit = util::FindControlOr<u'\\', u'"'>(s, end);
    }
    out.Append(s, end - s);
    if (quoted)
        out.Append(u'"');
    if (suspect)
        NoteUnsafe(text, sourceColumn, questionId, responseId);
}

bool Exporter::WriteLine(qint32 questionId, qint32 responseId, OutBuffer& out) {
    const ResolvedRow row = Resolve(questionId, responseId);
    if (!row.keep)
        return false;
    const qsizetype count = m_options.languages.size();
    if (row.systemMessage) {
        m_messageTexts.resize(count);
        m_texts.resize(count);
        for (qsizetype i = 0; i < count; ++i) {
            m_messageTexts[i] = m_q.GetErrorMessage(m_options.languages[i], responseId);
            m_texts[i] = &m_messageTexts[i];
        }
    } else {
        m_columns.Read(row.texts, m_texts);
    }
    const bool anyEmpty =
        std::any_of(m_texts.begin(), m_texts.end(), [](const QString* t) { return t->isEmpty(); });
    // A row is translated when no exported language is empty, the reference included.
    if (m_options.excludeTranslated && !anyEmpty)
        return false;
    if (m_options.excludeDuplicates) {
        const QString& reference = count > 0 ? *m_texts.front() : m_empty;
        if (m_seenReferences.contains(reference))
            return false;
        m_seenReferences.insert(reference);
    }
    out.Append(QString::number(questionId));
    out.Append(u'\t');
    out.Append(QString::number(responseId));
    for (qsizetype i = 0; i < count; ++i) {
        out.Append(u'\t');
        WriteCaptionCell(out, *m_texts[i], i == 0, questionId, responseId);
    }
    if (m_options.showShortcuts) {
        m_cell.clear();
        m_cell.append(QLatin1Char('\t'));
        AppendCell(m_cell, row.question ? row.question->m_shortcut : m_empty);
        m_cell.append(QLatin1Char('\t'));
        AppendCell(m_cell, row.response ? row.response->m_entryCode : m_empty);
        out.Append(m_cell);
    }
    out.Append(u'\r');
    out.Append(u'\n');
    ++report.rows;
    return true;
}


QString HeaderLine(const CQuestionnaire& q, const ExportOptions& options) {
    QString line;
    const QStringList titles = ExportHeaderTitles(q, options);
    for (qsizetype i = 0; i < titles.size(); ++i) {
        if (i > 0)
            line.append(QLatin1Char('\t'));
        AppendCell(line, titles[i]);
    }
    return line + QStringLiteral("\r\n");
}

} // namespace

void AppendCell(QString& out, const QString& cell) {
    if (!NeedsQuotes(cell)) {
        out.append(cell);
        return;
    }
    out.append(QLatin1Char('"'));
    for (QChar c : cell) {
        if (c == QLatin1Char('"'))
            out.append(QLatin1Char('"'));
        out.append(c);
    }
    out.append(QLatin1Char('"'));
}

QStringList ExportHeaderTitles(const CQuestionnaire& q, const ExportOptions& options) {
    QStringList given;
    CStaticTools::ReadStringSeparatorString(options.headers, QLatin1Char(','), given);
    QStringList titles = {QStringLiteral("QuestionId"), QStringLiteral("ResponseId")};
    for (qint32 lcid : options.languages) {
        QString name;
        for (int i = 0; i < q.GetLanguageCount(); ++i)
            if (q.GetLanguage(i).m_id == lcid)
                name = q.GetLanguage(i).m_shortName;
        if (name.isEmpty())
            name = CLanguage(quint32(lcid)).m_shortName;
        titles.append(QStringLiteral("%1(%2)").arg(lcid).arg(name));
    }
    if (options.showShortcuts)
        titles << QStringLiteral("Shortcut") << QStringLiteral("Entrycode");
    // Titles given on the command line replace the defaults one by one; extra ones are ignored.
    for (qsizetype i = 0; i < titles.size() && i < given.size(); ++i)
        if (!given[i].isEmpty())
            titles[i] = given[i];
    return titles;
}

bool ExportStringsForTranslation(const QString& path, const CQuestionnaire& q,
                                 const ExportOptions& options, const CaptionList& captions,
                                 util::MessageSink& messages, ExportReport* report) {
    util::ReplacingFile file(path);
    if (!file.Open()) {
        messages.Show(QString::fromLatin1(strings::kCannotCreateExportFile));
        return false;
    }
    Exporter exporter(q, options);
    OutBuffer out(file);
    out.Append(QString(QChar(0xFEFF)) + HeaderLine(q, options));
    for (qsizetype k = 0; k < captions.size() && out.Ok(); ++k)
        exporter.WriteLine(captions.questionIds[k], captions.responseIds[k], out);
    const bool ok = out.Finish() && file.Commit();
    ExportReport& result = exporter.report;
    result.written = ok;
    result.bytes = ok ? QFileInfo(path).size() : 0;
    // Shown in batch runs too: a script must learn why the old file is still there.
    if (!ok)
        messages.Show(QString::fromLatin1(strings::kCannotWriteFile).arg(path, file.ErrorString()));
    if (ok && result.unsafeCaptions > 0)
        messages.Show(QString::fromLatin1(strings::kExportWarning)
                          .arg(result.unsafeCaptions)
                          .arg(result.unsafeKeys.join(QStringLiteral(", "))));
    if (report)
        *report = result;
    // Deliberately reports failure even after a complete file: callers judge by the file.
    return false;
}

} // namespace exchange
