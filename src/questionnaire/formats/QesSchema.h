#pragma once

#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>

// The tables of a questionnaire database (.qes), format 1. See docs/formats.md.
namespace questionnaire::qes {

inline constexpr int kFormatVersion = 1;

// Statements creating every table of a new file, in order.
const QStringList& CreateStatements();

// Checks that the database holds our tables with the expected columns and column types, and a
// format we can read. On failure `status` is one of the QesStatus codes and the outcome says why.
util::Outcome CheckSchema(util::sql::Connection& db, quint16& status);

} // namespace questionnaire::qes
