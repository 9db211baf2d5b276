#include "exchange/ExportFile.h"

#include "questionnaire/CaptionEscaping.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"
#include "util/MessageSink.h"
#include "util/TextFile.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QtEndian>

#include <memory>

namespace exchange {

using namespace questionnaire;

namespace {

constexpr qsizetype kFlushChars = 1 << 20;
constexpr int kWarningKeys = 10;

bool NeedsQuotes(const QString& cell) {
    for (QChar c : cell) {
        const char16_t u = c.unicode();
        if (u == u'"' || u == u'\t' || u == u'\r' || u == u'\n')
            return true;
    }
    return false;
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
        : m_q(q), m_options(options) {
        if (options.excludeNonVisible)
            m_visibility = std::make_unique<VisibilityFilter>(q);
    }

    ResolvedRow Resolve(qint32 questionId, qint32 responseId) const;
    // Builds the line of one row into `line`; false when a filter drops it.
    bool BuildLine(qint32 questionId, qint32 responseId, QString& line);

    ExportReport report;

private:
    void AppendCaptionCell(QString& line, const QString& text);
    void NoteUnsafe(const QString& text, bool sourceColumn, qint32 questionId, qint32 responseId);

    const CQuestionnaire& m_q;
    const ExportOptions& m_options;
    std::unique_ptr<VisibilityFilter> m_visibility;
    QSet<QString> m_seenReferences;
    QString m_cell;
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
    // Most captions hold none of what could break: answer that without a full scan.
    const bool plain = !text.startsWith(QLatin1Char('"')) && !text.contains(QLatin1Char('\\')) &&
                       !text.contains(QChar(0)) && text.size() * 2 <= kSpreadsheetCellLimit;
    if (plain || CaptionSurvivesRoundTrip(text, sourceColumn))
        return;
    ++report.unsafeCaptions;
    const QString key = QStringLiteral("%1/%2").arg(questionId).arg(responseId);
    if (report.unsafeKeys.size() < kWarningKeys && !report.unsafeKeys.contains(key))
        report.unsafeKeys.append(key);
}

void Exporter::AppendCaptionCell(QString& line, const QString& text) {
    // Escaping leaves no tab or line break, so only a double quote calls for quoting.
    if (!text.contains(QLatin1Char('"'))) {
        AppendEscapedCaption(line, text);
        return;
    }
    m_cell.clear();
    AppendEscapedCaption(m_cell, text);
    AppendCell(line, m_cell);
}

bool Exporter::BuildLine(qint32 questionId, qint32 responseId, QString& line) {
    const ResolvedRow row = Resolve(questionId, responseId);
    if (!row.keep)
        return false;
    const qsizetype count = m_options.languages.size();
    m_texts.resize(count);
    if (row.systemMessage) {
        m_messageTexts.resize(count);
        for (qsizetype i = 0; i < count; ++i)
            m_messageTexts[i] = m_q.GetErrorMessage(m_options.languages[i], responseId);
    }
    bool anyEmpty = false;
    for (qsizetype i = 0; i < count; ++i) {
        m_texts[i] = row.systemMessage ? &m_messageTexts[i]
                     : row.texts       ? &row.texts->Get(m_options.languages[i])
                                       : &m_empty;
        anyEmpty = anyEmpty || m_texts[i]->isEmpty();
    }
    // A row is translated when no exported language is empty, the reference included.
    if (m_options.excludeTranslated && !anyEmpty)
        return false;
    if (m_options.excludeDuplicates) {
        const QString& reference = count > 0 ? *m_texts.front() : m_empty;
        if (m_seenReferences.contains(reference))
            return false;
        m_seenReferences.insert(reference);
    }
    line.append(QString::number(questionId));
    line.append(QLatin1Char('\t'));
    line.append(QString::number(responseId));
    for (qsizetype i = 0; i < count; ++i) {
        line.append(QLatin1Char('\t'));
        AppendCaptionCell(line, *m_texts[i]);
        NoteUnsafe(*m_texts[i], i == 0, questionId, responseId);
    }
    if (m_options.showShortcuts) {
        line.append(QLatin1Char('\t'));
        AppendCell(line, row.question ? row.question->m_shortcut : m_empty);
        line.append(QLatin1Char('\t'));
        AppendCell(line, row.response ? row.response->m_entryCode : m_empty);
    }
    line.append(QLatin1String("\r\n"));
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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        messages.Show(QString::fromLatin1(strings::kCannotCreateExportFile));
        return false;
    }
    Exporter exporter(q, options);
    QString buffer = QString(QChar(0xFEFF)) + HeaderLine(q, options);
    buffer.reserve(kFlushChars + 4096);
    bool ok = true;
    for (qsizetype k = 0; k < captions.size() && ok; ++k) {
        exporter.BuildLine(captions.questionIds[k], captions.responseIds[k], buffer);
        if (buffer.size() >= kFlushChars) {
            ok = util::WriteUtf16Le(file, buffer);
            buffer.resize(0); // keeps its storage: no new pages for every chunk
        }
    }
    ok = ok && util::WriteUtf16Le(file, buffer) && file.commit();
    ExportReport& result = exporter.report;
    result.written = ok;
    result.bytes = ok ? QFileInfo(path).size() : 0;
    // Shown in batch runs too: a script must learn why the old file is still there.
    if (!ok)
        messages.Show(QString::fromLatin1(strings::kCannotWriteFile).arg(path, file.errorString()));
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
