#include "util/FileSystem.h"
#include "common/TestUtil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

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
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("victim/sub/deeper")));
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("victim/locked")));
    ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("outside/folder")));
    MakeFile(QStringLiteral("victim/plain.txt"));
    MakeFile(QStringLiteral("victim/no-extension"));
    MakeFile(QStringLiteral("victim/.hidden"));
    MakeFile(QStringLiteral("victim/readonly.txt"));
    MakeFile(QStringLiteral("victim/sub/deeper/file.bin"));
    MakeFile(QStringLiteral("victim/locked/inside.txt"));
    MakeFile(QStringLiteral("outside/kept.txt"), "kept");
    MakeFile(QStringLiteral("outside/folder/kept.txt"), "kept");
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("victim/readonly.txt")),
                                      QFileDevice::ReadOwner | QFileDevice::ReadUser));
    ASSERT_TRUE(QFile::setPermissions(Path(QStringLiteral("victim/locked")), kReadOnlyFolder));
#ifdef Q_OS_UNIX
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("outside/kept.txt")),
                            Path(QStringLiteral("victim/file-link"))));
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("outside/folder")),
                            Path(QStringLiteral("victim/folder-link"))));
    ASSERT_TRUE(
        QFile::link(Path(QStringLiteral("nowhere")), Path(QStringLiteral("victim/dangling"))));
#endif

    EXPECT_TRUE(util::DeleteFolder(Path(QStringLiteral("victim/")))); // trailing '/' as given
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("victim"))));
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("outside/kept.txt"))), "kept");
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("outside/folder/kept.txt"))), "kept");
}

TEST_F(FileSystemTest, DeleteFolderRefusesWhatIsNotAFolder) {
    MakeFile(QStringLiteral("file.txt"), "kept");
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("missing"))));
    EXPECT_FALSE(util::DeleteFolder(QString()));
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("file.txt"))));
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("file.txt"))), "kept");
#ifdef Q_OS_UNIX
    // Removing through a link would empty a folder nobody asked to delete.
    ASSERT_TRUE(QDir(m_dir.path()).mkdir(QStringLiteral("target")));
    MakeFile(QStringLiteral("target/kept.txt"), "kept");
    ASSERT_TRUE(QFile::link(Path(QStringLiteral("target")), Path(QStringLiteral("link"))));
    EXPECT_FALSE(util::DeleteFolder(Path(QStringLiteral("link"))));
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("target/kept.txt"))), "kept");
#endif
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

} // namespace
