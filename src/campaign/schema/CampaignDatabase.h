#pragma once

#include "campaign/schema/CampaignSchema.h"
#include "util/Outcome.h"
#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>

#include <functional>

// Creating the tables of a campaign database, in an SQLite file or on a PostgreSQL server.
//
// How the schema is carried onto the engines:
// - Long, Integer and Yes/No are integers on SQLite; on a server they are INTEGER, SMALLINT and
//   BOOLEAN, a Yes/No being NOT NULL DEFAULT FALSE there (a default, so that a column added to a
//   table that has rows can be NOT NULL). Dates are OLE dates (REAL) on SQLite and TIMESTAMP on a
//   server. Text(n) is TEXT with a length check on SQLite and VARCHAR(n) on a server; Memo is TEXT.
// - SQLite tables are STRICT, so a value of the wrong type is refused as it would be by a typed
//   engine, and those with a primary key are WITHOUT ROWID, so that the key is never filled in by
//   the engine and refuses NULL.
// - A text column that does not allow zero length carries CHECK (column <> ''): an empty text is
//   refused, NULL is not.
// - An index that disallows nulls makes its columns NOT NULL.
// - Relations cascade on update and delete. SQLite enforces them only on a connection that asked
//   for it: call EnableForeignKeys on every connection that writes.
namespace campaign {

// Turns the checking of relations on for this connection (SQLite asks it per connection; a
// server always checks). Must be called outside a transaction.
util::Outcome EnableForeignKeys(util::sql::Connection& db);

// The statements that create the schema's tables, indexes and relations in the connection's
// dialect, in order. The schema's names are taken as checked by CreateDatabase.
QStringList CreateStatements(const Schema& schema, const util::sql::Connection& db);

// The pieces the statements are built from, shared with the migrations of older databases.
QString ColumnTypeName(const Column& column, const util::sql::Connection& db);
// A column's definition in CREATE TABLE or ADD COLUMN; `table` tells whether an index keeps it
// from being null.
QString ColumnDefinition(const Table& table, const Column& column, const util::sql::Connection& db);
// The checks that refuse an empty text and, on SQLite, a text longer than its size.
QString ZeroLengthCheck(const QString& column, const util::sql::Connection& db);
QString LengthCheck(const QString& column, int size, const util::sql::Connection& db);
QString ForeignKey(const Relation& relation, const util::sql::Connection& db);
// CREATE TABLE, with the relations of which the table is the foreign side on SQLite.
QString CreateTableStatement(const Schema& schema, const Table& table,
                             const util::sql::Connection& db);
QString CreateIndexStatement(const Table& table, const Index& index,
                             const util::sql::Connection& db);
// The table and its indexes other than the primary key.
QStringList TableStatements(const Schema& schema, const Table& table,
                            const util::sql::Connection& db);
// A relation added to an existing table, on a server only: SQLite declares it with the table.
QString AddRelationStatement(const Relation& relation, const util::sql::Connection& db);

// Creates the schema on an open connection in one transaction, replacing the schema's tables
// where they exist: on failure the database is as it was. A schema that names a missing table or
// column, or a table twice, is refused before anything is changed.
util::Outcome CreateDatabase(util::sql::Connection& db, const Schema& schema = CampaignSchema());

// Builds a database file to replace `location` under a name of its own beside it, starting from a
// copy of `copyOf` when one is given, lets `build` fill it (closing what it opened), and renames
// it over `location` only when all went well: on failure nothing is left beside `location`, and
// what was there stays.
util::Outcome
ReplaceDatabaseFile(const QString& location, const QString& copyOf,
                    const std::function<util::Outcome(const QString& building)>& build);

// Creates a new campaign database at `location`: a file, which is built beside it and renamed
// over any file there, so that a failure leaves the old file; or a postgresql:// URI.
util::Outcome CreateDatabase(const QString& location, const Schema& schema = CampaignSchema());

} // namespace campaign
