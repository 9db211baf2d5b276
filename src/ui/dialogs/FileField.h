#pragma once

#include <QString>

class QPushButton;
class QWidget;

namespace ui {

// The "..." button beside a path, as narrow as its text allows.
QPushButton* BrowseButton(QWidget* parent);

// Asks for a text file with the file dialog: a file to write (`save`, confirming before
// overwriting) or an existing one to read, ".txt" added when no ending is typed, starting from
// `current`. Empty when the user cancels.
QString AskTextFile(QWidget* parent, bool save, const QString& current);

} // namespace ui
