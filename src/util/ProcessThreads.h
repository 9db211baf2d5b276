#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QObject;

namespace util {

// What a program run on a worker thread left: RunProgram's result and the program's output.
struct ProgramResult {
    int exitCode = 0;
    QString output;
};

// What editing a file on a worker thread reports.
inline constexpr int kFileUnchanged = 0;
inline constexpr int kFileChanged = 1; // also when a checksum could not be taken
inline constexpr int kNoAssociatedProgram = -1;
// kStartFailed (Process.h) when the program could not be started.

using ProgramResultHandler = std::function<void(const ProgramResult&)>;
using EditResultHandler = std::function<void(int)>;

// The workers below run on threads of their own and hand their result to `receiver`: the
// handler is called on the receiver's thread, from its event loop, with the receiver as context.
// When the receiver is destroyed before the call is made, the result is dropped. Without a
// receiver nothing is reported. They return the worker's thread id as the thread log shows it,
// or 0 when no thread could be started.

// Runs RunProgram(command, workingFolder, ...) without a time limit.
qint64 RunProgramOnThread(const QStringList& command, const QString& workingFolder,
                          QObject* receiver, ProgramResultHandler onResult);

// Opens the file in the program associated with it (AssociatedOpenCommand), in the file's
// folder, waits for the program to end and reports whether the file's CRC-32 changed; or
// kNoAssociatedProgram, or kStartFailed.
qint64 EditFileOnThread(const QString& path, QObject* receiver, EditResultHandler onDone);
// The same with the program chosen by the caller: `editor` with the path added as its last
// argument (an empty one counts as no associated program).
qint64 EditFileOnThread(const QString& path, const QStringList& editor, QObject* receiver,
                        EditResultHandler onDone);

} // namespace util
