#include "util/FileSystem.h"
#include "common/TestUtil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr QFileDevice::Permissions kReadOnlyFolder =
    QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadUser | QFileDevice::ExeUser;
constexpr QFileDevice::Permissions kReadOnlyFile =
    QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
constexpr QFileDevice::Permissions kOwnerReadOnly = QFileDevice::ReadOwner | QFileDevice::ReadUser;

// The mode as stored, without the *User flags that say what this process may do.
QFileDevice::Permissions Mode(const QString& path) {
    return QFile::permissions(path) &
           ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
}

// One file written through ReplacingFile: what each step answered and the reason it gave.
struct Attempt {
    bool opened = false;
    bool wrote = true;
    bool committed = false;
    QString error;
};
Attempt Replace(const QString& path, const QByteArray& bytes, int times = 1, bool commit = true) {
    Attempt a;
    util::ReplacingFile file(path);
    a.opened = file.Open();
    for (int i = 0; i < times && a.wrote; ++i)
        a.wrote = file.Write(bytes.constData(), bytes.size());
    a.committed = commit && file.Commit();
    a.error = file.ErrorString();
    return a;
}

using testutil::Unprivileged;

class FileSystemTest : public ::testing::Test {
protected:
    QString Path(const QString& relative) const { return m_dir.filePath(relative); }
    void MakeFile(const QString& relative, const QByteArray& bytes = "x") {
        ASSERT_TRUE(testutil::WriteAll(Path(relative), bytes)) << relative.toStdString();
    }
    QStringList Entries() const {
        return QDir(m_dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    QTemporaryDir m_dir;
};

TEST_F(FileSystemTest, DeleteFolderRemovesEverythingInsideWithoutFollowingLinks) {
    EXPECT_FALSE(util::DeleteFolder(Path("missing")));
    EXPECT_FALSE(util::DeleteFolder(QString()));
    for (const char* folder : {"victim/sub/deeper", "victim/locked/inner", "outside/folder"})
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(folder));
    for (const char* file : {"victim/plain.txt", "victim/no-extension", "victim/.hidden",
                             "victim/readonly.txt", "victim/sub/deeper/file.bin",
                             "victim/locked/inside.txt", "victim/locked/inner/readonly.txt"})
        MakeFile(file);
    MakeFile("outside/kept.txt", "kept");
    MakeFile("outside/folder/kept.txt", "kept");
    // Read-only all the way down: a file in a folder in a folder.
    for (const char* file : {"victim/readonly.txt", "victim/locked/inner/readonly.txt"})
        ASSERT_TRUE(QFile::setPermissions(Path(file), kOwnerReadOnly));
    for (const char* folder : {"victim/locked/inner", "victim/locked"})
        ASSERT_TRUE(QFile::setPermissions(Path(folder), kReadOnlyFolder));
#ifdef Q_OS_UNIX
    ASSERT_TRUE(QFile::link(Path("outside/kept.txt"), Path("victim/file-link")));
    ASSERT_TRUE(QFile::link(Path("outside/folder"), Path("victim/folder-link")));
    ASSERT_TRUE(QFile::link(Path("nowhere"), Path("victim/dangling")));
    // Removing through a link would empty a folder nobody asked to delete.
    EXPECT_FALSE(util::DeleteFolder(Path("victim/folder-link")));
#endif
    EXPECT_FALSE(util::DeleteFolder(Path("outside/kept.txt"))); // not a folder

    EXPECT_TRUE(util::DeleteFolder(Path("victim/"))); // trailing '/' as given
    EXPECT_FALSE(QFileInfo::exists(Path("victim")));
    EXPECT_EQ(testutil::ReadAll(Path("outside/kept.txt")), "kept");
    EXPECT_EQ(testutil::ReadAll(Path("outside/folder/kept.txt")), "kept");
}

// What could not be removed keeps its permissions, and a link's target never has its changed:
// "mine" is this user's, but the folder inside is another's, so neither can go.
TEST_F(FileSystemTest, DeleteFolderThatFailsLeavesEveryPermissionAsItWas) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to make a folder this user may not change";
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    const QString mine = Path("mine");
    const QString target = Path("target.txt");
    {
        Unprivileged user;
        ASSERT_TRUE(user.Ok()) << "cannot run as an unprivileged user";
        ASSERT_TRUE(QDir().mkdir(mine));
        ASSERT_TRUE(testutil::WriteAll(target, "target"));
        ASSERT_TRUE(QFile::setPermissions(target, kReadOnlyFile));
    }
    ASSERT_TRUE(QDir().mkdir(mine + "/theirs"));
    ASSERT_TRUE(QFile::link(target, mine + "/theirs/link"));
    // A change put back at once still shows in the target's status change time, given a clock
    // that has moved on since it was made.
    const QDateTime changed = QFileInfo(target).metadataChangeTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    bool deleted = true;
    {
        Unprivileged user;
        ASSERT_TRUE(user.Ok()) << "cannot run as an unprivileged user";
        ASSERT_TRUE(QFile::setPermissions(mine, kReadOnlyFolder));
        deleted = util::DeleteFolder(mine);
    }
    EXPECT_FALSE(deleted);
    EXPECT_TRUE(QFileInfo(mine + "/theirs/link").isSymLink());
    EXPECT_EQ(Mode(target), kReadOnlyFile);
    EXPECT_EQ(QFileInfo(target).metadataChangeTime(), changed);
    EXPECT_EQ(testutil::ReadAll(target), "target");
    EXPECT_EQ(Mode(mine), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
}

TEST_F(FileSystemTest, ReplaceFileSwapsContentsOrReportsWhy) {
    MakeFile("new", "new contents");
    MakeFile("target", "old");
    QString error;
    ASSERT_TRUE(util::ReplaceFile(Path("new"), Path("target"), &error)) << error.toStdString();
    EXPECT_EQ(testutil::ReadAll(Path("target")), "new contents");
    EXPECT_FALSE(QFileInfo::exists(Path("new")));

    EXPECT_FALSE(util::ReplaceFile(Path("missing"), Path("target"), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(testutil::ReadAll(Path("target")), "new contents");
    EXPECT_FALSE(util::ReplaceFile(Path("missing"), Path("x")));
}

TEST_F(FileSystemTest, ReplacingFileSwapsWholeFilesAndKeepsWhatTheUserSet) {
    // A new file gets what open() would give it under the umask.
    const mode_t oldMask = ::umask(027);
    const Attempt created = Replace(Path("new.txt"), "new");
    ::umask(oldMask);
    ASSERT_TRUE(created.committed) << created.error.toStdString();
    EXPECT_EQ(testutil::ReadAll(Path("new.txt")), "new");
    EXPECT_EQ(QFile::permissions(Path("new.txt")) & 0x0777,
              QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ReadGroup);

    // An existing file keeps its permissions, and a link to it stays a link.
    const QString old = Path("old.txt");
    MakeFile("old.txt", "old");
    const QFileDevice::Permissions chosen = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                            QFileDevice::ReadUser | QFileDevice::WriteUser |
                                            QFileDevice::ReadOther;
    ASSERT_TRUE(QFile::setPermissions(old, chosen));
    ASSERT_TRUE(QFile::link(old, Path("link.txt")));
    ASSERT_TRUE(Replace(Path("link.txt"), "replaced").committed);
    EXPECT_TRUE(QFileInfo(Path("link.txt")).isSymLink());
    EXPECT_EQ(testutil::ReadAll(old), "replaced");
    EXPECT_EQ(QFile::permissions(old), chosen);

    // A read-only file that root may still write keeps its mode instead of becoming writable.
    QByteArray last = "replaced";
    if (::geteuid() == 0) {
        last = "root";
        ASSERT_TRUE(QFile::setPermissions(old, kReadOnlyFile));
        const Attempt root = Replace(old, "root");
        ASSERT_TRUE(root.committed) << root.error.toStdString();
        EXPECT_EQ(testutil::ReadAll(old), "root");
        EXPECT_EQ(Mode(old), kReadOnlyFile);
        ASSERT_TRUE(QFile::setPermissions(old, chosen));
    }

    // The longest name the file system allows: a temporary name built from it would not be.
    const QString longName(255, QLatin1Char('n'));
    const Attempt longOne = Replace(Path(longName), "long");
    ASSERT_TRUE(longOne.committed) << longOne.error.toStdString();
    EXPECT_EQ(testutil::ReadAll(Path(longName)), "long");

    // A file never committed leaves the old one and nothing beside it.
    const Attempt half = Replace(old, "half", 1, false);
    ASSERT_TRUE(half.opened && half.wrote) << half.error.toStdString();
    EXPECT_EQ(testutil::ReadAll(old), last);
    EXPECT_EQ(Entries().size(), 4);
}

// What the user may not replace is refused before anything is written, with a reason that names
// it. A write that stops part-way says why (here the file-size limit), wherever it stops: in a
// write too big for the buffer, in a flush of the buffer during writing, or in the flush at the
// end. Either way the old file stays whole and nothing is left beside it.
TEST_F(FileSystemTest, ReplacingFileThatFailsLeavesTheOldFileAndSaysWhy) {
    // Anyone may create files in the folder, as in a shared one: only the target itself forbids.
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    const auto old = [](const QString& path) { return testutil::WriteAll(path, "old"); };
    const struct {
        const char* name;
        std::function<bool(const QString&)> make;
        bool unprivileged = false;
        rlim_t limit = 0; // on the file size; 0: none, and the file is refused at once
        int chunk = 0;
        int count = 0;
    } cases[] = {
        {"folder", [](const QString& path) { return QDir().mkdir(path); }},
        {"pipe", [](const QString& path) { return ::mkfifo(QFile::encodeName(path), 0666) == 0; }},
        {"read-only file",
         [&](const QString& path) {
             return old(path) && QFile::setPermissions(path, kReadOnlyFile);
         },
         true},
        {"write beyond the buffer", old, false, 65536, 1 << 20, 1},
        {"flush while writing", old, false, 65536, 1000, 200},
        {"flush at the end", old, false, 1000, 200, 10},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = Path(c.name);
        ASSERT_TRUE(c.make(path));
        const QStringList before = Entries();
        Attempt a;
        if (c.limit) {
            rlimit saved{};
            ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
            rlimit limited = saved;
            limited.rlim_cur = c.limit;
            // Nothing may print while the limit holds: a log file may be longer than it.
            const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
            ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
            a = Replace(path, QByteArray(c.chunk, 'x'), c.count);
            ::setrlimit(RLIMIT_FSIZE, &saved);
            std::signal(SIGXFSZ, oldHandler);
        } else {
            std::optional<Unprivileged> user;
            if (c.unprivileged) {
                ASSERT_TRUE(user.emplace().Ok()) << "cannot run as an unprivileged user";
            }
            a = Replace(path, "new");
        }
        EXPECT_FALSE(a.committed);
        if (c.limit) {
            EXPECT_TRUE(a.opened);
            EXPECT_EQ(a.error.toStdString(), qt_error_string(EFBIG).toStdString());
        } else {
            EXPECT_FALSE(a.opened);
            EXPECT_FALSE(a.wrote);
            EXPECT_TRUE(a.error.contains(QDir::toNativeSeparators(path))) << a.error.toStdString();
        }
        EXPECT_EQ(Entries(), before);
        if (QFileInfo(path).isFile()) {
            EXPECT_EQ(testutil::ReadAll(path), "old");
        }
        if (c.unprivileged) {
            EXPECT_EQ(Mode(path), kReadOnlyFile);
        }
    }
}

} // namespace
