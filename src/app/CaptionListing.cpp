#include "app/CaptionListing.h"

#include "questionnaire/CaptionTable.h"

namespace app {

void PrintCaptionList(const questionnaire::CaptionTable& table, QTextStream& out) {
    out << "QuestionId\tResponseId\tLabel";
    for (int column = 0; column < table.ColumnCount(); ++column)
        out << '\t' << table.ColumnLanguage(column) << '(' << table.ColumnTitle(column) << ')';
    out << '\n';
    for (qsizetype row = 0; row < table.RowCount(); ++row) {
        out << table.QuestionId(row) << '\t' << table.ResponseId(row) << '\t'
            << table.RowLabel(row);
        for (int column = 0; column < table.ColumnCount(); ++column)
            out << '\t' << table.Text(row, column);
        out << '\n';
    }
}

} // namespace app
