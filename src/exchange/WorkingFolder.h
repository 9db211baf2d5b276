#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

namespace exchange {

// What a run contributes to the working-folder stamps: its stamp number, drawn once at start-up,
// and its clock, which tests replace.
struct StampOwner {
    qint32 stampNumber = 0;
    std::function<QDateTime()> now; // empty: the system clock

    QDateTime Now() const;
};

// The folder a packaged questionnaire is unpacked into: the path cut at its last dot (even when
// that dot belongs to a folder name) followed by ".tmp/". Empty for a path without a dot.
QString WorkingFolderOf(const QString& questionnairePath);

// The name of a run's stamp file inside the working folder.
QString StampFileName(qint32 stampNumber);

// Creates the working folder if needed and stamps it for this run. Returns the folder, or "" for
// a path without a dot (nothing is created then). Failures are passed over, and so is a link or
// anything else in the folder's place, which is not stamped: the reader of the package reports a
// folder it cannot use.
QString PrepareWorkingFolder(const StampOwner& owner, const QString& questionnairePath);

// Writes this run's stamp, the current local time as a little-endian OLE date, into
// `workingFolder` (which ends in '/'). A stamp that cannot be written is passed over, as is a
// working folder that is a link: nothing is written through it.
void WriteStamp(const StampOwner& owner, const QString& workingFolder);

// Removes this run's stamp and then the whole working folder, unless another run stamped it
// less than three hours ago: such a stamp ends the clean-up at once and leaves everything else.
// Only regular files count as stamps. A working folder that is a link is left alone. Nothing is
// reported.
void CleanWorkingFolder(const StampOwner& owner, const QString& questionnairePath);

} // namespace exchange
