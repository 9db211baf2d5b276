#pragma once

#include <QString>

namespace ui {

// Whether the window can be shown: false, with the reason, when no display can be reached.
bool DisplayReachable(QString& why);

// Runs the window program until its main window closes, opening `file` when given. Creates the
// QApplication: none may exist before.
int RunWindow(int& argc, char** argv, const QString& file);

} // namespace ui
