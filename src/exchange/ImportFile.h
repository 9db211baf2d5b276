#pragma once

#include "questionnaire/CaptionList.h"

#include <QList>
#include <QString>

class CQuestionnaire;

namespace util {
class Messages;
class Progress;
} // namespace util

namespace exchange {

// The choices of one import.
struct ImportOptions {
    bool onlyUnchanged = false;      // reject rows whose reference text changed since the export
    qint32 referenceLanguage = 0;    // the language the export carried as source
    bool copyIdentical = false;      // apply each row to every caption with the same source text
    QList<qint32> languages;         // the questionnaire's languages in column order
    QString headerNames;             // expected first two header cells, comma-separated
    QList<qint32> explicitLanguages; // languages of columns 3, 4, ... instead of the header's
};

// Result codes of ImportTranslatedFile besides the count of captions written.
enum ImportResult : qint32 {
    kImportCannotRead = -10,
    kImportNoRow = -11,
    kImportShortHeader = -12,
    kImportFirstHeader = -13,
    kImportSecondHeader = -14,
    kImportNoParenthesis = -15,
    kImportNotANumber = -16,
    kImportUnknownLanguage = -17,
    kImportLanguageNotInQuestionnaire = -18,
    kImportNoReferenceColumn = -19,
};

// Larger translated files are refused unread: the largest surveys in use export a few hundred
// megabytes; a larger file is not one of theirs, and is refused before minutes go into it.
inline constexpr qint64 kMaxTranslatedFileBytes = qint64(1) << 30;

struct ImportReport {
    qint64 rejectedRows = 0;   // rows whose source text had changed
    QString unusedStringsPath; // where they were written, when they were
    bool stopped = false;      // the user stopped the import; nothing was changed
};

// The result of an import that the user stopped: nothing was changed.
inline constexpr qint32 kImportStopped = -9;

// Reads a translated file back into the questionnaire. Returns the number of captions written,
// or one of the negative ImportResult codes; nothing is changed then, even when the file proves
// unreadable only after some of its rows were imported, or the user stops the import. Messages go
// to `messages`; batch work, which is silent, passes util::NoMessages.
qint32 ImportTranslatedFile(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                            const questionnaire::CaptionList& captions, util::Messages& messages,
                            ImportReport* report = nullptr, util::Progress* progress = nullptr);

} // namespace exchange
