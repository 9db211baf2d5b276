#pragma once

#include "dictionary/ConflictList.h"

#include <QDialog>
#include <QPointer>

#include <memory>

class QLabel;
class QTableView;

namespace util {
class Messages;
} // namespace util

namespace ui {

// Asks which entry a row sent to the dictionary goes to when it matches several entries or
// conflicts with one: not at all, as a new entry, or merged into one of the listed entries.
class ConflictDialog : public QDialog {
    Q_OBJECT
public:
    // `list` must outlive the dialog. "Please select an entry" goes to `messages`, or to a
    // message box over the dialog when it is null.
    explicit ConflictDialog(const ConflictList& list, util::Messages* messages = nullptr,
                            QWidget* parent = nullptr);
    ~ConflictDialog() override;

    // After the dialog closed: the number of the chosen row, or ConflictChooser::kCancelled.
    qint32 Choice() const { return m_choice; }

    QTableView* Table() const { return m_table; }

public Q_SLOTS:
    void accept() override;

private:
    const ConflictList& m_list;
    std::unique_ptr<util::Messages> m_ownMessages;
    util::Messages* m_messages;
    QTableView* m_table;
    qint32 m_choice = ConflictChooser::kCancelled;
};

// The window's way of resolving conflicts: the dialog above, modal over `parent`.
class DialogConflictChooser : public ConflictChooser {
public:
    explicit DialogConflictChooser(QWidget* parent, util::Messages* messages = nullptr)
        : m_parent(parent), m_messages(messages) {}

    qint32 Choose(const ConflictList& list) override;

private:
    QPointer<QWidget> m_parent;
    util::Messages* m_messages;
};

} // namespace ui
