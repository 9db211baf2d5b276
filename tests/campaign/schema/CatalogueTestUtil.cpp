#include "CatalogueTestUtil.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <gtest/gtest.h>

namespace testutil {

using util::sql::Connection;
using util::sql::Dialect;

namespace {
bool Sqlite(const Connection& db) {
    return db.GetDialect() == Dialect::Sqlite;
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
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& row : Rows(db,
                                       QStringLiteral("SELECT name, type, \"notnull\" FROM "
                                                      "pragma_table_info(?) ORDER BY cid"),
                                       {table})) {
            const QStringList f = row.split(QLatin1Char('|'));
            actual.append(QStringLiteral("%1|%2|%3")
                              .arg(f[0], f[1],
                                   f[2] == QLatin1String("1") ? QStringLiteral("not null")
                                                              : QStringLiteral("null")));
        }
    } else {
        for (const QString& row :
             Rows(db,
                  QStringLiteral("SELECT column_name, data_type, "
                                 "COALESCE(character_maximum_length, 0), is_nullable FROM "
                                 "information_schema.columns WHERE table_schema = "
                                 "current_schema() AND table_name = ? ORDER BY ordinal_position"),
                  {table})) {
            const QStringList f = row.split(QLatin1Char('|'));
            const QString type =
                f[2] == QLatin1String("0") ? f[1] : QStringLiteral("%1(%2)").arg(f[1], f[2]);
            actual.append(QStringLiteral("%1|%2|%3")
                              .arg(f[0], type,
                                   f[3] == QLatin1String("NO") ? QStringLiteral("not null")
                                                               : QStringLiteral("null")));
        }
    }
    return actual;
}

QStringList IndexCatalogue(Connection& db, const QString& table) {
    QStringList actual;
    if (Sqlite(db)) {
        const QString sql =
            Rows(db, QStringLiteral("SELECT sql FROM sqlite_master WHERE name = ?"), {table})
                .value(0);
        for (const QString& row : Rows(db,
                                       QStringLiteral("SELECT name, \"unique\", origin FROM "
                                                      "pragma_index_list(?)"),
                                       {table})) {
            const QStringList f = row.split(QLatin1Char('|'));
            const QStringList columns = Rows(
                db, QStringLiteral("SELECT name FROM pragma_index_info(?) ORDER BY seqno"), {f[0]});
            QString indexName = f[0];
            QString kind = f[1] == QLatin1String("1") ? QStringLiteral("U") : QStringLiteral("-");
            if (f[2] == QLatin1String("pk")) {
                // SQLite names the key's index itself; the constraint keeps our name.
                indexName = table + QLatin1String("_PrimaryKey");
                EXPECT_TRUE(
                    sql.contains(QStringLiteral("CONSTRAINT \"%1\" PRIMARY KEY").arg(indexName)))
                    << sql.toStdString();
                kind = QStringLiteral("P");
            }
            actual.append(
                QStringLiteral("%1 %2 %3").arg(indexName, kind, columns.join(QLatin1Char(','))));
        }
    } else {
        for (const QString& row :
             Rows(db,
                  QStringLiteral(
                      "SELECT i.relname, CASE WHEN x.indisprimary THEN 'P' WHEN x.indisunique "
                      "THEN 'U' ELSE '-' END, string_agg(a.attname, ',' ORDER BY k.n) FROM "
                      "pg_index x JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class t ON "
                      "t.oid = x.indrelid JOIN pg_namespace s ON s.oid = t.relnamespace CROSS "
                      "JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, n) "
                      "JOIN pg_attribute a ON a.attrelid = t.oid AND a.attnum = k.attnum WHERE "
                      "t.relname = ? AND s.nspname = current_schema() GROUP BY i.relname, "
                      "x.indisprimary, x.indisunique"),
                  {table}))
            actual.append(row.split(QLatin1Char('|')).join(QLatin1Char(' ')));
    }
    actual.sort();
    return actual;
}

QStringList RelationCatalogue(Connection& db) {
    QStringList actual;
    if (Sqlite(db)) {
        for (const QString& name : TableNames(db)) {
            const QString sql =
                Rows(db, QStringLiteral("SELECT sql FROM sqlite_master WHERE name = ?"), {name})
                    .value(0);
            for (const QString& row :
                 Rows(db,
                      QStringLiteral("SELECT \"table\", \"from\", \"to\", on_update, "
                                     "on_delete FROM pragma_foreign_key_list(?)"),
                      {name})) {
                const QStringList f = row.split(QLatin1Char('|'));
                EXPECT_EQ(f[3], QStringLiteral("CASCADE")) << row.toStdString();
                EXPECT_EQ(f[4], QStringLiteral("CASCADE")) << row.toStdString();
                // The relation's name lives in the table's statement only.
                const qsizetype at = sql.indexOf(
                    QStringLiteral("FOREIGN KEY (\"%1\") REFERENCES \"%2\"").arg(f[1], f[0]));
                EXPECT_GT(at, 0) << sql.toStdString();
                if (at <= 0)
                    continue;
                const qsizetype open = sql.lastIndexOf(QLatin1String("CONSTRAINT \""), at);
                const QString relation = sql.mid(open + 12, at - open - 14);
                actual.append(
                    QStringLiteral("%1 %2.%3 %4.%5").arg(relation, f[0], f[2], name, f[1]));
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
            EXPECT_EQ(f[5], QStringLiteral("CASCADE")) << row.toStdString();
            EXPECT_EQ(f[6], QStringLiteral("CASCADE")) << row.toStdString();
            actual.append(QStringLiteral("%1 %2.%3 %4.%5").arg(f[0], f[1], f[2], f[3], f[4]));
        }
    }
    actual.sort();
    return actual;
}

} // namespace testutil
