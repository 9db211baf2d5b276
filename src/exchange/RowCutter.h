#pragma once

#include <QString>
#include <QStringList>

namespace exchange {

// Cuts the text of a translated file into rows of cells, one row at a time, as spreadsheet
// programs write tab-separated text: a tab ends a cell, a line end ends a row, and a double
// quote toggles quoting (inside quotes, tabs and line ends are kept and a doubled quote stands
// for one). Empty lines give no row. The text must outlive the cutter.
class RowCutter {
public:
    explicit RowCutter(const QString& text) : m_text(text) {}

    // The next row; false when the text has no more.
    bool Next(QStringList& cells);

private:
    const QString& m_text;
    qsizetype m_pos = 0;
    bool m_inQuotes = false;
    bool m_atLineStart = false;
    bool m_done = false;
    QString m_cell;
};

} // namespace exchange
