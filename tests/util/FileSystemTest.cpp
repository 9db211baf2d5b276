#include "util/FileSystem.h"
#include "common/TestUtil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr QFileDevice::Permissions kReadOnlyFolder =
    QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadUser | QFileDevice::ExeUser;

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

    // A file never committed leaves the old one and nothing beside it.
    {
        util::ReplacingFile file(Path(QStringLiteral("old.txt")));
        ASSERT_TRUE(file.Open());
        ASSERT_TRUE(file.Write("half", 4));
    }
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("old.txt"))), "replaced");
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::System).size(), 3);
}

} // namespace
