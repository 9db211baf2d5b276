#include "ui/support/ConflictDialog.h"

#include "dictionary/Strings.h"
#include "ui/support/PlainTip.h"
#include "ui/support/WidgetMessages.h"

#include <QAbstractTableModel>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace ui {

namespace {

// The list's grid as a table: its first row and column become the headers (the languages'
// abbreviations, the rows' labels). Cells are read from the list when the view asks.
class ConflictModel : public QAbstractTableModel {
public:
    ConflictModel(const ConflictList& list, QObject* parent)
        : QAbstractTableModel(parent), m_list(list) {}

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : m_list.RowCount();
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : m_list.ColumnCount() - 1;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
            return {};
        const QString text = m_list.Cell(index.row() + 1, index.column() + 1);
        return role == Qt::ToolTipRole ? PlainTip(text) : text;
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role != Qt::DisplayRole)
            return QAbstractTableModel::headerData(section, orientation, role);
        return orientation == Qt::Horizontal ? m_list.Cell(0, section + 1)
                                             : m_list.Cell(section + 1, 0);
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
    }

private:
    const ConflictList& m_list;
};

constexpr int kLabelWidth = 100;   // the column of the rows' labels, at least
constexpr int kMaxTextWidth = 240; // a long caption is cut here; the tooltip shows it whole
constexpr int kMinTableWidth = 460;
constexpr int kMaxTableWidth = 900;

} // namespace

ConflictDialog::ConflictDialog(const ConflictList& list, util::Messages* messages, QWidget* parent)
    : QDialog(parent), m_list(list), m_messages(messages), m_table(new QTableView(this)) {
    if (!m_messages) {
        m_ownMessages = std::make_unique<WidgetMessages>(this);
        m_messages = m_ownMessages.get();
    }
    setWindowTitle(dictionary::Tr(dictionary::strings::kConflictTitle));

    auto* prompt = new QLabel(dictionary::Tr(dictionary::strings::kConflictPrompt), this);
    prompt->setWordWrap(true);

    m_table->setModel(new ConflictModel(m_list, m_table));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->setMinimumWidth(kLabelWidth);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->resizeColumnsToContents();
    for (int c = 0; c < m_table->model()->columnCount(); ++c)
        m_table->setColumnWidth(c, std::min(m_table->columnWidth(c), kMaxTextWidth));
    m_table->horizontalHeader()->setStretchLastSection(true);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &ConflictDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ConflictDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(m_table, 1);
    layout->addWidget(buttons);

    // Wide enough to show the entries' texts up to the cut, high enough for every row of a
    // usual conflict (a handful); more rows scroll.
    const int frame = 2 * m_table->frameWidth();
    int width = m_table->verticalHeader()->sizeHint().width() + frame +
                m_table->verticalScrollBar()->sizeHint().width();
    for (int c = 0; c < m_table->model()->columnCount(); ++c)
        width += m_table->columnWidth(c);
    const int rows = std::clamp(m_list.RowCount(), 4, 8);
    const int height = m_table->horizontalHeader()->sizeHint().height() + frame +
                       rows * m_table->verticalHeader()->defaultSectionSize();
    m_table->setMinimumHeight(m_table->horizontalHeader()->sizeHint().height() + frame +
                              2 * m_table->verticalHeader()->defaultSectionSize());
    const QMargins margins = layout->contentsMargins();
    // The prompt on one line where the screen allows it.
    width =
        std::max({width, kMinTableWidth, prompt->fontMetrics().horizontalAdvance(prompt->text())});
    width = std::min(width, kMaxTableWidth);
    resize(width + margins.left() + margins.right(), margins.top() + prompt->heightForWidth(width) +
                                                         height + buttons->sizeHint().height() +
                                                         2 * layout->spacing() + margins.bottom());
}

ConflictDialog::~ConflictDialog() = default;

void ConflictDialog::accept() {
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        m_messages->Warn(dictionary::Tr(dictionary::strings::kSelectAnEntry));
        return;
    }
    m_choice = m_list.Number(rows.front().row());
    QDialog::accept();
}

qint32 DialogConflictChooser::Choose(const ConflictList& list) {
    ConflictDialog dialog(list, m_messages, m_parent);
    dialog.exec();
    return dialog.Choice();
}

} // namespace ui
