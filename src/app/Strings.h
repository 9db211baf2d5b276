#pragma once

#include <QCoreApplication>

// The texts of the document and batch layers that users read, kept together so that they are
// easy to find and translate ("%1" is filled by QString::arg).
namespace app::strings {

inline constexpr char kContext[] = "app";

inline constexpr char kCannotSaveFile[] = QT_TRANSLATE_NOOP("app", "Cannot save the file");
inline constexpr char kRowsLeftOut[] =
    QT_TRANSLATE_NOOP("app", "%1 rows were left out: they match several dictionary entries or "
                             "conflict with one, which needs a choice.");
inline constexpr char kCannotSaveDictionary[] =
    QT_TRANSLATE_NOOP("app", "Cannot save the dictionary '%1'.");
inline constexpr char kUnitsLeftOut[] =
    QT_TRANSLATE_NOOP("app", "%1 translation units were left out: they match several dictionary "
                             "entries or conflict with one, which needs a choice.");
inline constexpr char kExportOverSource[] =
    QT_TRANSLATE_NOOP("app", "Nothing was exported: '%1' is the file the export reads from. "
                             "Choose another file name.");
inline constexpr char kUnknownXliffVersion[] =
    QT_TRANSLATE_NOOP("app", "Unknown XLIFF version '%1': the versions are 1.2 and 2.0.");

} // namespace app::strings

namespace app {
// A text of the document and batch layers in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace app
