#pragma once

#include <QCoreApplication>

// The texts of the campaign schema that users read, kept together so that they are easy to find
// and translate ("%1" and "%2" are filled by QString::arg).
namespace campaign::schemastrings {

inline constexpr char kContext[] = "campaign";

inline constexpr char kTableTwice[] =
    QT_TRANSLATE_NOOP("campaign", "the table '%1' is described twice");
inline constexpr char kColumnMissing[] =
    QT_TRANSLATE_NOOP("campaign", "the table '%1' has no column '%2'");
inline constexpr char kTableMissing[] =
    QT_TRANSLATE_NOOP("campaign", "the relation '%1' names the missing table '%2'");

// A migration step that failed: the step, then the database's two texts ("%1" to "%3").
inline constexpr char kAdoError[] = QT_TRANSLATE_NOOP("campaign", "ADO error %1 - %2 - %3");

} // namespace campaign::schemastrings

namespace campaign {
// A text of the campaign schema in the user's language.
inline QString SchemaTr(const char* text) {
    return QCoreApplication::translate(schemastrings::kContext, text);
}
} // namespace campaign
