#pragma once

#include "questionnaire/CaptionTable.h"

#include <QAbstractTableModel>

namespace ui {

// The caption grid's model: a thin adapter over the core's caption table. It stores nothing per
// row or cell: every text, label and icon is read from the table when the view asks, so a
// questionnaire of millions of captions costs the model nothing.
class CaptionModel : public QAbstractTableModel, private questionnaire::CaptionTableListener {
    Q_OBJECT
public:
    explicit CaptionModel(questionnaire::CaptionTable& table, QObject* parent = nullptr);
    ~CaptionModel() override;

    questionnaire::CaptionTable& Table() const { return m_table; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes an edited cell back; false when the table refuses it, and the cell then shows its
    // old text again.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    void CellChanged(qsizetype row, int column) override;
    void TableRefilled() override;

    questionnaire::CaptionTable& m_table;
};

} // namespace ui
