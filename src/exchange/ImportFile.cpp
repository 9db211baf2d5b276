#include "exchange/ImportFile.h"

#include "exchange/CaptionGroups.h"

#include "exchange/ExportFile.h"
#include "exchange/RowCutter.h"
#include "exchange/RowPipeline.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"
#include "util/CharScan.h"
#include "util/FileSystem.h"
#include "util/Messages.h"
#include "util/Progress.h"
#include "util/TextFile.h"

#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <deque>
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

// What each write replaced, so that a file found unreadable only at its end, or an import the
// user stops, leaves the questionnaire as it was. Texts are shared, not copied.
class UndoLog {
public:
    // Before the text of `texts` in `language` changes.
    void Save(CLocalisedText* texts, qint32 language) {
        if (!texts)
            return;
        if (!texts->Has(language)) {
            m_changes.push_back({texts, language, -1});
            return;
        }
        m_changes.push_back({texts, language, qint32(m_replaced.size())});
        m_replaced.push_back(texts->Get(language));
    }
    void Restore() {
        for (auto it = m_changes.rbegin(); it != m_changes.rend(); ++it) {
            if (it->replaced < 0)
                it->texts->Remove(it->language);
            else
                it->texts->Set(it->language, m_replaced[size_t(it->replaced)]);
        }
        m_changes.clear();
        m_replaced.clear();
    }

private:
    // Most writes of a large import give a caption a language it lacked: their entries stay
    // small, and only replaced texts are kept.
    struct Change {
        CLocalisedText* texts;
        qint32 language;
        qint32 replaced; // in m_replaced; -1 when the language was new
    };
    std::deque<Change> m_changes; // grows without moving what it holds
    std::deque<QString> m_replaced;
};

class Importer {
public:
    Importer(CQuestionnaire& q, const QString& path, const ImportOptions& options,
             const CaptionList& captions, util::Messages& messages, util::Progress* progress)
        : m_q(q), m_path(path), m_options(options), m_captions(captions), m_messages(messages),
          m_progress(progress) {}

    qint32 Run(ImportReport* report);

private:
    qint32 Fail(qint32 code, QString message) {
        // A file that is not text fails as unreadable, whatever its first line says.
        if (code != kImportCannotRead && m_reader && !m_reader->LooksLikeText()) {
            code = kImportCannotRead;
            message = Tr(strings::kCannotOpenFile).arg(m_path);
        }
        if (!message.isEmpty())
            m_messages.Error(message);
        return code;
    }
    void Write(qint32 questionId, qint32 responseId, qint32 language, const QString& text) {
        m_undo.Save(FindWritableTexts(m_q, questionId, responseId), language);
        WriteCaption(m_q, questionId, responseId, language, text);
    }
    // Writes into texts already found, which the questionnaire lets the import change. True
    // when the texts may have moved: the language was new to them.
    bool WriteInto(const CLocalisedText* texts, qint32 language, const QString& text) {
        CLocalisedText* writable = const_cast<CLocalisedText*>(texts);
        m_undo.Save(writable, language);
        const bool added = !writable->Has(language);
        writable->Set(language, text);
        return added;
    }
    qint32 CheckHeader(const QStringList& header);
    qint32 MapExplicitLanguages();
    qint32 MapHeaderLanguages(const QStringList& header);
    void ImportRow(std::span<const CutCell> cells);
    void CopyIdentical(std::span<const CutCell> cells);
    void ApplyPending(const CLocalisedText* texts);
    void WriteIfDifferent(qint32 questionId, qint32 responseId, qint32 language,
                          const QString& text, qsizetype captionIndex = -1);
    void Finish(ImportReport* report);

    CQuestionnaire& m_q;
    const QString& m_path;
    const ImportOptions& m_options;
    const CaptionList& m_captions;
    util::Messages& m_messages;
    util::Progress* m_progress;
    ColumnMap m_map;
    QString m_rejected; // the rows set aside, each ended by CR LF
    qsizetype m_rejectedRows = 0;
    qint32 m_count = 0;
    std::unique_ptr<CaptionGroups> m_index;
    // Copy identical may keep groups of captions in step: reference texts never change, and no
    // language has two columns.
    bool m_syncing = false;
    bool m_languageTwice = false;               // two columns write the same language
    std::unique_ptr<LanguageColumns> m_columns; // the language of each column after the first two
    std::vector<const QString*> m_current;      // the current texts of the row being imported
    QString m_scratch;
    // Copy identical: each language cell of the row as decoded so far, and how it stands.
    struct DecodedCell {
        QStringView text;   // into the row, or into `decoded`
        QString decoded;    // the cell once it has been decoded
        QString written;    // `text` as a string of its own, made once for every caption
        bool final = false; // decoding it again changes nothing
        bool used = false;  // the row has the cell and its column a language
        bool inDecoded = false;
        bool finalFromStart = false; // every caption of the row read the same text
        bool byGroup = false;        // judged once for a group whose captions stand in step
        bool groupDiffers = false;
    };
    std::vector<DecodedCell> m_decoded;
    std::vector<CLocalisedText::Entry> m_pending; // writes to the caption at hand
    util::TextFileReader* m_reader = nullptr;
    UndoLog m_undo;
};

qint32 Importer::Run(ImportReport* report) {
    if (QFileInfo(m_path).size() > kMaxTranslatedFileBytes)
        return Fail(kImportCannotRead, Tr(strings::kFileTooLarge).arg(m_path));
    util::TextFileReader reader;
    if (!reader.Open(m_path))
        return Fail(kImportCannotRead, Tr(strings::kCannotOpenFile).arg(m_path));
    m_reader = &reader;
    // A small file is read through buffers of its own size: a piece's buffer is otherwise
    // megabytes, which a small import would pay for with memory the system must clear.
    RowCutter cutter(
        reader, size_t(std::clamp<qint64>(reader.CharactersLeft() + 1, 1, RowCutter::kPieceChars)));
    std::vector<CutCell> cells;
    if (!cutter.Next(cells))
        return Fail(kImportNoRow, Tr(strings::kNotATranslationFile));
    if (const qint32 code = CheckHeader(RowCutter::Strings(cells)); code < 0)
        return code;
    if (m_options.copyIdentical)
        m_index = std::make_unique<CaptionGroups>(m_q, m_captions, m_options.referenceLanguage,
                                                  m_map.entries.size());
    bool stopped = false;
    {
        util::ProgressScope progress(m_progress, Tr(strings::kImporting),
                                     reader.CharactersRead() + reader.CharactersLeft());
        RowPipeline rows(cutter);
        while (const RowBatch* batch = rows.Next()) {
            if (!progress.Advance(reader.CharactersRead())) {
                stopped = true;
                break;
            }
            for (size_t r = 0; r < batch->RowCount(); ++r)
                ImportRow(batch->Row(r));
        }
    }
    if (stopped) {
        m_undo.Restore();
        if (report)
            report->stopped = true;
        m_messages.Inform(Tr(strings::kImportStopped));
        return kImportStopped;
    }
    // Whether the file is text is known only at its end: the rows already imported are undone.
    if (!reader.LooksLikeText()) {
        m_undo.Restore();
        return Fail(kImportCannotRead, Tr(strings::kCannotOpenFile).arg(m_path));
    }
    Finish(report);
    return m_count;
}

qint32 Importer::CheckHeader(const QStringList& header) {
    const QString notTranslation = Tr(strings::kNotATranslationFile);
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
    const qint32 code =
        m_options.explicitLanguages.isEmpty() ? MapHeaderLanguages(header) : MapExplicitLanguages();
    if (code < 0)
        return code;
    if (m_options.onlyUnchanged && m_map.referenceColumn < 0)
        return Fail(kImportNoReferenceColumn, Tr(strings::kReferenceLanguageNotFound));
    QList<qint32> columnLanguages;
    for (int entry : std::as_const(m_map.entries))
        columnLanguages.append(entry < 0 ? 0 : m_options.languages[entry]);
    m_columns = std::make_unique<LanguageColumns>(columnLanguages);
    // Groups of identical captions stay in step only while no write can change which captions
    // are identical, and while each language has one column.
    QList<qint32> written = columnLanguages.mid(1);
    written.removeAll(0);
    std::sort(written.begin(), written.end());
    m_languageTwice = std::adjacent_find(written.begin(), written.end()) != written.end();
    m_syncing = m_options.copyIdentical && !written.contains(m_options.referenceLanguage) &&
                !m_languageTwice;
    return 0;
}

qint32 Importer::MapExplicitLanguages() {
    for (qint32 lcid : m_options.explicitLanguages) {
        const int index = int(m_options.languages.indexOf(lcid));
        if (index < 0)
            return Fail(kImportLanguageNotInQuestionnaire,
                        Tr(strings::kLanguageNotDefined).arg(CLanguage(quint32(lcid)).m_name));
        if (lcid == m_options.referenceLanguage)
            m_map.referenceColumn = m_map.entries.size();
        m_map.entries.append(index);
    }
    return 0;
}

qint32 Importer::MapHeaderLanguages(const QStringList& header) {
    const QString notTranslation = Tr(strings::kNotATranslationFile);
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
            return Fail(kImportUnknownLanguage, Tr(strings::kLanguageNotRecognised));
        const int index = int(m_options.languages.indexOf(lcid));
        if (index < 0)
            return Fail(kImportLanguageNotInQuestionnaire,
                        Tr(strings::kLanguageNotDefined).arg(language.m_name));
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

// Unescaping strips the quotes of a cell that both begins and ends with one.
bool QuoteEnclosed(QStringView text) {
    return !text.isEmpty() && text.front() == u'"' && text.back() == u'"';
}

// The cell as the import reads it after `times` rounds of unescaping. Most cells need none and
// are read in place; the others are decoded into `scratch`.
QStringView Decoded(const CutCell& cell, int times, QString& scratch) {
    const QStringView text = cell.text;
    if (times == 0 || (!cell.backslash && !QuoteEnclosed(text)))
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
        CopyIdentical(cells);
        return;
    }
    const qsizetype referenceColumn = m_options.onlyUnchanged ? 2 + m_map.referenceColumn : -1;
    // An only-unchanged import reads a row too short to have the reference cell as if it had
    // empty cells up to it, and sets such a row aside with them; a row it accepts imports only
    // the cells it has.
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
        if (column >= qsizetype(cells.size()) || language < 0)
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
            ++m_count;
            if (!texts) // an unknown caption: the write is ignored
                continue;
            if (WriteInto(texts, lcid, text.toString()))
                m_columns->Read(texts, m_current);
        }
    }
}

// A cell that neither holds a backslash nor both begins and ends with a double quote reads the
// same however many times it is decoded.
bool DecodesToItself(QStringView text) {
    if (QuoteEnclosed(text))
        return false;
    const char16_t* begin = text.utf16();
    return util::FindFirstOf<u'\\'>(begin, begin + text.size()) == begin + text.size();
}

void Importer::CopyIdentical(std::span<const CutCell> cells) {
    const QString source = Decoded(cells[2], 1, m_scratch).toString();
    CaptionGroups::Group* group = m_index->Find(source);
    if (!group || group->captions.isEmpty())
        return;
    // A copy: the row's own writes may move captions between groups.
    const QList<qsizetype> matches = group->captions;
    // Each further match decodes the row's cells once more, as the cells themselves are decoded
    // in place; a cell that decodes to itself is left as it is.
    m_decoded.resize(size_t(m_map.entries.size()));
    bool anyText = false; // a cell that may write: one row of empty cells writes nothing
    for (qsizetype i = 1; i < m_map.entries.size(); ++i) {
        const qsizetype column = 2 + i;
        DecodedCell& cell = m_decoded[size_t(i)];
        cell.used = column < qsizetype(cells.size()) && m_map.entries[i] >= 0;
        if (!cell.used)
            continue;
        const CutCell& cut = cells[size_t(column)];
        cell.text = cut.text;
        cell.inDecoded = false;
        cell.written = QString();
        cell.final = !cut.backslash && !QuoteEnclosed(cut.text);
        cell.finalFromStart = cell.final;
        cell.byGroup = false;
        anyText = anyText || !cell.final || !cell.text.isEmpty();
    }
    // Many captions may share one source ("Yes", or none at all): a row that cannot change them
    // must not walk them all.
    if (!anyText)
        return;
    // When the group's captions stand in step in a column, the row is compared with one of
    // them, and what it finds holds for all.
    const bool inStep = m_syncing && group->syncable && matches.size() > 1;
    bool eachCaption = !inStep; // some column must be compared caption by caption
    bool groupWrites = false;   // some column in step is written to every caption
    // The row's own caption, when it has the same source: the rows before it brought its texts
    // into the cache, and a cell it already holds is shared rather than copied for the others.
    qsizetype own =
        m_index->IndexOf(CStaticTools::ToLong(cells[0].text), CStaticTools::ToLong(cells[1].text));
    if (own >= 0 && !std::binary_search(matches.begin(), matches.end(), own))
        own = -1;
    const CLocalisedText* ownTexts = own >= 0 ? m_index->Texts(own) : nullptr;
    if (inStep) {
        // Any caption of the group will do to compare with.
        m_columns->Read(m_index->Texts(own >= 0 ? own : matches.front()), m_current);
        for (qsizetype i = 1; i < m_map.entries.size(); ++i) {
            DecodedCell& cell = m_decoded[size_t(i)];
            if (!cell.used || (cell.final && cell.text.isEmpty()))
                continue;
            if (!cell.final || !group->synced[size_t(i)]) {
                eachCaption = true;
                continue;
            }
            cell.byGroup = true;
            cell.groupDiffers = !util::SameText(cell.text, *m_current[size_t(i)]);
            groupWrites = groupWrites || cell.groupDiffers;
        }
        // Nothing to compare caption by caption and nothing to write: the group stays as it is.
        if (!eachCaption && !groupWrites)
            return;
    }
    const qint32 reference = m_index->Reference();
    for (qsizetype k : matches) {
        const qint32 questionId = m_captions.questionIds[k];
        const qint32 responseId = m_captions.responseIds[k];
        const bool message = questionId == kSystemMessageMarker;
        const CLocalisedText* texts = m_index->Texts(k);
        // The reference texts of a group in step never change: its captions all still match.
        if (!inStep) {
            if (!message)
                m_columns->Read(texts, m_current);
            const QString& current = message || m_map.referenceColumn < 0
                                         ? QString()
                                         : *m_current[size_t(m_map.referenceColumn)];
            if (message ? m_index->Text(k) != source
                        : !util::SameText(m_map.referenceColumn >= 0 ? current
                                          : texts                    ? texts->Get(reference)
                                                                     : QString(),
                                          source))
                continue;
        } else if (eachCaption) {
            m_columns->Read(texts, m_current);
        }
        for (qsizetype i = 1; i < m_map.entries.size(); ++i) {
            DecodedCell& cell = m_decoded[size_t(i)];
            if (!cell.used || (cell.byGroup && !cell.groupDiffers))
                continue;
            if (!cell.final) {
                if (cell.inDecoded) {
                    UnescapeCell(cell.decoded);
                } else {
                    UnescapeCellInto(cell.text, cell.decoded);
                    cell.inDecoded = true;
                }
                cell.text = cell.decoded;
                cell.written = QString();
                cell.final = DecodesToItself(cell.text);
            }
            if (cell.text.isEmpty())
                continue;
            const qint32 lcid = m_options.languages[m_map.entries[i]];
            const bool differs = cell.byGroup || message || lcid == reference ||
                                 !util::SameText(cell.text, *m_current[size_t(i)]);
            if (!differs)
                continue;
            if (cell.written.isNull()) {
                const QString* held = ownTexts ? &ownTexts->Get(lcid) : nullptr;
                cell.written =
                    held && util::SameText(*held, cell.text) ? *held : cell.text.toString();
            }
            if (message || lcid == reference) {
                ApplyPending(texts);
                if (!message)
                    m_columns->Read(texts, m_current); // the writes may have moved the texts
                WriteIfDifferent(questionId, responseId, lcid, cell.written, k);
                if (!message)
                    m_columns->Read(texts, m_current);
                continue;
            }
            ++m_count;
            if (!texts)
                continue;
            m_pending.emplace_back(lcid, cell.written);
            if (m_languageTwice) {
                // A later column of the same language must see this write.
                ApplyPending(texts);
                m_columns->Read(texts, m_current);
            }
        }
        ApplyPending(texts);
    }
    if (!inStep)
        return;
    // A cell that read the same for every caption leaves them in step; one decoded anew for
    // each leaves them apart.
    for (qsizetype i = 1; i < m_map.entries.size(); ++i) {
        const DecodedCell& cell = m_decoded[size_t(i)];
        if (!cell.used)
            continue;
        if (!cell.finalFromStart)
            group->synced[size_t(i)] = false;
        else if (!cell.text.isEmpty())
            group->synced[size_t(i)] = true;
    }
}

// The writes gathered for one caption go in together: a caption that gains many languages at
// once is then grown once, not once for each. The caption's columns must be read again after.
void Importer::ApplyPending(const CLocalisedText* texts) {
    if (m_pending.empty())
        return;
    CLocalisedText* writable = const_cast<CLocalisedText*>(texts);
    std::sort(m_pending.begin(), m_pending.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [language, text] : m_pending)
        m_undo.Save(writable, language);
    writable->SetMany(m_pending);
    m_pending.clear();
}

void Importer::Finish(ImportReport* report) {
    if (report)
        report->rejectedRows = m_rejectedRows;
    // A single rejected row is deliberately neither written nor reported.
    if (m_rejectedRows < 2) {
        m_messages.Inform(Tr(strings::kCaptionsModified).arg(m_count));
        return;
    }
    const QString unusedPath = QFileInfo(m_path).absolutePath() + QLatin1Char('/') +
                               QString::fromLatin1(strings::kUnusedStringsFile);
    // The rows are still in the translated file, so like an export the file is not forced to
    // the disk: a second import makes it again.
    util::ReplacingFile file(unusedPath);
    const bool written = file.Open() && file.WriteUtf16Le(u"\uFEFF") &&
                         file.WriteUtf16Le(m_rejected) && file.Commit();
    if (!written)
        m_messages.Error(Tr(strings::kCannotCreateExportFile));
    if (written && report)
        report->unusedStringsPath = unusedPath;
    m_messages.Inform(
        Tr(strings::kImportedWithRejects).arg(m_count).arg(m_rejectedRows - 1).arg(unusedPath));
}

} // namespace

qint32 ImportTranslatedFile(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                            const CaptionList& captions, util::Messages& messages,
                            ImportReport* report, util::Progress* progress) {
    if (report)
        *report = ImportReport(); // what an earlier import left there is not this one's
    Importer importer(q, path, options, captions, messages, progress);
    return importer.Run(report);
}

} // namespace exchange
