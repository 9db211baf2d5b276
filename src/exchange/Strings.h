#pragma once

// The messages of the export and the import, kept together so they are easy to find and
// translate. "%1" and "%2" are filled by QString::arg.
namespace exchange::strings {
inline constexpr char kCannotCreateExportFile[] = "Cannot create export file";
inline constexpr char kCannotWriteFile[] = "Cannot write the file '%1': %2";
inline constexpr char kCannotOpenFile[] = "Cannot open the file '%1'";
inline constexpr char kFileTooLarge[] =
    "The file '%1' is larger than 1 GiB: a translation file is never that large.";
inline constexpr char kNotATranslationFile[] = "This does not seem to be a translation file";
inline constexpr char kLanguageNotRecognised[] = "Language not recognised...";
inline constexpr char kLanguageNotDefined[] = "The language '%1' is not defined in the qes file!";
inline constexpr char kReferenceLanguageNotFound[] =
    "The reference language has not been found in the file! It is not possible to know if a "
    "caption has changed!";
inline constexpr char kImportedWithRejects[] =
    "%1 captions have been imported!\r\n%2 captions had been modified since the export and were "
    "ignored. The file '%3' has been created that will need to be retranslated.";
inline constexpr char kCaptionsModified[] = "%1 captions have been modified!";
inline constexpr char kUnusedStringsFile[] = "UnusedStrings.txt";
inline constexpr char kExportWarning[] =
    "%1 captions cannot make the round trip through the export file unchanged: they begin and "
    "end with a double quote, hold a backslash followed by n, r or t or a zero character, hold two "
    "backslashes in a row in the first language (an import of unchanged captions decodes that "
    "column twice), or are longer than 32,767 characters (spreadsheet programs cut such cells). First ones (question id, response id): %2";
} // namespace exchange::strings
