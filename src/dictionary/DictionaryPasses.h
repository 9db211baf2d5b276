#pragma once

#include <QtGlobal>

class CDictionary;
class ConflictChooser;

namespace questionnaire {
class CaptionTable;
}
namespace util {
class Progress;
}

namespace dictionary {

// Fills empty captions from the dictionary, as the grid's "Auto-translate" does: for every empty
// cell, every non-empty cell of the row (in the grid's escaped form, read before anything is
// written) is looked up; each hit is stored, a later one over an earlier one, and counted. Only
// long captions, short captions and responses receive translations. When any was stored, the
// table tells its listeners that the questionnaire changed. Returns the count; a pass the user
// stops keeps what it stored so far.
int AutoTranslate(questionnaire::CaptionTable& table, const CDictionary& dictionary,
                  util::Progress* progress = nullptr);

// Sends rows first..last of the table to the dictionary, as "Send to dictionary" does: each row
// with texts in two languages or more. False, at once, when the chooser cancelled or the user
// stopped the pass.
bool SendToDictionary(const questionnaire::CaptionTable& table, qsizetype first, qsizetype last,
                      CDictionary& dictionary, ConflictChooser& chooser, int& added,
                      util::Progress* progress = nullptr);

} // namespace dictionary
