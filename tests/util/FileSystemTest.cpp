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

// The mode as stored, without the *User flags that say what this process may do.
QFileDevice::Permissions Mode(const QString& path) {
    return QFile::permissions(path) &
           ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
}

using testutil::Unprivileged;

class FileSystemTest : public ::testing::Test {
protected:
    QString Path(const QString& relative) const { return m_dir.filePath(relative); }

    void MakeFile(const QString& relative, const QByteArray& bytes = "x") {
        ASSERT_TRUE(testutil::WriteAll(Path(relative), bytes)) << relative.toStdString();
    }

    QTemporaryDir m_dir;
};

TEST_F(FileSystemTest, DeleteFolderRemovesEverythingInsideWithoutFollowingLinks) {
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("missing"))));
    EXPECT_FALSE(util::DeleteFolder(QString()));
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("victim/sub/deeper")));
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("victim/locked/inner")));
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("outside/folder")));
    MakeFile(QStringLiteral("victim/plain.txt"));
    MakeFile(QStringLiteral("victim/no-extension"));
    MakeFile(QStringLiteral("victim/.hidden"));
    MakeFile(QStringLiteral("victim/readonly.txt"));
    MakeFile(QStringLiteral("victim/sub/deeper/file.bin"));
    MakeFile(QStringLiteral("victim/locked/inside.txt"));
    MakeFile(QStringLiteral("victim/locked/inner/readonly.txt"));
    MakeFile(QStringLiteral("outside/kept.txt"), "kept");
    MakeFile(QStringLiteral("outside/folder/kept.txt"), "kept");
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("victim/readonly.txt")),
                                      QFileDevice::ReadOwner | QFileDevice::ReadUser));
    // Read-only all the way down: a file in a folder in a folder.
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("victim/locked/inner/readonly.txt")),
                                      QFileDevice::ReadOwner | QFileDevice::ReadUser));
    ASSERT_TRUE(
        QFile::setPermissions(Path(QStringLiteral("victim/locked/inner")), kReadOnlyFolder));
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("victim/locked")), kReadOnlyFolder));
#ifdef Q_OS_UNIX
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("outside/kept.txt")),
                            Path(QStringLiteral("victim/file-link"))));
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("outside/folder")),
                            Path(QStringLiteral("victim/folder-link"))));
    ASSERT_TRUE(
        QFile::link(Path(QStringLiteral("nowhere")), Path(QStringLiteral("victim/dangling"))));
    // Removing through a link would empty a folder nobody asked to delete.
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("victim/folder-link"))));
#endif
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("outside/kept.txt")))); // not a folder

    EXPECT_TRUE(util::DeleteFolder(Path(QStringLiteral("victim/")))); // trailing '/' as given
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("victim"))));
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("outside/kept.txt"))), "kept");
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("outside/folder/kept.txt"))), "kept");
}

// What could not be removed keeps its permissions, and a link's target never has its changed:
// "mine" is this user's, but the folder inside is another's, so neither can go.
TEST_F(FileSystemTest, DeleteFolderThatFailsLeavesEveryPermissionAsItWas) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to make a folder this user may not change";
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    const QString mine = Path(QStringLiteral("mine"));
    const QString target = Path(QStringLiteral("target.txt"));
    {
        Unprivileged user;
        ASSERT_TRUE(user.Ok()) << "cannot run as an unprivileged user";
        ASSERT_TRUE(QDir().mkdir(mine));
        ASSERT_TRUE(testutil::WriteAll(target, "target"));
        ASSERT_TRUE(QFile::setPermissions(target, kReadOnlyFile));
    }
    ASSERT_TRUE(QDir().mkdir(mine + QStringLiteral("/theirs")));
    ASSERT_TRUE(QFile::link(target, mine + QStringLiteral("/theirs/link")));
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
    EXPECT_TRUE(QFileInfo(mine + QStringLiteral("/theirs/link")).isSymLink());
    EXPECT_EQ(Mode(target), kReadOnlyFile);
    EXPECT_EQ(QFileInfo(target).metadataChangeTime(), changed);
    EXPECT_EQ(testutil::ReadAll(target), "target");
    EXPECT_EQ(Mode(mine), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
}

TEST_F(FileSystemTest, ReplaceFileSwapsContentsOrReportsWhy) {
    MakeFile(QStringLiteral("new"), "new contents");
    MakeFile(QStringLiteral("target"), "old");
    QString error;
    ASSERT_TRUE(
        util::ReplaceFile(Path(QStringLiteral("new")), Path(QStringLiteral("target")), &error))
        << error.toStdString();
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("target"))), "new contents");
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("new"))));

    EXPECT_FALSE(
        util::ReplaceFile(Path(QStringLiteral("missing")), Path(QStringLiteral("target")), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("target"))), "new contents");
    EXPECT_FALSE(util::ReplaceFile(Path(QStringLiteral("missing")), Path(QStringLiteral("x"))));
}

TEST_F(FileSystemTest, ReplacingFileSwapsWholeFilesAndKeepsWhatTheUserSet) {
    // A new file gets what open() would give it under the umask.
    const mode_t oldMask = ::umask(027);
    {
        util::ReplacingFile file(Path(QStringLiteral("new.txt")));
        ASSERT_TRUE(file.Open());
        ASSERT_TRUE(file.Write("new", 3));
        ASSERT_TRUE(file.Commit());
    }
    ::umask(oldMask);
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("new.txt"))), "new");
    EXPECT_EQ(QFile::permissions(Path(QStringLiteral("new.txt"))) & 0x0777,
              QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ReadGroup);

    // An existing file keeps its permissions, and a link to it stays a link.
    MakeFile(QStringLiteral("old.txt"), "old");
    const QFileDevice::Permissions chosen = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                            QFileDevice::ReadUser | QFileDevice::WriteUser |
                                            QFileDevice::ReadOther;
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("old.txt")), chosen));
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("old.txt")), Path(QStringLiteral("link.txt"))));
    {
        util::ReplacingFile file(Path(QStringLiteral("link.txt")));
        ASSERT_TRUE(file.Open());
        ASSERT_TRUE(file.Write("replaced", 8));
        ASSERT_TRUE(file.Commit());
    }
    EXPECT_TRUE(QFileInfo(Path(QStringLiteral("link.txt"))).isSymLink());
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("old.txt"))), "replaced");
    EXPECT_EQ(QFile::permissions(Path(QStringLiteral("old.txt"))), chosen);

    // A read-only file that root may still write keeps its mode instead of becoming writable.
    QByteArray last = "replaced";
    if (::geteuid() == 0) {
        last = "root";
        ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("old.txt")), kReadOnlyFile));
        util::ReplacingFile file(Path(QStringLiteral("old.txt")));
        ASSERT_TRUE(file.Open()) << file.ErrorString().toStdString();
        ASSERT_TRUE(file.Write("root", 4));
        ASSERT_TRUE(file.Commit()) << file.ErrorString().toStdString();
        EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("old.txt"))), "root");
        EXPECT_EQ(Mode(Path(QStringLiteral("old.txt"))), kReadOnlyFile);
        ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("old.txt")), chosen));
    }

    // The longest name the file system allows: a temporary name built from it would not be.
    const QString longName(255, QLatin1Char('n'));
    {
        util::ReplacingFile file(Path(longName));
        ASSERT_TRUE(file.Open()) << file.ErrorString().toStdString();
        ASSERT_TRUE(file.Write("long", 4));
        ASSERT_TRUE(file.Commit()) << file.ErrorString().toStdString();
    }
    EXPECT_EQ(testutil::ReadAll(Path(longName)), "long");

    // A file never committed leaves the old one and nothing beside it.
    {
        util::ReplacingFile file(Path(QStringLiteral("old.txt")));
        ASSERT_TRUE(file.Open());
        ASSERT_TRUE(file.Write("half", 4));
    }
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("old.txt"))), last);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System).size(), 4);
}

// What the user may not replace is refused before anything is written, with a reason that names
// it.
TEST_F(FileSystemTest, ReplacingFileRefusesWhatTheUserMayNotReplace) {
    // Anyone may create files in the folder, as in a shared one: only the target itself forbids.
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    const struct {
        const char* name;
        std::function<bool(const QString&)> make;
        bool unprivileged;
    } cases[] = {
        {"folder", [](const QString& path) { return QDir().mkdir(path); }, false},
        {"pipe", [](const QString& path) { return ::mkfifo(QFile::encodeName(path), 0666) == 0; },
         false},
        {"read-only file",
         [](const QString& path) {
             return testutil::WriteAll(path, "old") && QFile::setPermissions(path, kReadOnlyFile);
         },
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = Path(QString::fromLatin1(c.name));
        ASSERT_TRUE(c.make(path));
        const QStringList before =
            QDir(m_dir.path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        bool opened = true;
        bool wrote = true;
        bool committed = true;
        QString error;
        {
            std::optional<Unprivileged> user;
            if (c.unprivileged) {
                ASSERT_TRUE(user.emplace().Ok()) << "cannot run as an unprivileged user";
            }
            util::ReplacingFile file(path);
            opened = file.Open();
            wrote = file.Write("new", 3);
            committed = file.Commit();
            error = file.ErrorString();
        }
        EXPECT_FALSE(opened);
        EXPECT_FALSE(wrote);
        EXPECT_FALSE(committed);
        EXPECT_TRUE(error.contains(QDir::toNativeSeparators(path))) << error.toStdString();
        EXPECT_EQ(
            QDir(m_dir.path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
            before);
        if (QFileInfo(path).isFile() && c.unprivileged) {
            EXPECT_EQ(testutil::ReadAll(path), "old");
            EXPECT_EQ(Mode(path), kReadOnlyFile);
        }
    }
}

// A write that stops part-way says why (here the file-size limit), wherever it stops: in a write
// too big for the buffer, in a flush of the buffer during writing, or in the flush at the end.
TEST_F(FileSystemTest, ReplacingFileGivesTheReasonForAWriteThatStopsPartWay) {
    const struct {
        rlim_t limit;
        int chunk;
        int count;
    } cases[] = {{65536, 1 << 20, 1}, {65536, 1000, 200}, {1000, 200, 10}};
    const QString path = Path(QStringLiteral("old.txt"));
    MakeFile(QStringLiteral("old.txt"), "old");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.limit);
        SCOPED_TRACE(c.chunk);
        const QByteArray chunk(c.chunk, 'x');
        rlimit saved{};
        ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
        bool written = true;
        bool committed = true;
        QString error;
        {
            // Nothing may print while the limit holds: a log file may be longer than it.
            const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
            rlimit limited = saved;
            limited.rlim_cur = c.limit;
            ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
            {
                util::ReplacingFile file(path);
                if (file.Open()) {
                    for (int i = 0; i < c.count && written; ++i)
                        written = file.Write(chunk.constData(), chunk.size());
                    committed = file.Commit();
                }
                error = file.ErrorString();
            }
            ::setrlimit(RLIMIT_FSIZE, &saved);
            std::signal(SIGXFSZ, oldHandler);
        }
        EXPECT_FALSE(committed);
        EXPECT_EQ(error.toStdString(), qt_error_string(EFBIG).toStdString());
        EXPECT_EQ(testutil::ReadAll(path), "old");
        EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System).size(),
                  1);
    }
}

} // namespace
