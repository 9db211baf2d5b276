#pragma once

#include <QString>
#include <QStringList>

namespace ui {

// Whether the window can be shown: false, with the reason, when no display can be reached.
// `arguments` is the command line as given, the program's name first.
bool DisplayReachable(const QStringList& arguments, QString& why);

// Runs the window program until its main window closes, opening the file the command line names
// once the application has taken its own options out of it; when that file cannot be opened the
// program ends without showing its window. Creates the QApplication: none may exist before.
int RunWindow(int& argc, char** argv);

} // namespace ui
