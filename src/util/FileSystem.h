#pragma once

#include <QString>
#include <QStringView>
#include <QTemporaryFile>

namespace util {

// Removes a folder with everything in it, read-only files and subfolders included, without
// asking anyone. Links inside are removed, never followed, and what they point to keeps its
// permissions. True only when the folder is gone; false for a folder that does not exist, for a
// link to a folder, and when anything inside resisted (the folder is then left in place with
// whatever remains, and what remains keeps the permissions it had).
bool DeleteFolder(const QString& folder);

// Whether two paths name one file: the same text, the same absolute path, or, where both exist,
// the same file on disk (through a link, or in other letter case on a file system that ignores
// case). Letter case alone never makes two names one file where the file system tells them
// apart.
bool SameFile(const QString& a, const QString& b);

// Renames `from` over `to` in one step, replacing an existing `to`: a reader sees either the old
// file or the new one, never a mixture. On failure `error` (when given) gets the system's reason.
bool ReplaceFile(const QString& from, const QString& to, QString* error = nullptr);

// Where a save that writes its file aside and renames it over `path` puts it: a link at `path` is
// followed, so that the file it names is replaced and the link stays.
QString ReplacementTarget(const QString& path);
// Why such a save may not replace `target` (a folder, something other than a file, a file this
// user may not write to), or empty; `shown` names the file in the reason.
QString ReplaceRefusal(const QString& target, const QString& shown);
// The permissions the new file takes: the old file's mode, or those of a new file.
QFileDevice::Permissions ReplacementPermissions(const QString& target);

// A new file written beside `path` and renamed over it by Commit(): readers, and a write that
// fails part-way, find the old file whole. Unlike QSaveFile it does not force the data to disk
// before the rename. It is meant for files that can be made again at any time, such as an
// export, where the sync would take longer than writing the file. A link at `path` is followed.
class ReplacingFile {
public:
    explicit ReplacingFile(const QString& path);
    // Refuses, before anything is written, a folder or other non-file at `path` and a file this
    // user may not write to. A file that exists keeps its permissions.
    bool Open();
    bool Write(const char* data, qint64 bytes);
    // The text as UTF-16LE code units, without a mark.
    bool WriteUtf16Le(QStringView text);
    // False when anything failed since Open; the old file is then untouched.
    bool Commit();
    QString ErrorString() const { return m_error; }

private:
    bool Fail(const QString& reason);
    // A failed write or flush; `code` is errno right after it, 0 when unknown.
    bool FailIo(int code);
    QString m_path;
    QString m_target;
    QTemporaryFile m_file;
    QString m_error;
    bool m_failed = false;
};

// Holds an exclusive advisory lock on a folder from construction to destruction, waiting for
// any other holder first; other programs taking the same lock wait in turn. Programs that share
// a working folder take it around everything that must see the folder whole (emptying and
// filling it, or packing it). A folder that cannot be opened is not locked, nor is anything on
// systems without advisory locks on folders (Windows).
class FolderLock {
public:
    explicit FolderLock(const QString& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int m_fd = -1;
};

} // namespace util
