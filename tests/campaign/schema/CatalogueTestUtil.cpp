#include "CatalogueTestUtil.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace testutil {

using util::sql::Connection;
using util::sql::Dialect;
using namespace Qt::StringLiterals;

namespace {
bool Sqlite(const Connection& db) {
    return db.GetDialect() == Dialect::Sqlite;
}
QString TableSql(Connection& db, const QString& table) {
    return Rows(db, u"SELECT sql FROM sqlite_master WHERE name = ?"_s, {table}).value(0);
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
        rows.append(fields.join(u'|'));
    }
    return rows;
}

QStringList TableNames(Connection& db) {
    return Sqlite(db) ? Rows(db, u"SELECT name FROM sqlite_master WHERE type = 'table' "
                                 "ORDER BY rowid"_s)
                      : Rows(db, u"SELECT c.relname FROM pg_class c JOIN pg_namespace n "
                                 "ON n.oid = c.relnamespace WHERE c.relkind = 'r' AND "
                                 "n.nspname = current_schema() ORDER BY c.oid"_s);
}

QStringList ColumnCatalogue(Connection& db, const QString& table) {
    return Rows(db,
                Sqlite(db) ? u"SELECT name, type, CASE \"notnull\" WHEN 1 THEN "
                             "'not null' ELSE 'null' END FROM "
                             "pragma_table_info(?) ORDER BY cid"_s
                           : u"SELECT column_name, data_type || COALESCE('(' || "
                             "character_maximum_length || ')', ''), CASE "
                             "is_nullable WHEN 'NO' THEN 'not null' ELSE 'null' "
                             "END FROM information_schema.columns WHERE "
                             "table_schema = current_schema() AND table_name = ? "
                             "ORDER BY ordinal_position"_s,
                {table});
}

QStringList IndexCatalogue(Connection& db, const QString& table) {
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& row :
             Rows(db,
                  u"SELECT name, CASE WHEN origin = 'pk' THEN 'P' WHEN \"unique\" "
                  "THEN 'U' ELSE '-' END FROM pragma_index_list(?)"_s,
                  {table})) {
            QString name = row.section(u'|', 0, 0);
            const QString kind = row.section(u'|', 1);
            const QStringList columns =
                Rows(db, u"SELECT name FROM pragma_index_info(?) ORDER BY seqno"_s, {name});
            if (kind == "P"_L1) {
                // SQLite names the key's index itself; the constraint keeps our name.
                name = table + "_PrimaryKey"_L1;
                const QString sql = TableSql(db, table);
                EXPECT_TRUE(sql.contains(u"CONSTRAINT \"%1\" PRIMARY KEY"_s.arg(name)))
                    << sql.toStdString();
            }
            actual.append(QStringList{name, kind, columns.join(u',')}.join(' '));
        }
    } else {
        actual =
            Rows(db,
                 u"SELECT i.relname || ' ' || CASE WHEN x.indisprimary THEN 'P' WHEN x.indisunique "
                 "THEN 'U' ELSE '-' END || ' ' || string_agg(a.attname, ',' ORDER BY k.n) FROM "
                 "pg_index x JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class t ON "
                 "t.oid = x.indrelid JOIN pg_namespace s ON s.oid = t.relnamespace CROSS "
                 "JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, n) "
                 "JOIN pg_attribute a ON a.attrelid = t.oid AND a.attnum = k.attnum WHERE "
                 "t.relname = ? AND s.nspname = current_schema() GROUP BY i.relname, "
                 "x.indisprimary, x.indisunique"_s,
                 {table});
    }
    actual.sort();
    return actual;
}

QStringList RelationCatalogue(Connection& db) {
    const QStringList cascade{u"CASCADE"_s, u"CASCADE"_s};
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& name : TableNames(db)) {
            const QString sql = TableSql(db, name);
            for (const QString& row : Rows(db,
                                           u"SELECT \"table\", \"from\", \"to\", on_update, "
                                           "on_delete FROM pragma_foreign_key_list(?)"_s,
                                           {name})) {
                const QStringList f = row.split(u'|');
                EXPECT_EQ(f.mid(3), cascade) << row.toStdString();
                // The relation's name lives in the table's statement only.
                const qsizetype at =
                    sql.indexOf(u"FOREIGN KEY (\"%1\") REFERENCES \"%2\""_s.arg(f[1], f[0]));
                EXPECT_GT(at, 0) << sql.toStdString();
                const qsizetype open = sql.lastIndexOf("CONSTRAINT \""_L1, at);
                actual.append(u"%1 %2.%3 %4.%5"_s.arg(sql.mid(open + 12, at - open - 14), f[0],
                                                      f[2], name, f[1]));
            }
        }
    } else {
        for (const QString& row : Rows(
                 db, u"SELECT r.constraint_name, p.table_name, p.column_name, f.table_name, "
                     "f.column_name, r.update_rule, r.delete_rule FROM "
                     "information_schema.referential_constraints r JOIN "
                     "information_schema.key_column_usage f ON f.constraint_name = "
                     "r.constraint_name AND f.constraint_schema = r.constraint_schema JOIN "
                     "information_schema.key_column_usage p ON p.constraint_name = "
                     "r.unique_constraint_name AND p.constraint_schema = "
                     "r.unique_constraint_schema WHERE r.constraint_schema = current_schema()"_s)) {
            const QStringList f = row.split(u'|');
            EXPECT_EQ(f.mid(5), cascade) << row.toStdString();
            actual.append(u"%1 %2.%3 %4.%5"_s.arg(f[0], f[1], f[2], f[3], f[4]));
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
        return m_dir.filePath(name + ".qew"_L1);
    EXPECT_TRUE(s_serverStarted) << s_server->Error().toStdString();
    const QString location = s_serverStarted ? s_server->CreateDatabase(name) : QString();
    EXPECT_FALSE(location.isEmpty()) << s_server->Error().toStdString();
    return location;
}

std::string EngineName(const ::testing::TestParamInfo<util::sql::Dialect>& info) {
    return info.param == Dialect::Sqlite ? "Sqlite" : "PostgreSql";
}

} // namespace testutil
