#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace util {

// What RunProgram returns instead of an exit code. Exit codes of programs are 0 to 255, so these
// never collide with one.
inline constexpr int kNoTimeout = -1;      // as a timeout: wait as long as it takes
inline constexpr int kPipeFailed = -2;     // the output pipe could not be made
inline constexpr int kChildEndFailed = -3; // the pipe's end for the program could not be set up
inline constexpr int kOwnEndFailed = -4;   // the pipe's end read here could not be set up
inline constexpr int kStartFailed = -5;    // not found, not executable, no such working folder
inline constexpr int kTimedOut = -6;       // killed, with everything it started, at the timeout
inline constexpr int kCrashed = -7;        // ended by a signal, or its status could not be read

// Runs a program and waits for it: command[0] is looked up in PATH, the rest are its arguments.
// It runs in `workingFolder` (empty: ours) in a session and process group of its own, with our
// standard input (or /dev/null when we have none) and with its standard output and error both
// captured into `output`; no other descriptor of this process reaches it. The output is decided
// once, on its first bytes, to be UTF-16 (a byte-order mark, or zero bytes in every other place)
// or text of the ANSI code page. A negative `timeoutMs` waits without limit; at the timeout the
// whole process group is killed and `output` keeps what arrived until then. Returns the exit code
// or one of the negative codes above. Once the program has ended, output still arriving from
// programs it left running is not waited for.
int RunProgram(const QStringList& command, const QString& workingFolder, QString& output,
               int timeoutMs = kNoTimeout);
// The same with a command line, cut into arguments at blanks outside double quotes (three double
// quotes in a row stand for one), as QProcess::splitCommand cuts it.
int RunProgram(const QString& commandLine, const QString& workingFolder, QString& output,
               int timeoutMs = kNoTimeout);

// Opens the folder that holds `path` in the file manager through `launcher` (xdg-open finds the
// user's file manager), without waiting for it. True when the launcher could be started; false
// when it could not, or when the folder does not exist.
bool ShowInFileManager(const QString& path, const QString& launcher = QStringLiteral("xdg-open"));

// Asks a process to end (SIGTERM) and waits up to `timeoutMs` (negative: without limit) for it to
// end; when `force` is set and it is still running then, kills it. True when it has ended; false
// for a process that does not exist or may not be signalled, and for one still running.
bool CloseProcess(qint64 pid, bool force, int timeoutMs);

// Waits until `signalled` returns true, asking it every 5 ms, while this thread's events go on
// being handled (repaints, timers, queued calls) so that windows stay drawn. Input to the windows
// is held back until the wait is over, as under a modal dialog, so no click re-enters the waiting
// code. A negative `timeoutSeconds` waits without limit. True when it was signalled, false when
// the time ran out first. Needs a QCoreApplication.
bool WaitForObject(const std::function<bool()>& signalled, int timeoutSeconds);

} // namespace util
