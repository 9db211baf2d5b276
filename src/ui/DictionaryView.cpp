#include "ui/DictionaryView.h"

#include "dictionary/Dictionary.h"
#include "ui/CaptionGrid.h"
#include "ui/Strings.h"
#include "ui/support/PlainTip.h"
#include "util/Messages.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QVBoxLayout>

namespace ui {

DictionaryModel::DictionaryModel(CDictionary& dictionary, QObject* parent)
    : QAbstractTableModel(parent), m_dictionary(dictionary) {
    Refill();
}

void DictionaryModel::Refill() {
    beginResetModel();
    m_shown.clear();
    for (qint32 number = 0; number < m_dictionary.GetEntryCount(); ++number)
        if (!m_dictionary.GetEntry(number).m_deleted)
            m_shown.push_back(number);
    m_columns = m_dictionary.GetLanguageCount();
    endResetModel();
}

bool DictionaryModel::LanguagesAdded() const {
    return m_dictionary.GetLanguageCount() != m_columns;
}

void DictionaryModel::DeleteRows(int first, int last) {
    first = std::max(first, 0);
    last = std::min(last, rowCount() - 1);
    if (first > last)
        return;
    beginRemoveRows({}, first, last);
    for (int row = last; row >= first; --row)
        m_dictionary.DeleteEntry(m_shown[size_t(row)]);
    m_shown.erase(m_shown.begin() + first, m_shown.begin() + last + 1);
    endRemoveRows();
}

int DictionaryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_shown.size());
}

int DictionaryModel::columnCount(const QModelIndex& parent) const {
    // As of the last Refill: a view learns of new columns only through a reset.
    return parent.isValid() ? 0 : m_columns;
}

QVariant DictionaryModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() ||
        (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole))
        return {};
    const CDicEntry& entry = m_dictionary.GetEntry(m_shown[size_t(index.row())]);
    const auto it = entry.m_texts.find(qint32(m_dictionary.GetLanguage(index.column()).m_id));
    const QString text = it == entry.m_texts.end() ? QString() : it->second;
    return role == Qt::ToolTipRole ? PlainTip(text) : text;
}

QVariant DictionaryModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(
            orientation == Qt::Horizontal ? Qt::AlignCenter : Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return section < columnCount() ? m_dictionary.GetLanguage(section).m_abbreviation
                                       : QVariant();
    return QString::number(section + 1);
}

Qt::ItemFlags DictionaryModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
}

bool DictionaryModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole)
        return false;
    const qint32 number = m_shown[size_t(index.row())];
    const CDicEntry::Texts one = {
        {qint32(m_dictionary.GetLanguage(index.column()).m_id), value.toString()}};
    if (m_dictionary.GetEntry(number).MergeInto(one, number, m_dictionary))
        m_dictionary.SetModified(true);
    // The cell shows what the entry holds now, whatever was typed.
    Q_EMIT dataChanged(index, index);
    return true;
}

DictionaryView::DictionaryView(CDictionary& dictionary, util::Messages& messages, QWidget* parent)
    : QWidget(parent), m_messages(messages), m_grid(new CaptionGrid(this)),
      m_model(new DictionaryModel(dictionary, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_grid);
    m_grid->setModel(m_model);
    m_grid->verticalHeader()->setMinimumWidth(30);
    setFocusProxy(m_grid);
    setWindowTitle(Tr(strings::kDictionaryTitle));
    connect(m_grid->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &DictionaryView::SelectionChanged);
    connect(m_model, &QAbstractItemModel::modelReset, this, &DictionaryView::SelectionChanged);
    connect(m_grid, &CaptionGrid::ContextMenuWanted, this, &DictionaryView::ContextMenuWanted);
}

void DictionaryView::DeleteSelected() {
    if (!m_grid->HasSelection())
        return;
    int top = -1;
    int bottom = -1;
    for (const QItemSelectionRange& range : m_grid->selectionModel()->selection()) {
        top = top < 0 ? range.top() : std::min(top, range.top());
        bottom = std::max(bottom, range.bottom());
    }
    if (top < 0)
        return;
    if (m_messages.Ask(Tr(strings::kDeleteEntries), {util::Answer::Yes, util::Answer::No}) !=
        util::Answer::Yes)
        return;
    m_model->DeleteRows(top, bottom);
}

void DictionaryView::DictionaryChanged(bool entriesAdded) {
    // A merge into an existing entry can bring a new language, and so a new column, without a
    // new entry.
    if (!entriesAdded && !m_model->LanguagesAdded()) {
        m_grid->viewport()->update();
        return;
    }
    // Entries are only ever appended, so rows and columns keep their places across the refill.
    const QModelIndex current = m_grid->currentIndex();
    const int row = current.row();
    const int column = current.column();
    const int vertical = m_grid->verticalScrollBar()->value();
    const int horizontal = m_grid->horizontalScrollBar()->value();
    m_model->Refill();
    m_grid->doItemsLayout(); // the scroll ranges, before the positions are put back
    if (current.isValid())
        m_grid->selectionModel()->setCurrentIndex(m_model->index(row, column),
                                                  QItemSelectionModel::ClearAndSelect);
    m_grid->verticalScrollBar()->setValue(vertical);
    m_grid->horizontalScrollBar()->setValue(horizontal);
}

} // namespace ui
