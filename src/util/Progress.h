#pragma once

#include <QString>

#include <atomic>
#include <thread>

namespace util {

// What long work (loading, saving, export, import, dictionary work) reports while it runs, and
// how the user stops it. The window shows a progress dialog; batch mode writes a line on a
// terminal and nothing for scripts.
class Progress {
public:
    virtual ~Progress() = default;

    // A piece of work begins: `what` names it for the user, `total` is its length in units of
    // its own, or 0 when unknown.
    virtual void Begin(const QString& what, qint64 total) = 0;
    // `done` units are done. False when the user asked to stop: the work then ends as soon as
    // it can and leaves everything as it was where it can.
    virtual bool Advance(qint64 done) = 0;
    virtual void End() = 0;
};

// One piece of work as it reports, for the code doing it: takes no progress at all (a null
// pointer), and passes on an advance only when it moves the work on by a visible step, so that
// it can be called for every row or every element. Advances from threads other than the one that
// made the scope are only noted; that thread passes them on with its next advance, so that a
// Progress only ever hears from one thread.
class ProgressScope {
public:
    ProgressScope(Progress* progress, const QString& what, qint64 total);
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    // False once the user asked to stop.
    bool Advance(qint64 done) {
        if (!m_progress || done < m_next.load(std::memory_order_relaxed))
            return !m_cancelled.load(std::memory_order_relaxed);
        return Pass(done);
    }
    bool Cancelled() const { return m_cancelled.load(std::memory_order_relaxed); }

private:
    bool Pass(qint64 done);

    Progress* m_progress;
    qint64 m_step;
    std::atomic<qint64> m_next;
    std::atomic<qint64> m_noted{0};
    std::atomic<bool> m_cancelled{false};
    std::thread::id m_owner;
};

// Writes "what: N %" over and over on one line of standard error. Batch mode uses it only when
// standard error is a terminal: scripts see nothing of it.
class TerminalProgress : public Progress {
public:
    // True when standard error is a terminal.
    static bool Wanted();

    void Begin(const QString& what, qint64 total) override;
    bool Advance(qint64 done) override;
    void End() override;

private:
    QString m_what;
    qint64 m_total = 0;
    int m_shown = -1;
};

} // namespace util
