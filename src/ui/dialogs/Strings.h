#pragma once

#include <QCoreApplication>

// The texts of the export and import dialogs and their controls, kept together so that they are
// easy to find and translate ("%1" is filled by QString::arg).
namespace ui::dialogs::strings {

inline constexpr char kContext[] = "ui::dialogs";

inline constexpr char kAllVersions[] = QT_TRANSLATE_NOOP("ui::dialogs", "All versions");
inline constexpr char kBrowse[] = QT_TRANSLATE_NOOP("ui::dialogs", "...");
inline constexpr char kTextFiles[] = QT_TRANSLATE_NOOP("ui::dialogs", "Text files (*.txt)");
inline constexpr char kAllFiles[] = QT_TRANSLATE_NOOP("ui::dialogs", "All files (*.*)");
inline constexpr char kXliffFiles[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "XLIFF files (*.xlf *.xliff)");
inline constexpr char kTranslationFiles[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Translation files (*.txt *.xlf *.xliff)");
inline constexpr char kFormat[] = QT_TRANSLATE_NOOP("ui::dialogs", "Format:");
inline constexpr char kFormatText[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Tab-separated text, for spreadsheets (.txt)");
inline constexpr char kFormatXliff12[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "XLIFF 1.2, for translation tools (.xlf)");
inline constexpr char kFormatXliff20[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "XLIFF 2.0, for translation tools (.xlf)");

inline constexpr char kExportTitle[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Export languages you want to export");
inline constexpr char kOutputFile[] = QT_TRANSLATE_NOOP("ui::dialogs", "Output file:");
inline constexpr char kVersions[] = QT_TRANSLATE_NOOP("ui::dialogs", "Versions:");
inline constexpr char kExcludeTranslated[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude already translated captions");
inline constexpr char kExcludeDuplicates[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude duplicated captions");
inline constexpr char kExcludeNonVisible[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude non visible questions");
inline constexpr char kExcludeSystemMessages[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude system messages");
inline constexpr char kExcludeRoutings[] = QT_TRANSLATE_NOOP("ui::dialogs", "Exclude routings");
inline constexpr char kExcludeLongCaptions[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude question long captions");
inline constexpr char kExcludeShortCaptions[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude question short captions");
inline constexpr char kExcludeInstructions[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Exclude instructions");
inline constexpr char kExcludeComments[] = QT_TRANSLATE_NOOP("ui::dialogs", "Exclude comments");
inline constexpr char kExcludeResponses[] = QT_TRANSLATE_NOOP("ui::dialogs", "Exclude responses");
inline constexpr char kShowShortcuts[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Show shortcuts and entry-codes");
inline constexpr char kOrderOfLanguages[] = QT_TRANSLATE_NOOP("ui::dialogs", "Order of languages");
inline constexpr char kAbbreviation[] = QT_TRANSLATE_NOOP("ui::dialogs", "Abbreviation");
inline constexpr char kLanguage[] = QT_TRANSLATE_NOOP("ui::dialogs", "Language");
inline constexpr char kSelectOutputFile[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Please select an output file!");
inline constexpr char kSelectTwoLanguages[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Please select at least 2 languages");

inline constexpr char kImportTitle[] = QT_TRANSLATE_NOOP("ui::dialogs", "Import file");
inline constexpr char kTranslatedFile[] = QT_TRANSLATE_NOOP("ui::dialogs", "Translated file:");
inline constexpr char kOnlyUnchanged[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Only import unchanged captions since the export");
inline constexpr char kCopyIdentical[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Copy over identical strings");
inline constexpr char kReferenceLanguage[] =
    QT_TRANSLATE_NOOP("ui::dialogs", "Reference language:");
// A language of the reference list: its abbreviation, then its name.
inline constexpr char kLanguageItem[] = QT_TRANSLATE_NOOP("ui::dialogs", "%1 - %2");

} // namespace ui::dialogs::strings

namespace ui::dialogs {
// A text of the dialogs in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace ui::dialogs
