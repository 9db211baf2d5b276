#pragma once

#include <QString>
#include <QTextStream>

class CQuestionnaire;

namespace app {

// Prints every caption row: key, row label and the text in each language (main language
// first), escaped as in the grid so that one row stays on one line.
void PrintCaptionList(const CQuestionnaire& q, QTextStream& out);

} // namespace app
