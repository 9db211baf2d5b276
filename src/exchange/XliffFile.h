#pragma once

#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionList.h"

#include <QString>
#include <QStringList>

class CQuestionnaire;

namespace util {
class Messages;
class Progress;
} // namespace util

// The captions for translators in XLIFF, the exchange format of translation tools: the reference
// language as source and one further language as target, one unit per caption row, with the
// same filters as the tab-separated export and the same guards on import.
namespace exchange {

enum class XliffVersion { V12, V20 };

// A path ending in ".xlf" or ".xliff", in any letter case.
bool IsXliffPath(const QString& path);
// A file to import as XLIFF: its path ends so, or it begins as XML does. Exports name their
// files as the user typed them, and translators rename what they send back.
bool IsXliffFile(const QString& path);
// "1.2" or "2.0" as the command line gives it; false for anything else.
bool ParseXliffVersion(const QString& text, XliffVersion& version);

// The files an export to `path` writes: `path` itself for one target language (or none), else
// one per target language, a language listed twice once, with the language's short name before
// the extension ("survey.FRA.xlf"), or its LCID when it has no short name or shares it with
// another of the target languages ("survey.1131.xlf").
QStringList XliffExportPaths(const QString& path, const CQuestionnaire& q,
                             const ExportOptions& options);

// Writes the rows that pass the options' filters as XLIFF, the first of the options' languages
// as source. True when every file was written whole; on failure the message says why. Every
// file is written aside and put in place only once all of them are: when one cannot be written,
// or the user stops, the files already there all stay as they were. Only when putting one in
// place fails do those put in place before it stay replaced. The report's rows are those of
// one file.
bool ExportXliff(const QString& path, const CQuestionnaire& q, const ExportOptions& options,
                 XliffVersion version, const questionnaire::CaptionList& captions,
                 util::Messages& messages, ExportReport* report = nullptr,
                 util::Progress* progress = nullptr);

// Imports the targets of an XLIFF file with the rules of the tab-separated import: the same
// result codes, only-unchanged comparing each unit's source with the caption's reference text
// (changed units go to "UnusedStrings.xlf" beside the file) and copy identical. Targets whose
// state says they are not translated yet are left out. The whole file is read and checked
// before anything is written: nothing is changed when it is refused.
qint32 ImportXliff(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                   const questionnaire::CaptionList& captions, util::Messages& messages,
                   ImportReport* report = nullptr);

} // namespace exchange
