#pragma once

#include <QString>
#include <QStringList>

namespace util {

// The command that opens `path` in the program the desktop associates with the file's MIME type
// and waits for it: xdg-mime names the default application's desktop entry, whose Exec line gives
// the command (xdg-open itself returns at once, so it cannot be waited for). Empty when nothing is
// associated or the entry cannot be found or read.
QStringList AssociatedOpenCommand(const QString& path);

// The desktop entry file with this id ("org.example.Editor.desktop") in the applications folders
// of the XDG data folders, the user's first; "" when there is none. An id with dashes also names
// an entry in a subfolder ("kde-kate.desktop" for kde/kate.desktop).
QString FindDesktopEntry(const QString& desktopId);

// The command line of a desktop entry file's Exec key, cut into arguments as the desktop entry
// format quotes them, with `path` in place of the file codes (%f, %F, %u, %U), the entry's name,
// icon and location in place of %c, %i and %k, and the deprecated codes dropped. When the line
// has no file code the path is added at its end. Empty when the file has no Exec key, and for
// a program that must run in a terminal.
QStringList DesktopEntryCommand(const QString& desktopFile, const QString& path);

} // namespace util
