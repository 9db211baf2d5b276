#include "common/TestUtil.h"

#include "util/SqlConnection.h"

#include <QFile>
#include <QSqlQuery>

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

bool Sql(const QString& database, const QStringList& statements) {
    util::sql::Connection db;
    if (!db.Open(database))
        return false;
    for (const QString& statement : statements)
        if (!db.Exec(statement))
            return false;
    return true;
}

QStringList Dump(const QString& database, const QString& table) {
    util::sql::Connection db;
    QStringList rows;
    if (!db.Open(database, util::sql::Connection::Mode::ReadOnly))
        return rows;
    QSqlQuery query = db.Query();
    query.exec(QStringLiteral("SELECT * FROM %1 ORDER BY 1, 2").arg(table));
    while (query.next()) {
        QStringList cells;
        for (int i = 0; i < 8 && query.value(i).isValid(); ++i)
            cells.append(query.value(i).toString());
        rows.append(cells.join(QLatin1Char('|')));
    }
    return rows;
}

} // namespace testutil
