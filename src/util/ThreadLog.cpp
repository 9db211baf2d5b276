#include "util/ThreadLog.h"

#include <QLoggingCategory>
#include <QThread>

#include <unistd.h>

namespace util {

namespace {
Q_LOGGING_CATEGORY(lcProcess, "translator.process")
}

ThreadLog& ThreadLog::Instance() {
    // Never destroyed: detached workers may still log while the program's statics go away.
    static ThreadLog* const log = new ThreadLog;
    return *log;
}

qint64 ThreadLog::CurrentThreadId() {
    return qint64(::gettid());
}

QString ThreadLog::CurrentThreadLabel() {
    const QString name = QThread::currentThread()->objectName();
    const QString id = QStringLiteral("Thread ID %1").arg(CurrentThreadId());
    return name.isEmpty() ? id : QStringLiteral("%1 (%2)").arg(name, id);
}

void ThreadLog::Log(const QString& message) {
    const qint64 thread = CurrentThreadId();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (message.isEmpty()) {
            m_last.erase(thread);
            return;
        }
        QString& last = m_last[thread];
        if (last == message)
            return;
        last = message;
    }
    qCInfo(lcProcess, "%s: %s", qUtf8Printable(CurrentThreadLabel()), qUtf8Printable(message));
}

} // namespace util
