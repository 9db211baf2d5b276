// The process helpers: running programs (here or on a worker thread), editing a file in its
// program, closing processes, waiting while events flow, desktop entries and the per-thread log.
#include "util/Process.h"

#include "common/TestUtil.h"
#include "util/AnsiCodePage.h"
#include "util/DesktopEntry.h"
#include "util/ProcessThreads.h"
#include "util/ThreadLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

using testutil::Utf16Le;
using util::AnsiCodePage;

namespace {

QStringList Shell(const char* script) {
    return {u"sh"_s, u"-c"_s, QString::fromUtf8(script)};
}

bool MakeScript(const QString& path, const QString& body) {
    return testutil::WriteAll(path, (u"#!/bin/sh\n"_s + body).toUtf8()) &&
           QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner |
                                           QFileDevice::ExeUser);
}

// Gone, or a zombie nobody has reaped yet: either way no longer running.
bool ProcessGone(qint64 pid) {
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype close = line.lastIndexOf(')');
    return close < 0 || line.mid(close + 2, 1) == "Z" || line.mid(close + 2, 1) == "X";
}

// Exit codes and output (either stream, UTF-16 or of the ANSI code page) come through; what
// could not start or crashed is told apart.
TEST(RunProgramTest, PassesExitCodesAndOutputThroughAndReportsWhatCouldNotStart) {
    QTemporaryDir dir;
    const QString notExecutable = dir.filePath(u"plain.txt"_s);
    ASSERT_TRUE(testutil::WriteAll(notExecutable, "echo hi\n"));
    const QString pwd = QFileInfo(dir.path()).canonicalFilePath();
    const QString file = dir.filePath(u"bytes"_s);
    const QStringList cat = {u"cat"_s, file};
    const QString french = u"Qu'en pensez-vous ? \u00C9t\u00E9, d\u00E9j\u00E0"_s;
    const QString russian = u"\u041F\u0440\u0438\u0432\u0435\u0442"_s;
    QString longText;
    for (int i = 0; i < 300; ++i)
        longText += u"ligne %1 \u00E9t\u00E9\n"_s.arg(i);
    QByteArray french1252, long1252;
    ASSERT_TRUE(AnsiCodePage::FromUnicode(french, 1252, french1252));
    ASSERT_TRUE(AnsiCodePage::FromUnicode(longText, 1252, long1252));
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
        QByteArray bytes = QByteArray(); // the file cat prints
        quint32 codePage = 1252;
    } cases[] = {
        {"highest code", Shell("exit 255"), {}, 255},
        {"both streams", Shell("pwd; echo err >&2; exit 5"), {}, 5, dir.path(), pwd + "\nerr\n"},
        {"command line", {}, u"sh -c \"exit 42\""_s, 42},
        {"command line with quoted blanks", {}, u"sh -c \"test 'a b' = 'a b'\""_s, 0},
        {"unknown program", {u"/nonexistent/program"_s}, {}, util::kStartFailed},
        {"program not in PATH", {u"no-such-program-here"_s}, {}, util::kStartFailed},
        {"not executable", {notExecutable}, {}, util::kStartFailed},
        {"empty command", {}, QString(), util::kStartFailed},
        {"no such folder", Shell("pwd"), {}, util::kStartFailed, pwd + u"/none"_s},
        {"signal SEGV", Shell("ulimit -c 0; kill -SEGV $$"), {}, util::kCrashed},
        {"signal ABRT", Shell("ulimit -c 0; kill -ABRT $$"), {}, util::kCrashed},
        {"killed", Shell("kill -KILL $$"), {}, util::kCrashed},
        // 3 is the folder ls opens to list it.
        {"standard descriptors only", {"ls", "-1", "/proc/self/fd"}, {}, 0, {}, "0\n1\n2\n3\n"},
        {"utf16 with mark", cat, {}, 0, {}, french, Utf16Le(french)},
        {"utf16 without mark", cat, {}, 0, {}, french, Utf16Le(french, false)},
        {"code page 1252", cat, {}, 0, {}, french, french1252},
        {"utf16 over many chunks", cat, {}, 0, {}, longText, Utf16Le(longText, false)},
        {"code page over many chunks", cat, {}, 0, {}, longText, long1252},
        {"cyrillic utf16 with mark", cat, {}, 0, {}, russian, Utf16Le(russian), 1251},
        {"code page 1251", cat, {}, 0, {}, russian, "\xCF\xF0\xE8\xE2\xE5\xF2", 1251},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AnsiCodePage::SetCurrent(c.codePage);
        ASSERT_TRUE(testutil::WriteAll(file, c.bytes));
        QString output = u"stale"_s;
        const int code = c.command.isEmpty()
                             ? util::RunProgram(c.commandLine, c.folder, output, 10000)
                             : util::RunProgram(c.command, c.folder, output, 10000);
        EXPECT_EQ(code, c.expected);
        EXPECT_EQ(output, c.output);
    }
    AnsiCodePage::Reset();
    ::close(leaky);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
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
        child.start(u"sh"_s, {u"-c"_s, QString::fromUtf8(c.script)});
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
    const QString launcher = dir.filePath(u"launcher"_s);
    const QString record = dir.filePath(u"record"_s);
    ASSERT_TRUE(MakeScript(launcher, u"echo \"$1\" > '%1'\n"_s.arg(record)));
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"sub folder"_s));
    const QString file = dir.filePath(u"sub folder/survey.qes"_s);
    ASSERT_TRUE(testutil::WriteAll(file, "x"));

    ASSERT_TRUE(util::ShowInFileManager(file, launcher));
    EXPECT_TRUE(util::WaitForObject([&] { return QFileInfo(record).size() > 0; }, 10));
    EXPECT_EQ(testutil::ReadAll(record), dir.filePath(u"sub folder"_s).toUtf8() + "\n");

    EXPECT_FALSE(util::ShowInFileManager(file, dir.filePath(u"no-launcher"_s)));
    EXPECT_FALSE(util::ShowInFileManager(dir.filePath(u"gone/file.txt"_s), launcher));
    EXPECT_FALSE(util::ShowInFileManager(QString(), launcher));
}

// What the process helpers log, caught for the test; other messages go where they always go.
class LogCapture {
public:
    LogCapture() {
        s_previous = qInstallMessageHandler(&Handle);
        Lines();
    }
    ~LogCapture() { qInstallMessageHandler(s_previous); }
    static QStringList Lines() {
        std::lock_guard<std::mutex> lock(s_mutex);
        return std::exchange(s_lines, {});
    }

private:
    static void Handle(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (qstrcmp(context.category, "translator.process") != 0 || type != QtInfoMsg)
            return s_previous(type, context, text);
        std::lock_guard<std::mutex> lock(s_mutex);
        s_lines << text;
    }
    static inline QtMessageHandler s_previous = nullptr;
    static inline std::mutex s_mutex;
    static inline QStringList s_lines;
};

// Without handling events, so that nothing posted meanwhile is delivered.
bool WaitForThreadEnd(qint64 tid) {
    const QString task = u"/proc/self/task/%1"_s.arg(tid);
    for (int i = 0; i < 3000 && QFileInfo::exists(task); ++i)
        QThread::msleep(10);
    return tid > 0 && !QFileInfo::exists(task);
}

TEST(RunProgramOnThreadTest, DeliversOnTheReceiversThreadOrDropsTheResultOnceItIsGone) {
    enum Receiver { OnMainThread, OnOwnThread, GoneBeforeThePost, GoneBeforeDelivery, None };
    for (const Receiver kind :
         {OnMainThread, OnOwnThread, GoneBeforeThePost, GoneBeforeDelivery, None}) {
        SCOPED_TRACE(int(kind));
        LogCapture log;
        QThread receiverThread;
        auto receiver = std::make_unique<QObject>();
        QThread* expected = QCoreApplication::instance()->thread();
        if (kind == OnOwnThread) {
            receiverThread.start();
            receiver->moveToThread(&receiverThread);
            expected = &receiverThread;
        }
        QTemporaryDir dir;
        // Slow enough for the receiver to go before the result is posted.
        const QString script = (kind == GoneBeforeThePost ? u"sleep 0.3; "_s : QString()) +
                               u"touch ran; echo hello; exit 3"_s;
        struct Delivered {
            std::atomic<int> calls{0};
            std::atomic<QThread*> thread{nullptr};
            util::ProgramResult result;
        };
        auto delivered = std::make_shared<Delivered>();
        const qint64 tid = util::RunProgramOnThread(
            {u"sh"_s, u"-c"_s, script}, dir.path(), kind == None ? nullptr : receiver.get(),
            [delivered](const util::ProgramResult& result) {
                delivered->result = result;
                delivered->thread = QThread::currentThread();
                ++delivered->calls;
            });
        if (kind == GoneBeforeThePost)
            receiver.reset();
        ASSERT_TRUE(WaitForThreadEnd(tid));
        if (kind == OnMainThread || kind == OnOwnThread) {
            ASSERT_TRUE(util::WaitForObject([&] { return delivered->calls > 0; }, 30));
            EXPECT_EQ(delivered->thread.load(), expected);
            EXPECT_EQ(delivered->result.exitCode, 3);
            EXPECT_EQ(delivered->result.output, u"hello\n"_s);
        } else {
            receiver.reset(); // posted by now, not yet delivered
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
        EXPECT_EQ(delivered->calls, kind == OnMainThread || kind == OnOwnThread ? 1 : 0);
        EXPECT_TRUE(QFileInfo::exists(dir.filePath(u"ran"_s))); // it ran all the same
        EXPECT_EQ(log.Lines(), QStringList(u"RunProgram (Thread ID %1): RunProgramOnThreadFnct "
                                           "Cmd sh -c %2 - Workdir: %3"_s.arg(tid)
                                               .arg(script, dir.path())));
        receiverThread.quit();
        receiverThread.wait();
    }
}

// Puts a folder first in PATH while it lives.
struct PathFirst {
    explicit PathFirst(const QString& folder) : old(qgetenv("PATH")) {
        qputenv("PATH", QFile::encodeName(folder) + ':' + old);
    }
    ~PathFirst() { qputenv("PATH", old); }
    const QByteArray old;
};

// The file's path comes after the script's own name, as "$1".
QStringList ShellEditor(const char* script) {
    return Shell(script) << u"sh"_s;
}

TEST(EditFileOnThreadTest, ReportsWhetherTheEditorChangedTheFile) {
    QTemporaryDir dir;
    const QString file = dir.filePath(u"notes.txt"_s);
    const QByteArray first = "first line\n";
    const QString editor = dir.filePath(u"my editor"_s);
    ASSERT_TRUE(MakeScript(editor, u"echo \"$1 $2\" >> \"$2\"\n"_s));
    const QByteArray entry = "[Desktop Entry]\nExec=\"" + editor.toUtf8() + "\" --edit %f\n";
    const QByteArray edited = first + "--edit " + file.toUtf8() + "\n";
    // xdg-mime and the applications folder as a desktop would have them, made up by the test:
    // the same entry at the top and in a subfolder; xdg-mime records what it was asked and names
    // the row's entry.
    const QString bin = dir.filePath(u"bin"_s), query = dir.filePath(u"query"_s),
                  answer = dir.filePath(u"answer"_s),
                  apps = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
    ASSERT_TRUE(QDir().mkpath(bin) && QDir().mkpath(apps + u"/fake"_s));
    ASSERT_TRUE(
        MakeScript(bin + u"/xdg-mime"_s, u"echo \"$@\" > '%1'\ncat '%2'\n"_s.arg(query, answer)));
    ASSERT_TRUE(testutil::WriteAll(apps + u"/fake-editor.desktop"_s, entry) &&
                testutil::WriteAll(apps + u"/fake/nested.desktop"_s, entry));
    const PathFirst path(bin);
    const struct {
        const char* name;
        std::optional<QStringList> editor; // the path is added at the end; none: ask the desktop
        const char* associated;            // the entry xdg-mime names
        int expected;
        QByteArray content; // of the file afterwards
    } cases[] = {
        {"appends", ShellEditor("echo more >> \"$1\""), "", util::kFileChanged, first + "more\n"},
        {"only reads", ShellEditor("cat \"$1\" > /dev/null"), "", util::kFileUnchanged, first},
        {"writes the same bytes anew", ShellEditor("cp \"$1\" \"$1.new\" && mv \"$1.new\" \"$1\""),
         "", util::kFileUnchanged, first},
        {"fails without touching it", ShellEditor("exit 1"), "", util::kFileUnchanged, first},
        {"deletes it", ShellEditor("rm \"$1\""), "", util::kFileChanged, {}},
        {"runs in the file's folder", ShellEditor("pwd > \"$1\""), "", util::kFileChanged,
         QFileInfo(dir.path()).canonicalFilePath().toUtf8() + "\n"},
        {"cannot start", QStringList{dir.filePath(u"no-editor"_s)}, "", util::kStartFailed, first},
        {"none given", QStringList(), "", util::kNoAssociatedProgram, first},
        {"associated", std::nullopt, "fake-editor.desktop", util::kFileChanged, edited},
        // An id's dashes may stand for subfolders; a slash in it names no entry.
        {"associated, in a subfolder", std::nullopt, "fake-nested.desktop", util::kFileChanged,
         edited},
        {"id with a slash", std::nullopt, "fake/nested.desktop", util::kNoAssociatedProgram, first},
        {"nothing associated", std::nullopt, "", util::kNoAssociatedProgram, first},
        {"entry missing", std::nullopt, "missing.desktop", util::kNoAssociatedProgram, first},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(testutil::WriteAll(file, first));
        ASSERT_TRUE(testutil::WriteAll(answer, c.associated + QByteArray("\n")));
        QFile::remove(query);
        LogCapture log;
        QObject receiver;
        auto result = std::make_shared<std::atomic<int>>(-100);
        const auto onDone = [result](int changed) { *result = changed; };
        const qint64 tid = c.editor ? util::EditFileOnThread(file, *c.editor, &receiver, onDone)
                                    : util::EditFileOnThread(file, &receiver, onDone);
        ASSERT_TRUE(util::WaitForObject([&] { return *result != -100; }, 30));
        ASSERT_TRUE(WaitForThreadEnd(tid));
        EXPECT_EQ(*result, c.expected);
        EXPECT_EQ(testutil::ReadAll(file), c.content);
        // The desktop is asked only when no editor is given.
        EXPECT_EQ(testutil::ReadAll(query), c.editor ? "" : "query default text/plain\n");
        EXPECT_EQ(log.Lines(),
                  QStringList(
                      u"EditFile (Thread ID %1): EditFileThreadFnct file %2"_s.arg(tid).arg(file)));
    }
}

// Every entry is read below a comment and another group with an Exec key of its own.
TEST(DesktopEntryTest, ExpandsTheExecLine) {
    const QByteArray head = "# made by hand\n[Other]\nExec=wrong\n[Desktop Entry]\n";
    const struct {
        const char* name;
        QByteArray entry;    // after the head
        QStringList command; // "<path>" and "<entry>" stand for the file and the entry file
    } cases[] = {
        {"file list", "Exec=gedit %U\n", {"gedit", "<path>"}},
        {"quoted program",
         "Exec=\"/opt/my app/edit\" --new %f\n",
         {"/opt/my app/edit", "--new", "<path>"}},
        {"no file code", "Exec=edit  -w\n", {"edit", "-w", "<path>"}},
        {"name, icon and entry",
         "Name=Editor\nIcon=ed\nExec=edit --title=%c %i %k %F\n",
         {"edit", "--title=Editor", "--icon", "ed", "<entry>", "<path>"}},
        {"icon code without an icon", "Exec=edit %i %f\n", {"edit", "<path>"}},
        {"percent and deprecated codes", "Exec=edit 100%% %d %m %f\n", {"edit", "100%", "<path>"}},
        {"escapes of values and of quoting",
         "Exec=printf \"a\\\\\\\\b\\\\\"c\\\\$\" %f\n",
         {"printf", "a\\b\"c$", "<path>"}},
        {"blank as an escape", "Exec=\"my\\sedit\" %f\n", {"my edit", "<path>"}},
        {"comments, spaces and other groups",
         "# Exec=commented\nExec[de]=falsch %f\nExec = right %u\n[Desktop Action x]\nExec=action\n",
         {"right", "<path>"}},
        {"no exec key", "Name=Nothing\n", {}},
        {"needs a terminal", "Exec=vim %f\nTerminal=true\n", {}},
    };
    QTemporaryDir dir;
    const QString entry = dir.filePath(u"app.desktop"_s);
    const QString path = u"/home/u/my survey.qes"_s;
    for (const auto& c : cases) {
        ASSERT_TRUE(testutil::WriteAll(entry, head + c.entry));
        QStringList expected = c.command;
        expected.replaceInStrings(u"<path>"_s, path);
        expected.replaceInStrings(u"<entry>"_s, entry);
        EXPECT_EQ(util::DesktopEntryCommand(entry, path), expected) << c.name;
    }
    EXPECT_EQ(util::DesktopEntryCommand(dir.filePath(u"none.desktop"_s), path), QStringList());
}

TEST(ThreadLogTest, PassesOnOnlyWhatDiffersFromTheThreadsLastMessage) {
    LogCapture log;
    util::ThreadLog& threadLog = util::ThreadLog::Instance();
    const QString main = util::ThreadLog::CurrentThreadLabel();
    EXPECT_EQ(main, u"Thread ID %1"_s.arg(util::ThreadLog::CurrentThreadId()));

    for (const char* message : {"one", "one", "two", "", "two", "two"})
        threadLog.Log(QString::fromUtf8(message));

    // The same message from a named thread is its own.
    QString workerLabel;
    qint64 workerId = 0;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        workerLabel = util::ThreadLog::CurrentThreadLabel();
        workerId = util::ThreadLog::CurrentThreadId();
        for (const QString& message : {u"two"_s, u"two"_s, QString()})
            util::ThreadLog::Instance().Log(message);
    }));
    worker->setObjectName(u"Named"_s);
    worker->start();
    ASSERT_TRUE(worker->wait(30000));
    threadLog.Log(QString());

    EXPECT_NE(workerId, util::ThreadLog::CurrentThreadId());
    EXPECT_EQ(workerLabel, u"Named (Thread ID %1)"_s.arg(workerId));
    EXPECT_EQ(log.Lines(),
              QStringList({main + ": one", main + ": two", main + ": two", workerLabel + ": two"}));
}

} // namespace
