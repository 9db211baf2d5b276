#pragma once

#include "questionnaire/Question.h"

#include <QLatin1StringView>
#include <QString>
#include <QStringView>

// What the XML form's reader and writer share (format 1, see docs/formats.md).
namespace questionnaire::xml {

inline constexpr int kFormatVersion = 1;

// XML 1.0 cannot carry every UTF-16 string: control characters, U+FFFE/U+FFFF and unpaired
// surrogates have no representation. Such strings are written as hexadecimal code units.
bool IsXmlSafe(QStringView text);
void AppendHex(QStringView text, QString& hex);
bool FromHex(QStringView hex, QString& text);

QLatin1StringView TypeName(QuestionType type);
bool TypeFromName(QStringView name, QuestionType& type);

} // namespace questionnaire::xml
