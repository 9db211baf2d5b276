#pragma once

#include <QAbstractTableModel>
#include <QWidget>

#include <vector>

class CDictionary;

namespace util {
class Messages;
}

namespace ui {

class CaptionGrid;

// The dictionary's live entries as rows by its languages as columns. It keeps only the entry
// number of each row; texts are read from the dictionary when the view asks, so a dictionary of
// a million entries opens at once. An edited cell is merged into its entry as a one-language
// row, and then shows what the entry holds.
class DictionaryModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit DictionaryModel(CDictionary& dictionary, QObject* parent = nullptr);

    // Lists the live entries and the languages again (after entries or languages were added
    // elsewhere).
    void Refill();
    // The dictionary gained a language since the last Refill: its column shows after the next.
    bool LanguagesAdded() const;
    // Deletes the entries of rows first..last from the dictionary, the last one first.
    void DeleteRows(int first, int last);
    qint32 EntryNumber(int row) const { return m_shown[size_t(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    CDictionary& m_dictionary;
    std::vector<qint32> m_shown; // entry numbers of the live entries, in entry order
    int m_columns = 0;           // the dictionary's language count at the last Refill
};

// The dictionary window: the grid of its entries, in-place editing and deleting whole rows.
class DictionaryView : public QWidget {
    Q_OBJECT
public:
    DictionaryView(CDictionary& dictionary, util::Messages& messages, QWidget* parent = nullptr);

    CaptionGrid& Grid() const { return *m_grid; }
    DictionaryModel& Model() const { return *m_model; }

    // Deletes every row the selection touches, after asking once.
    void DeleteSelected();
    // After entries were sent from a questionnaire: new rows and new languages are listed, with
    // the current cell and the scroll position kept; changed rows are repainted.
    void DictionaryChanged(bool entriesAdded);

Q_SIGNALS:
    void SelectionChanged();
    void ContextMenuWanted(const QPoint& globalPosition);

private:
    util::Messages& m_messages;
    CaptionGrid* m_grid;
    DictionaryModel* m_model;
};

} // namespace ui
