#include "CatalogueTestUtil.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace testutil {

using util::sql::Connection;
using util::sql::Dialect;

namespace {
bool Sqlite(const Connection& db) {
    return db.GetDialect() == Dialect::Sqlite;
}
QString TableSql(Connection& db, const QString& table) {
    return Rows(db, QStringLiteral("SELECT sql FROM sqlite_master WHERE name = ?"), {table})
        .value(0);
}
} // namespace

QStringList Rows(Connection& db, const QString& sql, const QVariantList& values) {
    QSqlQuery query(db.Database());
    query.prepare(sql);
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    EXPECT_TRUE(query.exec()) << sql.toStdString() << ": "
                              << query.lastError().text().toStdString();
    QStringList rows;
    while (query.next()) {
        QStringList fields;
        for (int i = 0; i < query.record().count(); ++i)
            fields.append(query.value(i).toString());
        rows.append(fields.join(QLatin1Char('|')));
    }
    return rows;
}

QStringList TableNames(Connection& db) {
    return Sqlite(db)
               ? Rows(db, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                         "ORDER BY rowid"))
               : Rows(db, QStringLiteral("SELECT c.relname FROM pg_class c JOIN pg_namespace n "
                                         "ON n.oid = c.relnamespace WHERE c.relkind = 'r' AND "
                                         "n.nspname = current_schema() ORDER BY c.oid"));
}

QStringList ColumnCatalogue(Connection& db, const QString& table) {
    return Rows(db,
                Sqlite(db) ? QStringLiteral("SELECT name, type, CASE \"notnull\" WHEN 1 THEN "
                                            "'not null' ELSE 'null' END FROM "
                                            "pragma_table_info(?) ORDER BY cid")
                           : QStringLiteral("SELECT column_name, data_type || COALESCE('(' || "
                                            "character_maximum_length || ')', ''), CASE "
                                            "is_nullable WHEN 'NO' THEN 'not null' ELSE 'null' "
                                            "END FROM information_schema.columns WHERE "
                                            "table_schema = current_schema() AND table_name = ? "
                                            "ORDER BY ordinal_position"),
                {table});
}

QStringList IndexCatalogue(Connection& db, const QString& table) {
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& row :
             Rows(db,
                  QStringLiteral("SELECT name, CASE WHEN origin = 'pk' THEN 'P' WHEN \"unique\" "
                                 "THEN 'U' ELSE '-' END FROM pragma_index_list(?)"),
                  {table})) {
            QString name = row.section(QLatin1Char('|'), 0, 0);
            const QString kind = row.section(QLatin1Char('|'), 1);
            const QStringList columns = Rows(
                db, QStringLiteral("SELECT name FROM pragma_index_info(?) ORDER BY seqno"), {name});
            if (kind == QLatin1String("P")) {
                // SQLite names the key's index itself; the constraint keeps our name.
                name = table + QLatin1String("_PrimaryKey");
                const QString sql = TableSql(db, table);
                EXPECT_TRUE(sql.contains(QStringLiteral("CONSTRAINT \"%1\" PRIMARY KEY").arg(name)))
                    << sql.toStdString();
            }
            actual.append(QStringList{name, kind, columns.join(QLatin1Char(','))}.join(' '));
        }
    } else {
        actual = Rows(
            db,
            QStringLiteral(
                "SELECT i.relname || ' ' || CASE WHEN x.indisprimary THEN 'P' WHEN x.indisunique "
                "THEN 'U' ELSE '-' END || ' ' || string_agg(a.attname, ',' ORDER BY k.n) FROM "
                "pg_index x JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class t ON "
                "t.oid = x.indrelid JOIN pg_namespace s ON s.oid = t.relnamespace CROSS "
                "JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, n) "
                "JOIN pg_attribute a ON a.attrelid = t.oid AND a.attnum = k.attnum WHERE "
                "t.relname = ? AND s.nspname = current_schema() GROUP BY i.relname, "
                "x.indisprimary, x.indisunique"),
            {table});
    }
    actual.sort();
    return actual;
}

QStringList RelationCatalogue(Connection& db) {
    const QStringList cascade{QStringLiteral("CASCADE"), QStringLiteral("CASCADE")};
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& name : TableNames(db)) {
            const QString sql = TableSql(db, name);
            for (const QString& row :
                 Rows(db,
                      QStringLiteral("SELECT \"table\", \"from\", \"to\", on_update, "
                                     "on_delete FROM pragma_foreign_key_list(?)"),
                      {name})) {
                const QStringList f = row.split(QLatin1Char('|'));
                EXPECT_EQ(f.mid(3), cascade) << row.toStdString();
                // The relation's name lives in the table's statement only.
                const qsizetype at = sql.indexOf(
                    QStringLiteral("FOREIGN KEY (\"%1\") REFERENCES \"%2\"").arg(f[1], f[0]));
                EXPECT_GT(at, 0) << sql.toStdString();
                const qsizetype open = sql.lastIndexOf(QLatin1String("CONSTRAINT \""), at);
                actual.append(QStringLiteral("%1 %2.%3 %4.%5")
                                  .arg(sql.mid(open + 12, at - open - 14), f[0], f[2], name, f[1]));
            }
        }
    } else {
        for (const QString& row :
             Rows(db,
                  QStringLiteral(
                      "SELECT r.constraint_name, p.table_name, p.column_name, f.table_name, "
                      "f.column_name, r.update_rule, r.delete_rule FROM "
                      "information_schema.referential_constraints r JOIN "
                      "information_schema.key_column_usage f ON f.constraint_name = "
                      "r.constraint_name AND f.constraint_schema = r.constraint_schema JOIN "
                      "information_schema.key_column_usage p ON p.constraint_name = "
                      "r.unique_constraint_name AND p.constraint_schema = "
                      "r.unique_constraint_schema WHERE r.constraint_schema = current_schema()"))) {
            const QStringList f = row.split(QLatin1Char('|'));
            EXPECT_EQ(f.mid(5), cascade) << row.toStdString();
            actual.append(QStringLiteral("%1 %2.%3 %4.%5").arg(f[0], f[1], f[2], f[3], f[4]));
        }
    }
    actual.sort();
    return actual;
}

void EachEngineTest::SetUpTestSuite() {
    s_server = std::make_unique<PostgresServer>();
    s_serverStarted = s_server->Start();
}

QString EachEngineTest::NewLocation(const QString& name) {
    if (Sqlite())
        return m_dir.filePath(name + QLatin1String(".qew"));
    EXPECT_TRUE(s_serverStarted) << s_server->Error().toStdString();
    const QString location = s_serverStarted ? s_server->CreateDatabase(name) : QString();
    EXPECT_FALSE(location.isEmpty()) << s_server->Error().toStdString();
    return location;
}

std::string EngineName(const ::testing::TestParamInfo<util::sql::Dialect>& info) {
    return info.param == Dialect::Sqlite ? "Sqlite" : "PostgreSql";
}

} // namespace testutil
