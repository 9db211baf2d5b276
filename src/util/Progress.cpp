#include "util/Progress.h"

#include <QByteArray>

#include <algorithm>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace util {

namespace {
// Steps per piece of work: finer than any progress bar shows, coarse enough to cost nothing.
constexpr qint64 kSteps = 400;
} // namespace

ProgressScope::ProgressScope(Progress* progress, const QString& what, qint64 total)
    : m_progress(progress), m_step(std::max<qint64>(1, total / kSteps)), m_next(0),
      m_owner(std::this_thread::get_id()) {
    if (m_progress)
        m_progress->Begin(what, total);
}

ProgressScope::~ProgressScope() {
    if (m_progress)
        m_progress->End();
}

bool ProgressScope::Pass(qint64 done) {
    if (std::this_thread::get_id() != m_owner) {
        qint64 noted = m_noted.load(std::memory_order_relaxed);
        while (noted < done && !m_noted.compare_exchange_weak(noted, done))
            ;
        return !Cancelled();
    }
    done = std::max(done, m_noted.load(std::memory_order_relaxed));
    m_next.store(done + m_step, std::memory_order_relaxed);
    if (!m_progress->Advance(done))
        m_cancelled.store(true, std::memory_order_relaxed);
    return !Cancelled();
}

bool TerminalProgress::Wanted() {
#ifdef Q_OS_UNIX
    return isatty(STDERR_FILENO) == 1;
#else
    return false;
#endif
}

void TerminalProgress::Begin(const QString& what, qint64 total) {
    m_what = what;
    m_total = total;
    m_shown = -1;
}

bool TerminalProgress::Advance(qint64 done) {
    const int percent = m_total > 0 ? int(std::clamp<qint64>(done * 100 / m_total, 0, 100)) : 0;
    if (percent != m_shown) {
        m_shown = percent;
        const QByteArray line = QStringLiteral("\r%1: %2 %").arg(m_what).arg(percent).toLocal8Bit();
        std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
        std::fflush(stderr);
    }
    return true;
}

void TerminalProgress::End() {
    if (m_shown >= 0) {
        // Clears the line, so that the next message starts on a clean one.
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
    m_shown = -1;
}

} // namespace util
