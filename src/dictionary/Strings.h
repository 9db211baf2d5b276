#pragma once

#include <QCoreApplication>

// The dictionary's texts that users read, kept together so that they are easy to find and
// translate. "%1" is filled by QString::arg, "%d" by a count (util::WithCount).
namespace dictionary::strings {

inline constexpr char kContext[] = "dictionary";

inline constexpr char kCannotCreateDirectory[] =
    QT_TRANSLATE_NOOP("dictionary", "Cannot create directory!");
inline constexpr char kCannotLoad[] =
    QT_TRANSLATE_NOOP("dictionary", "The dictionnary is either empty or cannot be found!");
inline constexpr char kDamagedKept[] = QT_TRANSLATE_NOOP(
    "dictionary",
    "The dictionary file '%1' could not be read whole; it was kept as '%2' before saving.");
inline constexpr char kConflictTitle[] =
    QT_TRANSLATE_NOOP("dictionary", "Conflict while adding to the dictionary");
inline constexpr char kConflictPrompt[] = QT_TRANSLATE_NOOP(
    "dictionary",
    "Please select a line to either create a new entry or merge it with an existing entry");
inline constexpr char kSelectAnEntry[] = QT_TRANSLATE_NOOP("dictionary", "Please select an entry");
inline constexpr char kExistingEntry[] = QT_TRANSLATE_NOOP("dictionary", "Existing entry no %d");
inline constexpr char kNewEntry[] = QT_TRANSLATE_NOOP("dictionary", "New entry");
inline constexpr char kEntriesAdded[] =
    QT_TRANSLATE_NOOP("dictionary", "%d entrie(s) have been added to the dictionary");
inline constexpr char kCaptionsTranslated[] =
    QT_TRANSLATE_NOOP("dictionary", "%d captions have been translated");
inline constexpr char kLoading[] = QT_TRANSLATE_NOOP("dictionary", "Loading the dictionary");
inline constexpr char kSaving[] = QT_TRANSLATE_NOOP("dictionary", "Saving the dictionary");
inline constexpr char kTranslating[] =
    QT_TRANSLATE_NOOP("dictionary", "Translating from the dictionary");
inline constexpr char kSending[] = QT_TRANSLATE_NOOP("dictionary", "Sending to the dictionary");
inline constexpr char kCannotWriteTmx[] =
    QT_TRANSLATE_NOOP("dictionary", "Cannot write the translation memory '%1': %2");
inline constexpr char kCannotReadTmx[] =
    QT_TRANSLATE_NOOP("dictionary", "Cannot read the translation memory '%1': %2");
inline constexpr char kNotTmx[] =
    QT_TRANSLATE_NOOP("dictionary", "'%1' is not a TMX translation memory.");

} // namespace dictionary::strings

namespace dictionary {
// A text of the dictionary in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace dictionary
