#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <functional>

namespace util {

// Receives the text of an error that the user should see.
using ErrorSink = std::function<void(const QString&)>;

// Writes the text as UTF-16LE code units, without a mark; false when the device took less.
bool WriteUtf16Le(QIODevice& device, const QString& text);
// Appends the text's UTF-16LE code units to `out`.
void AppendUtf16Le(QByteArray& out, const QString& text);

// The text in a file's bytes: UTF-16LE after the mark FF FE, else ANSI bytes in the ANSI code
// page, each up to the first zero.
QString DecodeText(const QByteArray& bytes);

// Reads a whole text file: UTF-16LE after the mark FF FE, else ANSI bytes in the ANSI code page,
// each up to the first zero. True when the file could be read and looks like text (binary files
// stop early at a zero); an empty file gives true and "". When `reportErrors` is set, a file that
// cannot be opened or read is reported to `sink`, or to the warning log without one.
bool LoadTextFile(const QString& path, QString& text, bool reportErrors,
                  const ErrorSink& sink = {});

} // namespace util
