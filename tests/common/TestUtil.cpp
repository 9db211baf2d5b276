#include "common/TestUtil.h"

#include "util/SqlConnection.h"

#include <QFile>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <unistd.h>

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

QString ValidateXliff(const QString& path, const QString& version) {
    // The schemas Debian ships, with their import of xml.xsd pointed at the copy beside them so
    // that xmllint needs no network.
    const QString folder =
        QStringLiteral("/usr/share/php/Symfony/Component/Translation/Resources/schemas/");
    const QString name = version == QLatin1String("1.2")
                             ? QStringLiteral("xliff-core-1.2-strict.xsd")
                             : QStringLiteral("xliff-core-2.0.xsd");
    QTemporaryDir dir;
    for (const QString& file : {name, QStringLiteral("xml.xsd")}) {
        QByteArray text = ReadAll(folder + file);
        if (text.isEmpty())
            return QStringLiteral("no %1 (Debian package php-symfony-translation)").arg(file);
        text.replace("http://www.w3.org/2001/xml.xsd", "xml.xsd");
        text.replace("informativeCopiesOf3rdPartySchemas/w3c/xml.xsd", "xml.xsd");
        WriteAll(dir.filePath(file), text);
    }
    QProcess lint;
    lint.start(QStringLiteral("xmllint"), {QStringLiteral("--noout"), QStringLiteral("--nonet"),
                                           QStringLiteral("--schema"), dir.filePath(name), path});
    if (!lint.waitForFinished(60000))
        return QStringLiteral("xmllint did not finish");
    return lint.exitStatus() == QProcess::NormalExit && lint.exitCode() == 0
               ? QString()
               : QString::fromLocal8Bit(lint.readAllStandardError()) + QStringLiteral(" ");
}

static QString RunTmxTool(const QString& command, const QString& path, QStringList* lines) {
    QProcess tool;
    tool.start(QStringLiteral("/usr/bin/python3"),
               {DataPath(QStringLiteral("dictionary/tmx_tool.py")), command, path});
    if (!tool.waitForFinished(60000))
        return QStringLiteral("translate-toolkit did not finish");
    if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0)
        return QString::fromLocal8Bit(tool.readAllStandardError()) + QStringLiteral(" ");
    if (lines)
        *lines = QString::fromUtf8(tool.readAllStandardOutput())
                     .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return {};
}

QString ReadTmxWithToolkit(const QString& path, QStringList* units) {
    return RunTmxTool(QStringLiteral("read"), path, units);
}

QString WriteTmxWithToolkit(const QString& path) {
    return RunTmxTool(QStringLiteral("write"), path, nullptr);
}

Unprivileged::Unprivileged() {
    if (::geteuid() != 0)
        return;
#ifdef __linux__
    m_dropped = ::setresgid(65534, 65534, 0) == 0;
    if (m_dropped && ::setresuid(65534, 65534, 0) != 0) {
        (void)::setresgid(0, 0, 0);
        m_dropped = false;
    }
#endif
    m_ok = m_dropped;
}

Unprivileged::~Unprivileged() {
#ifdef __linux__
    if (m_dropped) {
        (void)::setresuid(0, 0, 0);
        (void)::setresgid(0, 0, 0);
    }
#endif
}

} // namespace testutil
