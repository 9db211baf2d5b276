#include "campaign/schema/Migrations.h"

#include "campaign/schema/CampaignDatabase.h"
#include "campaign/schema/SchemaStrings.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <optional>

namespace campaign {

namespace {

using util::Outcome;
using util::sql::Connection;
using util::sql::Dialect;
using Kind = SchemaChange::Kind;

// --- the steps as data ---

SchemaChange Add(const char* table, const char* column, QVariant fill = {}) {
    return {Kind::AddColumn, QLatin1String(table), QLatin1String(column), std::move(fill)};
}
SchemaChange AllowEmpty(const char* table, const char* column) {
    return {Kind::AllowZeroLength, QLatin1String(table), QLatin1String(column), {}};
}
SchemaChange Alter(const char* table, const char* column, int type, int size, int previousType,
                   int previousSize) {
    return {Kind::AlterColumn, QLatin1String(table), QLatin1String(column), {}, type, size,
            previousType,      previousSize};
}
SchemaChange NewIndex(const char* table, const char* index) {
    return {Kind::CreateIndex, QLatin1String(table), QLatin1String(index), {}};
}
SchemaChange NewTable(const char* table) {
    return {Kind::CreateTable, QLatin1String(table), {}, {}};
}

MigrationStep Step(const char* threshold, const char* name, std::vector<SchemaChange> changes) {
    return {QLatin1String(threshold), QLatin1String(name), std::move(changes)};
}

// The repair of files whose "Versions" columns missed the switch to accepting empty texts.
std::vector<MigrationStep> VersionsRepair(const char* threshold) {
    return {
        Step(threshold, "CQuestionsRSAdo::MoveTo5_2_3_5", {AllowEmpty("Questions", "Versions")}),
        Step(threshold, "CModalitiesRSAdo::MoveTo5_2_3_5", {AllowEmpty("Modalities", "Versions")}),
    };
}

std::vector<MigrationStep> Steps() {
    std::vector<MigrationStep> steps = {
        Step("5.1.6.15", "CVolumesRSAdo::MoveTo5_1_6_15",
             {Add("Volumes", "MatchUsingAncestorValues", false)}),
        Step("5.2.0.0", "CVolumesRSAdo::MoveTo5_2_0_0",
             {Add("Volumes", "CaseSensitiveMatching", false)}),
        // Every existing question develops levels.
        Step("5.2.1.1", "CQuestionsRSAdo::MoveTo5_2_1_1",
             {Add("Questions", "IsDevelopLevels", true)}),
        Step("5.2.3.5", "CQuestionsRSAdo::MoveTo5_2_3_5", {AllowEmpty("Questions", "Versions")}),
        Step("5.2.3.5", "CModalitiesRSAdo::MoveTo5_2_3_5", {AllowEmpty("Modalities", "Versions")}),
        Step("5.3.0.0", "CVolumesRSAdo::MoveTo5_3_0_0",
             {Add("Volumes", "AddNoNewQuestions", false),
              Add("Volumes", "ReconciliationSourceQuestionIDs", QString(QLatin1String("")))}),
        Step("5.3.0.1", "CWavesRSAdo::MoveTo5_3_0_1", {NewIndex("Waves", "IndexWaveOrder")}),
        Step("5.3.1.0", "CQuestionsRSAdo::MoveTo5_3_1_0",
             {Add("Questions", "IsVisibleInAnalyse", true)}),
        Step("5.3.2.3", "CVolumesRSAdo::MoveTo5_3_2_3",
             {Alter("Volumes", "CaseData", kMemo, 0, kText, 255),
              Alter("Volumes", "MetaData", kMemo, 0, kText, 255)}),
        Step("5.3.3.0", "CModalitiesRSAdo::MoveTo5_3_3_0", {Add("Modalities", "BaseType", 0)}),
    };
    for (const char* threshold : {"5.3.4.6", "5.3.5.1"})
        for (MigrationStep& step : VersionsRepair(threshold))
            steps.push_back(std::move(step));
    const std::vector<MigrationStep> later = {
        Step("5.5.2.4", "CQuestionsRSAdo::MoveTo5_5_2_4", {Add("Questions", "Tags")}),
        Step("5.5.2.4", "CModalitiesRSAdo::MoveTo5_5_2_4", {Add("Modalities", "Tags")}),
        Step("5.5.2.4", "CSurveyTagsRSAdo::CreateTable", {NewTable("Tags")}),
        // The campaign's step addresses the tag table; "Tags" has no "Name", so that half finds
        // nothing to switch.
        Step("5.6.0.0", "CCampaignsRSAdo::MoveTo5_6_0_0",
             {AllowEmpty("Tags", "Name"), AllowEmpty("Tags", "Description")}),
        Step("5.6.0.0", "CWavesRSAdo::MoveTo5_6_0_0", {AllowEmpty("Waves", "Description")}),
        Step("5.6.0.0", "CVolumesRSAdo::MoveTo5_6_0_0",
             {AllowEmpty("Volumes", "ThisVolumeLinkQuestionID"),
              AllowEmpty("Volumes", "ReconciliationSourceQuestionIDs")}),
        Step("5.6.0.0", "CQuestionsRSAdo::MoveTo5_6_0_0", {AllowEmpty("Questions", "UserData")}),
        Step("5.6.0.0", "CModalitiesRSAdo::MoveTo5_6_0_0", {AllowEmpty("Modalities", "EntryCode")}),
        Step("5.6.1.0", "CSurveyTagsRSAdo::MoveTo5_6_1_0",
             {Alter("Tags", "Caption", kText, 255, kText, 50)}),
        Step("5.6.1.0", "CModalitiesRSAdo::MoveTo5_6_1_0",
             {Alter("Modalities", "UserData", kMemo, 0, kText, 255)}),
        Step("5.6.1.0", "CQuestionCaptionsRSAdo::MoveTo5_6_1_0",
             {Alter("QuestionCaptions", "ShortCaption", kMemo, 0, kText, 255),
              AllowEmpty("QuestionCaptions", "LongCaption")}),
        Step("5.6.1.0", "CVersionsRSAdo::MoveTo5_6_1_0",
             {Alter("Versions", "LongCaption", kMemo, 0, kText, 255),
              Alter("Versions", "ShortCaption", kText, 255, kMemo, 0)}),
    };
    steps.insert(steps.end(), later.begin(), later.end());
    return steps;
}

// --- running them ---

// The two texts a failure is reported with.
struct StepError {
    QString description;
    QString detail;
};
using StepResult = std::optional<StepError>; // nothing: success

StepResult Run(Connection& db, const QString& sql) {
    QSqlQuery query(db.Database());
    if (query.exec(sql))
        return std::nullopt;
    const QSqlError error = query.lastError();
    return StepError{error.databaseText(), error.driverText()};
}

// The first value of every row.
std::optional<QStringList> Values(Connection& db, const QString& sql, const QVariantList& binds) {
    QSqlQuery query(db.Database());
    query.setForwardOnly(true);
    query.prepare(sql);
    for (int i = 0; i < binds.size(); ++i)
        query.bindValue(i, binds[i]);
    if (!query.exec())
        return std::nullopt;
    QStringList values;
    while (query.next())
        values.append(query.value(0).toString());
    return values;
}

StepResult QueryFailed(Connection& db) {
    const QSqlError error = db.Database().lastError();
    return StepError{error.databaseText(), error.driverText()};
}

bool Server(const Connection& db) {
    return db.GetDialect() == Dialect::PostgreSql;
}

// The column's name as the database has it; empty when it has none.
QString LiveColumnName(Connection& db, const QString& table, const QString& column) {
    for (const QString& name : db.Columns(table))
        if (name.compare(column, Qt::CaseInsensitive) == 0)
            return name;
    return {};
}

QString FillLiteral(const QVariant& fill, const Connection& db) {
    if (fill.typeId() == QMetaType::Bool)
        return Server(db) ? (fill.toBool() ? QStringLiteral("TRUE") : QStringLiteral("FALSE"))
                          : (fill.toBool() ? QStringLiteral("1") : QStringLiteral("0"));
    if (fill.typeId() == QMetaType::QString)
        return QLatin1Char('\'') + fill.toString().replace(QLatin1Char('\''), QLatin1String("''")) +
               QLatin1Char('\'');
    return QString::number(fill.toLongLong());
}

// The CREATE TABLE text SQLite keeps for a table.
std::optional<QString> SqliteTableSql(Connection& db, const QString& table) {
    const auto rows = Values(db,
                             QStringLiteral("SELECT sql FROM sqlite_master WHERE type = 'table' "
                                            "AND name = ? COLLATE NOCASE"),
                             {table});
    if (!rows || rows->isEmpty())
        return std::nullopt;
    return rows->front();
}

// Where a column's definition stands in a CREATE TABLE text: from its name to the comma or
// parenthesis that ends it. Files written by other programs may give the name bare, in
// brackets or in back quotes, in any letter case, and the column no type at all.
std::optional<std::pair<qsizetype, qsizetype>> DefinitionSpan(const QString& sql,
                                                              const QString& name) {
    const QString escaped = QRegularExpression::escape(name);
    const QRegularExpression start(
        QStringLiteral("(?:\\(|,)\\s*((?:\"%1\"|\\[%1\\]|`%1`|%1)(?=[\\s,)]))").arg(escaped),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = start.match(sql);
    if (!match.hasMatch())
        return std::nullopt;
    const qsizetype from = match.capturedStart(1);
    int depth = 0;
    bool quoted = false;
    for (qsizetype at = from; at < sql.size(); ++at) {
        const QChar c = sql.at(at);
        if (c == QLatin1Char('\''))
            quoted = !quoted;
        else if (quoted)
            continue;
        else if (c == QLatin1Char('('))
            ++depth;
        else if (c == QLatin1Char(')') && depth-- == 0)
            return std::pair{from, at - from};
        else if (c == QLatin1Char(',') && depth == 0)
            return std::pair{from, at - from};
    }
    return std::nullopt;
}

// How a text column is declared in the database now.
std::optional<Column> LiveTextColumn(Connection& db, const QString& table, const QString& name) {
    Column column{name, kMemo, 0, true};
    if (Server(db)) {
        const auto size = Values(db,
                                 QStringLiteral("SELECT COALESCE(character_maximum_length, 0) FROM "
                                                "information_schema.columns WHERE table_schema = "
                                                "current_schema() AND table_name = ? AND "
                                                "column_name = ?"),
                                 {table, name});
        const auto checks = Values(
            db,
            QStringLiteral("SELECT pg_get_constraintdef(c.oid) FROM pg_constraint c JOIN pg_class "
                           "t ON t.oid = c.conrelid JOIN pg_namespace n ON n.oid = t.relnamespace "
                           "JOIN pg_attribute a ON a.attrelid = t.oid AND c.conkey = "
                           "ARRAY[a.attnum] WHERE c.contype = 'c' AND n.nspname = "
                           "current_schema() AND t.relname = ? AND a.attname = ?"),
            {table, name});
        if (!size || size->isEmpty() || !checks)
            return std::nullopt;
        column.size = size->front().toInt();
        column.allowZeroLength = std::none_of(checks->begin(), checks->end(), [](const QString& c) {
            return c.contains(QLatin1String("<> ''"));
        });
    } else {
        const auto sql = SqliteTableSql(db, table);
        if (!sql)
            return std::nullopt;
        const auto span = DefinitionSpan(*sql, name);
        if (!span)
            return std::nullopt;
        const QString definition = sql->mid(span->first, span->second);
        const QRegularExpressionMatch length =
            QRegularExpression(QStringLiteral("CHECK \\(length\\(%1\\) <= (\\d+)\\)")
                                   .arg(QRegularExpression::escape(db.Quote(name))))
                .match(definition);
        if (length.hasMatch())
            column.size = length.captured(1).toInt();
        column.allowZeroLength = !definition.contains(ZeroLengthCheck(name, db));
    }
    column.type = column.size > 0 ? kText : kMemo;
    return column;
}

// The current schema's table, which tells which columns an index keeps from being null.
const Table& SchemaTable(const QString& name) {
    static const Table none;
    const Table* table = CampaignSchema().FindTable(name);
    return table ? *table : none;
}

// SQLite cannot change a column: the table is made again under the new declaration, its rows
// copied over and its indexes made again. Relations are off meanwhile, so that dropping the old
// table takes no rows of other tables with it.
StepResult RebuildSqliteColumn(Connection& db, const QString& table, const Column& column) {
    const auto sql = SqliteTableSql(db, table);
    const auto indexes = Values(db,
                                QStringLiteral("SELECT sql FROM sqlite_master WHERE type = "
                                               "'index' AND tbl_name = ? COLLATE NOCASE AND sql "
                                               "IS NOT NULL"),
                                {table});
    if (!sql || !indexes)
        return QueryFailed(db);
    const auto span = DefinitionSpan(*sql, column.name);
    const qsizetype open = sql->indexOf(QLatin1Char('('));
    if (!span || open < 0)
        return StepError{SchemaTr(schemastrings::kColumnMissing).arg(table, column.name), {}};
    const QString building = table + QLatin1String("_migrating");
    QString created = *sql;
    created.replace(span->first, span->second, ColumnDefinition(SchemaTable(table), column, db));
    created = QStringLiteral("CREATE TABLE %1 ").arg(db.Quote(building)) + created.mid(open);
    QStringList columns;
    for (const QString& name : db.Columns(table))
        columns.append(db.Quote(name));
    const QString list = columns.join(QStringLiteral(", "));
    QStringList statements = {
        created,
        QStringLiteral("INSERT INTO %1 (%2) SELECT %2 FROM %3")
            .arg(db.Quote(building), list, db.Quote(table)),
        QStringLiteral("DROP TABLE %1").arg(db.Quote(table)),
        QStringLiteral("ALTER TABLE %1 RENAME TO %2").arg(db.Quote(building), db.Quote(table)),
    };
    statements += *indexes;
    for (const QString& statement : statements)
        if (StepResult failed = Run(db, statement))
            return failed;
    return std::nullopt;
}

StepResult RedeclareServerColumn(Connection& db, const QString& table, const Column& before,
                                 const Column& after) {
    const QString quotedTable = db.Quote(table);
    const QString quotedColumn = db.Quote(after.name);
    if (before.type != after.type || before.size != after.size)
        if (StepResult failed =
                Run(db, QStringLiteral("ALTER TABLE %1 ALTER COLUMN %2 TYPE %3")
                            .arg(quotedTable, quotedColumn, ColumnTypeName(after, db))))
            return failed;
    if (before.allowZeroLength == after.allowZeroLength)
        return std::nullopt;
    if (!after.allowZeroLength)
        return Run(db, QStringLiteral("ALTER TABLE %1 ADD %2")
                           .arg(quotedTable, ZeroLengthCheck(after.name, db)));
    const auto names = Values(
        db,
        QStringLiteral("SELECT c.conname FROM pg_constraint c JOIN pg_class t ON t.oid = "
                       "c.conrelid JOIN pg_namespace n ON n.oid = t.relnamespace JOIN "
                       "pg_attribute a ON a.attrelid = t.oid AND c.conkey = ARRAY[a.attnum] "
                       "WHERE c.contype = 'c' AND n.nspname = current_schema() AND t.relname = "
                       "? AND a.attname = ? AND pg_get_constraintdef(c.oid) LIKE '%<> ''''%'"),
        {table, after.name});
    if (!names)
        return QueryFailed(db);
    for (const QString& name : *names)
        if (StepResult failed = Run(db, QStringLiteral("ALTER TABLE %1 DROP CONSTRAINT %2")
                                            .arg(quotedTable, db.Quote(name))))
            return failed;
    return std::nullopt;
}

// Gives a text column a new declaration, `change` telling what becomes of the live one. A column
// that is missing is reported when `mustExist`, and otherwise left alone.
template <class Change>
StepResult Redeclare(Connection& db, const QString& table, const QString& column, bool mustExist,
                     Change change) {
    const QString name = LiveColumnName(db, table, column);
    if (name.isEmpty()) {
        if (!mustExist)
            return std::nullopt;
        return StepError{SchemaTr(schemastrings::kColumnMissing).arg(table, column), {}};
    }
    const std::optional<Column> before = LiveTextColumn(db, table, name);
    if (!before)
        return QueryFailed(db);
    Column after = *before;
    change(after);
    if (after.type == before->type && after.size == before->size &&
        after.allowZeroLength == before->allowZeroLength)
        return std::nullopt;
    return Server(db) ? RedeclareServerColumn(db, table, *before, after)
                      : RebuildSqliteColumn(db, table, after);
}

StepResult AddColumn(Connection& db, const SchemaChange& change) {
    if (db.HasColumn(change.table, change.name))
        return std::nullopt;
    const Table& table = SchemaTable(change.table);
    const Column* declared = table.FindColumn(change.name);
    if (!declared)
        return StepError{SchemaTr(schemastrings::kColumnMissing).arg(change.table, change.name),
                         {}};
    Column column = *declared;
    // The rows are filled with an empty text: the column must take it.
    if (change.fill.typeId() == QMetaType::QString && change.fill.toString().isEmpty())
        column.allowZeroLength = true;
    const QString quotedTable = db.Quote(change.table);
    if (StepResult failed = Run(db, QStringLiteral("ALTER TABLE %1 ADD COLUMN %2")
                                        .arg(quotedTable, ColumnDefinition(table, column, db))))
        return failed;
    if (change.fill.isNull())
        return std::nullopt;
    return Run(db, QStringLiteral("UPDATE %1 SET %2 = %3")
                       .arg(quotedTable, db.Quote(column.name), FillLiteral(change.fill, db)));
}

// A column that an index made later keeps from being null was declared nullable.
StepResult RefuseNulls(Connection& db, const Table& table, const QString& name) {
    const Column* declared = table.FindColumn(name);
    const QString live = LiveColumnName(db, table.name, name);
    if (!declared || live.isEmpty())
        return StepError{SchemaTr(schemastrings::kColumnMissing).arg(table.name, name), {}};
    const auto nullable =
        Server(db) ? Values(db,
                            QStringLiteral("SELECT is_nullable = 'YES' FROM "
                                           "information_schema.columns WHERE table_schema = "
                                           "current_schema() AND table_name = ? AND "
                                           "column_name = ?"),
                            {table.name, live})
                   : Values(db,
                            QStringLiteral("SELECT \"notnull\" = 0 FROM pragma_table_info(?) "
                                           "WHERE name = ?"),
                            {table.name, live});
    if (!nullable)
        return QueryFailed(db);
    const bool yes = !nullable->isEmpty() && (nullable->front() == QLatin1String("1") ||
                                              nullable->front() == QLatin1String("true"));
    if (!yes)
        return std::nullopt;
    if (Server(db))
        return Run(db, QStringLiteral("ALTER TABLE %1 ALTER COLUMN %2 SET NOT NULL")
                           .arg(db.Quote(table.name), db.Quote(live)));
    // Only whole-number columns are indexed later, so the declaration is the schema's.
    return RebuildSqliteColumn(db, table.name, *declared);
}

StepResult CreateIndex(Connection& db, const SchemaChange& change) {
    const Table& table = SchemaTable(change.table);
    const auto found =
        std::find_if(table.indexes.begin(), table.indexes.end(),
                     [&change](const Index& index) { return index.name == change.name; });
    if (found == table.indexes.end())
        return StepError{change.name, {}};
    const QString name = DatabaseIndexName(table, *found);
    const auto existing =
        Server(db) ? Values(db,
                            QStringLiteral("SELECT indexname FROM pg_indexes WHERE schemaname = "
                                           "current_schema() AND indexname = ?"),
                            {name})
                   : Values(db,
                            QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'index' "
                                           "AND name = ? COLLATE NOCASE"),
                            {name});
    if (!existing)
        return QueryFailed(db);
    if (!existing->isEmpty())
        return std::nullopt;
    if (found->nulls == IndexNulls::Disallow)
        for (const QString& column : found->columns)
            if (StepResult failed = RefuseNulls(db, table, column))
                return failed;
    return Run(db, CreateIndexStatement(table, *found, db));
}

StepResult CreateTable(Connection& db, const SchemaChange& change) {
    if (db.HasTable(change.table))
        return std::nullopt;
    const Schema& schema = CampaignSchema();
    const Table* table = schema.FindTable(change.table);
    if (!table)
        return StepError{change.table, {}};
    QStringList statements = TableStatements(schema, *table, db);
    if (Server(db))
        for (const Relation& relation : schema.relations)
            if (relation.foreignTable == table->name)
                statements.append(AddRelationStatement(relation, db));
    for (const QString& statement : statements)
        if (StepResult failed = Run(db, statement))
            return failed;
    return std::nullopt;
}

StepResult Apply(Connection& db, const SchemaChange& change) {
    switch (change.kind) {
    case Kind::AddColumn:
        return AddColumn(db, change);
    case Kind::AllowZeroLength:
        return Redeclare(db, change.table, change.name, false,
                         [](Column& column) { column.allowZeroLength = true; });
    case Kind::AlterColumn:
        return Redeclare(db, change.table, change.name, true, [&change](Column& column) {
            column.type = change.type;
            column.size = change.size;
        });
    case Kind::CreateIndex:
        return CreateIndex(db, change);
    case Kind::CreateTable:
        return CreateTable(db, change);
    }
    return std::nullopt;
}

StepResult RunStep(Connection& db, const MigrationStep& step) {
    util::sql::Transaction transaction(db);
    if (const Outcome begun = transaction.Begin(); !begun)
        return StepError{begun.Reason(), {}};
    for (const SchemaChange& change : step.changes)
        if (StepResult failed = Apply(db, change))
            return failed;
    if (const Outcome committed = transaction.Commit(); !committed)
        return StepError{committed.Reason(), {}};
    return std::nullopt;
}

// Relations are not checked on SQLite while tables are made again, and as before afterwards.
class ForeignKeysOff {
public:
    explicit ForeignKeysOff(Connection& db) : m_db(db) {
        if (m_db.GetDialect() != Dialect::Sqlite)
            return;
        const auto on = Values(m_db, QStringLiteral("PRAGMA foreign_keys"), {});
        m_wasOn = on && !on->isEmpty() && on->front() == QLatin1String("1");
        if (m_wasOn)
            (void)m_db.Exec(QStringLiteral("PRAGMA foreign_keys = OFF"));
    }
    ~ForeignKeysOff() {
        if (m_wasOn)
            (void)m_db.Exec(QStringLiteral("PRAGMA foreign_keys = ON"));
    }
    ForeignKeysOff(const ForeignKeysOff&) = delete;
    ForeignKeysOff& operator=(const ForeignKeysOff&) = delete;

private:
    Connection& m_db;
    bool m_wasOn = false;
};

void Undo(Schema& schema, const SchemaChange& change) {
    auto table = std::find_if(schema.tables.begin(), schema.tables.end(),
                              [&change](const Table& t) { return t.name == change.table; });
    if (table == schema.tables.end())
        return;
    auto column = std::find_if(table->columns.begin(), table->columns.end(),
                               [&change](const Column& c) { return c.name == change.name; });
    switch (change.kind) {
    case Kind::AddColumn:
        if (column != table->columns.end())
            table->columns.erase(column);
        break;
    case Kind::AllowZeroLength:
        if (column != table->columns.end())
            column->allowZeroLength = false;
        break;
    case Kind::AlterColumn:
        if (column != table->columns.end()) {
            column->type = change.previousType;
            column->size = change.previousSize;
        }
        break;
    case Kind::CreateIndex:
        std::erase_if(table->indexes,
                      [&change](const Index& index) { return index.name == change.name; });
        break;
    case Kind::CreateTable:
        std::erase_if(schema.relations, [&change](const Relation& relation) {
            return relation.primaryTable == change.table || relation.foreignTable == change.table;
        });
        schema.tables.erase(table);
        break;
    }
}

} // namespace

QString Version::ToText() const {
    return QStringLiteral("%1.%2.%3.%4").arg(parts[0]).arg(parts[1]).arg(parts[2]).arg(parts[3]);
}

ParsedVersion ParseVersion(const QString& text) {
    const QChar separator = text.contains(QLatin1Char('.')) ? QLatin1Char('.') : QLatin1Char(',');
    const QStringList numbers = text.split(separator);
    ParsedVersion parsed;
    for (qsizetype i = 0; i < numbers.size() && i < 4; ++i) {
        bool ok = false;
        const uint number = numbers[i].trimmed().toUInt(&ok);
        if (!ok)
            break;
        parsed.version.parts[static_cast<size_t>(i)] = number;
        parsed.found = true;
    }
    return parsed;
}

bool IsOlder(const Version& a, const Version& b) {
    return a < b;
}

const QStringList& KnownVersions() {
    static const QStringList versions = {
        QStringLiteral("5.1.6.15"), QStringLiteral("5.1.6.16"), QStringLiteral("5.1.6.17"),
        QStringLiteral("5.1.6.18"), QStringLiteral("5.1.9.4"),  QStringLiteral("5.2.0.0"),
        QStringLiteral("5.2.1.0"),  QStringLiteral("5.2.1.1"),  QStringLiteral("5.2.1.2"),
        QStringLiteral("5.2.1.3"),  QStringLiteral("5.2.1.4"),  QStringLiteral("5.2.1.5"),
        QStringLiteral("5.2.1.6"),  QStringLiteral("5.2.3.0"),  QStringLiteral("5.2.3.1"),
        QStringLiteral("5.2.3.2"),  QStringLiteral("5.2.3.3"),  QStringLiteral("5.2.3.4"),
        QStringLiteral("5.2.3.5"),  QStringLiteral("5.2.3.6"),  QStringLiteral("5.2.3.7"),
        QStringLiteral("5.2.3.8"),  QStringLiteral("5.3.0.0"),  QStringLiteral("5.3.0.1"),
        QStringLiteral("5.3.1.0"),  QStringLiteral("5.3.1.1"),  QStringLiteral("5.3.1.2"),
        QStringLiteral("5.3.1.3"),  QStringLiteral("5.3.1.4"),  QStringLiteral("5.3.1.5"),
        QStringLiteral("5.3.2.0"),  QStringLiteral("5.3.2.1"),  QStringLiteral("5.3.2.2"),
        QStringLiteral("5.3.2.3"),  QStringLiteral("5.3.3.0"),  QStringLiteral("5.3.3.1"),
        QStringLiteral("5.3.3.2"),  QStringLiteral("5.3.3.3"),  QStringLiteral("5.3.3.4"),
        QStringLiteral("5.3.3.5"),  QStringLiteral("5.3.3.6"),  QStringLiteral("5.3.3.7"),
        QStringLiteral("5.3.3.8"),  QStringLiteral("5.3.4.0"),  QStringLiteral("5.3.4.1"),
        QStringLiteral("5.3.4.2"),  QStringLiteral("5.3.4.3"),  QStringLiteral("5.3.4.4"),
        QStringLiteral("5.3.4.5"),  QStringLiteral("5.3.4.6"),  QStringLiteral("5.3.5.0"),
        QStringLiteral("5.3.5.1"),  QStringLiteral("5.3.5.2"),  QStringLiteral("5.3.5.3"),
        QStringLiteral("5.4.2.0"),  QStringLiteral("5.4.2.1"),  QStringLiteral("5.4.3.0"),
        QStringLiteral("5.4.4.0"),  QStringLiteral("5.4.4.1"),  QStringLiteral("5.4.5.0"),
        QStringLiteral("5.4.6.0"),  QStringLiteral("5.4.6.1"),  QStringLiteral("5.4.6.2"),
        QStringLiteral("5.4.6.3"),  QStringLiteral("5.4.8.0"),  QStringLiteral("5.4.9.0"),
        QStringLiteral("5.4.9.1"),  QStringLiteral("5.4.9.2"),  QStringLiteral("5.4.9.3"),
        QStringLiteral("5.4.9.4"),  QStringLiteral("5.4.10.0"), QStringLiteral("5.5.0.0"),
        QStringLiteral("5.5.2.0"),  QStringLiteral("5.5.2.4"),  QStringLiteral("5.5.3.0"),
        QStringLiteral("5.6.0.0"),  QStringLiteral("5.6.1.0"),
    };
    return versions;
}

Version CurrentVersion() {
    return ParseVersion(KnownVersions().back()).version;
}

bool IsOlderThanCurrent(const Version& version) {
    return IsOlder(version, CurrentVersion());
}

const std::vector<MigrationStep>& MigrationSteps() {
    static const std::vector<MigrationStep> steps = Steps();
    return steps;
}

std::vector<const MigrationStep*> PlannedSteps(const Version& from) {
    std::vector<const MigrationStep*> planned;
    for (const MigrationStep& step : MigrationSteps())
        if (IsOlder(from, ParseVersion(step.threshold).version))
            planned.push_back(&step);
    return planned;
}

Schema SchemaAt(const Version& version) {
    Schema schema = CampaignSchema();
    schema.version = version.ToText();
    const std::vector<MigrationStep>& steps = MigrationSteps();
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (!IsOlder(version, ParseVersion(step->threshold).version))
            continue;
        for (auto change = step->changes.rbegin(); change != step->changes.rend(); ++change)
            Undo(schema, *change);
    }
    return schema;
}

Outcome MigrateDatabase(Connection& db, const QString& fromVersionText) {
    const std::vector<const MigrationStep*> planned =
        PlannedSteps(ParseVersion(fromVersionText).version);
    if (planned.empty())
        return {};
    const ForeignKeysOff unchecked(db);
    for (const MigrationStep* step : planned)
        if (const StepResult failed = RunStep(db, *step))
            return Outcome::Failure(SchemaTr(schemastrings::kAdoError)
                                        .arg(step->name, failed->description, failed->detail));
    return {};
}

} // namespace campaign
