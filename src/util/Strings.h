#pragma once

#include <QCoreApplication>

// The texts of the utility layer that users read, kept together so that they are easy to find
// and translate ("%1" and "%2" are filled by QString::arg).
namespace util::strings {

inline constexpr char kContext[] = "util";

inline constexpr char kDatabaseDriverInstalled[] =
    QT_TRANSLATE_NOOP("util", "The database driver %1 is not installed.");
inline constexpr char kFileCannotFound[] =
    QT_TRANSLATE_NOOP("util", "The file '%1' cannot be found.");
inline constexpr char kFileIsFolder[] = QT_TRANSLATE_NOOP("util", "'%1' is a folder, not a file.");
inline constexpr char kFileNotOrdinary[] =
    QT_TRANSLATE_NOOP("util", "'%1' is not an ordinary file and cannot be replaced.");
inline constexpr char kFileNotWritable[] =
    QT_TRANSLATE_NOOP("util", "You do not have permission to change the file '%1'.");
inline constexpr char kTransactionOpen[] = QT_TRANSLATE_NOOP("util", "No transaction is open.");

} // namespace util::strings

namespace util {
// A text of the utility layer in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace util
