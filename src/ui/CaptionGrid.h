#pragma once

#include <QPointer>
#include <QStyledItemDelegate>
#include <QTableView>

class QLineEdit;
class QPainter;
class QPrinter;

namespace ui {

class CaptionGrid;

// How an edit began: the editor opens differently for each.
enum class EditStart {
    Click,     // a click: caret at the end
    Enter,     // caret at the end as for a click, but begun by a key
    Backspace, // caret at the end, last character deleted
    Select,    // space: the whole text selected
    Typed,     // a character replaces the whole text
};

// The in-place editor of the caption grid: one line of escaped text. It ends the edit itself on
// the keys that end one, and grows to the right to fit its text.
class CellEditor;

class CaptionDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit CaptionDelegate(CaptionGrid* grid);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    // Sends nothing when the text is unchanged.
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    CaptionGrid* m_grid;
};

// A spreadsheet-like grid of texts: in-place editing started by typing or clicking, copy, cut and
// paste of cell blocks as tab-separated lines, text dropped on a cell, and printing. Every change
// goes through the model's setData, which may refuse it cell by cell.
class CaptionGrid : public QTableView {
    Q_OBJECT
public:
    static constexpr int kColumnWidth = 200;

    explicit CaptionGrid(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;

    // The selected block as the clipboard carries it: cells by tab, rows by line feed; a cell of
    // the block that is not itself selected gives an empty text.
    QString SelectedText() const;
    bool HasSelection() const;
    // Sets the cells from `text` (rows at line feeds, cells at tabs) from `start` on.
    void PasteText(const QString& text, const QModelIndex& start);
    // Empties every selected cell.
    void ClearSelectedCells();

    // Prints every cell, page by page, each page ending with its number. False when the printer
    // could not be opened.
    bool Print(QPrinter& printer);

    bool StartedByKey() const { return m_start != EditStart::Click; }
    // Ends an edit under way and keeps its text, as losing the focus does: commands that read,
    // save or close the document call it first, so that what the user typed is part of it.
    void FinishEdit();

public Q_SLOTS:
    void Copy();
    void Cut();
    void Paste();
    void SelectAllCells();

Q_SIGNALS:
    // The right mouse button was released over the grid.
    void ContextMenuWanted(const QPoint& globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    // A character composed by a dead key or an input method starts an edit as a typed one does.
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    friend class CaptionDelegate;
    void StartEdit(const QModelIndex& index, EditStart start, const QString& typed = {});
    // Places the caret as the start of the edit wants it, once the view has set the editor up.
    void ApplyStart(QLineEdit* editor) const;
    // Ends the edit in `editor`; keeps its text unless `keep` is false, then moves the current
    // cell as `key` would (0 for no move).
    void EndEdit(QWidget* editor, bool keep, int key, Qt::KeyboardModifiers modifiers);
    void MoveCurrent(int key, Qt::KeyboardModifiers modifiers);

    EditStart m_start = EditStart::Click;
    QPointer<QLineEdit> m_editor; // the editor open now, if any
    QString m_typed; // what a typed start puts in place of the text: one character, or more
                     // from an input method
    bool m_pressOnCurrent = false;
};

} // namespace ui
