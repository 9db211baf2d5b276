#pragma once

#include <QCoreApplication>

// The texts of the export and the import that users read, kept together so that they are easy
// to find and translate. "%1" and "%2" are filled by QString::arg.
namespace exchange::strings {

inline constexpr char kContext[] = "exchange";

// A file name that scripts look for: never translated.
inline constexpr char kUnusedStringsFile[] = "UnusedStrings.txt";
inline constexpr char kUnusedStringsXliffFile[] = "UnusedStrings.xlf";

inline constexpr char kCannotCreateExportFile[] =
    QT_TRANSLATE_NOOP("exchange", "Cannot create export file");
inline constexpr char kCannotWriteFile[] =
    QT_TRANSLATE_NOOP("exchange", "Cannot write the file '%1': %2");
inline constexpr char kCannotOpenFile[] =
    QT_TRANSLATE_NOOP("exchange", "Cannot open the file '%1'");
inline constexpr char kFileTooLarge[] = QT_TRANSLATE_NOOP(
    "exchange", "The file '%1' is larger than 1 GiB: a translation file is never that large.");
inline constexpr char kNotATranslationFile[] =
    QT_TRANSLATE_NOOP("exchange", "This does not seem to be a translation file");
inline constexpr char kLanguageNotRecognised[] =
    QT_TRANSLATE_NOOP("exchange", "Language not recognised...");
inline constexpr char kLanguageNotDefined[] =
    QT_TRANSLATE_NOOP("exchange", "The language '%1' is not defined in the qes file!");
inline constexpr char kReferenceLanguageNotFound[] = QT_TRANSLATE_NOOP(
    "exchange",
    "The reference language has not been found in the file! It is not possible to know if a "
    "caption has changed!");
inline constexpr char kImportedWithRejects[] = QT_TRANSLATE_NOOP(
    "exchange",
    "%1 captions have been imported!\r\n%2 captions had been modified since the export and were "
    "ignored. The file '%3' has been created that will need to be retranslated.");
inline constexpr char kCaptionsModified[] =
    QT_TRANSLATE_NOOP("exchange", "%1 captions have been modified!");
inline constexpr char kExportWarning[] = QT_TRANSLATE_NOOP(
    "exchange",
    "%1 captions cannot make the round trip through the export file unchanged: they begin and "
    "end with a double quote, hold a backslash followed by n, r or t or a zero character, hold two "
    "backslashes in a row in the first language (an import of unchanged captions decodes that "
    "column twice), or are longer than 32,767 characters (spreadsheet programs cut such cells). "
    "First ones (question id, response id): %2");
inline constexpr char kExporting[] =
    QT_TRANSLATE_NOOP("exchange", "Exporting the captions for translation");
inline constexpr char kImporting[] = QT_TRANSLATE_NOOP("exchange", "Importing the translated file");
inline constexpr char kImportStopped[] = QT_TRANSLATE_NOOP(
    "exchange", "The import was stopped; the questionnaire is as it was before it.");

} // namespace exchange::strings

namespace exchange {
// A text of the export and the import in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace exchange
