#include "util/SqlConnection.h"

#include "util/Strings.h"

#include <QAtomicInt>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace util::sql {

namespace {

QString UniqueName() {
    static QAtomicInt counter;
    return QStringLiteral("translator-%1").arg(counter.fetchAndAddRelaxed(1));
}

QString ErrorText(const QSqlError& error) {
    return error.text().trimmed();
}

// libpq's own options, passed on as the driver's connect options.
QString ServerOptions(const QUrlQuery& query) {
    QStringList options;
    for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded))
        if (key != QLatin1String("host") && key != QLatin1String("port"))
            options.append(key + QLatin1Char('=') + value);
    return options.join(QLatin1Char(';'));
}

} // namespace

bool IsServerLocation(const QString& location) {
    return location.startsWith(QLatin1String("postgresql://"), Qt::CaseInsensitive) ||
           location.startsWith(QLatin1String("postgres://"), Qt::CaseInsensitive);
}

QString PrintableLocation(const QString& location) {
    if (!IsServerLocation(location))
        return location;
    QUrl url(location);
    if (url.password().isEmpty())
        return location;
    url.setPassword(QString());
    return url.toString();
}

Connection::~Connection() {
    Close();
}

void Connection::Close() {
    const QString name = m_db.connectionName();
    m_db.close();
    m_db = QSqlDatabase();
    if (!name.isEmpty())
        QSqlDatabase::removeDatabase(name);
}

Outcome Connection::Open(const QString& location, Mode mode, bool create) {
    Close();
    m_location = location;
    const bool server = IsServerLocation(location);
    m_dialect = server ? Dialect::PostgreSql : Dialect::Sqlite;
    const QString driver = server ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE");
    if (!QSqlDatabase::isDriverAvailable(driver))
        return Outcome::Failure(Tr(strings::kDatabaseDriverInstalled).arg(driver));
    if (!server && !create && !QFileInfo(location).isFile())
        return Outcome::Failure(Tr(strings::kFileCannotFound).arg(location));
    m_db = QSqlDatabase::addDatabase(driver, UniqueName());
    if (server) {
        const QUrl url(location);
        const QUrlQuery query(url);
        const QString socketFolder = query.queryItemValue(QStringLiteral("host"));
        m_db.setHostName(socketFolder.isEmpty() ? url.host() : socketFolder);
        const QString port = query.queryItemValue(QStringLiteral("port"));
        m_db.setPort(port.isEmpty() ? url.port(5432) : port.toInt());
        m_db.setDatabaseName(url.path().mid(1));
        m_db.setUserName(url.userName());
        m_db.setPassword(url.password());
        m_db.setConnectOptions(ServerOptions(query));
    } else {
        m_db.setDatabaseName(location);
        // Another program saving the same file holds its lock for the length of its save: wait
        // for it rather than fail, so that the later save wins whole.
        m_db.setConnectOptions(
            mode == Mode::ReadOnly
                ? QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=30000")
                : QStringLiteral("QSQLITE_BUSY_TIMEOUT=30000"));
    }
    if (!m_db.open()) {
        const QString reason = ErrorText(m_db.lastError());
        Close();
        return Outcome::Failure(reason);
    }
    if (server) {
        // Like SQLite, wait for another program's locks rather than fail at once.
        return Exec(QStringLiteral("SET lock_timeout = '30s'"));
    }
    // A file that is not a database opens without complaint; the first read tells.
    QSqlQuery probe(m_db);
    if (!probe.exec(QStringLiteral("PRAGMA schema_version"))) {
        const QString reason = ErrorText(probe.lastError());
        probe = QSqlQuery();
        Close();
        return Outcome::Failure(reason);
    }
    return {};
}

Outcome Connection::Exec(const QString& sql) {
    QSqlQuery query(m_db);
    if (query.exec(sql))
        return {};
    return Outcome::Failure(ErrorText(query.lastError()));
}

QSqlQuery Connection::Query() {
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    return query;
}

QString Connection::Quote(const QString& identifier) const {
    QString quoted = identifier;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString Connection::TypeName(ColumnType type) const {
    const bool sqlite = m_dialect == Dialect::Sqlite;
    switch (type) {
    case ColumnType::Integer:
        return QStringLiteral("INTEGER");
    case ColumnType::BigInteger:
        return sqlite ? QStringLiteral("INTEGER") : QStringLiteral("BIGINT");
    case ColumnType::Real:
        return sqlite ? QStringLiteral("REAL") : QStringLiteral("DOUBLE PRECISION");
    case ColumnType::Text:
        return QStringLiteral("TEXT");
    case ColumnType::Boolean:
        return sqlite ? QStringLiteral("INTEGER") : QStringLiteral("BOOLEAN");
    case ColumnType::DateTime:
        return sqlite ? QStringLiteral("REAL") : QStringLiteral("TIMESTAMP");
    case ColumnType::Blob:
        return sqlite ? QStringLiteral("BLOB") : QStringLiteral("BYTEA");
    }
    return QStringLiteral("TEXT");
}

QStringList Connection::Tables() {
    return m_db.tables(QSql::Tables);
}

QStringList Connection::Columns(const QString& table) {
    QStringList columns;
    if (m_dialect == Dialect::Sqlite) {
        // The driver's record() misses the columns of a table whose name needs quoting.
        QSqlQuery query(m_db);
        if (query.exec(QStringLiteral("PRAGMA table_info(%1)").arg(Quote(table))))
            while (query.next())
                columns.append(query.value(1).toString());
        return columns;
    }
    const QSqlRecord record = m_db.record(table);
    for (int i = 0; i < record.count(); ++i)
        columns.append(record.fieldName(i));
    return columns;
}

bool Connection::HasTable(const QString& table) {
    const QStringList tables = Tables();
    return std::any_of(tables.begin(), tables.end(), [&table](const QString& name) {
        return name.compare(table, Qt::CaseInsensitive) == 0;
    });
}

bool Connection::HasColumn(const QString& table, const QString& column) {
    const QStringList columns = Columns(table);
    return std::any_of(columns.begin(), columns.end(), [&column](const QString& name) {
        return name.compare(column, Qt::CaseInsensitive) == 0;
    });
}

QString Connection::InsertOrReplace(const QString& table, const QStringList& columns,
                                    const QStringList& keyColumns) const {
    QStringList quoted;
    QStringList marks;
    for (const QString& column : columns) {
        quoted.append(Quote(column));
        marks.append(QStringLiteral("?"));
    }
    const QString values =
        QStringLiteral("%1 (%2) VALUES (%3)")
            .arg(Quote(table), quoted.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    if (m_dialect == Dialect::Sqlite)
        return QStringLiteral("INSERT OR REPLACE INTO ") + values;
    QStringList keys;
    QStringList updates;
    for (const QString& column : columns) {
        if (keyColumns.contains(column))
            keys.append(Quote(column));
        else
            updates.append(QStringLiteral("%1 = EXCLUDED.%1").arg(Quote(column)));
    }
    return QStringLiteral("INSERT INTO %1 ON CONFLICT (%2) DO %3")
        .arg(values, keys.join(QStringLiteral(", ")),
             updates.isEmpty()
                 ? QStringLiteral("NOTHING")
                 : QStringLiteral("UPDATE SET ") + updates.join(QStringLiteral(", ")));
}

// --- transactions ---

Transaction::~Transaction() {
    Rollback();
}

Outcome Transaction::Begin() {
    if (m_active)
        return {};
    // A transaction already open on the connection makes this one a savepoint inside it.
    const bool nested = m_connection.m_transactionDepth > 0;
    if (nested)
        m_savepoint = QStringLiteral("part%1").arg(m_connection.m_transactionDepth);
    const bool immediate = m_kind == Kind::Write && m_connection.GetDialect() == Dialect::Sqlite;
    const Outcome begun = m_connection.Exec(nested      ? QStringLiteral("SAVEPOINT ") + m_savepoint
                                            : immediate ? QStringLiteral("BEGIN IMMEDIATE")
                                                        : QStringLiteral("BEGIN"));
    if (begun) {
        m_active = true;
        ++m_connection.m_transactionDepth;
    }
    return begun;
}

Outcome Transaction::Commit() {
    if (!m_active)
        return Outcome::Failure(Tr(strings::kTransactionOpen));
    const Outcome committed =
        m_connection.Exec(m_savepoint.isEmpty() ? QStringLiteral("COMMIT")
                                                : QStringLiteral("RELEASE ") + m_savepoint);
    if (!committed) {
        Rollback();
        return committed;
    }
    m_active = false;
    --m_connection.m_transactionDepth;
    return {};
}

void Transaction::Rollback() {
    if (!m_active)
        return;
    if (m_savepoint.isEmpty()) {
        (void)m_connection.Exec(QStringLiteral("ROLLBACK"));
    } else {
        (void)m_connection.Exec(QStringLiteral("ROLLBACK TO ") + m_savepoint);
        (void)m_connection.Exec(QStringLiteral("RELEASE ") + m_savepoint);
    }
    m_active = false;
    --m_connection.m_transactionDepth;
}

// --- inserts ---

QVariant TextValue(const QString& text, Dialect dialect) {
    if (dialect == Dialect::Sqlite && !text.isEmpty() &&
        (text.front() == QChar(0xFEFF) || text.front() == QChar(0xFFFE)))
        return QVariant(QChar(0xFEFF) + text);
    return QVariant(text);
}

Inserter::Inserter(Connection& connection, const QString& sql)
    : m_query(connection.Query()), m_dialect(connection.GetDialect()) {
    m_ok = m_query.prepare(sql);
}

Outcome Inserter::Result() const {
    if (m_ok)
        return {};
    return Outcome::Failure(ErrorText(m_query.lastError()));
}

} // namespace util::sql
