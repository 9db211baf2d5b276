#include "util/FileSystem.h"

#include "util/Strings.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cerrno>
#include <vector>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace util {

namespace {

constexpr QFileDevice::Permissions kOwnerFull =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
// What this process may do, not part of the mode: set, they would change the owner's bits.
constexpr QFileDevice::Permissions kProcessFlags =
    QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;

QFileDevice::Permissions ModeOf(const QString& path) {
    return QFile::permissions(path) & ~kProcessFlags;
}

// A read-only file resists deletion on some systems; lift the flag and try once more, putting it
// back if that did not help. Never for a link: removing one never needs its target's permissions,
// and setting them would change the target.
bool RemoveFile(const QString& path) {
    if (QFile::remove(path))
        return true;
    if (QFileInfo(path).isSymLink())
        return false;
    const QFileDevice::Permissions mode = ModeOf(path);
    if ((mode & QFileDevice::WriteOwner) ||
        !QFile::setPermissions(path, mode | QFileDevice::WriteOwner))
        return false;
    if (QFile::remove(path))
        return true;
    QFile::setPermissions(path, mode);
    return false;
}

bool RemoveContents(const QString& folder);

// A folder with everything in it. A folder we may not list or write into could not be emptied
// otherwise, so it is opened up first, and left as it was if it stays.
bool RemoveFolder(const QString& folder) {
    const QFileDevice::Permissions mode = ModeOf(folder);
    const bool opened =
        (mode & kOwnerFull) != kOwnerFull && QFile::setPermissions(folder, mode | kOwnerFull);
    if (RemoveContents(folder) && QDir().rmdir(folder))
        return true;
    if (opened)
        QFile::setPermissions(folder, mode);
    return false;
}

bool RemoveContents(const QString& folder) {
    bool ok = true;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        const QFileInfo entry = it.fileInfo();
        const QString path = entry.filePath();
        if (entry.isDir() && !entry.isSymLink())
            ok = RemoveFolder(path) && ok;
        else
            ok = RemoveFile(path) && ok;
    }
    return ok;
}

} // namespace

bool SameFile(const QString& a, const QString& b) {
    if (a == b)
        return true;
    const QFileInfo first(a), second(b);
    if (first.exists() && second.exists()) {
#ifdef Q_OS_WIN
        return first.canonicalFilePath().compare(second.canonicalFilePath(), Qt::CaseInsensitive) ==
               0;
#else
        struct stat one, other;
        return ::stat(QFile::encodeName(a).constData(), &one) == 0 &&
               ::stat(QFile::encodeName(b).constData(), &other) == 0 &&
               one.st_dev == other.st_dev && one.st_ino == other.st_ino;
#endif
    }
    return QDir::cleanPath(first.absoluteFilePath()) == QDir::cleanPath(second.absoluteFilePath());
}

bool DeleteFolder(const QString& folder) {
    if (folder.isEmpty())
        return false;
    const QString path = QDir::cleanPath(folder);
    const QFileInfo info(path);
    if (!info.isDir() || info.isSymLink())
        return false;
    return RemoveFolder(path) && !QFileInfo::exists(path);
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

namespace {

// What a program creating the file with open() would get: read and write for all, less the umask.
#ifndef Q_OS_WIN
namespace {
// The process's umask. Linux tells it in /proc; elsewhere it can only be read by setting it, which
// for a moment gives files other threads create the wrong permissions.
mode_t CurrentUmask() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (!line.startsWith("Umask:"))
                continue;
            bool ok = false;
            const uint mask = line.mid(6).trimmed().toUInt(&ok, 8);
            if (ok)
                return mode_t(mask);
        }
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}
} // namespace
#endif

QFileDevice::Permissions NewFilePermissions() {
    QFileDevice::Permissions permissions = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                           QFileDevice::ReadUser | QFileDevice::WriteUser |
                                           QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                           QFileDevice::ReadOther | QFileDevice::WriteOther;
#ifndef Q_OS_WIN
    const mode_t mask = CurrentUmask();
    if (mask & S_IRUSR)
        permissions &= ~(QFileDevice::ReadOwner | QFileDevice::ReadUser);
    if (mask & S_IWUSR)
        permissions &= ~(QFileDevice::WriteOwner | QFileDevice::WriteUser);
    if (mask & S_IRGRP)
        permissions &= ~QFileDevice::ReadGroup;
    if (mask & S_IWGRP)
        permissions &= ~QFileDevice::WriteGroup;
    if (mask & S_IROTH)
        permissions &= ~QFileDevice::ReadOther;
    if (mask & S_IWOTH)
        permissions &= ~QFileDevice::WriteOther;
#endif
    return permissions;
}

} // namespace

QString ReplacementTarget(const QString& path) {
    const QFileInfo info(path);
    return info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
}

QString ReplaceRefusal(const QString& target, const QString& shown) {
    const QFileInfo existing(target);
    const QString name = QDir::toNativeSeparators(shown);
    // The rename would replace what the user may not change, as long as the folder is writable.
    if (existing.exists() && existing.isDir())
        return Tr(strings::kFileIsFolder).arg(name);
    if (existing.exists() && !existing.isFile())
        return Tr(strings::kFileNotOrdinary).arg(name);
    if (existing.exists() && !existing.isWritable())
        return Tr(strings::kFileNotWritable).arg(name);
    return QString();
}

QFileDevice::Permissions ReplacementPermissions(const QString& target) {
    // The mode alone: the process's own flags would make a read-only file writable again when
    // root saves it.
    return QFileInfo::exists(target) ? ModeOf(target) : NewFilePermissions();
}

ReplacingFile::ReplacingFile(const QString& path)
    : m_path(path), m_target(ReplacementTarget(path)) {
    // Short and fixed in length: the target's own name plus a suffix could pass the file system's
    // limit on a name, and hidden so that nobody opens it half-written.
    m_file.setFileTemplate(QFileInfo(m_target).absolutePath() +
                           QStringLiteral("/.save-XXXXXX.tmp"));
}

bool ReplacingFile::Fail(const QString& reason) {
    if (!m_failed)
        m_error = reason;
    m_failed = true;
    return false;
}

bool ReplacingFile::FailIo(int code) {
    // A write that stopped part-way (disk full, file-size limit) leaves Qt without a reason; errno,
    // read straight after the failing call, has it.
    return Fail(code != 0 ? qt_error_string(code) : m_file.errorString());
}

bool ReplacingFile::Open() {
    if (const QString refused = ReplaceRefusal(m_target, m_path); !refused.isEmpty())
        return Fail(refused);
    if (!m_file.open())
        return Fail(m_file.errorString());
    m_file.setPermissions(ReplacementPermissions(m_target));
    return true;
}

bool ReplacingFile::Write(const char* data, qint64 bytes) {
    if (m_failed)
        return false;
    errno = 0;
    return m_file.write(data, bytes) == bytes || FailIo(errno);
}

bool ReplacingFile::WriteUtf16Le(QStringView text) {
    if (text.isEmpty())
        return !m_failed;
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    std::vector<char16_t> le(text.utf16(), text.utf16() + text.size());
    qToLittleEndian<quint16>(le.data(), le.size(), le.data());
    return Write(reinterpret_cast<const char*>(le.data()), qint64(le.size()) * 2);
#else
    return Write(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
#endif
}

bool ReplacingFile::Commit() {
    if (m_failed || !m_file.isOpen())
        return m_failed ? false : Fail(m_file.errorString());
    errno = 0;
    if (!m_file.flush())
        return FailIo(errno);
    errno = 0;
    m_file.close();
    if (m_file.error() != QFileDevice::NoError)
        return FailIo(errno);
    if (!ReplaceFile(m_file.fileName(), m_target, &m_error)) {
        m_failed = true;
        return false;
    }
    m_file.setAutoRemove(false);
    return true;
}

FolderLock::FolderLock(const QString& folder) {
#ifndef Q_OS_WIN
    m_fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_fd < 0)
        return;
    int result;
    do
        result = ::flock(m_fd, LOCK_EX);
    while (result != 0 && errno == EINTR);
#else
    Q_UNUSED(folder);
#endif
}

FolderLock::~FolderLock() {
#ifndef Q_OS_WIN
    if (m_fd >= 0)
        ::close(m_fd); // releases the lock
#endif
}

} // namespace util
