#pragma once

#include "common/PostgresServer.h"
#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantList>
#include <gtest/gtest.h>

#include <memory>

// What a database's own catalogue says about its tables, in one text form for SQLite and
// PostgreSQL, so that tests compare a database with what it must be or with another one; and the
// fixture that runs a test on each engine.
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

// Each test runs on an SQLite file and on a PostgreSQL server the suite starts for itself.
class EachEngineTest : public ::testing::TestWithParam<util::sql::Dialect> {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite() { s_server.reset(); }

    bool Sqlite() const { return GetParam() == util::sql::Dialect::Sqlite; }
    // Where a new empty database of this name goes: a file in the test's folder, or a database
    // made on the server. "" (and the test failed) when the server has none.
    QString NewLocation(const QString& name);

    static inline std::unique_ptr<PostgresServer> s_server;
    static inline bool s_serverStarted = false;
    QTemporaryDir m_dir;
};

std::string EngineName(const ::testing::TestParamInfo<util::sql::Dialect>& info);
inline const auto kEngines =
    ::testing::Values(util::sql::Dialect::Sqlite, util::sql::Dialect::PostgreSql);

} // namespace testutil
