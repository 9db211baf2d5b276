#include "questionnaire/formats/QesSchema.h"

#include "questionnaire/Strings.h"
#include "questionnaire/formats/QesDatabase.h"

#include <QHash>
#include <QSqlError>
#include <QSqlQuery>

#include <vector>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

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
         "PRIMARY KEY (id), CHECK (id = 1)",
         ""},
        {"languages",
         {{"lcid", "INTEGER"},
          {"position", "INTEGER"},
          {"short_name", "TEXT"},
          {"name", "TEXT"},
          {"is_main", "INTEGER"}},
         "PRIMARY KEY (lcid)",
         ""},
        {"versions",
         {{"id", "INTEGER"}, {"position", "INTEGER"}, {"name", "TEXT"}},
         "PRIMARY KEY (id)",
         ""},
        {"questions",
         {{"id", "INTEGER"},
          {"position", "INTEGER"},
          {"shortcut", "TEXT"},
          {"type", "INTEGER"},
          {"visible", "INTEGER"},
          {"on_screen", "INTEGER"},
          {"on_paper", "INTEGER"},
          {"parent_id", "INTEGER"},
          {"versions", "TEXT"}},
         "PRIMARY KEY (id)",
         ""},
        {"responses",
         {{"question_id", "INTEGER"},
          {"id", "INTEGER"},
          {"position", "INTEGER"},
          {"entry_code", "TEXT"},
          {"versions", "TEXT"}},
         "PRIMARY KEY (question_id, id)",
         ""},
        {"question_captions",
         {{"question_id", "INTEGER"}, {"kind", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (question_id, kind, lcid)",
         " WITHOUT ROWID"},
        {"response_captions",
         {{"question_id", "INTEGER"},
          {"response_id", "INTEGER"},
          {"lcid", "INTEGER"},
          {"text", "TEXT"}},
         "PRIMARY KEY (question_id, response_id, lcid)",
         " WITHOUT ROWID"},
        {"routings",
         {{"id", "INTEGER"},
          {"position", "INTEGER"},
          {"kind", "INTEGER"},
          {"source_question_id", "INTEGER"},
          {"target_question_id", "INTEGER"},
          {"condition", "TEXT"}},
         "PRIMARY KEY (id)",
         ""},
        {"routing_messages",
         {{"routing_id", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (routing_id, lcid)",
         " WITHOUT ROWID"},
        {"system_messages",
         {{"number", "INTEGER"}, {"lcid", "INTEGER"}, {"text", "TEXT"}},
         "PRIMARY KEY (number, lcid), CHECK (number BETWEEN 2 AND 43)",
         " WITHOUT ROWID"},
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

util::Outcome CheckTable(util::sql::Connection& db, const Table& table, quint16& status) {
    QSqlQuery query(db.Database());
    if (!query.exec(QStringLiteral("PRAGMA table_info(%1)").arg(QLatin1String(table.name)))) {
        status = kQesReadError;
        return util::Outcome::Failure(query.lastError().text());
    }
    QHash<QString, QString> types;
    while (query.next())
        types.insert(query.value(1).toString().toLower(), query.value(2).toString().toUpper());
    if (types.isEmpty()) {
        status = kQesNotAQuestionnaire;
        return util::Outcome::Failure(
            Tr(strings::kTableMissingQuestionnaireDatabase).arg(QLatin1String(table.name)));
    }
    for (const Column& column : table.columns) {
        const auto it = types.constFind(QLatin1String(column.name));
        if (it == types.constEnd() || *it != QLatin1String(column.type)) {
            status = kQesBadSchema;
            return util::Outcome::Failure(Tr(strings::kColumnMissingType)
                                              .arg(QLatin1String(table.name),
                                                   QLatin1String(column.name),
                                                   QLatin1String(column.type)));
        }
    }
    return {};
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

util::Outcome CheckSchema(util::sql::Connection& db, quint16& status) {
    for (const Table& table : Tables())
        if (const util::Outcome checked = CheckTable(db, table, status); !checked)
            return checked;
    QSqlQuery query(db.Database());
    if (!query.exec(QStringLiteral("SELECT value FROM format WHERE key = 'format'")) ||
        !query.next()) {
        status = kQesBadData;
        return util::Outcome::Failure(Tr(strings::kDatabaseDoesSayWhichFormat));
    }
    bool ok = false;
    const int format = query.value(0).toString().toInt(&ok);
    if (!ok || format < 1) {
        status = kQesBadData;
        return util::Outcome::Failure(Tr(strings::kDatabaseNamesUnknownFormat));
    }
    if (format > kFormatVersion) {
        status = kQesNewerFormat;
        return util::Outcome::Failure(
            Tr(strings::kDatabaseHasFormatWrittenNewer).arg(format).arg(kFormatVersion));
    }
    return {};
}

} // namespace questionnaire::qes
