#pragma once

#include "questionnaire/Questionnaire.h"

#include <QString>

namespace testutil {

constexpr qint32 kEnglish = 1033;
constexpr qint32 kFrench = 1036;
constexpr qint32 kGerman = 1031;

// A small questionnaire with every kind of caption: English (main), French and German;
// versions 1 and 2; a hidden parent with a visible child; a numeric question; responses limited
// to versions; routings of kind 2 and 1; one custom system message.
CQuestionnaire MakeSample();

// Runs xmllint against the shipped schema; empty when valid, else xmllint's complaint.
QString ValidateAgainstSchema(const QString& xmlPath);

} // namespace testutil
