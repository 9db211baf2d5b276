#pragma once

#include "util/SqlConnection.h"

#include <QString>
#include <QStringList>

#include <vector>

// The tables of a campaign database as data: what creating a database, checking one and the
// migrations of older files are all made from.
namespace campaign {

// The codes a column is declared with. Any code not listed is a Long.
enum TypeCode : int {
    kYesNo = 1,
    kInteger = 3, // 16-bit
    kLong = 4,
    kDouble = 7,
    kDateTime = 8,
    kText = 10, // with a size
    kOleObject = 11,
    kMemo = 12,
    kGuid = 15,
    kBinary = 17,
};

// The kind of column a code stands for; unknown codes, 0 among them, give a Long.
util::sql::ColumnType ColumnTypeOf(int code);
bool IsTextCode(int code);

struct Column {
    QString name;
    int type = kLong;
    int size = 0; // characters, for Text only
    // Off: an empty text is refused (a null is not).
    bool allowZeroLength = false;
};

// How an index treats nulls in its columns; every index of the schema disallows them.
enum class IndexNulls { Allow = 0, Disallow = 1, Ignore = 2, IgnoreAny = 4 };

struct Index {
    QString name;        // unique within its table only
    QStringList columns; // as the index names them, which may differ in case from the column
    bool primary = false;
    bool unique = false;
    bool clustered = false;
    IndexNulls nulls = IndexNulls::Disallow;
};

enum class Rule { None = 0, Cascade = 1 };

struct Relation {
    QString name;
    QString primaryTable;
    QString primaryColumn;
    QString foreignTable;
    QString foreignColumn;
    Rule updateRule = Rule::Cascade;
    Rule deleteRule = Rule::Cascade;
};

struct Table {
    QString name;
    std::vector<Column> columns;
    std::vector<Index> indexes;

    // Column names are matched without regard to case, as the engines match them.
    const Column* FindColumn(const QString& name) const;
    // The declared name of a column named in any case; empty when there is none.
    QString ResolveColumn(const QString& name) const;
    // True when a column is in an index that disallows nulls.
    bool IsIndexedWithoutNulls(const QString& column) const;
};

struct Schema {
    QString version;
    std::vector<Table> tables;       // in the order they are created
    std::vector<Relation> relations; // added after every table exists, in this order

    const Table* FindTable(const QString& name) const;
};

// The schema written by this program, version "5.6.1.0".
const Schema& CampaignSchema();

// The engines name indexes and constraints per database, not per table, so that several tables'
// "PrimaryKey" would clash: in the database an index is named "<table>_<index>".
QString DatabaseIndexName(const Table& table, const Index& index);

// Whether a column may hold NULL. Columns are nullable except those in an index that disallows
// nulls and, on a server, Yes/No columns.
bool IsNullable(const Table& table, const Column& column, util::sql::Dialect dialect);

} // namespace campaign
