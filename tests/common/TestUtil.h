#pragma once

#include <QByteArray>
#include <QString>

namespace testutil {

// Folder of the hand-made files used by golden tests.
QString DataPath(const QString& name);
QString SourcePath(const QString& relative);

QByteArray ReadAll(const QString& path);
bool WriteAll(const QString& path, const QByteArray& bytes);

// UTF-16LE bytes of a text, optionally preceded by the mark FF FE.
QByteArray Utf16Le(const QString& text, bool withMark = true);

} // namespace testutil

#include <ostream>

// Readable QString values in test failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
