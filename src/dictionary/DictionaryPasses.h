#pragma once

#include "questionnaire/CaptionList.h"

#include <QList>

class CDictionary;
class CQuestionnaire;
class ConflictChooser;

namespace dictionary {

// Fills empty captions from the dictionary, as the grid's "Auto-translate" does: for every empty
// cell, every non-empty cell of the row (in the grid's escaped form) is looked up; each hit is
// stored, a later one over an earlier one, and counted. Only long captions, short captions and
// responses receive translations. Returns the count.
int AutoTranslate(CQuestionnaire& q, const questionnaire::CaptionList& rows,
                  const QList<qint32>& columns, const CDictionary& dictionary);

// Sends rows first..last (grid order) to the dictionary, as "Send to dictionary" does: each row
// with texts in two languages or more. False, at once, when the chooser cancelled.
bool SendToDictionary(const CQuestionnaire& q, const questionnaire::CaptionList& rows,
                      const QList<qint32>& columns, qsizetype first, qsizetype last,
                      CDictionary& dictionary, ConflictChooser& chooser, int& added);

} // namespace dictionary
