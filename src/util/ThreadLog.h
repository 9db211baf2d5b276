#pragma once

#include <QString>

#include <mutex>
#include <unordered_map>

namespace util {

// The log of the process helpers' worker threads. Each thread's messages go to the logging
// category "translator.process" at the info level, prefixed with the thread's label; a message
// equal to the one the same thread logged last is left out, so a worker that repeats itself in a
// loop writes one line.
class ThreadLog {
public:
    static ThreadLog& Instance();

    // Passes the message on unless it repeats this thread's last one; an empty message forgets
    // the thread (workers end with one, so the map holds only threads still running).
    void Log(const QString& message);

    // "Thread ID 1234", or "Name (Thread ID 1234)" when the thread has a name (its QThread's
    // object name); the number is the system's id of the thread, as ps and debuggers show it.
    static QString CurrentThreadLabel();
    static qint64 CurrentThreadId();

private:
    ThreadLog() = default;
    std::mutex m_mutex;
    std::unordered_map<qint64, QString> m_last;
};

} // namespace util
