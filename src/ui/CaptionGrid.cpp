#include "ui/CaptionGrid.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QPrinter>

#include <algorithm>
#include <limits>

namespace ui {

namespace {

constexpr char kPrintContext[] = "CaptionGrid";
constexpr char kPageFooter[] = QT_TRANSLATE_NOOP("CaptionGrid", "Page %u of %u");

// The block of cells the selection spans, hidden rows and columns included.
struct Block {
    int top = -1, left = -1, bottom = -1, right = -1;
    bool IsEmpty() const { return top < 0; }
};

Block Bounds(const QItemSelection& selection) {
    Block block;
    for (const QItemSelectionRange& range : selection) {
        if (!range.isValid())
            continue;
        if (block.IsEmpty()) {
            block = {range.top(), range.left(), range.bottom(), range.right()};
            continue;
        }
        block.top = std::min(block.top, range.top());
        block.left = std::min(block.left, range.left());
        block.bottom = std::max(block.bottom, range.bottom());
        block.right = std::max(block.right, range.right());
    }
    return block;
}

bool IsMove(int key) {
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return false;
    }
}

} // namespace

// One line of escaped text that widens itself, up to the right edge of the grid, to show what
// is typed.
class CellEditor : public QLineEdit {
public:
    CellEditor(QWidget* parent, QWidget* viewport) : QLineEdit(parent), m_viewport(viewport) {
        setFrame(false);
        setMaxLength(std::numeric_limits<int>::max()); // a longer caption would be cut short
        connect(this, &QLineEdit::textChanged, this, [this] { Fit(); });
    }
    void SetBaseGeometry(const QRect& rect) {
        m_base = rect;
        Fit();
    }
    bool initialised = false;
    bool ending = false;

private:
    void Fit() {
        if (m_base.isNull())
            return;
        const int wanted =
            fontMetrics().horizontalAdvance(text()) + 2 * fontMetrics().averageCharWidth() + 4;
        const int room = std::max(m_base.width(), m_viewport->width() - m_base.left());
        setGeometry(m_base.left(), m_base.top(), std::clamp(wanted, m_base.width(), room),
                    m_base.height());
    }
    QWidget* m_viewport;
    QRect m_base;
};

CaptionDelegate::CaptionDelegate(CaptionGrid* grid) : QStyledItemDelegate(grid), m_grid(grid) {}

QWidget* CaptionDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
    Q_UNUSED(index);
    auto* editor = new CellEditor(parent, m_grid->viewport());
    editor->setFont(option.font);
    m_grid->m_editor = editor;
    return editor;
}

void CaptionDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto* line = static_cast<CellEditor*>(editor);
    // The editor keeps what is typed even when the cell changes underneath it.
    if (line->initialised)
        return;
    line->initialised = true;
    line->setText(index.data(Qt::EditRole).toString());
}

void CaptionGrid::ApplyStart(QLineEdit* line) const {
    switch (m_start) {
    case EditStart::Click:
    case EditStart::Enter:
        line->end(false);
        break;
    case EditStart::Backspace:
        line->end(false);
        line->backspace();
        break;
    case EditStart::Select:
        line->selectAll();
        break;
    case EditStart::Typed:
        line->selectAll();
        line->insert(m_typed);
        break;
    }
}

void CaptionDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                   const QModelIndex& index) const {
    const QString text = static_cast<CellEditor*>(editor)->text();
    if (text == index.data(Qt::EditRole).toString())
        return; // unchanged: nothing is written, nothing marked modified
    model->setData(index, text, Qt::EditRole);
}

void CaptionDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                           const QModelIndex& index) const {
    Q_UNUSED(index);
    static_cast<CellEditor*>(editor)->SetBaseGeometry(option.rect);
}

bool CaptionDelegate::eventFilter(QObject* object, QEvent* event) {
    auto* editor = dynamic_cast<CellEditor*>(object);
    if (!editor || editor->ending)
        return false;
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const Qt::KeyboardModifiers modifiers = key->modifiers();
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            m_grid->EndEdit(editor, true, 0, modifiers);
            return true;
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            m_grid->EndEdit(editor, true, key->key(), modifiers);
            return true;
        case Qt::Key_Escape:
            m_grid->EndEdit(editor, false, 0, modifiers);
            return true;
        default:
            if (!IsMove(key->key()))
                return false;
            // After a key, or with Ctrl, the arrows end the edit and move on.
            if (m_grid->StartedByKey() || modifiers.testFlag(Qt::ControlModifier)) {
                m_grid->EndEdit(editor, true, key->key(), modifiers);
                return true;
            }
            // After a click they move the caret, up and down as left and right do on one line.
            if (key->key() == Qt::Key_Up || key->key() == Qt::Key_PageUp) {
                editor->cursorBackward(modifiers.testFlag(Qt::ShiftModifier));
                return true;
            }
            if (key->key() == Qt::Key_Down || key->key() == Qt::Key_PageDown) {
                editor->cursorForward(modifiers.testFlag(Qt::ShiftModifier));
                return true;
            }
            return false;
        }
    }
    if (event->type() == QEvent::FocusOut) {
        // A menu or a drag only borrows the focus for a while; anything else ends the edit.
        if (QApplication::activePopupWidget() == nullptr)
            m_grid->EndEdit(editor, true, 0, Qt::NoModifier);
        return false;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        // The editor's own copy, cut and paste work on its text, not on the grid's cells.
        return false;
    }
    return false;
}

CaptionGrid::CaptionGrid(QWidget* parent) : QTableView(parent) {
    // Cells, headers and printouts share one font that covers most scripts; where that face is
    // missing the system puts its closest sans-serif in its place.
    QFont cells(QStringLiteral("Arial Unicode MS"), 8);
    cells.setStyleHint(QFont::SansSerif);
    setFont(cells);
    setItemDelegate(new CaptionDelegate(this));
    setEditTriggers(NoEditTriggers); // edits start as keyPressEvent and the mouse handlers say
    setWordWrap(true);
    setTabKeyNavigation(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(DropOnly);
    setDropIndicatorShown(false);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectItems);
    horizontalHeader()->setDefaultSectionSize(kColumnWidth);
    horizontalHeader()->setDefaultAlignment(
        Qt::Alignment(int(Qt::AlignCenter) | int(Qt::TextWordWrap)));
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    // Rows keep one height: measuring millions of wrapped texts would cost more than it shows.
    verticalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() * 2 + 1);
    verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void CaptionGrid::setModel(QAbstractItemModel* model) {
    QTableView::setModel(model);
    horizontalHeader()->setDefaultSectionSize(kColumnWidth);
}

bool CaptionGrid::HasSelection() const {
    return selectionModel() && selectionModel()->hasSelection();
}

QString CaptionGrid::SelectedText() const {
    if (!HasSelection())
        return {};
    const Block block = Bounds(selectionModel()->selection());
    if (block.IsEmpty())
        return {};
    QString text;
    bool firstRow = true;
    for (int row = block.top; row <= block.bottom; ++row) {
        if (isRowHidden(row) || rowHeight(row) == 0)
            continue;
        if (!firstRow)
            text += QLatin1Char('\n');
        firstRow = false;
        bool firstCell = true;
        for (int column = block.left; column <= block.right; ++column) {
            if (isColumnHidden(column) || columnWidth(column) == 0)
                continue;
            if (!firstCell)
                text += QLatin1Char('\t');
            firstCell = false;
            const QModelIndex index = model()->index(row, column);
            if (selectionModel()->isSelected(index))
                text += index.data(Qt::DisplayRole).toString();
        }
    }
    return text;
}

void CaptionGrid::Copy() {
    if (HasSelection())
        QApplication::clipboard()->setText(SelectedText());
}

void CaptionGrid::Cut() {
    if (!HasSelection())
        return;
    Copy();
    ClearSelectedCells();
}

void CaptionGrid::ClearSelectedCells() {
    if (!HasSelection() || !model())
        return;
    const Block block = Bounds(selectionModel()->selection());
    const QItemSelection selection = selectionModel()->selection();
    for (int row = block.top; row <= block.bottom; ++row)
        for (int column = block.left; column <= block.right; ++column) {
            const QModelIndex index = model()->index(row, column);
            if (selection.contains(index) && index.flags().testFlag(Qt::ItemIsEditable))
                model()->setData(index, QString(), Qt::EditRole);
        }
}

void CaptionGrid::Paste() {
    const QString text = QApplication::clipboard()->text();
    if (!text.isEmpty())
        PasteText(text, currentIndex());
}

void CaptionGrid::PasteText(const QString& text, const QModelIndex& start) {
    if (!start.isValid() || !model())
        return;
    QStringList rows = text.split(QLatin1Char('\n'));
    if (rows.size() > 1 && rows.back().isEmpty())
        rows.removeLast(); // the line feed that ends a copied block starts no row
    for (qsizetype r = 0; r < rows.size(); ++r) {
        QString line = rows[r];
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1); // spreadsheets end their rows with CR LF
        const QStringList cells = line.split(QLatin1Char('\t'));
        for (qsizetype c = 0; c < cells.size(); ++c) {
            const QModelIndex index = model()->index(start.row() + int(r), start.column() + int(c));
            if (index.isValid() && index.flags().testFlag(Qt::ItemIsEditable))
                model()->setData(index, cells[c], Qt::EditRole);
        }
    }
}

void CaptionGrid::SelectAllCells() {
    selectAll();
}

void CaptionGrid::StartEdit(const QModelIndex& index, EditStart start, const QString& typed) {
    if (!index.isValid() || !index.flags().testFlag(Qt::ItemIsEditable))
        return;
    m_start = start;
    m_typed = typed;
    if (currentIndex() != index)
        setCurrentIndex(index);
    // The view selects the whole text of a new editor; the start decides afterwards.
    if (edit(index, AllEditTriggers, nullptr) && m_editor)
        ApplyStart(m_editor);
}

void CaptionGrid::EndEdit(QWidget* editor, bool keep, int key, Qt::KeyboardModifiers modifiers) {
    auto* line = static_cast<CellEditor*>(editor);
    if (line->ending)
        return;
    line->ending = true;
    if (keep)
        commitData(editor);
    closeEditor(editor,
                keep ? QAbstractItemDelegate::NoHint : QAbstractItemDelegate::RevertModelCache);
    setFocus();
    if (key != 0)
        MoveCurrent(key, modifiers);
}

void CaptionGrid::FinishEdit() {
    if (m_editor)
        EndEdit(m_editor, true, 0, Qt::NoModifier);
}

void CaptionGrid::MoveCurrent(int key, Qt::KeyboardModifiers modifiers) {
    CursorAction action = MoveRight;
    switch (key) {
    case Qt::Key_Up:
        action = MoveUp;
        break;
    case Qt::Key_Down:
        action = MoveDown;
        break;
    case Qt::Key_Left:
        action = MoveLeft;
        break;
    case Qt::Key_Right:
        action = MoveRight;
        break;
    case Qt::Key_PageUp:
        action = MovePageUp;
        break;
    case Qt::Key_PageDown:
        action = MovePageDown;
        break;
    case Qt::Key_Tab:
        action = MoveNext;
        break;
    case Qt::Key_Backtab:
        action = MovePrevious;
        break;
    default:
        return;
    }
    const QModelIndex next = moveCursor(action, modifiers & ~Qt::ControlModifier);
    if (next.isValid())
        setCurrentIndex(next);
}

void CaptionGrid::keyPressEvent(QKeyEvent* event) {
    if (state() == EditingState || !currentIndex().isValid()) {
        QTableView::keyPressEvent(event);
        return;
    }
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool plain = !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        StartEdit(currentIndex(), EditStart::Enter);
        return;
    case Qt::Key_Backspace:
        if (plain) {
            StartEdit(currentIndex(), EditStart::Backspace);
            return;
        }
        break;
    case Qt::Key_Delete:
        if (plain && !modifiers.testFlag(Qt::ShiftModifier)) {
            ClearSelectedCells();
            return;
        }
        break;
    default:
        break;
    }
    // One printable character, also one beyond the 16-bit range; Ctrl+Alt is AltGr on Windows.
    const QString text = event->text();
    const QList<uint> characters = text.toUcs4();
    const bool altGr =
        modifiers.testFlag(Qt::ControlModifier) && modifiers.testFlag(Qt::AltModifier);
    if ((plain || altGr) && characters.size() == 1 && QChar::isPrint(characters[0])) {
        if (text == QLatin1String(" "))
            StartEdit(currentIndex(), EditStart::Select);
        else
            StartEdit(currentIndex(), EditStart::Typed, text);
        return;
    }
    QTableView::keyPressEvent(event);
}

void CaptionGrid::inputMethodEvent(QInputMethodEvent* event) {
    // The view's own handling would search the column for the character and move there.
    if (state() == EditingState || !currentIndex().isValid() ||
        (event->commitString().isEmpty() && event->preeditString().isEmpty())) {
        event->ignore();
        return;
    }
    StartEdit(currentIndex(), EditStart::Typed, event->commitString());
    if (m_editor && !event->preeditString().isEmpty()) {
        // A composition under way goes on in the editor.
        QInputMethodEvent preedit(event->preeditString(), event->attributes());
        QCoreApplication::sendEvent(m_editor, &preedit);
    }
    event->accept();
}

void CaptionGrid::mousePressEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    // Only a click on the one selected cell, which has the focus, opens it: a click that
    // narrows a selection down to the focused cell does not.
    const QItemSelection selection =
        selectionModel() ? selectionModel()->selection() : QItemSelection();
    const bool alone = selection.size() == 1 && selection.front().height() == 1 &&
                       selection.front().width() == 1 && selection.front().contains(index);
    m_pressOnCurrent = event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier &&
                       index.isValid() && index == currentIndex() && alone &&
                       state() != EditingState;
    QTableView::mousePressEvent(event);
}

void CaptionGrid::mouseReleaseEvent(QMouseEvent* event) {
    QTableView::mouseReleaseEvent(event);
    if (event->button() == Qt::RightButton) {
        Q_EMIT ContextMenuWanted(event->globalPosition().toPoint());
        return;
    }
    // A click on the cell that already has the focus opens it for editing.
    const QModelIndex index = indexAt(event->position().toPoint());
    if (m_pressOnCurrent && index == currentIndex())
        StartEdit(index, EditStart::Click);
    m_pressOnCurrent = false;
}

void CaptionGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index.isValid())
        StartEdit(index, EditStart::Click);
    else
        QTableView::mouseDoubleClickEvent(event);
}

void CaptionGrid::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasText())
        event->acceptProposedAction();
    else
        event->ignore();
}

void CaptionGrid::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData()->hasText() && indexAt(event->position().toPoint()).isValid())
        event->acceptProposedAction();
    else
        event->ignore();
}

void CaptionGrid::dropEvent(QDropEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (!event->mimeData()->hasText() || !index.isValid()) {
        event->ignore();
        return;
    }
    PasteText(event->mimeData()->text(), index);
    event->acceptProposedAction();
}

bool CaptionGrid::Print(QPrinter& printer) {
    QAbstractItemModel* source = model();
    if (!source)
        return false;
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    painter.setFont(font());
    const QRect page = printer.pageLayout().paintRectPixels(printer.resolution());
    const QRect area(0, 0, page.width(), page.height());
    const QFontMetrics metrics(painter.font(), &printer);
    const int line = metrics.lineSpacing();
    const int footer = line * 2;
    const int rowHeight = line * 2 + line / 2;
    // Widths in printer pixels, as the screen's column widths scaled to the paper.
    const double scale = double(printer.resolution()) / logicalDpiX();
    const int labelWidth = std::max(int(verticalHeader()->width() * scale), line * 4);
    const int columnWidth = std::max(int(kColumnWidth * scale), line * 4);
    const int rows = source->rowCount();
    const int columns = source->columnCount();
    const int columnsPerPage = std::max(1, (area.width() - labelWidth) / columnWidth);
    const int rowsPerPage = std::max(1, (area.height() - footer - rowHeight) / rowHeight);
    const int rowBands = std::max(1, (rows + rowsPerPage - 1) / rowsPerPage);
    const int columnBands = std::max(1, (columns + columnsPerPage - 1) / columnsPerPage);
    const unsigned pages = unsigned(rowBands) * unsigned(columnBands);
    const QString footerPattern = QCoreApplication::translate(kPrintContext, kPageFooter);
    unsigned number = 0;
    for (int band = 0; band < rowBands; ++band) {
        for (int columnBand = 0; columnBand < columnBands; ++columnBand) {
            if (number > 0)
                printer.newPage();
            ++number;
            const int firstColumn = columnBand * columnsPerPage;
            const int lastColumn = std::min(columns, firstColumn + columnsPerPage);
            const int firstRow = band * rowsPerPage;
            const int lastRow = std::min(rows, firstRow + rowsPerPage);
            painter.setPen(QPen(Qt::gray, 0));
            int x = labelWidth;
            for (int c = firstColumn; c < lastColumn; ++c, x += columnWidth) {
                const QRect cell(x, 0, columnWidth, rowHeight);
                painter.drawRect(cell);
                painter.setPen(Qt::black);
                painter.drawText(cell.adjusted(2, 2, -2, -2), Qt::AlignCenter | Qt::TextWordWrap,
                                 source->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString());
                painter.setPen(QPen(Qt::gray, 0));
            }
            int y = rowHeight;
            for (int r = firstRow; r < lastRow; ++r, y += rowHeight) {
                const QRect label(0, y, labelWidth, rowHeight);
                painter.setPen(QPen(Qt::gray, 0));
                painter.drawRect(label);
                painter.setPen(Qt::black);
                painter.drawText(label.adjusted(2, 2, -2, -2), Qt::AlignLeft | Qt::AlignVCenter,
                                 source->headerData(r, Qt::Vertical, Qt::DisplayRole).toString());
                int cx = labelWidth;
                for (int c = firstColumn; c < lastColumn; ++c, cx += columnWidth) {
                    const QRect cell(cx, y, columnWidth, rowHeight);
                    painter.setPen(QPen(Qt::gray, 0));
                    painter.drawRect(cell);
                    painter.setPen(Qt::black);
                    painter.drawText(cell.adjusted(2, 2, -2, -2),
                                     Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                                     source->index(r, c).data(Qt::DisplayRole).toString());
                }
            }
            QString footerText = footerPattern;
            footerText.replace(footerText.indexOf(QLatin1String("%u")), 2, QString::number(number));
            footerText.replace(footerText.indexOf(QLatin1String("%u")), 2, QString::number(pages));
            painter.setPen(Qt::black);
            painter.drawText(QRect(0, area.height() - footer, area.width(), footer),
                             Qt::AlignHCenter | Qt::AlignBottom, footerText);
        }
    }
    return painter.end();
}

} // namespace ui
