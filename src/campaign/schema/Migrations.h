#pragma once

#include "campaign/schema/CampaignSchema.h"
#include "util/Outcome.h"
#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <compare>
#include <vector>

// Bringing a campaign database written by an older version of the program up to the current
// schema, step by step, on SQLite and PostgreSQL.
namespace campaign {

// A schema version: major, minor, build, revision, compared as numbers in that order.
struct Version {
    std::array<quint32, 4> parts{};

    auto operator<=>(const Version&) const = default;
    // "5.6.1.0"
    QString ToText() const;
};

struct ParsedVersion {
    Version version;
    bool found = false; // at least one number was read
};

// Up to four unsigned 32-bit numbers separated by "." or, when the text holds no ".", by ",".
// Missing numbers count as 0, so do the ones from the first part that is not a number on; an
// empty text is 0.0.0.0 with nothing found.
ParsedVersion ParseVersion(const QString& text);

// True when `a` comes before `b`; a version is not older than itself.
bool IsOlder(const Version& a, const Version& b);
// Every schema version the program has known, oldest first; the last is the current one.
const QStringList& KnownVersions();
Version CurrentVersion();
bool IsOlderThanCurrent(const Version& version);

// One change a migration step makes. The columns, tables and indexes it adds are the ones of the
// current schema, so that a migrated database is declared as a new one is.
struct SchemaChange {
    enum class Kind {
        AddColumn,       // skipped, with its fill, when the column exists
        AllowZeroLength, // nothing to do when the column already accepts "" or does not exist
        AlterColumn,     // to `type` and `size`
        CreateIndex,     // skipped when the index exists
        CreateTable,     // with its indexes and relations; skipped when the table exists
    };
    Kind kind;
    QString table;
    QString name; // the column or index
    // AddColumn: what the existing rows get (a bool for Yes/No); null for nothing.
    QVariant fill;
    // AlterColumn: the declaration after the change, and the one older files have.
    int type = kLong;
    int size = 0;
    int previousType = kLong;
    int previousSize = 0;
};

struct MigrationStep {
    QString threshold; // run for a database older than this version
    QString name;      // named in the report of its failure
    std::vector<SchemaChange> changes;
};

// Every step in the order it runs.
const std::vector<MigrationStep>& MigrationSteps();
// The steps a database at `from` needs, in order.
std::vector<const MigrationStep*> PlannedSteps(const Version& from);

// The schema as the program of `version` created it: the current one without what the later
// steps add and with the declarations they change as they were.
Schema SchemaAt(const Version& version);

// Runs every step a database at the version `fromVersionText` needs, in order, each in its own
// transaction. The first failing step ends the migration with "ADO error <step> - <reason> -
// <detail>"; the steps before it stay applied and the rest are not run. Steps can run again, so
// that a database whose migration failed is migrated from the same version text next time.
// "Campaigns"."VersionNumber" is left alone: the campaign's version is raised in memory and
// written with the campaign row. Must be called outside a transaction: SQLite rebuilds a table
// to change a column's declaration, with relations unchecked while it does.
util::Outcome MigrateDatabase(util::sql::Connection& db, const QString& fromVersionText);

} // namespace campaign
