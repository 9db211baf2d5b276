#include "campaign/schema/CampaignDatabase.h"

#include "campaign/schema/SchemaStrings.h"
#include "util/FileSystem.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QFile>
#include <QSet>

namespace campaign {

namespace {

using util::Outcome;
using util::sql::Connection;
using util::sql::Dialect;

QString ColumnList(const Table& table, const QStringList& names, const Connection& db) {
    QStringList quoted;
    for (const QString& name : names) {
        // An index may name a column in another case; a server matches quoted names exactly.
        // CheckSchema made sure that the column exists.
        quoted.append(db.Quote(table.ResolveColumn(name)));
    }
    return quoted.join(QStringLiteral(", "));
}

QString RuleText(Rule rule) {
    return rule == Rule::Cascade ? QStringLiteral("CASCADE") : QStringLiteral("NO ACTION");
}

const Index* PrimaryIndex(const Table& table) {
    for (const Index& index : table.indexes)
        if (index.primary)
            return &index;
    return nullptr;
}

Outcome CheckColumn(const Table& table, const QString& column) {
    if (table.FindColumn(column))
        return {};
    return Outcome::Failure(SchemaTr(schemastrings::kColumnMissing).arg(table.name, column));
}

Outcome CheckRelationEnd(const Schema& schema, const Relation& relation, const QString& table,
                         const QString& column) {
    const Table* found = schema.FindTable(table);
    if (!found)
        return Outcome::Failure(SchemaTr(schemastrings::kTableMissing).arg(relation.name, table));
    return CheckColumn(*found, column);
}

// SQLite takes a quoted name it does not know for a string, so that a misspelt column would
// quietly index or check a constant: every name is checked before any statement runs.
Outcome CheckSchema(const Schema& schema) {
    QSet<QString> names;
    for (const Table& table : schema.tables) {
        const QString key = table.name.toLower();
        if (names.contains(key))
            return Outcome::Failure(SchemaTr(schemastrings::kTableTwice).arg(table.name));
        names.insert(key);
        for (const Index& index : table.indexes)
            for (const QString& column : index.columns)
                if (const Outcome checked = CheckColumn(table, column); !checked)
                    return checked;
    }
    for (const Relation& relation : schema.relations) {
        for (const auto& [table, column] :
             {std::pair{relation.primaryTable, relation.primaryColumn},
              std::pair{relation.foreignTable, relation.foreignColumn}})
            if (const Outcome checked = CheckRelationEnd(schema, relation, table, column); !checked)
                return checked;
    }
    return {};
}

// Children before parents, so that no relation stands in the way. Only tables that exist, so
// that a server has nothing to remark.
Outcome DropTables(const Schema& schema, Connection& db) {
    const QStringList existing = db.Tables();
    const Qt::CaseSensitivity sensitivity =
        db.GetDialect() == Dialect::Sqlite ? Qt::CaseInsensitive : Qt::CaseSensitive;
    for (auto it = schema.tables.rbegin(); it != schema.tables.rend(); ++it) {
        if (!existing.contains(it->name, sensitivity))
            continue;
        if (const Outcome dropped =
                db.Exec(QStringLiteral("DROP TABLE %1").arg(db.Quote(it->name)));
            !dropped)
            return dropped;
    }
    return {};
}

QString TemporaryDatabaseName(const QString& path) {
    static QAtomicInt counter;
    return QStringLiteral("%1.new-%2-%3")
        .arg(path)
        .arg(QCoreApplication::applicationPid())
        .arg(counter.fetchAndAddRelaxed(1));
}

void RemoveDatabaseFile(const QString& path) {
    QFile::remove(path);
    QFile::remove(path + QLatin1String("-journal"));
}

} // namespace

Outcome ReplaceDatabaseFile(const QString& location, const QString& copyOf,
                            const std::function<Outcome(const QString& building)>& build) {
    const QString target = util::ReplacementTarget(location);
    if (const QString refused = util::ReplaceRefusal(target, location); !refused.isEmpty())
        return Outcome::Failure(refused);
    const QString building = TemporaryDatabaseName(target);
    RemoveDatabaseFile(building);
    // A copy that cannot be made has no reason of its own: the caller's "cannot save" says it.
    Outcome outcome =
        copyOf.isEmpty() || QFile::copy(copyOf, building) ? Outcome() : Outcome::Failure(QString());
    if (outcome)
        outcome = build(building);
    if (outcome)
        QFile::setPermissions(building, util::ReplacementPermissions(target));
    QString renameError;
    if (outcome && !util::ReplaceFile(building, target, &renameError))
        outcome = Outcome::Failure(renameError);
    if (!outcome)
        RemoveDatabaseFile(building);
    return outcome;
}

QString ZeroLengthCheck(const QString& column, const Connection& db) {
    return QStringLiteral("CHECK (%1 <> '')").arg(db.Quote(column));
}

QString LengthCheck(const QString& column, int size, const Connection& db) {
    return QStringLiteral("CHECK (length(%1) <= %2)").arg(db.Quote(column)).arg(size);
}

QString ColumnTypeName(const Column& column, const Connection& db) {
    if (db.GetDialect() == Dialect::PostgreSql) {
        if (column.type == kText && column.size > 0)
            return QStringLiteral("VARCHAR(%1)").arg(column.size);
        if (column.type == kInteger)
            return QStringLiteral("SMALLINT");
        if (column.type == kGuid)
            return QStringLiteral("UUID");
    }
    return db.TypeName(ColumnTypeOf(column.type));
}

QString ColumnDefinition(const Table& table, const Column& column, const Connection& db) {
    const QString name = db.Quote(column.name);
    QString sql = name + QLatin1Char(' ') + ColumnTypeName(column, db);
    const bool server = db.GetDialect() == Dialect::PostgreSql;
    if (!IsNullable(table, column, db.GetDialect()))
        sql += QLatin1String(" NOT NULL");
    if (server && column.type == kYesNo)
        sql += QLatin1String(" DEFAULT FALSE");
    if (!server && column.type == kText && column.size > 0)
        sql += QLatin1Char(' ') + LengthCheck(column.name, column.size, db);
    if (IsTextCode(column.type) && !column.allowZeroLength)
        sql += QLatin1Char(' ') + ZeroLengthCheck(column.name, db);
    return sql;
}

QString ForeignKey(const Relation& relation, const Connection& db) {
    return QStringLiteral("CONSTRAINT %1 FOREIGN KEY (%2) REFERENCES %3 (%4) ON UPDATE %5 "
                          "ON DELETE %6")
        .arg(db.Quote(relation.name), db.Quote(relation.foreignColumn),
             db.Quote(relation.primaryTable), db.Quote(relation.primaryColumn),
             RuleText(relation.updateRule), RuleText(relation.deleteRule));
}

QString CreateTableStatement(const Schema& schema, const Table& table, const Connection& db) {
    const bool sqlite = db.GetDialect() == Dialect::Sqlite;
    QStringList parts;
    for (const Column& column : table.columns)
        parts.append(ColumnDefinition(table, column, db));
    const Index* primary = PrimaryIndex(table);
    if (primary)
        parts.append(QStringLiteral("CONSTRAINT %1 PRIMARY KEY (%2)")
                         .arg(db.Quote(DatabaseIndexName(table, *primary)),
                              ColumnList(table, primary->columns, db)));
    // SQLite cannot add a relation to an existing table: it is declared with the table.
    if (sqlite)
        for (const Relation& relation : schema.relations)
            if (relation.foreignTable == table.name)
                parts.append(ForeignKey(relation, db));
    QString sql = QStringLiteral("CREATE TABLE %1 (%2)")
                      .arg(db.Quote(table.name), parts.join(QStringLiteral(", ")));
    if (sqlite)
        sql += primary ? QStringLiteral(" WITHOUT ROWID, STRICT") : QStringLiteral(" STRICT");
    return sql;
}

QString CreateIndexStatement(const Table& table, const Index& index, const Connection& db) {
    return QStringLiteral("CREATE %1INDEX %2 ON %3 (%4)")
        .arg(index.unique ? QStringLiteral("UNIQUE ") : QString(),
             db.Quote(DatabaseIndexName(table, index)), db.Quote(table.name),
             ColumnList(table, index.columns, db));
}

Outcome EnableForeignKeys(Connection& db) {
    if (db.GetDialect() != Dialect::Sqlite)
        return {};
    return db.Exec(QStringLiteral("PRAGMA foreign_keys = ON"));
}

QStringList TableStatements(const Schema& schema, const Table& table, const Connection& db) {
    QStringList statements{CreateTableStatement(schema, table, db)};
    for (const Index& index : table.indexes)
        if (!index.primary)
            statements.append(CreateIndexStatement(table, index, db));
    return statements;
}

QString AddRelationStatement(const Relation& relation, const Connection& db) {
    return QStringLiteral("ALTER TABLE %1 ADD %2")
        .arg(db.Quote(relation.foreignTable), ForeignKey(relation, db));
}

QStringList CreateStatements(const Schema& schema, const Connection& db) {
    QStringList statements;
    for (const Table& table : schema.tables)
        statements += TableStatements(schema, table, db);
    if (db.GetDialect() == Dialect::PostgreSql)
        for (const Relation& relation : schema.relations)
            statements.append(AddRelationStatement(relation, db));
    return statements;
}

namespace {

// A failure reported under the name of the step that met it.
Outcome StepFailed(const QString& step, const Outcome& failed) {
    return Outcome::Failure(
        SchemaTr(schemastrings::kAdoError).arg(step, failed.Reason(), QString()));
}

const QString kCreateDatabaseStep = QStringLiteral("CDBAccessADO::CreateDatabase");

// Each table is made by a step named after the table's own class.
QString CreateTableStep(const QString& table) {
    return table == QLatin1String("Tags") ? QStringLiteral("CSurveyTagsRSAdo::CreateTable")
                                          : QStringLiteral("C%1RSAdo::CreateTable").arg(table);
}

} // namespace

Outcome CreateDatabase(Connection& db, const Schema& schema) {
    if (const Outcome checked = CheckSchema(schema); !checked)
        return StepFailed(kCreateDatabaseStep, checked);
    if (const Outcome enabled = EnableForeignKeys(db); !enabled)
        return StepFailed(kCreateDatabaseStep, enabled);
    util::sql::Transaction transaction(db);
    if (const Outcome begun = transaction.Begin(); !begun)
        return StepFailed(kCreateDatabaseStep, begun);
    if (const Outcome dropped = DropTables(schema, db); !dropped)
        return StepFailed(kCreateDatabaseStep, dropped);
    for (const Table& table : schema.tables)
        for (const QString& statement : TableStatements(schema, table, db))
            if (const Outcome done = db.Exec(statement); !done)
                return StepFailed(CreateTableStep(table.name), done);
    if (db.GetDialect() == Dialect::PostgreSql)
        for (const Relation& relation : schema.relations)
            if (const Outcome done = db.Exec(AddRelationStatement(relation, db)); !done)
                return StepFailed(kCreateDatabaseStep, done);
    const Outcome committed = transaction.Commit();
    return committed ? committed : StepFailed(kCreateDatabaseStep, committed);
}

Outcome CreateDatabase(const QString& location, const Schema& schema) {
    if (util::sql::IsServerLocation(location)) {
        Connection db;
        const Outcome opened = db.Open(location);
        return opened ? CreateDatabase(db, schema) : StepFailed(kCreateDatabaseStep, opened);
    }
    Outcome made; // what the steps said, already under their names
    const Outcome replaced = ReplaceDatabaseFile(location, QString(), [&](const QString& building) {
        Connection db;
        const Outcome opened = db.Open(building, Connection::Mode::ReadWrite, true);
        made = opened ? CreateDatabase(db, schema) : StepFailed(kCreateDatabaseStep, opened);
        return made;
    });
    if (replaced)
        return {};
    return made ? StepFailed(kCreateDatabaseStep, replaced) : made;
}

} // namespace campaign
