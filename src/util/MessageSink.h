#pragma once

#include <QString>
#include <QStringList>

namespace util {

// Where messages meant for the user go. The window program shows a message box; batch mode writes
// to standard error and never waits; tests record the texts. Core code only sees this interface.
class MessageSink {
public:
    virtual ~MessageSink() = default;
    virtual void Show(const QString& text) = 0;
};

// Writes each message as one line on standard error.
class StandardErrorSink : public MessageSink {
public:
    void Show(const QString& text) override;
};

// Keeps the messages, for tests and for callers that report them later.
class RecordingSink : public MessageSink {
public:
    void Show(const QString& text) override { messages.append(text); }
    QStringList messages;
};

} // namespace util
