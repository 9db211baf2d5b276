#pragma once

#include <QString>

#include <utility>

namespace util {

// What an operation that can fail hands back: success, or the reason it failed, worded for the
// user. Reasons travel in this one form from the file formats up to the window and the command
// line, which decide whether and how to show them.
class [[nodiscard]] Outcome {
public:
    Outcome() = default; // success

    static Outcome Failure(QString reason) {
        Outcome outcome;
        outcome.m_failed = true;
        outcome.m_reason = std::move(reason);
        return outcome;
    }

    explicit operator bool() const { return !m_failed; }
    bool Failed() const { return m_failed; }
    const QString& Reason() const { return m_reason; }

private:
    QString m_reason;
    bool m_failed = false;
};

} // namespace util
