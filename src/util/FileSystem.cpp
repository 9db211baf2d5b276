#include "util/FileSystem.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <stdio.h>
#endif

namespace util {

namespace {

constexpr QFileDevice::Permissions kOwnerFull = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ExeOwner | QFileDevice::ReadUser |
                                                QFileDevice::WriteUser | QFileDevice::ExeUser;

// A read-only file resists deletion on some systems; lift the flag and try once more.
bool RemoveFile(const QString& path) {
    if (QFile::remove(path))
        return true;
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner |
                                    QFileDevice::WriteUser);
    return QFile::remove(path);
}

bool RemoveContents(const QString& folder) {
    // A folder we may not list or write into could not be emptied otherwise.
    QFile::setPermissions(folder, QFile::permissions(folder) | kOwnerFull);
    bool ok = true;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        const QFileInfo entry = it.fileInfo();
        const QString path = entry.filePath();
        if (entry.isDir() && !entry.isSymLink())
            ok = RemoveContents(path) && QDir().rmdir(path) && ok;
        else
            ok = RemoveFile(path) && ok;
    }
    return ok;
}

} // namespace

bool DeleteFolder(const QString& folder) {
    if (folder.isEmpty())
        return false;
    const QString path = QDir::cleanPath(folder);
    const QFileInfo info(path);
    if (!info.isDir() || info.isSymLink())
        return false;
    if (!RemoveContents(path))
        return false;
    return QDir().rmdir(path) && !QFileInfo::exists(path);
}

bool ReplaceFile(const QString& from, const QString& to, QString* error) {
#ifdef Q_OS_WIN
    const QString nativeFrom = QDir::toNativeSeparators(from);
    const QString nativeTo = QDir::toNativeSeparators(to);
    const bool ok = MoveFileExW(reinterpret_cast<const wchar_t*>(nativeFrom.utf16()),
                                reinterpret_cast<const wchar_t*>(nativeTo.utf16()),
                                MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
#else
    const bool ok =
        ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
#endif
    if (!ok && error)
        *error = qt_error_string(); // errno, or the last Windows error
    return ok;
}

} // namespace util
