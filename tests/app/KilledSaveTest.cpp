// A save killed half-way must leave the previous file as it was. A child process performs a large
// save, and the test kills it with SIGKILL at points of the save's measured duration.
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/TestUtil.h"
#include "util/Messages.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <csignal>

namespace {

const QString kExample = testutil::SourcePath(QStringLiteral("examples/customer-satisfaction.xml"));
const QString kQuestions = QStringLiteral("40000");

CQuestionnaire Load(const QString& path) {
    app::AppContext context;
    util::RecordedMessages messages;
    app::QuestionnaireDocument document(context, messages);
    EXPECT_TRUE(document.OpenSilently(path)) << path.toStdString();
    return document.Questionnaire() ? *document.Questionnaire() : CQuestionnaire();
}

void StartSave(QProcess& child, const QString& path) {
    child.start(QStringLiteral(DOC_TOOL), {QStringLiteral("bigsave"), path, kQuestions});
    ASSERT_TRUE(child.waitForStarted());
    // The child prints "saving" once the questionnaire is built and the save begins.
    while (!child.canReadLine())
        ASSERT_TRUE(child.waitForReadyRead(60000));
    ASSERT_EQ(child.readLine().trimmed(), QByteArray("saving"));
}

// How long a save takes from its start to its end.
qint64 SaveDuration(const QString& path) {
    QProcess child;
    StartSave(child, path);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(child.waitForFinished(120000));
    return timer.elapsed();
}

// Kills the save `delay` milliseconds after it began.
void KillAfter(const QString& path, qint64 delay) {
    QProcess child;
    StartSave(child, path);
    QThread::msleep(quint64(delay));
    ::kill(pid_t(child.processId()), SIGKILL);
    child.waitForFinished();
}

class KilledSaveTest : public ::testing::TestWithParam<const char*> {};

TEST_P(KilledSaveTest, LeavesThePreviousFileReadableAndUnchanged) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("survey.") + QLatin1String(GetParam()));
    const QString scratch = dir.filePath(QStringLiteral("scratch.") + QLatin1String(GetParam()));
    for (const QString& file : {path, scratch}) {
        app::AppContext context;
        util::RecordedMessages messages;
        app::QuestionnaireDocument document(context, messages);
        ASSERT_TRUE(document.Open(kExample));
        ASSERT_TRUE(document.Save(file));
    }
    const qint64 duration = SaveDuration(scratch);
    const QByteArray bytes = testutil::ReadAll(path);
    const CQuestionnaire previous = Load(path);

    // Each kill leaves either the old file, byte for byte, or the whole new save (a loaded
    // machine may finish the save before the kill lands); never anything between.
    int interrupted = 0;
    qint64 delay = duration * 9 / 10;
    for (int attempt = 0; attempt < 12 && interrupted < 3; ++attempt) {
        KillAfter(path, delay);
        const CQuestionnaire now = Load(path); // rolls back an interrupted transaction first
        if (testutil::ReadAll(path) == bytes) {
            ++interrupted;
            EXPECT_EQ(now, previous) << "killed after " << delay << " ms";
            delay = delay * 2 / 3;
            continue;
        }
        for (int i = 0; i < previous.GetNbreQuestion(); ++i)
            EXPECT_EQ(now.GetQuestion(i).GetLocalisedShortCaption(1033),
                      QStringLiteral("changed %1").arg(i))
                << "a changed file must hold the whole new save";
        ASSERT_TRUE(testutil::WriteAll(path, bytes));
        delay /= 2;
    }
    EXPECT_GE(interrupted, 3) << "the save took " << duration << " ms";
}

INSTANTIATE_TEST_SUITE_P(EachType, KilledSaveTest, ::testing::Values("xml", "qex", "qes"));

} // namespace
