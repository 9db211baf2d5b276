// Saves that cannot be completed: a file-size limit reached part-way, a folder that cannot be
// written, a save killed half-way, and two programs saving the same questionnaire at once. The old
// file must stay whole and readable, the error must say what happened, and no file may mix two
// saves.
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "util/Messages.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString kExample = testutil::SourcePath(u"examples/customer-satisfaction.xml"_s);
// Questions in a big save: tens of megabytes, long enough to be killed or cut off part-way.
const QString kBigSave = u"40000"_s;

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

CQuestionnaire Load(const QString& path) {
    app::AppContext context;
    util::RecordedMessages messages;
    app::QuestionnaireDocument document(context, messages);
    EXPECT_TRUE(document.OpenSilently(path)) << path.toStdString();
    return document.Questionnaire() ? *document.Questionnaire() : CQuestionnaire();
}

void SaveExampleAs(const QString& path) {
    ASSERT_EQ(RunProgram(QStringLiteral(DOC_TOOL), {u"convert"_s, kExample, path}).status, 0);
}

void StartBigSave(QProcess& child, const QString& path) {
    child.start(QStringLiteral(DOC_TOOL), {u"bigsave"_s, path, kBigSave});
    ASSERT_TRUE(child.waitForStarted());
    // The child prints "saving" once the questionnaire is built and the save begins.
    while (!child.canReadLine())
        ASSERT_TRUE(child.waitForReadyRead(60000));
    ASSERT_EQ(child.readLine().trimmed(), QByteArray("saving"));
}

class FailingDiskTest : public ::testing::TestWithParam<const char*> {
protected:
    QString Path(const QString& name) const { return m_dir.filePath(name); }
    QString Type() const { return QLatin1String(GetParam()); }
    QTemporaryDir m_dir;
};

// A file-size limit reached part-way, then a folder that cannot be written.
TEST_P(FailingDiskTest, SaveThatCannotBeCompletedKeepsTheOldFile) {
    // Root ignores permissions: the save into the locked folder then runs as an unprivileged user.
    QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                            QFile::ReadOther | QFile::ExeOther);
    const QString tool = Path(u"doc_tool"_s);
    ASSERT_TRUE(QFile::copy(QStringLiteral(DOC_TOOL), tool));
    const QString example = Path(u"example.xml"_s);
    ASSERT_TRUE(QFile::copy(kExample, example));
    QFile::setPermissions(example, QFile::ReadOwner | QFile::ReadOther);
    const QString locked = Path(u"locked"_s);
    ASSERT_TRUE(QDir().mkdir(locked));
    const QString path = locked + u"/survey."_s + Type();
    SaveExampleAs(path);
    const QByteArray before = testutil::ReadAll(path);
    const CQuestionnaire old = Load(path);
    const QStringList filesBefore = QDir(locked).entryList(QDir::Files | QDir::Hidden);
    const auto keptTheOldFile = [&](const Outcome& run) {
        EXPECT_FALSE(run.err.trimmed().isEmpty()) << "the failure must be explained";
        EXPECT_EQ(Load(path), old); // rolls back an interrupted transaction first
        EXPECT_EQ(testutil::ReadAll(path), before);
    };

    // Files may grow to 1 MB; the save below writes tens of megabytes.
    const Outcome limited =
        RunProgram(tool, {u"limit"_s, u"1000000"_s, tool, u"bigsave"_s, path, kBigSave});
    EXPECT_EQ(limited.status, 2) << limited.out.toStdString() << limited.err.toStdString();
    keptTheOldFile(limited);
    EXPECT_EQ(QDir(locked).entryList(QDir::Files | QDir::Hidden), filesBefore)
        << "a temporary file was left behind";

    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadOther);
    QFile::setPermissions(locked,
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    const auto convertUnprivileged = [&] {
        const QStringList convert = {u"convert"_s, example, path};
        return ::geteuid() == 0
                   ? RunProgram(u"setpriv"_s, QStringList{u"--reuid=65534"_s, u"--regid=65534"_s,
                                                          u"--clear-groups"_s, tool} +
                                                  convert)
                   : RunProgram(tool, convert);
    };
    const Outcome denied = convertUnprivileged();
    EXPECT_NE(denied.status, 0);
    keptTheOldFile(denied);

    // A write-protected file in a folder the user may write to: a rename would replace it.
    QFile::setPermissions(locked, QFileDevice::Permissions(0x7777));
    const Outcome protectedFile = convertUnprivileged();
    EXPECT_NE(protectedFile.status, 0);
    keptTheOldFile(protectedFile);

    // Through a link, the file it names is saved, and keeps its mode (root may write to a
    // read-only file, but does not make it writable); the link stays a link.
    const QFileDevice::Permissions mode =
        QFile::ReadOwner | QFile::ReadGroup |
        (::geteuid() == 0 ? QFile::Permissions() : QFile::WriteOwner);
    QFile::setPermissions(path, mode);
    const QString link = Path(u"link."_s + Type());
    ASSERT_TRUE(QFile::link(path, link));
    const Outcome linked = RunProgram(tool, {u"bigsave"_s, link, u"10"_s, u"through the link"_s});
    EXPECT_EQ(linked.status, 0) << linked.err.toStdString();
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    const CQuestionnaire saved = Load(path);
    EXPECT_NE(saved, old);
    EXPECT_EQ(saved, Load(link));
    EXPECT_EQ(QFile::permissions(path) & 0x7077, mode); // the owner's, group's and others' bits
    QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

// A child performs a big save and is killed with SIGKILL at points of the save's measured
// duration.
TEST_P(FailingDiskTest, SaveKilledHalfWayKeepsTheOldFile) {
    const QString path = Path(u"survey."_s + Type());
    const QString scratch = Path(u"scratch."_s + Type());
    SaveExampleAs(path);
    SaveExampleAs(scratch);
    qint64 duration = 0;
    {
        QProcess child;
        StartBigSave(child, scratch);
        QElapsedTimer timer;
        timer.start();
        ASSERT_TRUE(child.waitForFinished(120000));
        duration = timer.elapsed();
    }
    const QByteArray bytes = testutil::ReadAll(path);
    const CQuestionnaire previous = Load(path);

    // Each kill leaves either the old file, byte for byte, or the whole new save (a loaded
    // machine may finish the save before the kill lands); never anything between.
    int interrupted = 0;
    qint64 delay = duration * 9 / 10;
    for (int attempt = 0; attempt < 12 && interrupted < 3; ++attempt) {
        {
            QProcess child;
            StartBigSave(child, path);
            QThread::msleep(quint64(delay));
            ::kill(pid_t(child.processId()), SIGKILL);
            child.waitForFinished();
        }
        const CQuestionnaire now = Load(path); // rolls back an interrupted transaction first
        if (testutil::ReadAll(path) == bytes) {
            ++interrupted;
            EXPECT_EQ(now, previous) << "killed after " << delay << " ms";
            delay = delay * 2 / 3;
            continue;
        }
        for (int i = 0; i < previous.GetNbreQuestion(); ++i)
            EXPECT_EQ(now.GetQuestion(i).GetLocalisedShortCaption(1033), u"changed %1"_s.arg(i))
                << "a changed file must hold the whole new save";
        ASSERT_TRUE(testutil::WriteAll(path, bytes));
        delay /= 2;
    }
    EXPECT_GE(interrupted, 3) << "the save took " << duration << " ms";
}

TEST_P(FailingDiskTest, TwoProgramsSavingAtOnceLeaveOneWholeSave) {
    const QString path = Path(u"survey."_s + Type());
    SaveExampleAs(path);
    const QByteArray before = testutil::ReadAll(path);
    QProcess first;
    QProcess second;
    first.start(QStringLiteral(DOC_TOOL), {u"bigsave"_s, path, u"20000"_s, u"first"_s});
    second.start(QStringLiteral(DOC_TOOL), {u"bigsave"_s, path, u"20000"_s, u"second"_s});
    ASSERT_TRUE(first.waitForFinished(120000));
    ASSERT_TRUE(second.waitForFinished(120000));
    QSet<QString> saved;
    for (QProcess* child : {&first, &second})
        if (child->readAllStandardOutput().contains("saved"))
            saved.insert(child->arguments().last());
    const CQuestionnaire q = Load(path);
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

INSTANTIATE_TEST_SUITE_P(EachType, FailingDiskTest, ::testing::Values("xml", "qex", "qes", "qew"));

TEST(FailingDisk, ExportThatCannotBeWrittenWholeKeepsTheOldFileAndSaysWhy) {
    QTemporaryDir dir;
    const QString survey = dir.filePath(u"survey.xml"_s);
    ASSERT_TRUE(QFile::copy(kExample, survey));
    const QString out = dir.filePath(u"out.txt"_s);
    ASSERT_TRUE(testutil::WriteAll(out, "previous export"));
    const Outcome run = RunProgram(
        QStringLiteral(DOC_TOOL),
        {u"limit"_s, u"4000"_s, QStringLiteral(TRANSLATOR_BINARY), survey, u"export:"_s + out});
    EXPECT_TRUE(run.out.contains(QLatin1String("result=-20")));
    EXPECT_TRUE(run.err.contains(QLatin1String("Cannot write the file"))) << run.err.toStdString();
    EXPECT_EQ(testutil::ReadAll(out), QByteArray("previous export"));
}

} // namespace

// A media file cut short while the package is unpacked fails the opening: saved, the package
// would keep the cut file in place of the whole one.
TEST(FailingDisk, PackageUnpackedInPartIsNotOpened) {
    QTemporaryDir dir;
    const QString media = dir.filePath(u"media"_s);
    ASSERT_TRUE(QDir().mkdir(media));
    QByteArray sound(3000000, Qt::Uninitialized); // noise: a package refuses a file that packs
    for (char& byte : sound)                      // a thousandfold
        byte = char(QRandomGenerator::global()->generate());
    ASSERT_TRUE(testutil::WriteAll(media + u"/sound.wav"_s, sound));
    CQuestionnaire q = Load(kExample);
    const QString qex = dir.filePath(u"survey.qex"_s);
    ASSERT_TRUE(q.SaveToExchangeFormat(qex, media, -1)) << q.GetLastError().toStdString();
    const QByteArray before = testutil::ReadAll(qex);
    // Files may grow to 1 MB: the questionnaire fits, the sound does not.
    const Outcome run =
        RunProgram(QStringLiteral(DOC_TOOL), {u"limit"_s, u"1000000"_s, QStringLiteral(DOC_TOOL),
                                              u"convert"_s, qex, dir.filePath(u"copy.qex"_s)});
    EXPECT_EQ(run.status, 1) << run.out.toStdString() << run.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(u"copy.qex"_s)));
    EXPECT_EQ(testutil::ReadAll(qex), before);
}
