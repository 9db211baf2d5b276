#include "common/TestUtil.h"

#include <QFile>

namespace testutil {

QString DataPath(const QString& name) {
    return QStringLiteral(TRANSLATOR_TEST_DATA_DIR "/") + name;
}

QString SourcePath(const QString& relative) {
    return QStringLiteral(TRANSLATOR_SOURCE_DIR "/") + relative;
}

QByteArray ReadAll(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(bytes) == bytes.size();
}

QByteArray Utf16Le(const QString& text, bool withMark) {
    QByteArray out;
    if (withMark)
        out.append("\xFF\xFE", 2);
    for (QChar c : text) {
        out.append(char(c.unicode() & 0xFF));
        out.append(char(c.unicode() >> 8));
    }
    return out;
}

} // namespace testutil
