#include "util/Process.h"

#include "common/TestUtil.h"
#include "util/AnsiCodePage.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using testutil::Utf16Le;
using util::AnsiCodePage;

namespace {

QStringList Shell(const char* script) {
    return {QStringLiteral("sh"), QStringLiteral("-c"), QString::fromUtf8(script)};
}

// Gone, or a zombie nobody has reaped yet: either way no longer running.
bool ProcessGone(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype close = line.lastIndexOf(')');
    return close < 0 || line.mid(close + 2, 1) == "Z" || line.mid(close + 2, 1) == "X";
}

TEST(RunProgramTest, PassesExitCodesAndOutputThroughAndReportsWhatCouldNotStart) {
    QTemporaryDir dir;
    const QString notExecutable = dir.filePath(QStringLiteral("plain.txt"));
    ASSERT_TRUE(testutil::WriteAll(notExecutable, "echo hi\n"));
    const QString pwd = QFileInfo(dir.path()).canonicalFilePath();
    // Opened the way careless code does, without O_CLOEXEC; none of them may reach a program.
    const int leaky = ::open("/proc/self/status", O_RDONLY);
    int pipeEnds[2];
    ASSERT_TRUE(leaky >= 0 && ::pipe(pipeEnds) == 0);
    const struct {
        const char* name;
        QStringList command;
        QString commandLine; // run when there is no command
        int expected;
        QString folder = QString();
        QString output = QString();
    } cases[] = {
        {"success", Shell("exit 0"), {}, 0},
        {"failure", Shell("exit 3"), {}, 3},
        {"highest code", Shell("exit 255"), {}, 255},
        {"both streams", Shell("pwd; echo err >&2; exit 5"), {}, 5, dir.path(), pwd + "\nerr\n"},
        {"command line", {}, QStringLiteral("sh -c \"exit 42\""), 42},
        {"command line with quoted blanks", {}, QStringLiteral("sh -c \"test 'a b' = 'a b'\""), 0},
        {"unknown program", {QStringLiteral("/nonexistent/program")}, {}, util::kStartFailed},
        {"program not in PATH", {QStringLiteral("no-such-program-here")}, {}, util::kStartFailed},
        {"not executable", {notExecutable}, {}, util::kStartFailed},
        {"empty command", {}, QString(), util::kStartFailed},
        {"no such folder", Shell("pwd"), {}, util::kStartFailed, pwd + QStringLiteral("/none")},
        {"signal SEGV", Shell("ulimit -c 0; kill -SEGV $$"), {}, util::kCrashed},
        {"signal ABRT", Shell("ulimit -c 0; kill -ABRT $$"), {}, util::kCrashed},
        {"killed", Shell("kill -KILL $$"), {}, util::kCrashed},
        // 3 is the folder ls opens to list it.
        {"standard descriptors only", {"ls", "-1", "/proc/self/fd"}, {}, 0, {}, "0\n1\n2\n3\n"},
    };
    for (const auto& c : cases) {
        QString output = QStringLiteral("stale");
        const int code = c.command.isEmpty()
                             ? util::RunProgram(c.commandLine, c.folder, output, 10000)
                             : util::RunProgram(c.command, c.folder, output, 10000);
        EXPECT_EQ(code, c.expected) << c.name;
        EXPECT_EQ(output, c.output) << c.name;
    }
    ::close(leaky);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
}

TEST(RunProgramTest, DecodesUtf16AndCodePageOutputToTheSameText) {
    const QString french = QStringLiteral(u"Qu'en pensez-vous ? \u00C9t\u00E9, d\u00E9j\u00E0");
    const QString russian = QStringLiteral(u"\u041F\u0440\u0438\u0432\u0435\u0442");
    QString longText;
    for (int i = 0; i < 300; ++i)
        longText += QStringLiteral(u"ligne %1 \u00E9t\u00E9\n").arg(i);
    QByteArray french1252;
    ASSERT_TRUE(AnsiCodePage::FromUnicode(french, 1252, french1252));
    QByteArray long1252;
    ASSERT_TRUE(AnsiCodePage::FromUnicode(longText, 1252, long1252));
    const struct {
        const char* name;
        quint32 codePage;
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"utf16 with mark", 1252, Utf16Le(french), french},
        {"utf16 without mark", 1252, Utf16Le(french, false), french},
        {"code page 1252", 1252, french1252, french},
        {"utf16 over many chunks", 1252, Utf16Le(longText, false), longText},
        {"code page over many chunks", 1252, long1252, longText},
        {"cyrillic utf16 with mark", 1251, Utf16Le(russian), russian},
        {"code page 1251", 1251, QByteArray("\xCF\xF0\xE8\xE2\xE5\xF2"), russian},
    };
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("bytes"));
    for (const auto& c : cases) {
        AnsiCodePage::SetCurrent(c.codePage);
        ASSERT_TRUE(testutil::WriteAll(file, c.bytes));
        QString output;
        EXPECT_EQ(util::RunProgram({QStringLiteral("cat"), file}, QString(), output), 0) << c.name;
        EXPECT_EQ(output, c.text) << c.name;
    }
    AnsiCodePage::Reset();
}

// What the program started and left running is killed with it at the timeout, and left alone
// when the program ends first, though it still holds the output open.
TEST(RunProgramTest, TimeoutKillsWhatTheProgramStartedAndAnEndedProgramIsNotWaitedFor) {
    const struct {
        const char* script;
        int timeoutMs;
        int expected;
        bool childGone;
    } cases[] = {
        {"sleep 30 & echo $! $$; wait", 500, util::kTimedOut, true},
        {"sleep 30 & echo $! $$", 20000, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script);
        QElapsedTimer clock;
        clock.start();
        QString output;
        EXPECT_EQ(util::RunProgram(Shell(c.script), QString(), output, c.timeoutMs), c.expected);
        EXPECT_LT(clock.elapsed(), 10000);
        const QStringList pids = output.simplified().split(QLatin1Char(' '));
        ASSERT_EQ(pids.size(), 2) << output.toStdString();
        const qint64 child = pids[0].toLongLong();
        ASSERT_GT(child, 0);
        // The killed child is reaped by whoever adopted it, which may take a moment.
        for (int i = 0; c.childGone && i < 200 && !ProcessGone(child); ++i)
            QThread::msleep(10);
        EXPECT_EQ(ProcessGone(child), c.childGone);
        EXPECT_TRUE(ProcessGone(pids[1].toLongLong()));
        if (!c.childGone)
            ::kill(pid_t(child), SIGKILL);
    }
}

TEST(CloseProcessTest, AsksFirstKillsOnlyWhenForcedAndRefusesWhatIsNoProcess) {
    // Ignoring SIGTERM survives the exec, so sleep itself ignores it.
    const struct {
        const char* name;
        const char* script;
        bool force;
        int timeoutMs;
        bool closed;
    } cases[] = {
        {"polite", "echo ready; exec sleep 30", false, 5000, true},
        {"polite, unlimited", "echo ready; exec sleep 30", false, util::kNoTimeout, true},
        {"polite, forced needlessly", "echo ready; exec sleep 30", true, 5000, true},
        {"ignores the request", "trap '' TERM; echo ready; exec sleep 30", false, 300, false},
        {"ignores it, forced", "trap '' TERM; echo ready; exec sleep 30", true, 300, true},
    };
    for (const auto& c : cases) {
        QProcess child; // killed when it goes, should CloseProcess have left it running
        child.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(c.script)});
        ASSERT_TRUE(child.waitForStarted() && child.waitForReadyRead(10000)) << c.name;
        EXPECT_EQ(util::CloseProcess(child.processId(), c.force, c.timeoutMs), c.closed) << c.name;
        if (c.closed) {
            EXPECT_TRUE(child.waitForFinished(5000)) << c.name;
        }
    }
    // The number of a child that has been reaped names no process.
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ASSERT_GT(child, 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    for (const qint64 pid : {qint64(child), qint64(0), qint64(-1), qint64(1) << 40})
        EXPECT_FALSE(util::CloseProcess(pid, true, 100)) << pid;
}

TEST(WaitForObjectTest, ReturnsWhenSignalledOrWhenTheTimeRunsOut) {
    const struct {
        const char* name;
        int signalAfterMs; // -1: never
        int timeoutSeconds;
        bool signalled;
        qint64 atLeastMs;
    } cases[] = {
        {"already signalled", 0, 0, true, 0},
        {"signalled by a timer", 50, 10, true, 40},
        {"signalled, no limit", 50, -1, true, 40},
        {"never, no time", -1, 0, false, 0},
        {"never", -1, 1, false, 1000},
    };
    for (const auto& c : cases) {
        bool flag = c.signalAfterMs == 0;
        QTimer timer; // fires only when this thread's events go on being handled
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [&flag] { flag = true; });
        if (c.signalAfterMs > 0)
            timer.start(c.signalAfterMs);
        QElapsedTimer clock;
        clock.start();
        EXPECT_EQ(util::WaitForObject([&flag] { return flag; }, c.timeoutSeconds), c.signalled)
            << c.name;
        EXPECT_GE(clock.elapsed(), c.atLeastMs) << c.name;
        EXPECT_LT(clock.elapsed(), c.atLeastMs + 5000) << c.name;
    }
}

TEST(ShowInFileManagerTest, StartsTheLauncherOnTheFilesFolder) {
    QTemporaryDir dir;
    const QString launcher = dir.filePath(QStringLiteral("launcher"));
    const QString record = dir.filePath(QStringLiteral("record"));
    ASSERT_TRUE(testutil::WriteAll(
        launcher, QStringLiteral("#!/bin/sh\necho \"$1\" > '%1'\n").arg(record).toUtf8()));
    ASSERT_TRUE(QFile::setPermissions(launcher, QFile::permissions(launcher) |
                                                    QFileDevice::ExeOwner | QFileDevice::ExeUser));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("sub folder")));
    const QString file = dir.filePath(QStringLiteral("sub folder/survey.qes"));
    ASSERT_TRUE(testutil::WriteAll(file, "x"));

    ASSERT_TRUE(util::ShowInFileManager(file, launcher));
    EXPECT_TRUE(util::WaitForObject([&] { return QFileInfo(record).size() > 0; }, 10));
    EXPECT_EQ(testutil::ReadAll(record),
              dir.filePath(QStringLiteral("sub folder")).toUtf8() + "\n");

    EXPECT_FALSE(util::ShowInFileManager(file, dir.filePath(QStringLiteral("no-launcher"))));
    EXPECT_FALSE(util::ShowInFileManager(dir.filePath(QStringLiteral("gone/file.txt")), launcher));
    EXPECT_FALSE(util::ShowInFileManager(QString(), launcher));
}

} // namespace
