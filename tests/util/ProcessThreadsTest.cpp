#include "util/ProcessThreads.h"

#include "common/TestUtil.h"
#include "util/DesktopEntry.h"
#include "util/Process.h"
#include "util/ThreadLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace {

// What the process helpers log, caught for the test; other messages go where they always go.
class LogCapture {
public:
    LogCapture() : m_previous(qInstallMessageHandler(&Handle)) {
        s_previous = m_previous;
        Lines();
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
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
    QtMessageHandler m_previous;
    static inline QtMessageHandler s_previous = nullptr;
    static inline std::mutex s_mutex;
    static inline QStringList s_lines;
};

// Without handling events, so that nothing posted meanwhile is delivered.
bool WaitForThreadEnd(qint64 tid) {
    const QString task = QStringLiteral("/proc/self/task/%1").arg(tid);
    for (int i = 0; i < 3000 && QFileInfo::exists(task); ++i)
        QThread::msleep(10);
    return tid > 0 && !QFileInfo::exists(task);
}

bool MakeScript(const QString& path, const QString& body) {
    return testutil::WriteAll(path, (QStringLiteral("#!/bin/sh\n") + body).toUtf8()) &&
           QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner |
                                           QFileDevice::ExeUser);
}

struct Delivered {
    std::atomic<bool> called{false};
    std::atomic<QThread*> thread{nullptr};
    util::ProgramResult result;
};

TEST(RunProgramOnThreadTest, DeliversOnTheReceiversThread) {
    for (const bool ownThread : {false, true}) {
        SCOPED_TRACE(ownThread ? "receiver on a thread of its own" : "receiver on the main thread");
        LogCapture log;
        QThread receiverThread;
        QObject receiver;
        QThread* expected = QCoreApplication::instance()->thread();
        if (ownThread) {
            receiverThread.start();
            receiver.moveToThread(&receiverThread);
            expected = &receiverThread;
        }
        QTemporaryDir dir;
        auto delivered = std::make_shared<Delivered>();
        const QStringList command = {QStringLiteral("sh"), QStringLiteral("-c"),
                                     QStringLiteral("echo hello; exit 3")};
        const qint64 tid = util::RunProgramOnThread(
            command, dir.path(), &receiver, [delivered](const util::ProgramResult& result) {
                delivered->result = result;
                delivered->thread = QThread::currentThread();
                delivered->called = true;
            });
        ASSERT_TRUE(util::WaitForObject([&] { return delivered->called.load(); }, 30));
        EXPECT_EQ(delivered->thread.load(), expected);
        EXPECT_EQ(delivered->result.exitCode, 3);
        EXPECT_EQ(delivered->result.output, QStringLiteral("hello\n"));
        ASSERT_TRUE(WaitForThreadEnd(tid));
        EXPECT_EQ(
            log.Lines(),
            QStringList(QStringLiteral("RunProgram (Thread ID %1): RunProgramOnThreadFnct Cmd "
                                       "sh -c echo hello; exit 3 - Workdir: %2")
                            .arg(tid)
                            .arg(dir.path())));
        receiverThread.quit();
        receiverThread.wait();
    }
}

TEST(RunProgramOnThreadTest, DropsTheResultOfAReceiverThatIsGone) {
    enum class Gone { BeforeThePost, BetweenPostAndDelivery, NeverGiven };
    for (const Gone gone : {Gone::BeforeThePost, Gone::BetweenPostAndDelivery, Gone::NeverGiven}) {
        SCOPED_TRACE(int(gone));
        LogCapture log;
        QTemporaryDir dir;
        const QString ran = dir.filePath(QStringLiteral("ran"));
        const QString script = gone == Gone::BeforeThePost ? QStringLiteral("sleep 0.3; touch '%1'")
                                                           : QStringLiteral("touch '%1'");
        auto receiver = std::make_unique<QObject>();
        auto calls = std::make_shared<std::atomic<int>>(0);
        const qint64 tid =
            util::RunProgramOnThread({QStringLiteral("sh"), QStringLiteral("-c"), script.arg(ran)},
                                     QString(), gone == Gone::NeverGiven ? nullptr : receiver.get(),
                                     [calls](const util::ProgramResult&) { ++*calls; });
        if (gone == Gone::BeforeThePost)
            receiver.reset();
        ASSERT_TRUE(WaitForThreadEnd(tid));
        receiver.reset();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        EXPECT_TRUE(QFileInfo::exists(ran)); // the program ran all the same
        EXPECT_EQ(calls->load(), 0);
    }
}

class EditFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_file = m_dir.filePath(QStringLiteral("notes.txt"));
        ASSERT_TRUE(testutil::WriteAll(m_file, "first line\n"));
    }

    // The edit's report, delivered to a receiver on this thread.
    std::optional<int> Edit(const std::optional<QStringList>& editor) {
        QObject receiver;
        auto result = std::make_shared<std::atomic<int>>(-100);
        const auto onDone = [result](int changed) { *result = changed; };
        const qint64 tid = editor ? util::EditFileOnThread(m_file, *editor, &receiver, onDone)
                                  : util::EditFileOnThread(m_file, &receiver, onDone);
        if (tid <= 0 || !util::WaitForObject([&] { return *result != -100; }, 30))
            return std::nullopt;
        EXPECT_TRUE(WaitForThreadEnd(tid));
        return result->load();
    }

    LogCapture m_log;
    QTemporaryDir m_dir;
    QString m_file;
};

struct EditorCase {
    const char* name;
    QStringList editor; // the path is added at the end
    int expected;
};

QStringList ShellEditor(const char* script) {
    return {QStringLiteral("sh"), QStringLiteral("-c"), QString::fromUtf8(script),
            QStringLiteral("sh")};
}

TEST_F(EditFileTest, ReportsWhetherTheEditorChangedTheFile) {
    const EditorCase cases[] = {
        {"appends", ShellEditor("echo more >> \"$1\""), util::kFileChanged},
        {"only reads", ShellEditor("cat \"$1\" > /dev/null"), util::kFileUnchanged},
        {"writes the same bytes anew", ShellEditor("cp \"$1\" \"$1.new\" && mv \"$1.new\" \"$1\""),
         util::kFileUnchanged},
        {"fails without touching it", ShellEditor("exit 1"), util::kFileUnchanged},
        {"deletes it", ShellEditor("rm \"$1\""), util::kFileChanged},
        {"cannot start", {m_dir.filePath(QStringLiteral("no-editor"))}, util::kStartFailed},
        {"none given", {}, util::kNoAssociatedProgram},
    };
    for (const EditorCase& c : cases) {
        ASSERT_TRUE(testutil::WriteAll(m_file, "first line\n"));
        EXPECT_EQ(Edit(c.editor), c.expected) << c.name;
    }
}

TEST_F(EditFileTest, RunsTheEditorInTheFilesFolderAndLogsTheFile) {
    EXPECT_EQ(Edit(ShellEditor("pwd > \"$1\"")), util::kFileChanged);
    EXPECT_EQ(testutil::ReadAll(m_file),
              QFileInfo(m_dir.path()).canonicalFilePath().toUtf8() + "\n");
    const QStringList lines = m_log.Lines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("EditFile (Thread ID ")));
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral("): EditFileThreadFnct file ") + m_file));
}

// xdg-mime and the applications folder as a desktop would have them, made up by the test.
class FakeDesktop {
public:
    explicit FakeDesktop(const QString& answer) {
        const QString bin = m_dir.filePath(QStringLiteral("bin"));
        QDir().mkpath(bin);
        m_ok = MakeScript(
            bin + QStringLiteral("/xdg-mime"),
            QStringLiteral("echo \"$@\" > '%1'\necho '%2'\n").arg(QueryRecord(), answer));
        m_oldPath = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(bin) + ':' + m_oldPath);
        m_applications = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
        m_ok = m_ok && QDir().mkpath(m_applications);
    }
    ~FakeDesktop() {
        qputenv("PATH", m_oldPath);
        for (const QString& entry : m_entries)
            QFile::remove(entry);
    }
    bool Ok() const { return m_ok; }
    QString Folder() const { return m_dir.path(); }
    QString QueryRecord() const { return m_dir.filePath(QStringLiteral("query")); }
    QString AddEntry(const QString& relative, const QByteArray& text) {
        const QString path = m_applications + QLatin1Char('/') + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        m_ok = m_ok && testutil::WriteAll(path, text);
        m_entries << path;
        return path;
    }

private:
    QTemporaryDir m_dir;
    QByteArray m_oldPath;
    QString m_applications;
    QStringList m_entries;
    bool m_ok = false;
};

TEST_F(EditFileTest, OpensTheAssociatedProgramOrSaysThereIsNone) {
    {
        FakeDesktop desktop(QStringLiteral("fake-editor.desktop"));
        const QString editor = desktop.Folder() + QStringLiteral("/my editor");
        ASSERT_TRUE(MakeScript(editor, QStringLiteral("echo \"$1 $2\" >> \"$2\"\n")));
        desktop.AddEntry(QStringLiteral("fake-editor.desktop"),
                         "[Desktop Entry]\nName=Fake\nExec=\"" + editor.toUtf8() +
                             "\" --edit %f\n[Desktop Action new]\nExec=wrong %f\n");
        ASSERT_TRUE(desktop.Ok());
        EXPECT_EQ(Edit(std::nullopt), util::kFileChanged);
        EXPECT_EQ(testutil::ReadAll(m_file), "first line\n--edit " + m_file.toUtf8() + "\n");
        EXPECT_EQ(testutil::ReadAll(desktop.QueryRecord()), "query default text/plain\n");
    }
    ASSERT_TRUE(testutil::WriteAll(m_file, "first line\n"));
    for (const char* answer : {"", "missing.desktop"}) {
        FakeDesktop desktop(QString::fromUtf8(answer));
        ASSERT_TRUE(desktop.Ok());
        EXPECT_EQ(Edit(std::nullopt), util::kNoAssociatedProgram) << answer;
        EXPECT_EQ(testutil::ReadAll(m_file), "first line\n");
    }
}

struct ExecCase {
    const char* name;
    QByteArray entry;
    QStringList command; // "<path>" and "<entry>" stand for the file and the entry file
};

TEST(DesktopEntryTest, ExpandsTheExecLine) {
    const ExecCase cases[] = {
        {"file list", "[Desktop Entry]\nExec=gedit %U\n", {"gedit", "<path>"}},
        {"quoted program",
         "[Desktop Entry]\nExec=\"/opt/my app/edit\" --new %f\n",
         {"/opt/my app/edit", "--new", "<path>"}},
        {"no file code", "[Desktop Entry]\nExec=edit  -w\n", {"edit", "-w", "<path>"}},
        {"name, icon and entry",
         "[Desktop Entry]\nName=Editor\nIcon=ed\nExec=edit --title=%c %i %k %F\n",
         {"edit", "--title=Editor", "--icon", "ed", "<entry>", "<path>"}},
        {"icon code without an icon", "[Desktop Entry]\nExec=edit %i %f\n", {"edit", "<path>"}},
        {"percent and deprecated codes",
         "[Desktop Entry]\nExec=edit 100%% %d %m %f\n",
         {"edit", "100%", "<path>"}},
        {"escapes of values and of quoting",
         "[Desktop Entry]\nExec=printf \"a\\\\\\\\b\\\\\"c\\\\$\" %f\n",
         {"printf", "a\\b\"c$", "<path>"}},
        {"blank as an escape", "[Desktop Entry]\nExec=\"my\\sedit\" %f\n", {"my edit", "<path>"}},
        {"comments, spaces and other groups",
         "# made by hand\n[Other]\nExec=wrong\n[Desktop Entry]\n# Exec=commented\n"
         "Exec[de]=falsch %f\nExec = right %u\n[Desktop Action x]\nExec=action\n",
         {"right", "<path>"}},
        {"no exec key", "[Desktop Entry]\nName=Nothing\n", {}},
        {"needs a terminal", "[Desktop Entry]\nExec=vim %f\nTerminal=true\n", {}},
    };
    QTemporaryDir dir;
    const QString entry = dir.filePath(QStringLiteral("app.desktop"));
    const QString path = QStringLiteral("/home/u/my survey.qes");
    for (const ExecCase& c : cases) {
        ASSERT_TRUE(testutil::WriteAll(entry, c.entry));
        QStringList expected = c.command;
        expected.replaceInStrings(QStringLiteral("<path>"), path);
        expected.replaceInStrings(QStringLiteral("<entry>"), entry);
        EXPECT_EQ(util::DesktopEntryCommand(entry, path), expected) << c.name;
    }
    EXPECT_EQ(util::DesktopEntryCommand(dir.filePath(QStringLiteral("none.desktop")), path),
              QStringList());
}

TEST(DesktopEntryTest, FindsEntriesAlsoInSubfolders) {
    FakeDesktop desktop{QString()};
    const QString plain =
        desktop.AddEntry(QStringLiteral("plain-one.desktop"), "[Desktop Entry]\n");
    const QString nested =
        desktop.AddEntry(QStringLiteral("kde/kate.desktop"), "[Desktop Entry]\n");
    ASSERT_TRUE(desktop.Ok());
    EXPECT_EQ(util::FindDesktopEntry(QStringLiteral("plain-one.desktop")), plain);
    EXPECT_EQ(util::FindDesktopEntry(QStringLiteral("kde-kate.desktop")), nested);
    EXPECT_EQ(util::FindDesktopEntry(QStringLiteral("absent.desktop")), QString());
    EXPECT_EQ(util::FindDesktopEntry(QStringLiteral("kde/kate.desktop")), QString());
    EXPECT_EQ(util::FindDesktopEntry(QString()), QString());
}

TEST(ThreadLogTest, PassesOnOnlyWhatDiffersFromTheThreadsLastMessage) {
    LogCapture log;
    util::ThreadLog& threadLog = util::ThreadLog::Instance();
    const QString main = util::ThreadLog::CurrentThreadLabel();
    EXPECT_EQ(main, QStringLiteral("Thread ID %1").arg(util::ThreadLog::CurrentThreadId()));

    for (const char* message : {"one", "one", "two", "", "two", "two"})
        threadLog.Log(QString::fromUtf8(message));

    // The same message from a named thread is its own.
    QString workerLabel;
    qint64 workerId = 0;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        workerLabel = util::ThreadLog::CurrentThreadLabel();
        workerId = util::ThreadLog::CurrentThreadId();
        util::ThreadLog::Instance().Log(QStringLiteral("two"));
        util::ThreadLog::Instance().Log(QStringLiteral("two"));
        util::ThreadLog::Instance().Log(QString());
    }));
    worker->setObjectName(QStringLiteral("Named"));
    worker->start();
    ASSERT_TRUE(worker->wait(30000));
    threadLog.Log(QString());

    EXPECT_NE(workerId, util::ThreadLog::CurrentThreadId());
    EXPECT_EQ(workerLabel, QStringLiteral("Named (Thread ID %1)").arg(workerId));
    EXPECT_EQ(log.Lines(),
              QStringList({main + ": one", main + ": two", main + ": two", workerLabel + ": two"}));
}

} // namespace
