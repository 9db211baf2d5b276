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
        const QString script =
            (kind == GoneBeforeThePost ? QStringLiteral("sleep 0.3; ") : QString()) +
            QStringLiteral("touch ran; echo hello; exit 3");
        struct Delivered {
            std::atomic<int> calls{0};
            std::atomic<QThread*> thread{nullptr};
            util::ProgramResult result;
        };
        auto delivered = std::make_shared<Delivered>();
        const qint64 tid =
            util::RunProgramOnThread({QStringLiteral("sh"), QStringLiteral("-c"), script},
                                     dir.path(), kind == None ? nullptr : receiver.get(),
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
            EXPECT_EQ(delivered->result.output, QStringLiteral("hello\n"));
        } else {
            receiver.reset(); // posted by now, not yet delivered
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
        EXPECT_EQ(delivered->calls, kind == OnMainThread || kind == OnOwnThread ? 1 : 0);
        EXPECT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("ran")))); // it ran all the same
        EXPECT_EQ(log.Lines(),
                  QStringList(QStringLiteral("RunProgram (Thread ID %1): RunProgramOnThreadFnct "
                                             "Cmd sh -c %2 - Workdir: %3")
                                  .arg(tid)
                                  .arg(script, dir.path())));
        receiverThread.quit();
        receiverThread.wait();
    }
}

// xdg-mime and the applications folder as a desktop would have them, made up by the test: the
// same entry at the top and in a subfolder.
class FakeDesktop {
public:
    FakeDesktop(const QString& answer, const QByteArray& entry) {
        const QString bin = m_dir.filePath(QStringLiteral("bin"));
        const QString apps = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
        m_entries = QStringList{apps + QStringLiteral("/fake-editor.desktop"),
                                apps + QStringLiteral("/fake/nested.desktop")};
        m_ok = QDir().mkpath(bin) && QDir().mkpath(apps + QStringLiteral("/fake")) &&
               MakeScript(
                   bin + QStringLiteral("/xdg-mime"),
                   QStringLiteral("echo \"$@\" > '%1'\necho '%2'\n").arg(QueryRecord(), answer)) &&
               testutil::WriteAll(m_entries[0], entry) && testutil::WriteAll(m_entries[1], entry);
        m_oldPath = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(bin) + ':' + m_oldPath);
    }
    ~FakeDesktop() {
        qputenv("PATH", m_oldPath);
        for (const QString& entry : m_entries)
            QFile::remove(entry);
    }
    bool Ok() const { return m_ok; }
    QString QueryRecord() const { return m_dir.filePath(QStringLiteral("query")); }

private:
    QTemporaryDir m_dir;
    QByteArray m_oldPath;
    QStringList m_entries;
    bool m_ok = false;
};

QStringList ShellEditor(const char* script) {
    return {QStringLiteral("sh"), QStringLiteral("-c"), QString::fromUtf8(script),
            QStringLiteral("sh")};
}

TEST(EditFileOnThreadTest, ReportsWhetherTheEditorChangedTheFile) {
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("notes.txt"));
    const QByteArray first = "first line\n";
    // The desktop's choice runs the entry's own Exec line, not an action's.
    const QString editor = dir.filePath(QStringLiteral("my editor"));
    ASSERT_TRUE(MakeScript(editor, QStringLiteral("echo \"$1 $2\" >> \"$2\"\n")));
    const QByteArray entry = "[Desktop Entry]\nName=Fake\nExec=\"" + editor.toUtf8() +
                             "\" --edit %f\n[Desktop Action new]\nExec=wrong %f\n";
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
        {"cannot start", QStringList{dir.filePath(QStringLiteral("no-editor"))}, "",
         util::kStartFailed, first},
        {"none given", QStringList(), "", util::kNoAssociatedProgram, first},
        {"associated", std::nullopt, "fake-editor.desktop", util::kFileChanged,
         first + "--edit " + file.toUtf8() + "\n"},
        // An id's dashes may stand for subfolders; a slash in it names no entry.
        {"associated, in a subfolder", std::nullopt, "fake-nested.desktop", util::kFileChanged,
         first + "--edit " + file.toUtf8() + "\n"},
        {"id with a slash", std::nullopt, "fake/nested.desktop", util::kNoAssociatedProgram, first},
        {"nothing associated", std::nullopt, "", util::kNoAssociatedProgram, first},
        {"entry missing", std::nullopt, "missing.desktop", util::kNoAssociatedProgram, first},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(testutil::WriteAll(file, first));
        FakeDesktop desktop(QString::fromUtf8(c.associated), entry);
        ASSERT_TRUE(desktop.Ok());
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
        EXPECT_EQ(testutil::ReadAll(desktop.QueryRecord()),
                  c.editor ? "" : "query default text/plain\n");
        EXPECT_EQ(log.Lines(), QStringList(QStringLiteral("EditFile (Thread ID %1): "
                                                          "EditFileThreadFnct file %2")
                                               .arg(tid)
                                               .arg(file)));
    }
}

TEST(DesktopEntryTest, ExpandsTheExecLine) {
    const struct {
        const char* name;
        QByteArray entry;
        QStringList command; // "<path>" and "<entry>" stand for the file and the entry file
    } cases[] = {
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
    for (const auto& c : cases) {
        ASSERT_TRUE(testutil::WriteAll(entry, c.entry));
        QStringList expected = c.command;
        expected.replaceInStrings(QStringLiteral("<path>"), path);
        expected.replaceInStrings(QStringLiteral("<entry>"), entry);
        EXPECT_EQ(util::DesktopEntryCommand(entry, path), expected) << c.name;
    }
    EXPECT_EQ(util::DesktopEntryCommand(dir.filePath(QStringLiteral("none.desktop")), path),
              QStringList());
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
