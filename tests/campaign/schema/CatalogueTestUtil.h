#pragma once

#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

// What a database's own catalogue says about its tables, in one text form for SQLite and
// PostgreSQL, so that tests compare a database with what it must be or with another one.
namespace testutil {

// Every row of a query, its values joined by '|'.
QStringList Rows(util::sql::Connection& db, const QString& sql, const QVariantList& values = {});

// The tables in the order they were made.
QStringList TableNames(util::sql::Connection& db);
// "name|engine type|null" or "...|not null" per column, in declaration order.
QStringList ColumnCatalogue(util::sql::Connection& db, const QString& table);
// "<table>_<index> P|U|- column,column", sorted; "P" is the primary key.
QStringList IndexCatalogue(util::sql::Connection& db, const QString& table);
// "relation primary.column foreign.column", sorted, over every table; every relation must
// cascade on update and delete.
QStringList RelationCatalogue(util::sql::Connection& db);

} // namespace testutil
