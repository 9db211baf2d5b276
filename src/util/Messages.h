#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace util {

enum class MessageKind { Information, Warning, Error, Question };

// The answers a question may offer.
enum class Answer { Ok, Yes, No, Cancel };

// Where messages meant for the user go. The window shows a message box; batch mode writes to
// standard error and never waits; tests record the texts. Code below the window only ever sees
// this interface.
class Messages {
public:
    virtual ~Messages() = default;

    // Shows a message. A question offers `answers`, the first one being the default, and returns
    // the one chosen; other kinds return Answer::Ok.
    virtual Answer Show(MessageKind kind, const QString& text, const QList<Answer>& answers) = 0;

    void Inform(const QString& text) { Show(MessageKind::Information, text, {}); }
    void Warn(const QString& text) { Show(MessageKind::Warning, text, {}); }
    void Error(const QString& text) { Show(MessageKind::Error, text, {}); }
    Answer Ask(const QString& text, const QList<Answer>& answers) {
        return Show(MessageKind::Question, text, answers);
    }
};

// Writes each message as one line on standard error. Nobody is there to answer a question, so
// it takes its default answer, which is written after it.
class StandardErrorMessages : public Messages {
public:
    Answer Show(MessageKind kind, const QString& text, const QList<Answer>& answers) override;
};

// Drops every message: the operations that batch mode runs silently.
class NoMessages : public Messages {
public:
    Answer Show(MessageKind, const QString&, const QList<Answer>& answers) override {
        return answers.isEmpty() ? Answer::Ok : answers.front();
    }
};

// Keeps the messages, for tests and for callers that report them later. Questions take the
// replies queued in `replies`, then their default answer.
class RecordedMessages : public Messages {
public:
    Answer Show(MessageKind kind, const QString& text, const QList<Answer>& answers) override;

    QStringList messages;     // the texts, in order
    QList<MessageKind> kinds; // the kind of each
    QList<Answer> replies;
};

// A message whose count is written "%d", as some of the program's texts are, with the count in.
QString WithCount(const QString& pattern, qint64 count);

// The word for an answer, as batch mode writes it.
QString AnswerName(Answer answer);

} // namespace util
