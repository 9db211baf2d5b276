#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

// The tables of a questionnaire database (.qes), format 1. See docs/formats.md.
namespace questionnaire::qes {

inline constexpr int kFormatVersion = 1;

// Statements creating every table of a new file, in order.
const QStringList& CreateStatements();

// Checks that the database holds our tables with the expected columns and column types, and a
// format we can read. On failure `status` is one of the QesStatus codes and `error` says why.
bool CheckSchema(QSqlDatabase& db, quint16& status, QString& error);

// Opens a connection of its own to the file; the name is unique per call.
QSqlDatabase OpenConnection(const QString& path, bool readOnly, QString& error);
// Closes and forgets a connection opened by OpenConnection.
void CloseConnection(QSqlDatabase& db);

} // namespace questionnaire::qes
