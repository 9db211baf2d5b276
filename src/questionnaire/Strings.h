#pragma once

#include <QCoreApplication>

// The texts of the questionnaire library that users read, kept together so that they are easy to
// find and translate ("%1" and "%2" are filled by QString::arg).
namespace questionnaire::strings {

inline constexpr char kContext[] = "questionnaire";

inline constexpr char kCampaignNotSupported[] = QT_TRANSLATE_NOOP(
    "questionnaire",
    "Campaign databases (.qew) are not supported yet by this version of the program.");
inline constexpr char kNoWorkingFolder[] =
    QT_TRANSLATE_NOOP("questionnaire", "The file '%1' has no extension, so it has no working "
                                       "folder to unpack into.");
inline constexpr char kNoStore[] =
    QT_TRANSLATE_NOOP("questionnaire", "This version of the program cannot open '%1'.");

} // namespace questionnaire::strings

namespace questionnaire {
// A text of the library in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace questionnaire
