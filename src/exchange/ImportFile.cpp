#include "exchange/ImportFile.h"

#include "questionnaire/CaptionEscaping.h"
#include "exchange/ExportFile.h"
#include "exchange/RowCutter.h"
#include "exchange/RowPipeline.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"
#include "util/CharScan.h"
#include "util/FileSystem.h"
#include "util/MessageSink.h"
#include "util/TextFile.h"

#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

namespace exchange {

using namespace questionnaire;

namespace {

// One column map entry per language column: its language's index in the language list, or -1.
struct ColumnMap {
    QList<int> entries;
    qsizetype referenceColumn = -1; // position in `entries`
};

// Captions by their reference text, in caption-list order, kept current as the import writes:
// copy identical finds its captions without walking the whole list for every row.
class ReferenceIndex {
public:
    ReferenceIndex(const CQuestionnaire& q, const CaptionList& captions, qint32 reference)
        : m_q(q), m_captions(captions), m_reference(reference) {
        m_byText.reserve(captions.size());
        for (qsizetype k = 0; k < captions.size(); ++k)
            m_byText[Text(k)].append(k);
    }
    QList<qsizetype> Find(const QString& text) const { return m_byText.value(text); }
    QString Text(qsizetype k) const {
        return ReadCaption(m_q, m_captions.questionIds[k], m_captions.responseIds[k], m_reference);
    }
    // Called after caption k's reference text may have changed from `before`.
    void Moved(qsizetype k, const QString& before) {
        const QString after = Text(k);
        if (after == before)
            return;
        QList<qsizetype>& old = m_byText[before];
        old.erase(std::lower_bound(old.begin(), old.end(), k));
        QList<qsizetype>& now = m_byText[after];
        now.insert(std::lower_bound(now.begin(), now.end(), k), k);
    }

private:
    const CQuestionnaire& m_q;
    const CaptionList& m_captions;
    qint32 m_reference;
    QHash<QString, QList<qsizetype>> m_byText;
};

// Each caption's texts as they stood before the import first changed them: a file found
// unreadable only at its end must leave the questionnaire as it was.
class UndoLog {
public:
    void Save(CLocalisedText* texts) {
        if (texts && m_saved.insert(texts).second)
            m_before.emplace_back(texts, *texts);
    }
    void Restore() {
        for (auto it = m_before.rbegin(); it != m_before.rend(); ++it)
            *it->first = std::move(it->second);
        m_before.clear();
        m_saved.clear();
    }

private:
    std::unordered_set<CLocalisedText*> m_saved;
    std::vector<std::pair<CLocalisedText*, CLocalisedText>> m_before;
};

class Importer {
public:
    Importer(CQuestionnaire& q, const QString& path, const ImportOptions& options,
             const CaptionList& captions, util::MessageSink& messages)
        : m_q(q), m_path(path), m_options(options), m_captions(captions), m_messages(messages) {}

    qint32 Run(ImportReport* report);

private:
    qint32 Fail(qint32 code, QString message) {
        // A file that is not text fails as unreadable, whatever its first line says.
        if (code != kImportCannotRead && m_reader && !m_reader->LooksLikeText()) {
            code = kImportCannotRead;
            message = QString::fromLatin1(strings::kCannotOpenFile).arg(m_path);
        }
        if (!m_options.silent && !message.isEmpty())
            m_messages.Show(message);
        return code;
    }
    void Write(qint32 questionId, qint32 responseId, qint32 language, const QString& text) {
        m_undo.Save(FindWritableTexts(m_q, questionId, responseId));
        WriteCaption(m_q, questionId, responseId, language, text);
    }
    qint32 CheckHeader(const QStringList& header);
    qint32 MapExplicitLanguages();
    qint32 MapHeaderLanguages(const QStringList& header);
    void ImportRow(std::span<const CutCell> cells);
    void CopyIdentical(QStringList& cells);
    void WriteIfDifferent(qint32 questionId, qint32 responseId, qint32 language,
                          const QString& text, qsizetype captionIndex = -1);
    void Finish(ImportReport* report);

    CQuestionnaire& m_q;
    const QString& m_path;
    const ImportOptions& m_options;
    const CaptionList& m_captions;
    util::MessageSink& m_messages;
    ColumnMap m_map;
    QString m_rejected; // the rows set aside, each ended by CR LF
    qsizetype m_rejectedRows = 0;
    qint32 m_count = 0;
    std::unique_ptr<ReferenceIndex> m_index;
    std::unique_ptr<LanguageColumns> m_columns; // the language of each column after the first two
    std::vector<const QString*> m_current;      // the current texts of the row being imported
    QString m_scratch;
    util::TextFileReader* m_reader = nullptr;
    UndoLog m_undo;
};

qint32 Importer::Run(ImportReport* report) {
    if (QFileInfo(m_path).size() > kMaxTranslatedFileBytes)
        return Fail(kImportCannotRead, QString::fromLatin1(strings::kFileTooLarge).arg(m_path));
    util::TextFileReader reader;
    if (!reader.Open(m_path))
        return Fail(kImportCannotRead, QString::fromLatin1(strings::kCannotOpenFile).arg(m_path));
    m_reader = &reader;
    // A small file is read through buffers of its own size: a piece's buffer is otherwise
    // megabytes, which a small import would pay for with memory the system must clear.
    RowCutter cutter(reader, size_t(std::clamp<qint64>(reader.CharactersLeft() + 1, 1,
                                                       RowCutter::kPieceChars)));
    std::vector<CutCell> cells;
    if (!cutter.Next(cells))
        return Fail(kImportNoRow, QString::fromLatin1(strings::kNotATranslationFile));
    if (const qint32 code = CheckHeader(RowCutter::Strings(cells)); code < 0)
        return code;
    if (m_options.copyIdentical)
        m_index = std::make_unique<ReferenceIndex>(m_q, m_captions, m_options.referenceLanguage);
    {
        RowPipeline rows(cutter);
        while (const RowBatch* batch = rows.Next())
            for (size_t r = 0; r < batch->RowCount(); ++r)
                ImportRow(batch->Row(r));
    }
    // Whether the file is text is known only at its end: the rows already imported are undone.
    if (!reader.LooksLikeText()) {
        m_undo.Restore();
        return Fail(kImportCannotRead, QString::fromLatin1(strings::kCannotOpenFile).arg(m_path));
    }
    Finish(report);
    return m_count;
}

qint32 Importer::CheckHeader(const QStringList& header) {
    const QString notTranslation = QString::fromLatin1(strings::kNotATranslationFile);
    if (header.size() < 3)
        return Fail(kImportShortHeader, notTranslation);
    QStringList names;
    CStaticTools::ReadStringSeparatorString(m_options.headerNames, QLatin1Char(','), names);
    const QString first = names.value(0).isEmpty() ? QStringLiteral("QuestionId") : names[0];
    const QString second = names.value(1).isEmpty() ? QStringLiteral("ResponseId") : names[1];
    if (header[0] != first)
        return Fail(kImportFirstHeader, notTranslation);
    if (header[1] != second)
        return Fail(kImportSecondHeader, notTranslation);
    const qint32 code = m_options.explicitLanguages.isEmpty() ? MapHeaderLanguages(header)
                                                              : MapExplicitLanguages();
    if (code < 0)
        return code;
    if (m_options.onlyUnchanged && m_map.referenceColumn < 0)
        return Fail(kImportNoReferenceColumn,
                    QString::fromLatin1(strings::kReferenceLanguageNotFound));
    QList<qint32> columnLanguages;
    for (int entry : std::as_const(m_map.entries))
        columnLanguages.append(entry < 0 ? 0 : m_options.languages[entry]);
    m_columns = std::make_unique<LanguageColumns>(columnLanguages);
    return 0;
}

qint32 Importer::MapExplicitLanguages() {
    for (qint32 lcid : m_options.explicitLanguages) {
        const int index = int(m_options.languages.indexOf(lcid));
        if (index < 0)
            return Fail(kImportLanguageNotInQuestionnaire,
                        QString::fromLatin1(strings::kLanguageNotDefined)
                            .arg(CLanguage(quint32(lcid)).m_name));
        if (lcid == m_options.referenceLanguage)
            m_map.referenceColumn = m_map.entries.size();
        m_map.entries.append(index);
    }
    return 0;
}

qint32 Importer::MapHeaderLanguages(const QStringList& header) {
    const QString notTranslation = QString::fromLatin1(strings::kNotATranslationFile);
    for (qsizetype column = 2; column < header.size(); ++column) {
        const QString& cell = header[column];
        // An empty title ends the languages: later columns are ignored altogether.
        if (cell.isEmpty())
            break;
        if (cell.compare(QLatin1String("shortcut"), Qt::CaseInsensitive) == 0 ||
            cell.compare(QLatin1String("entrycode"), Qt::CaseInsensitive) == 0) {
            m_map.entries.append(-1);
            continue;
        }
        const qsizetype parenthesis = cell.indexOf(QLatin1Char('('));
        if (parenthesis < 0)
            return Fail(kImportNoParenthesis, notTranslation);
        qint32 lcid = 0;
        if (!CStaticTools::EstLong(cell.left(parenthesis), lcid))
            return Fail(kImportNotANumber, notTranslation);
        const CLanguage language(static_cast<quint32>(lcid));
        if (language.m_name.isEmpty())
            return Fail(kImportUnknownLanguage, QString::fromLatin1(strings::kLanguageNotRecognised));
        const int index = int(m_options.languages.indexOf(lcid));
        if (index < 0)
            return Fail(kImportLanguageNotInQuestionnaire,
                        QString::fromLatin1(strings::kLanguageNotDefined).arg(language.m_name));
        if (lcid == m_options.referenceLanguage)
            m_map.referenceColumn = m_map.entries.size();
        m_map.entries.append(index);
    }
    return 0;
}

void Importer::WriteIfDifferent(qint32 questionId, qint32 responseId, qint32 language,
                                const QString& text, qsizetype captionIndex) {
    const QString current = ReadCaption(m_q, questionId, responseId, language);
    if (text == current)
        return;
    Write(questionId, responseId, language, text);
    ++m_count;
    if (m_index && captionIndex >= 0 && language == m_options.referenceLanguage)
        m_index->Moved(captionIndex, current);
}

// The cell as the import reads it after `times` rounds of unescaping. Most cells need none and
// are read in place; the others are decoded into `scratch`.
QStringView Decoded(const CutCell& cell, int times, QString& scratch) {
    const QStringView text = cell.text;
    const bool quoteEnclosed = !text.isEmpty() && text.front() == u'"' && text.back() == u'"';
    if (times == 0 || (!cell.backslash && !quoteEnclosed))
        return text;
    UnescapeCellInto(text, scratch);
    for (int i = 1; i < times; ++i)
        UnescapeCell(scratch);
    return scratch;
}

void Importer::ImportRow(std::span<const CutCell> cells) {
    if (cells.size() <= 2)
        return;
    const qint32 questionId = CStaticTools::ToLong(cells[0].text);
    const qint32 responseId = CStaticTools::ToLong(cells[1].text);
    // Deliberately, a caption whose key holds a 0 cannot be imported.
    if (questionId == 0 || responseId == 0)
        return;
    if (m_options.copyIdentical) {
        QStringList strings;
        for (const CutCell& cell : cells)
            strings.append(cell.text.toString());
        CopyIdentical(strings);
        return;
    }
    const qsizetype referenceColumn = m_options.onlyUnchanged ? 2 + m_map.referenceColumn : -1;
    // An only-unchanged import reads a row too short to have the reference cell as if it had
    // empty cells up to it, and imports those empty cells too.
    const qsizetype cellCount = std::max(qsizetype(cells.size()), referenceColumn + 1);
    const CutCell none;
    auto cell = [&](qsizetype c) -> const CutCell& {
        return c < qsizetype(cells.size()) ? cells[size_t(c)] : none;
    };
    // The row's caption is found once; its languages are then read in place, and again after a
    // write, which may move them.
    const bool message = questionId == kSystemMessageMarker;
    const CLocalisedText* texts = message ? nullptr : FindCaptionTexts(m_q, questionId, responseId);
    if (m_options.onlyUnchanged) {
        const QString messageText =
            message ? ReadCaption(m_q, questionId, responseId, m_options.referenceLanguage)
                    : QString();
        const QString& current = texts ? texts->Get(m_options.referenceLanguage) : messageText;
        // A row too short to have the reference cell reads it as empty.
        if (!util::SameText(Decoded(cell(referenceColumn), 1, m_scratch), current)) {
            // The line is written as an export writes its rows, quoted where a cell needs it, so
            // that it can be translated and imported in its turn.
            for (qsizetype c = 0; c < cellCount; ++c) {
                if (c > 0)
                    m_rejected.append(QLatin1Char('\t'));
                if (c == referenceColumn) {
                    m_scratch.clear();
                    AppendEscapedCaption(m_scratch, current);
                    AppendCell(m_rejected, m_scratch);
                } else {
                    AppendCell(m_rejected, cell(c).text);
                }
            }
            m_rejected.append(QLatin1String("\r\n"));
            ++m_rejectedRows;
            return;
        }
    }
    if (!message)
        m_columns->Read(texts, m_current);
    for (qsizetype i = 0; i < m_map.entries.size(); ++i) {
        const qsizetype column = 2 + i;
        const int language = m_map.entries[i];
        if (column >= cellCount || language < 0)
            continue;
        // The reference cell of an only-unchanged import was decoded once for the check above,
        // and is decoded again here.
        const int before = column == referenceColumn ? 1 : 0;
        // An empty cell of the first language never clears it; in any other language it does.
        if (language == 0 && Decoded(cell(column), before, m_scratch).isEmpty())
            continue;
        const QStringView text = Decoded(cell(column), before + 1, m_scratch);
        const qint32 lcid = m_options.languages[language];
        if (message) {
            WriteIfDifferent(questionId, responseId, lcid, text.toString());
        } else if (!util::SameText(text, *m_current[size_t(i)])) {
            Write(questionId, responseId, lcid, text.toString());
            ++m_count;
            m_columns->Read(texts, m_current);
        }
    }
}

void Importer::CopyIdentical(QStringList& cells) {
    QString source = cells[2];
    UnescapeCell(source);
    for (qsizetype k : m_index->Find(source)) {
        if (m_index->Text(k) != source)
            continue;
        const qint32 questionId = m_captions.questionIds[k];
        const qint32 responseId = m_captions.responseIds[k];
        for (qsizetype i = 1; i < m_map.entries.size(); ++i) {
            const qsizetype column = 2 + i;
            const int language = m_map.entries[i];
            if (column >= cells.size() || language < 0)
                continue;
            // Each further match decodes the same cells once more.
            UnescapeCell(cells[column]);
            if (cells[column].isEmpty())
                continue;
            WriteIfDifferent(questionId, responseId, m_options.languages[language], cells[column], k);
        }
    }
}

void Importer::Finish(ImportReport* report) {
    if (report)
        report->rejectedRows = m_rejectedRows;
    // A single rejected row is deliberately neither written nor reported.
    if (m_rejectedRows < 2) {
        if (!m_options.silent)
            m_messages.Show(QString::fromLatin1(strings::kCaptionsModified).arg(m_count));
        return;
    }
    const QString unusedPath = QFileInfo(m_path).absolutePath() + QLatin1Char('/') +
                               QString::fromLatin1(strings::kUnusedStringsFile);
    // The rows are still in the translated file, so like an export the file is not forced to
    // the disk: a second import makes it again.
    util::ReplacingFile file(unusedPath);
    const bool written = file.Open() && file.WriteUtf16Le(u"\uFEFF") &&
                         file.WriteUtf16Le(m_rejected) && file.Commit();
    if (!written && !m_options.silent)
        m_messages.Show(QString::fromLatin1(strings::kCannotCreateExportFile));
    if (written && report)
        report->unusedStringsPath = unusedPath;
    if (!m_options.silent)
        m_messages.Show(QString::fromLatin1(strings::kImportedWithRejects)
                            .arg(m_count)
                            .arg(m_rejectedRows - 1)
                            .arg(unusedPath));
}

} // namespace

qint32 ImportTranslatedFile(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                            const CaptionList& captions, util::MessageSink& messages,
                            ImportReport* report) {
    if (report)
        *report = ImportReport(); // what an earlier import left there is not this one's
    Importer importer(q, path, options, captions, messages);
    return importer.Run(report);
}

} // namespace exchange
