#pragma once

#include <QString>

class QPushButton;
class QWidget;

namespace ui {

// The "..." button beside a path, as narrow as its text allows.
QPushButton* BrowseButton(QWidget* parent);

// The kinds of file translators exchange: tab-separated text, XLIFF, or either.
enum class ExchangeFileKind { Text, Xliff, Any };

// Asks for a translation file with the file dialog: a file to write (`save`, confirming before
// overwriting) or an existing one to read, ".txt" (or ".xlf") added when no ending is typed,
// starting from `current`. Empty when the user cancels.
QString AskTextFile(QWidget* parent, bool save, const QString& current,
                    ExchangeFileKind kind = ExchangeFileKind::Text);

} // namespace ui
