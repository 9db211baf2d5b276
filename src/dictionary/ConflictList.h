#pragma once

#include "dictionary/DicEntry.h"

#include <QString>

#include <memory>
#include <set>
#include <vector>

class CDictionary;

// What the conflict dialog lists when a sent row matches several entries or conflicts with one:
// "do not add" (number -2), the row as a new entry (-1), then every candidate entry.
class ConflictList {
public:
    static constexpr qint32 kDoNotAdd = -2;
    static constexpr qint32 kNewEntry = -1;

    ConflictList(const std::set<qint32>& candidates, const CDicEntry::Texts& row,
                 const CDictionary& dictionary);

    int RowCount() const { return int(m_rows.size()); }
    qint32 Number(int row) const { return m_rows[size_t(row)].number; }
    const QString& Label(int row) const { return m_rows[size_t(row)].label; }
    const CDicEntry& Entry(int row) const { return *m_rows[size_t(row)].entry; }

    // The cells of the dialog's grid: row 0 and column 0 are headings.
    int ColumnCount() const;
    QString Cell(int gridRow, int gridColumn) const;

private:
    struct Row {
        std::unique_ptr<CDicEntry> entry;
        qint32 number;
        QString label;
    };
    std::vector<Row> m_rows;
    const CDictionary& m_dictionary;
};

// The user's choice in the conflict dialog: a number of the list, or kCancelled. The window
// program asks the user; batch work and tests answer by themselves.
class ConflictChooser {
public:
    static constexpr qint32 kCancelled = -3;
    virtual ~ConflictChooser() = default;
    virtual qint32 Choose(const ConflictList& list) = 0;
};
