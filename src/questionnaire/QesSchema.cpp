#include "questionnaire/QesSchema.h"

#include "questionnaire/QesDatabase.h"

#include <QAtomicInt>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace questionnaire::qes {

namespace {

struct Column {
    const char* name;
    const char* type;
};

struct Table {
    const char* name;
    std::vector<Column> columns;
    const char* constraints; // appended after the columns
    const char* options;     // after the closing parenthesis
};

// The one description both the creation and the check are made from.
const std::vector<Table>& Tables() {
    static const std::vector<Table> tables = {
        {"format", {{"key", "TEXT"}, {"value", "TEXT"}}, "PRIMARY KEY (key)", ""},
        {"questionnaire",
         {{"id", "INTEGER"}, {"name", "TEXT"}, {"instructions_and_comments", "INTEGER"}},
         "PRIMARY KEY (id), CHECK (id = 1)", ""},
        {"languages",
         {{"lcid", "INTEGER"}, {"position", "INTEGER"}, {"short_name", "TEXT"}, {"name", "TEXT"},
          {"is_main", "INTEGER"}},
         "PRIMARY KEY (lcid)", ""},
        {"versions", {{"id", "INTEGER"}, {"position", "INTEGER"}, {"name", "TEXT"}},
         "PRIMARY KEY (id)", ""},
        {"questions",
         {{"id", "INTEGER"}, {"position", "INTEGER"}, {"shortcut", "TEXT"}, {"type", "INTEGER"},
          {"visible", "INTEGER"}, {"on_screen", "INTEGER"}, {"on_paper", "INTEGER"},
          {"parent_id", "INTEGER"}, {"versions", "TEXT"}},
         "PRIMARY KEY (id)", ""},
        {"responses",
         {{"question_id", "INTEGER"}, {"id", "INTEGER"}, {"position", "INTEGER"},
          {"entry_code", "TEXT"}, {"versions", "TEXT"}},
         "PRIMARY KEY (question_id, id)", ""},
        {"question_captions",
         {{"question_id", "INTEGER"}, {"kind", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (question_id, kind, lcid)", " WITHOUT ROWID"},
        {"response_captions",
         {{"question_id", "INTEGER"}, {"response_id", "INTEGER"}, {"lcid", "INTEGER"},
          {"text", "TEXT"}},
         "PRIMARY KEY (question_id, response_id, lcid)", " WITHOUT ROWID"},
        {"routings",
         {{"id", "INTEGER"}, {"position", "INTEGER"}, {"kind", "INTEGER"},
          {"source_question_id", "INTEGER"}, {"target_question_id", "INTEGER"},
          {"condition", "TEXT"}},
         "PRIMARY KEY (id)", ""},
        {"routing_messages",
         {{"routing_id", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (routing_id, lcid)", " WITHOUT ROWID"},
        {"system_messages",
         {{"number", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (number, lcid), CHECK (number BETWEEN 2 AND 43)", " WITHOUT ROWID"},
    };
    return tables;
}

QString CreateStatement(const Table& table) {
    QString sql = QStringLiteral("CREATE TABLE %1 (").arg(QLatin1String(table.name));
    for (const Column& column : table.columns) {
        sql += QLatin1String(column.name) + QLatin1Char(' ') + QLatin1String(column.type);
        // Only a sub-question has a parent.
        if (QLatin1String(column.name) != QLatin1String("parent_id"))
            sql += QLatin1String(" NOT NULL");
        sql += QLatin1String(", ");
    }
    sql += QLatin1String(table.constraints) + QLatin1Char(')') + QLatin1String(table.options);
    return sql;
}

bool CheckTable(QSqlDatabase& db, const Table& table, quint16& status, QString& error) {
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA table_info(%1)").arg(QLatin1String(table.name)))) {
        status = kQesReadError;
        error = query.lastError().text();
        return false;
    }
    QHash<QString, QString> types;
    while (query.next())
        types.insert(query.value(1).toString().toLower(), query.value(2).toString().toUpper());
    if (types.isEmpty()) {
        status = kQesNotAQuestionnaire;
        error = QStringLiteral("The table '%1' is missing: this is not a questionnaire database.")
                    .arg(QLatin1String(table.name));
        return false;
    }
    for (const Column& column : table.columns) {
        const auto it = types.constFind(QLatin1String(column.name));
        if (it == types.constEnd() || *it != QLatin1String(column.type)) {
            status = kQesBadSchema;
            error = QStringLiteral("The column '%1.%2' is missing or is not of type %3.")
                        .arg(QLatin1String(table.name), QLatin1String(column.name),
                             QLatin1String(column.type));
            return false;
        }
    }
    return true;
}

} // namespace

const QStringList& CreateStatements() {
    static const QStringList statements = [] {
        QStringList list;
        for (const Table& table : Tables())
            list.append(CreateStatement(table));
        return list;
    }();
    return statements;
}

bool CheckSchema(QSqlDatabase& db, quint16& status, QString& error) {
    for (const Table& table : Tables())
        if (!CheckTable(db, table, status, error))
            return false;
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT value FROM format WHERE key = 'format'")) ||
        !query.next()) {
        status = kQesBadData;
        error = QStringLiteral("The database does not say which format it has.");
        return false;
    }
    bool ok = false;
    const int format = query.value(0).toString().toInt(&ok);
    if (!ok || format < 1) {
        status = kQesBadData;
        error = QStringLiteral("The database names an unknown format.");
        return false;
    }
    if (format > kFormatVersion) {
        status = kQesNewerFormat;
        error = QStringLiteral("The database has format %1, written by a newer version of the "
                               "program; this version reads format %2.")
                    .arg(format)
                    .arg(kFormatVersion);
        return false;
    }
    return true;
}

QSqlDatabase OpenConnection(const QString& path, bool readOnly, QString& error) {
    static QAtomicInt counter;
    const QString name = QStringLiteral("qes-%1").arg(counter.fetchAndAddRelaxed(1));
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    // Another program saving the same file holds its lock for the length of its save: wait for
    // it rather than fail, so that the later save wins whole.
    db.setConnectOptions(readOnly ? QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=30000")
                                  : QStringLiteral("QSQLITE_BUSY_TIMEOUT=30000"));
    if (!db.open()) {
        error = db.lastError().text();
        CloseConnection(db);
        return {};
    }
    // A file that is not a database opens without complaint; the first read tells.
    QSqlQuery probe(db);
    if (!probe.exec(QStringLiteral("PRAGMA schema_version"))) {
        error = probe.lastError().text();
        probe = QSqlQuery();
        CloseConnection(db);
        return {};
    }
    return db;
}

void CloseConnection(QSqlDatabase& db) {
    const QString name = db.connectionName();
    db.close();
    db = QSqlDatabase();
    if (!name.isEmpty())
        QSqlDatabase::removeDatabase(name);
}

} // namespace questionnaire::qes
