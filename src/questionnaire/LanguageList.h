#pragma once

#include <QList>
#include <QString>

class CQuestionnaire;

namespace questionnaire {

// The questionnaire's languages in stored order with the main language moved to the front.
QList<qint32> DefaultLanguageOrder(const CQuestionnaire& q);

// The short name of one of the questionnaire's languages, as column titles show it; the locale
// table's for a language the questionnaire lacks.
QString LanguageShortName(const CQuestionnaire& q, qint32 lcid);

// One item of a language list: a decimal LCID, or a language short name matched
// case-insensitively against every known locale (the first match wins). Surrounding spaces are
// ignored. False when the item names nothing.
bool ParseLanguage(const QString& item, qint32& lcid);

// A comma-separated list of items as above; items that match nothing are dropped.
QList<qint32> ParseLanguageList(const QString& text);

// Adds each listed language the questionnaire lacks, passing over numbers that name no language;
// returns how many were added.
int AddLanguages(CQuestionnaire& q, const QList<qint32>& lcids);

} // namespace questionnaire
