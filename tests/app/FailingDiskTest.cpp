// Saves that cannot be completed: a file-size limit reached part-way, a folder that cannot be
// written, and two programs saving the same questionnaire at once. The old file must stay whole
// and readable, the error must say what happened, and no file may mix two saves.
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "util/Messages.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <unistd.h>

namespace {

const QString kExample = testutil::SourcePath(QStringLiteral("examples/customer-satisfaction.xml"));

struct Outcome {
    int status = -1;
    QString out;
    QString err;
};

Outcome RunProgram(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(120000)) << program.toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

bool Load(const QString& path, CQuestionnaire& out) {
    app::AppContext context;
    util::RecordedMessages messages;
    app::QuestionnaireDocument document(context, messages);
    if (!document.OpenSilently(path))
        return false;
    out = *document.Questionnaire();
    return true;
}

void SaveExampleAs(const QString& path) {
    app::AppContext context;
    util::RecordedMessages messages;
    app::QuestionnaireDocument document(context, messages);
    ASSERT_TRUE(document.Open(kExample));
    ASSERT_TRUE(document.Save(path));
}

class FailingDiskTest : public ::testing::TestWithParam<const char*> {
protected:
    QString Path(const QString& name) const { return m_dir.filePath(name); }
    QString Type() const { return QLatin1String(GetParam()); }
    QTemporaryDir m_dir;
};

TEST_P(FailingDiskTest, FileSizeLimitReachedHalfWayKeepsTheOldFile) {
    const QString path = Path(QStringLiteral("survey.") + Type());
    SaveExampleAs(path);
    const QByteArray before = testutil::ReadAll(path);
    CQuestionnaire old;
    ASSERT_TRUE(Load(path, old));
    const QStringList filesBefore = QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden);
    // Files may grow to 1 MB; the save below writes tens of megabytes.
    const Outcome run =
        RunProgram(QStringLiteral(DOC_TOOL),
                   {QStringLiteral("limit"), QStringLiteral("1000000"), QStringLiteral(DOC_TOOL),
                    QStringLiteral("bigsave"), path, QStringLiteral("40000")});
    EXPECT_EQ(run.status, 2) << run.out.toStdString() << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QLatin1String("failed")));
    EXPECT_FALSE(run.err.trimmed().isEmpty()) << "the failure must be explained";
    CQuestionnaire after;
    ASSERT_TRUE(Load(path, after));
    EXPECT_EQ(after, old);
    EXPECT_EQ(testutil::ReadAll(path), before);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden), filesBefore)
        << "a temporary file was left behind";
}

TEST_P(FailingDiskTest, FolderThatCannotBeWrittenKeepsTheOldFile) {
    // Root ignores permissions: the save then runs as an unprivileged user.
    QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                            QFile::ReadOther | QFile::ExeOther);
    const QString tool = Path(QStringLiteral("doc_tool"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(DOC_TOOL), tool));
    const QString example = Path(QStringLiteral("example.xml"));
    ASSERT_TRUE(QFile::copy(kExample, example));
    QFile::setPermissions(example, QFile::ReadOwner | QFile::ReadOther);
    const QString locked = Path(QStringLiteral("locked"));
    ASSERT_TRUE(QDir().mkdir(locked));
    const QString path = locked + QStringLiteral("/survey.") + Type();
    SaveExampleAs(path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadOther);
    QFile::setPermissions(locked,
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    const QByteArray before = testutil::ReadAll(path);

    const QStringList convert = {QStringLiteral("convert"), example, path};
    const Outcome run = ::geteuid() == 0
                            ? RunProgram(QStringLiteral("setpriv"),
                                         QStringList{QStringLiteral("--reuid=65534"),
                                                     QStringLiteral("--regid=65534"),
                                                     QStringLiteral("--clear-groups"), tool} +
                                             convert)
                            : RunProgram(tool, convert);
    QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_NE(run.status, 0);
    EXPECT_FALSE(run.err.trimmed().isEmpty()) << "the failure must be explained";
    EXPECT_EQ(testutil::ReadAll(path), before);
    CQuestionnaire after;
    EXPECT_TRUE(Load(path, after));
}

TEST_P(FailingDiskTest, TwoProgramsSavingAtOnceLeaveOneWholeSave) {
    const QString path = Path(QStringLiteral("survey.") + Type());
    SaveExampleAs(path);
    const QByteArray before = testutil::ReadAll(path);
    QProcess first;
    QProcess second;
    first.start(QStringLiteral(DOC_TOOL), {QStringLiteral("bigsave"), path, QStringLiteral("20000"),
                                           QStringLiteral("first")});
    second.start(QStringLiteral(DOC_TOOL), {QStringLiteral("bigsave"), path,
                                            QStringLiteral("20000"), QStringLiteral("second")});
    ASSERT_TRUE(first.waitForFinished(120000));
    ASSERT_TRUE(second.waitForFinished(120000));
    QSet<QString> saved;
    if (first.readAllStandardOutput().contains("saved"))
        saved.insert(QStringLiteral("first"));
    if (second.readAllStandardOutput().contains("saved"))
        saved.insert(QStringLiteral("second"));
    CQuestionnaire q;
    ASSERT_TRUE(Load(path, q));
    // Every short caption comes from the same save: one that reported success, or, when the two
    // got in each other's way (packages share their working folder) and both failed, the old
    // file as it was.
    QSet<QString> labels;
    for (int i = 0; i < q.GetNbreQuestion(); ++i)
        labels.insert(
            q.GetQuestion(i).GetLocalisedShortCaption(1033).section(QLatin1Char(' '), 0, 0));
    if (saved.isEmpty()) {
        EXPECT_EQ(testutil::ReadAll(path), before);
    } else {
        EXPECT_EQ(labels.size(), 1) << QStringList(labels.values()).join(u',').toStdString();
        EXPECT_TRUE(saved.contains(*labels.begin()));
    }
}

INSTANTIATE_TEST_SUITE_P(EachType, FailingDiskTest, ::testing::Values("xml", "qex", "qes"));

TEST(FailingDisk, ExportThatCannotBeWrittenWholeKeepsTheOldFileAndSaysWhy) {
    QTemporaryDir dir;
    const QString survey = dir.filePath(QStringLiteral("survey.xml"));
    ASSERT_TRUE(QFile::copy(kExample, survey));
    const QString out = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_TRUE(testutil::WriteAll(out, "previous export"));
    const Outcome run =
        RunProgram(QStringLiteral(DOC_TOOL),
                   {QStringLiteral("limit"), QStringLiteral("4000"),
                    QStringLiteral(TRANSLATOR_BINARY), survey, QStringLiteral("export:") + out});
    EXPECT_TRUE(run.out.contains(QLatin1String("result=-20")));
    EXPECT_TRUE(run.err.contains(QLatin1String("Cannot write the file"))) << run.err.toStdString();
    EXPECT_EQ(testutil::ReadAll(out), QByteArray("previous export"));
}

} // namespace
