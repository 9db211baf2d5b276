#include "util/Messages.h"

#include <cstdio>

namespace util {

QString WithCount(const QString& pattern, qint64 count) {
    QString text = pattern;
    const qsizetype at = text.indexOf(QLatin1String("%d"));
    if (at >= 0)
        text.replace(at, 2, QString::number(count));
    return text;
}

QString AnswerName(Answer answer) {
    switch (answer) {
    case Answer::Ok:
        return QStringLiteral("OK");
    case Answer::Yes:
        return QStringLiteral("Yes");
    case Answer::No:
        return QStringLiteral("No");
    case Answer::Cancel:
        return QStringLiteral("Cancel");
    }
    return {};
}

Answer StandardErrorMessages::Show(MessageKind kind, const QString& text,
                                   const QList<Answer>& answers) {
    QString line = text;
    const bool question = kind == MessageKind::Question && !answers.isEmpty();
    if (question)
        line += QStringLiteral(" [%1]").arg(AnswerName(answers.front()));
    const QByteArray bytes = line.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    return question ? answers.front() : Answer::Ok;
}

Answer RecordedMessages::Show(MessageKind kind, const QString& text, const QList<Answer>& answers) {
    messages.append(text);
    kinds.append(kind);
    if (kind != MessageKind::Question || answers.isEmpty())
        return Answer::Ok;
    if (!replies.isEmpty() && answers.contains(replies.front()))
        return replies.takeFirst();
    return answers.front();
}

} // namespace util
