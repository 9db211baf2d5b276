#include "util/ProcessThreads.h"

#include "util/DesktopEntry.h"
#include "util/Process.h"
#include "util/ThreadLog.h"

#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QThread>

#include <zlib.h>

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace util {

namespace {

// Hands one call to a receiver's thread, or drops it once the receiver is gone. The receiver's
// destroyed() and the posting share a mutex: a receiver being destroyed waits until a post under
// way is done, and its destructor then discards the posted call with its other pending events.
class Delivery {
public:
    explicit Delivery(QObject* receiver) : m_receiver(receiver) {}
    ~Delivery() { QObject::disconnect(m_watch); }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    static std::shared_ptr<Delivery> To(QObject* receiver) {
        auto delivery = std::make_shared<Delivery>(receiver);
        if (receiver) {
            // Weak: the connection lives as long as the receiver, and must not keep us alive.
            std::weak_ptr<Delivery> weak = delivery;
            delivery->m_watch = QObject::connect(receiver, &QObject::destroyed, [weak] {
                if (const std::shared_ptr<Delivery> alive = weak.lock())
                    alive->Forget();
            });
        }
        return delivery;
    }

    void Post(std::function<void()> call) {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_receiver)
            QMetaObject::invokeMethod(m_receiver, std::move(call), Qt::QueuedConnection);
        m_receiver = nullptr;
    }

private:
    void Forget() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_receiver = nullptr;
    }

    std::mutex m_mutex;
    QObject* m_receiver;
    QMetaObject::Connection m_watch;
};

// Starts `work` on a detached thread of its own named `name`; its system id, 0 when none started.
qint64 StartWorker(const QString& name, std::function<void()> work) {
    std::promise<qint64> started;
    std::future<qint64> id = started.get_future();
    try {
        std::thread([started = std::move(started), name, work = std::move(work)]() mutable {
            QThread::currentThread()->setObjectName(name);
            started.set_value(ThreadLog::CurrentThreadId());
            work();
            ThreadLog::Instance().Log(QString());
        }).detach();
    } catch (const std::system_error&) {
        return 0;
    }
    return id.get();
}

std::optional<quint32> FileCrc32(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    uLong crc = crc32(0L, Z_NULL, 0);
    char buffer[65536];
    for (;;) {
        const qint64 got = file.read(buffer, sizeof buffer);
        if (got < 0)
            return std::nullopt;
        if (got == 0)
            return quint32(crc);
        crc = crc32(crc, reinterpret_cast<const Bytef*>(buffer), uInt(got));
    }
}

int EditFile(const QString& path, const std::optional<QStringList>& editor) {
    ThreadLog::Instance().Log(QStringLiteral("EditFileThreadFnct file %1").arg(path));
    const std::optional<quint32> before = FileCrc32(path);
    QStringList command = editor ? *editor : AssociatedOpenCommand(path);
    if (editor && !editor->isEmpty())
        command << path;
    if (command.isEmpty())
        return kNoAssociatedProgram;
    QString output;
    const int exitCode = RunProgram(command, QFileInfo(path).absolutePath(), output);
    // A program that never ran changed nothing; one that crashed may have.
    if (exitCode <= kPipeFailed && exitCode >= kStartFailed)
        return kStartFailed;
    const std::optional<quint32> after = FileCrc32(path);
    return before && after && *before == *after ? kFileUnchanged : kFileChanged;
}

qint64 StartEdit(const QString& path, std::optional<QStringList> editor, QObject* receiver,
                 EditResultHandler onDone) {
    std::shared_ptr<Delivery> delivery = Delivery::To(receiver);
    return StartWorker(QStringLiteral("EditFile"), [=] {
        const int result = EditFile(path, editor);
        delivery->Post([onDone, result] {
            if (onDone)
                onDone(result);
        });
    });
}

} // namespace

qint64 RunProgramOnThread(const QStringList& command, const QString& workingFolder,
                          QObject* receiver, ProgramResultHandler onResult) {
    std::shared_ptr<Delivery> delivery = Delivery::To(receiver);
    return StartWorker(QStringLiteral("RunProgram"), [=] {
        ThreadLog::Instance().Log(QStringLiteral("RunProgramOnThreadFnct Cmd %1 - Workdir: %2")
                                      .arg(command.join(QLatin1Char(' ')), workingFolder));
        ProgramResult result;
        result.exitCode = RunProgram(command, workingFolder, result.output);
        delivery->Post([onResult, result] {
            if (onResult)
                onResult(result);
        });
    });
}

qint64 EditFileOnThread(const QString& path, QObject* receiver, EditResultHandler onDone) {
    return StartEdit(path, std::nullopt, receiver, std::move(onDone));
}

qint64 EditFileOnThread(const QString& path, const QStringList& editor, QObject* receiver,
                        EditResultHandler onDone) {
    return StartEdit(path, editor, receiver, std::move(onDone));
}

} // namespace util
