#pragma once

#include <QTextStream>

namespace questionnaire {
class CaptionTable;
}

namespace app {

// Prints every caption row of the table: key, row label and the text in each language (the
// default language first), escaped as in the grid so that one row stays on one line.
void PrintCaptionList(const questionnaire::CaptionTable& table, QTextStream& out);

} // namespace app
