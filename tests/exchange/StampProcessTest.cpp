// Separate running instances share one working folder; each is a real process running
// stamp_tool, so the stamps cross process boundaries exactly as they do between two programs.
#include "common/TestUtil.h"
#include "exchange/WorkingFolder.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

constexpr int kFourHours = 4 * 3600;

class StampProcessTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("Wave3.qex"));
        m_folder = exchange::WorkingFolderOf(m_path);
    }

    // Runs one instance to the end; its standard output is returned through `output`.
    void Run(const QString& action, int number, int clockAhead = 0, QString* output = nullptr) {
        QProcess tool;
        tool.start(QStringLiteral(STAMP_TOOL),
                   {action, m_path, QString::number(number), QString::number(clockAhead)});
        ASSERT_TRUE(tool.waitForFinished(30000)) << tool.errorString().toStdString();
        ASSERT_EQ(tool.exitStatus(), QProcess::NormalExit);
        ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        if (output)
            *output = QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
    }

    bool HasStamp(int number) const {
        return QFileInfo::exists(m_folder + exchange::StampFileName(number));
    }

    QTemporaryDir m_dir;
    QString m_path;
    QString m_folder;
};

TEST_F(StampProcessTest, LastInstanceToCleanRemovesTheFolder) {
    QString folder;
    ASSERT_NO_FATAL_FAILURE(Run(QStringLiteral("prepare"), 1, 0, &folder));
    EXPECT_EQ(folder, m_folder);
    ASSERT_NO_FATAL_FAILURE(Run(QStringLiteral("prepare"), 2));
    ASSERT_TRUE(testutil::WriteAll(m_folder + QStringLiteral("questionnaire.xml"), "<q/>"));
    QDirIterator listing(m_folder, {QStringLiteral("*.stp")}, QDir::Files);
    ASSERT_TRUE(listing.hasNext());
    const bool firstIsA = QFileInfo(listing.next()).fileName() == exchange::StampFileName(1);

    // B meets A's young stamp: the folder stays, and so does B's own stamp if met after it.
    ASSERT_NO_FATAL_FAILURE(Run(QStringLiteral("clean"), 2));
    EXPECT_TRUE(HasStamp(1));
    EXPECT_EQ(HasStamp(2), firstIsA);
    EXPECT_TRUE(QFileInfo::exists(m_folder + QStringLiteral("questionnaire.xml")));

    ASSERT_NO_FATAL_FAILURE(Run(QStringLiteral("clean"), 1));
    EXPECT_FALSE(HasStamp(1));
    if (firstIsA) {
        // B's leftover stamp guards the folder until it is three hours old.
        EXPECT_TRUE(HasStamp(2));
        ASSERT_NO_FATAL_FAILURE(Run(QStringLiteral("clean"), 3, kFourHours));
    }
    EXPECT_FALSE(QFileInfo::exists(m_folder));
}

} // namespace
