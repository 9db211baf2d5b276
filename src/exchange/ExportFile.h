#pragma once

#include "questionnaire/CaptionFilters.h"
#include "questionnaire/CaptionList.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

class CQuestionnaire;

namespace util {
class Messages;
class Progress;
} // namespace util

namespace exchange {

// The choices of one export.
struct ExportOptions {
    bool excludeTranslated = false;
    bool excludeDuplicates = false;
    bool excludeNonVisible = false;
    questionnaire::CaptionKindFilter kinds; // caption kinds, system messages, routings
    bool showShortcuts = false;             // adds the Shortcut and Entrycode columns
    QList<qint32> languages;                // one column each; the first is the reference
    QList<qint32> versions;                 // empty means all versions
    QString headers;                        // comma-separated column titles, may be empty
};

// What an export did, for callers that want more than its result.
struct ExportReport {
    bool written = false; // the file was created and written whole
    bool stopped = false; // the user stopped the export; the old file is untouched
    qint64 rows = 0;      // caption rows in the file
    qint64 bytes = 0;
    qint64 unsafeCaptions = 0; // captions the round trip cannot carry unchanged
    QStringList unsafeKeys;    // the first of them, as "question id/response id"
};

// Writes the tab-separated UTF-16 file for translators: a header line, then one line per caption
// row that passes the filters. Reports failure in every case (callers judge by the file or by
// `report`); the only message besides the round-trip warning is "Cannot create export file",
// shown even in batch runs.
bool ExportStringsForTranslation(const QString& path, const CQuestionnaire& q,
                                 const ExportOptions& options,
                                 const questionnaire::CaptionList& captions,
                                 util::Messages& messages, ExportReport* report = nullptr,
                                 util::Progress* progress = nullptr);

// The header line's titles for these options, defaults where the list gives none.
QStringList ExportHeaderTitles(const CQuestionnaire& q, const ExportOptions& options);

// A cell as the export writes it: enclosed in double quotes, inner quotes doubled, when it
// holds a double quote, a tab, a carriage return or a line feed.
void AppendCell(QString& out, QStringView cell);

} // namespace exchange
