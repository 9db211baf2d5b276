#include "campaign/schema/CampaignDatabase.h"
#include "CatalogueTestUtil.h"
#include "campaign/schema/Migrations.h"
#include "common/TestUtil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;
using campaign::CreateDatabase;
using campaign::MigrateDatabase;
using campaign::ParseVersion;
using campaign::Version;
using testutil::Rows;
using util::sql::ColumnType;
using util::sql::Connection;
using util::sql::Dialect;

namespace {

// One entry a line, so that a failed comparison shows what differs.
std::string Lines(const QStringList& entries) {
    return entries.join(u'\n').toStdString();
}

QStringList Split(const char* text, char separator) {
    return QString::fromLatin1(text).split(QLatin1Char(separator), Qt::SkipEmptyParts);
}

// The schema as it must come out of the engine, written out independently of the library's
// description. Columns "name type", types: L long, I 16-bit, B yes/no, F double, D date, M memo,
// Tn text of n. Indexes "name kind columns...", kind P primary, U unique, - plain.
struct ExpectedTable {
    const char* name;
    const char* columns; // separated by ','
    const char* indexes; // separated by ';'
};

const ExpectedTable kExpected[] = {
    {"Campaigns", "Name T50,Description M,VersionNumber T50", ""},
    {"Waves", "WaveID L,WaveOrder L,Name T50,Description M,WaveStart D,WaveEnd D,WaveMidpoint D",
     "PrimaryKey P WaveID;IndexWaveOrder U WaveOrder"},
    {"Volumes",
     "VolumeID L,Name T50,WaveID L,InheritsFromVolumeID L,SourceType L,MetaData M,CaseData M,"
     "IsMatchingStrict B,QuestionMatchingMethods T255,ResponseMatchingMethods T255,IsMainVolume B,"
     "InterviewMergeMethod L,MainVolumeLinkQuestionID L,ThisVolumeLinkQuestionID T50,Status L,"
     "CaseSensitiveMatching B,MatchUsingAncestorValues B,AddNoNewQuestions B,"
     "ReconciliationSourceQuestionIDs M",
     "PrimaryKey P VolumeID;Index1 - WaveID"},
    {"Questions",
     "QuestionID L,IsDeleted B,Order L,Shortcut T50,Indent L,ElementType L,QuestionType L,"
     "IsDontKnow B,IsSemiOpen B,IsScale B,IsMultiple B,IsRanked B,MaxResponseCount L,Decimals L,"
     "MinValue F,MaxValue F,IsLevelLink B,LinkQuestionID L,IsProbabilityQuestion B,DateType L,"
     "QuestionClassID L,Versions M,UserData M,IsDevelopLevels B,AppearanceVolumeID L,"
     "DeletionWaveID L,IsVisibleInAnalyse B,Tags M",
     "PrimaryKey P QuestionID;Index1 - QuestionClassID;Index2 - Order"},
    {"QuestionMatchings", "QuestionID L,VolumeID L,SourceID T50,StartVolumeID L,EndVolumeID L",
     "PrimaryKey P QuestionID VolumeID"},
    {"QuestionClasses", "QuestionClassID L,Caption T255", "PrimaryKey P QuestionClassID"},
    {"QuestionCaptions", "QuestionID L,LanguageID L,LongCaption M,ShortCaption M",
     "PrimaryKey P QuestionID LanguageID;Index1 - QuestionID"},
    {"Modalities",
     "ModalityID L,QuestionID L,IsDeleted B,ModalityOrder L,Value F,EntryCode T255,"
     "IsExclusive B,RotationBehaviour L,Versions M,UserData M,AppearanceVolumeID L,"
     "DeletionWaveID L,BaseType I,Tags M",
     "PrimaryKey P ModalityID;Index1 - QuestionID ModalityOrder"},
    {"ModalityMatchings",
     "ModalityID L,QuestionID L,VolumeID L,ModalitySourceID T50,StartVolumeID L,EndVolumeID L",
     "PrimaryKey P ModalityID QuestionID VolumeID"},
    {"ModalityCaptions", "ModalityID L,QuestionID L,LanguageID L,ShortCaption M",
     "PrimaryKey P ModalityID LanguageID;Index1 - ModalityID"},
    {"Languages", "LanguageID L,IsDefault B,LanguageName T255", "PrimaryKey P LanguageID"},
    {"Versions", "VersionID L,LongCaption M,ShortCaption T255", "PrimaryKey P VersionID"},
    {"ModalityMergings", "MasterModalityID L,ChildModalityID L,MergeVolumeID L",
     "PrimaryKey P MasterModalityID ChildModalityID"},
    // The database shows the key column as declared.
    {"Tags", "TagId L,Caption T255,Description M", "PrimaryKey P TagId"},
};

QString EngineType(const QString& code, Dialect dialect) {
    static const std::map<char, std::pair<const char*, const char*>> types = {
        {'L', {"INTEGER", "integer"}},
        {'I', {"INTEGER", "smallint"}},
        {'B', {"INTEGER", "boolean"}},
        {'F', {"REAL", "double precision"}},
        {'D', {"REAL", "timestamp without time zone"}},
        {'M', {"TEXT", "text"}},
        {'T', {"TEXT", "character varying(%1)"}},
    };
    const auto& [file, server] = types.at(code.at(0).toLatin1());
    return dialect == Dialect::Sqlite ? QString::fromLatin1(file)
                                      : QString::fromLatin1(server).replace("%1"_L1, code.mid(1));
}

QString Value(Connection& db, const QString& sql) {
    return Rows(db, sql).value(0);
}
QString Value(Connection& db, const char* sql) {
    return Value(db, QLatin1String(sql));
}
int Count(Connection& db, const QString& table) {
    return Value(db, u"SELECT COUNT(*) FROM %1"_s.arg(db.Quote(table))).toInt();
}

// `columns` separated by spaces, names as the engine spells them; a failure is returned rather
// than reported.
util::Outcome Insert(Connection& db, const QString& table, const QString& columns,
                     const QVariantList& values) {
    QStringList quoted;
    for (const QString& column : columns.split(u' ', Qt::SkipEmptyParts))
        quoted.append(db.Quote(column));
    QSqlQuery query(db.Database());
    query.prepare(u"INSERT INTO %1 (%2) VALUES (%3)"_s.arg(
        db.Quote(table), quoted.join(u','), QStringList(values.size(), u"?"_s).join(u',')));
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    return query.exec() ? util::Outcome() : util::Outcome::Failure(query.lastError().text());
}

void Exec(Connection& db, const QString& sql) {
    const util::Outcome done = db.Exec(sql);
    ASSERT_TRUE(done) << sql.toStdString() << ": " << done.Reason().toStdString();
}

// A wave and two volumes; in volume 1 question 10 with a caption and a matching and response 100
// with a caption, a matching and a merging into response 200 of question 20 in volume 2. Every
// version's tables take these rows.
const char* const kCampaignRows[] = {
    R"(INSERT INTO "Waves" ("WaveID", "WaveOrder") VALUES (1, 1))",
    R"(INSERT INTO "Volumes" ("VolumeID", "WaveID", "CaseData") VALUES (1, 1, 'cases'), )"
    R"((2, 1, NULL))",
    R"(INSERT INTO "Questions" ("QuestionID", "Order", "QuestionClassID", )"
    R"("AppearanceVolumeID", "Versions") VALUES (10, 1, 0, 1, 'v1'), (20, 2, 0, 2, NULL))",
    R"(INSERT INTO "QuestionCaptions" ("QuestionID", "LanguageID", "LongCaption", )"
    R"("ShortCaption") VALUES (10, 1033, 'Long', 'Short'), (20, 1033, NULL, NULL))",
    R"(INSERT INTO "QuestionMatchings" ("QuestionID", "VolumeID") VALUES (10, 1), (20, 2))",
    R"(INSERT INTO "Modalities" ("ModalityID", "QuestionID", "ModalityOrder", )"
    R"("AppearanceVolumeID") VALUES (100, 10, 1, 1), (200, 20, 1, 2))",
    R"(INSERT INTO "ModalityCaptions" ("ModalityID", "LanguageID") VALUES (100, 1033), )"
    R"((200, 1033))",
    R"(INSERT INTO "ModalityMatchings" ("ModalityID", "QuestionID", "VolumeID") VALUES )"
    R"((100, 10, 1), (200, 20, 2))",
    R"(INSERT INTO "ModalityMergings" ("MasterModalityID", "ChildModalityID", )"
    R"("MergeVolumeID") VALUES (200, 100, 2))",
    R"(INSERT INTO "Versions" ("VersionID", "ShortCaption") VALUES (1, 'v1'))",
};
void InsertCampaign(Connection& db) {
    for (const char* sql : kCampaignRows)
        Exec(db, QLatin1String(sql));
}

// The texts a new database lets be empty.
const QStringList kEmptyAllowed =
    Split("Campaigns.VersionNumber Waves.Name Volumes.Name Volumes.MetaData Volumes.CaseData "
          "Volumes.QuestionMatchingMethods Volumes.ResponseMatchingMethods Questions.Shortcut "
          "QuestionMatchings.SourceID QuestionClasses.Caption ModalityMatchings.ModalitySourceID "
          "ModalityCaptions.ShortCaption Languages.LanguageName Versions.LongCaption "
          "Versions.ShortCaption Tags.Caption",
          ' ');

// Every text column, in a row its table accepts otherwise (the first column is the key, the parents
// are InsertCampaign's): null is never refused, the empty text only where kEmptyAllowed or
// `alsoEmpty` allows it, a text of its full size always and one character more never; memos take
// any size.
void ExpectTextRules(Connection& db, const QStringList& alsoEmpty = {}) {
    const std::map<QString, std::pair<QString, QVariantList>> rows = {
        {"Campaigns", {"", {}}},
        {"Waves", {"WaveID WaveOrder", {7, 7}}},
        {"Volumes", {"VolumeID WaveID", {7, 1}}},
        {"Questions", {"QuestionID Order QuestionClassID", {7, 7, 0}}},
        {"QuestionMatchings", {"QuestionID VolumeID", {7, 1}}},
        {"QuestionClasses", {"QuestionClassID", {7}}},
        {"QuestionCaptions", {"LanguageID QuestionID", {7, 10}}},
        {"Modalities", {"ModalityID QuestionID ModalityOrder", {7, 10, 7}}},
        {"ModalityMatchings", {"ModalityID QuestionID VolumeID", {7, 10, 1}}},
        {"ModalityCaptions", {"LanguageID ModalityID", {7, 100}}},
        {"Languages", {"LanguageID", {7}}},
        {"Versions", {"VersionID", {7}}},
        {"Tags", {"TagId", {7}}}};
    int texts = 0;
    for (const ExpectedTable& table : kExpected) {
        const QString name = QLatin1String(table.name);
        for (const QString& column : Split(table.columns, ',')) {
            const QStringList parts = column.split(u' ');
            if (!parts[1].startsWith(u'T') && parts[1] != "M"_L1)
                continue;
            ++texts;
            const auto& [columns, values] = rows.at(name);
            const QString named = name + u'.' + parts[0];
            const int size = parts[1].mid(1).toInt();
            const struct {
                QVariant text;
                bool accepted;
            } tries[] = {
                {QVariant(), true},
                {QString(""_L1), kEmptyAllowed.contains(named) || alsoEmpty.contains(named)},
                {QString(size ? size : 300, u'x'), true},
                {QString(size + 1, u'x'), size == 0},
            };
            for (const auto& t : tries) {
                const bool inserted = bool(
                    Insert(db, name, columns + u' ' + parts[0], QVariantList(values) << t.text));
                EXPECT_EQ(inserted, t.accepted)
                    << named.toStdString() << " with "
                    << (t.text.isNull() ? -1 : t.text.toString().size()) << " characters";
                if (inserted) // every key is 7: free it for the next case
                    Exec(db, u"DELETE FROM %1 WHERE %2"_s.arg(
                                 db.Quote(name),
                                 values.isEmpty() ? u"1 = 1"_s
                                                  : db.Quote(columns.section(' ', 0, 0)) + " = 7"));
            }
        }
    }
    EXPECT_EQ(texts, 31);
}

// Tables, columns (in any order: added columns come last), indexes and relations as the engine's
// catalogue has them.
std::string Catalogue(Connection& db) {
    QStringList tables = testutil::TableNames(db);
    tables.sort();
    QStringList catalogue = tables;
    for (const QString& table : tables) {
        QStringList columns = testutil::ColumnCatalogue(db, table);
        columns.sort();
        for (const QString& column : columns)
            catalogue.append(table + u'.' + column);
        catalogue += testutil::IndexCatalogue(db, table);
    }
    return Lines(catalogue + testutil::RelationCatalogue(db));
}

// The reason names the failing step, then gives the database's.
void ExpectFailedIn(const util::Outcome& failed, const char* step) {
    const QString prefix = u"ADO error %1 - "_s.arg(QLatin1String(step));
    EXPECT_FALSE(failed) << step;
    EXPECT_TRUE(failed.Reason().startsWith(prefix)) << failed.Reason().toStdString();
    EXPECT_GT(failed.Reason().size(), prefix.size() + 5) << failed.Reason().toStdString();
}

// The campaign's tables and one more with a column declared twice: the last table fails, after
// every other table was made. (SQLite would take a quoted missing column for a string.)
campaign::Schema BrokenSchema() {
    campaign::Schema broken = campaign::CampaignSchema();
    broken.tables.push_back(
        {u"Broken"_s,
         {{u"Id"_s, campaign::kLong, 0, false}, {u"Id"_s, campaign::kLong, 0, false}},
         {}});
    return broken;
}

// Every test runs on an SQLite file and on a PostgreSQL server of its own.
class DatabaseTest : public testutil::EachEngineTest {
protected:
    // A database of its own made with `schema`, open in `db` with relations checked.
    void Make(Connection& db, const campaign::Schema& schema, QString* location = nullptr) {
        const QString made = NewLocation(u"campaign%1"_s.arg(++m_count));
        ASSERT_FALSE(made.isEmpty());
        const util::Outcome created = CreateDatabase(made, schema);
        ASSERT_TRUE(created) << created.Reason().toStdString();
        const util::Outcome opened = db.Open(made);
        ASSERT_TRUE(opened) << opened.Reason().toStdString();
        ASSERT_EQ(db.GetDialect(), GetParam());
        ASSERT_TRUE(campaign::EnableForeignKeys(db));
        if (location)
            *location = made;
    }

    QString Bool(bool value) const {
        return Sqlite() ? QString::number(int(value)) : QVariant(value).toString();
    }

    int m_count = 0;
};

// --- a database made with the current schema ---

class CampaignDatabaseTest : public DatabaseTest {
protected:
    void SetUp() override { Make(m_db, campaign::CampaignSchema(), &m_location); }

    QString m_location;
    Connection m_db;
};

TEST_P(CampaignDatabaseTest, CatalogueHoldsEveryTableColumnIndexAndRelation) {
    QStringList tables;
    for (const ExpectedTable& table : kExpected) {
        tables.append(QLatin1String(table.name));
        QStringList indexed;
        QStringList indexes;
        for (const QString& index : Split(table.indexes, ';')) {
            const QStringList parts = index.split(u' ');
            indexed += parts.mid(2);
            indexes.append(
                u"%1_%2 %3 %4"_s.arg(tables.last(), parts[0], parts[1], parts.mid(2).join(u',')));
        }
        indexes.sort();
        // Columns of an index refuse nulls, and on a server so do Yes/No columns.
        QStringList columns;
        for (const QString& column : Split(table.columns, ',')) {
            const QStringList parts = column.split(u' ');
            const bool notNull = indexed.contains(parts[0], Qt::CaseInsensitive) ||
                                 (!Sqlite() && parts[1] == "B"_L1);
            columns.append(u"%1|%2|%3"_s.arg(parts[0], EngineType(parts[1], GetParam()),
                                             notNull ? "not null" : "null"));
        }
        EXPECT_EQ(Lines(testutil::ColumnCatalogue(m_db, tables.last())), Lines(columns))
            << table.name;
        EXPECT_EQ(Lines(testutil::IndexCatalogue(m_db, tables.last())), Lines(indexes))
            << table.name;
    }
    EXPECT_EQ(Lines(testutil::TableNames(m_db)), Lines(tables));
    // Every relation cascades on update and delete.
    QStringList relations = {
        "Modalities_ModalityMergingsChild Modalities.ModalityID ModalityMergings.ChildModalityID",
        "Modalities_ModalityMergingsMaster Modalities.ModalityID ModalityMergings.MasterModalityID",
        "Modalities_Modality_Captions Modalities.ModalityID ModalityCaptions.ModalityID",
        "Questions_Question_Captions Questions.QuestionID QuestionCaptions.QuestionID",
        "Volumes_ModalityMergings Volumes.VolumeID ModalityMergings.MergeVolumeID",
        "Volumes_Modalities Volumes.VolumeID Modalities.AppearanceVolumeID",
        "Volumes_Modality_Matchings Volumes.VolumeID ModalityMatchings.VolumeID",
        "Volumes_Question_Matchings Volumes.VolumeID QuestionMatchings.VolumeID",
        "Volumes_Questions Volumes.VolumeID Questions.AppearanceVolumeID",
        "Waves_Volumes Waves.WaveID Volumes.WaveID"};
    relations.sort();
    EXPECT_EQ(Lines(testutil::RelationCatalogue(m_db)), Lines(relations));
}

// A failed making of the tables leaves them; rows that break the schema are refused; changed keys
// and deletions cascade; made again, the tables are empty.
TEST_P(CampaignDatabaseTest, RefusesWhatBreaksTheSchemaCascadesAndIsMadeAgainEmpty) {
    InsertCampaign(m_db);
    // Every table was dropped and made again before the last statement failed; the failure is
    // told under the name of the table's step.
    ExpectFailedIn(CreateDatabase(m_db, BrokenSchema()), "CBrokenRSAdo::CreateTable");
    EXPECT_FALSE(m_db.HasTable(u"Broken"_s));
    EXPECT_EQ(Count(m_db, u"Modalities"_s), 2);
    EXPECT_EQ(Count(m_db, u"ModalityMergings"_s), 1);
    // Schemas that name what is not there are refused before anything is touched.
    const struct {
        std::function<void(campaign::Schema&)> change;
        const char* named;
    } schemas[] = {
        {[](auto& s) { s.tables[1].indexes[1].columns = QStringList{"WaveRank"}; }, "WaveRank"},
        {[](auto& s) { s.relations.back().primaryTable = u"Volume"_s; }, "Volume"},
        {[](auto& s) { s.relations.front().foreignColumn = u"Wave"_s; }, "Wave"},
        {[](auto& s) {
             s.tables.push_back(s.tables.front());
             s.tables.back().name = u"CAMPAIGNS"_s;
         },
         "CAMPAIGNS"},
    };
    for (const auto& c : schemas) {
        campaign::Schema schema = campaign::CampaignSchema();
        c.change(schema);
        const util::Outcome refused = CreateDatabase(m_db, schema);
        EXPECT_FALSE(refused) << c.named;
        EXPECT_TRUE(refused.Reason().contains(QLatin1String(c.named)))
            << refused.Reason().toStdString();
        EXPECT_EQ(Count(m_db, u"Volumes"_s), 2) << c.named;
    }

    const struct {
        const char* why;
        const char* table;
        const char* columns;
        QVariantList values;
    } cases[] = {
        {"volume of no wave", "Volumes", "VolumeID WaveID", {3, 9}},
        {"caption of no question", "QuestionCaptions", "QuestionID LanguageID", {99, 1033}},
        {"merging of no child", "ModalityMergings", "MasterModalityID ChildModalityID", {100, 9}},
        {"second wave in one place", "Waves", "WaveID WaveOrder", {2, 1}},
        {"second caption in one language", "QuestionCaptions", "QuestionID LanguageID", {10, 1033}},
        {"key left empty", "Languages", "IsDefault", {false}},
        {"indexed column left empty", "Volumes", "VolumeID", {3}},
    };
    for (const auto& c : cases)
        EXPECT_FALSE(Insert(m_db, QLatin1String(c.table), QLatin1String(c.columns), c.values))
            << c.why;
    // The tag key answers to the name its index gives it.
    const QString tagId =
        campaign::CampaignSchema().FindTable(u"Tags"_s)->ResolveColumn(u"TagID"_s);
    ASSERT_TRUE(Insert(m_db, u"Tags"_s, tagId, {7}));
    EXPECT_FALSE(Insert(m_db, u"Tags"_s, tagId, {7}));
    Exec(m_db, uR"(DELETE FROM "Tags")"_s);

    ExpectTextRules(m_db);

    // On a server a Yes/No column is never null; a file keeps what was written, here nothing.
    EXPECT_EQ(Value(m_db, R"(SELECT "IsMainVolume" IS NULL, "IsMainVolume" FROM "Volumes" WHERE )"
                          R"("VolumeID" = 1)"),
              Sqlite() ? u"1|"_s : u"false|false"_s);
    Exec(m_db, uR"(UPDATE "Volumes" SET "VolumeID" = 5 WHERE "VolumeID" = 2)"_s);
    Exec(m_db, uR"(UPDATE "Modalities" SET "ModalityID" = 101 WHERE "ModalityID" = 100)"_s);
    EXPECT_EQ(Value(m_db,
                    R"(SELECT "MasterModalityID", "ChildModalityID", "MergeVolumeID", )"
                    R"((SELECT "AppearanceVolumeID" FROM "Questions" WHERE "QuestionID" = 20) )"
                    R"(FROM "ModalityMergings")"),
              u"200|101|5|5"_s);
    EXPECT_EQ(Rows(m_db, uR"(SELECT "ModalityID" FROM "ModalityCaptions" ORDER BY 1)"_s),
              (QStringList{u"101"_s, u"200"_s}));

    Exec(m_db, uR"(DELETE FROM "Volumes" WHERE "VolumeID" = 1)"_s);
    // What is left is volume 5's, by each table's first column.
    for (const char* left :
         {"Volumes 5", "Questions 20", "QuestionCaptions 20", "QuestionMatchings 20",
          "Modalities 200", "ModalityCaptions 200", "ModalityMatchings 200", "ModalityMergings"}) {
        const QStringList c = QString::fromLatin1(left).split(u' ');
        const campaign::Table* table = campaign::CampaignSchema().FindTable(c[0]);
        ASSERT_NE(table, nullptr) << left;
        const QString key = m_db.Quote(table->columns[0].name);
        EXPECT_EQ(Rows(m_db, u"SELECT %1 FROM %2"_s.arg(key, m_db.Quote(table->name))).join(u','),
                  c.value(1))
            << left;
    }

    m_db.Close();
    const util::Outcome created = CreateDatabase(m_location);
    ASSERT_TRUE(created) << created.Reason().toStdString();
    ASSERT_TRUE(m_db.Open(m_location));
    for (const ExpectedTable& table : kExpected)
        EXPECT_EQ(Count(m_db, QLatin1String(table.name)), 0) << table.name;
}

// --- the schema as data ---

TEST(CampaignSchema, TypeCodesMapToColumnKinds) {
    const struct {
        int code;
        ColumnType type;
    } cases[] = {
        {1, ColumnType::Boolean}, {3, ColumnType::Integer},  {4, ColumnType::Integer},
        {7, ColumnType::Real},    {8, ColumnType::DateTime}, {10, ColumnType::Text},
        {11, ColumnType::Blob},   {12, ColumnType::Text},    {15, ColumnType::Text},
        {17, ColumnType::Blob},   {0, ColumnType::Integer},  {2, ColumnType::Integer},
        {9, ColumnType::Integer}, {99, ColumnType::Integer}, {-1, ColumnType::Integer},
    };
    for (const auto& c : cases)
        EXPECT_EQ(campaign::ColumnTypeOf(c.code), c.type) << "code " << c.code;
}

TEST(CampaignSchema, NamesAreFoundWithoutRegardToCase) {
    const campaign::Table* tags = campaign::CampaignSchema().FindTable(u"tags"_s);
    ASSERT_NE(tags, nullptr);
    EXPECT_EQ(tags->name, u"Tags"_s);
    // The key is declared "TagId" and its index says "TagID".
    EXPECT_EQ(tags->ResolveColumn(u"TagID"_s), u"TagId"_s);
    EXPECT_TRUE(tags->ResolveColumn(u"Tag"_s).isEmpty());
    EXPECT_EQ(campaign::CampaignSchema().FindTable(u"Tag"_s), nullptr);
}

// --- version texts and the steps they plan ---

Version V(quint32 a, quint32 b, quint32 c, quint32 d) {
    return Version{{a, b, c, d}};
}

TEST(SchemaVersion, ParsesDotsOrCommas) {
    // Reading stops at the first part that is not a number; with a dot in the text, commas do
    // not separate.
    const struct {
        const char* text;
        Version version;
        bool found;
    } cases[] = {
        {"5.6.1.0", V(5, 6, 1, 0), true},   {"5,6,1,0", V(5, 6, 1, 0), true},
        {"5,2,0,0", V(5, 2, 0, 0), true},   {"5.4.10.0", V(5, 4, 10, 0), true},
        {"5.6", V(5, 6, 0, 0), true},       {" 5 . 3 ", V(5, 3, 0, 0), true},
        {"1.2.3.4.5", V(1, 2, 3, 4), true}, {"4294967295.0.0.1", V(4294967295u, 0, 0, 1), true},
        {"5.x.1.0", V(5, 0, 0, 0), true},   {"5.-1.1", V(5, 0, 0, 0), true},
        {"5,6.1.0", V(0, 0, 0, 0), false},  {"4294967296", V(0, 0, 0, 0), false},
        {"", V(0, 0, 0, 0), false},         {"version", V(0, 0, 0, 0), false},
    };
    for (const auto& c : cases) {
        const campaign::ParsedVersion parsed = ParseVersion(QLatin1String(c.text));
        EXPECT_EQ(parsed.version, c.version)
            << c.text << " read as " << parsed.version.ToText().toStdString();
        EXPECT_EQ(parsed.found, c.found) << c.text;
    }
}

TEST(SchemaVersion, ComparesNumberByNumberAndKnownVersionsRiseToTheCurrentOne) {
    const struct {
        const char* a;
        const char* b;
        bool older;
    } cases[] = {
        {"5.4.9.4", "5.4.10.0", true}, {"5.4.10.0", "5.4.9.4", false},
        {"5.6.1.0", "5.6.1.0", false}, {"5,6,1,0", "5.6.1.0", false},
        {"5.3.4.6", "5.3.5.1", true},  {"", "5.1.6.15", true},
        {"5.10", "5.9.9.9", false},    {"4.99.99.99", "5", true},
        {"5.6.0.0", "5.6.0.1", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(campaign::IsOlder(ParseVersion(QLatin1String(c.a)).version,
                                    ParseVersion(QLatin1String(c.b)).version),
                  c.older)
            << c.a << " < " << c.b;
    EXPECT_TRUE(campaign::IsOlderThanCurrent(V(5, 6, 0, 99)));
    EXPECT_FALSE(campaign::IsOlderThanCurrent(V(5, 6, 1, 0)));
    EXPECT_FALSE(campaign::IsOlderThanCurrent(V(5, 7, 0, 0)));

    const QStringList& known = campaign::KnownVersions();
    ASSERT_EQ(known.size(), 77);
    EXPECT_EQ(known.front(), u"5.1.6.15"_s);
    for (qsizetype i = 1; i < known.size(); ++i)
        EXPECT_TRUE(
            campaign::IsOlder(ParseVersion(known[i - 1]).version, ParseVersion(known[i]).version))
            << known[i].toStdString();
    EXPECT_EQ(campaign::CurrentVersion().ToText(), campaign::CampaignSchema().version);
    for (const campaign::MigrationStep& step : campaign::MigrationSteps())
        EXPECT_TRUE(known.contains(step.threshold)) << step.threshold.toStdString();
}

QStringList PlannedNames(const char* from) {
    QStringList names;
    for (const campaign::MigrationStep* step :
         campaign::PlannedSteps(ParseVersion(QLatin1String(from)).version))
        names.append(step->threshold + u' ' + step->name);
    return names;
}

TEST(SchemaVersion, EachThresholdRunsItsStepsForOlderDatabasesOnly) {
    const QStringList all = PlannedNames("");
    EXPECT_EQ(all.size(), static_cast<qsizetype>(campaign::MigrationSteps().size()));
    EXPECT_EQ(all.mid(22), (QStringList{u"5.6.1.0 CSurveyTagsRSAdo::MoveTo5_6_1_0"_s,
                                        u"5.6.1.0 CModalitiesRSAdo::MoveTo5_6_1_0"_s,
                                        u"5.6.1.0 CQuestionCaptionsRSAdo::MoveTo5_6_1_0"_s,
                                        u"5.6.1.0 CVersionsRSAdo::MoveTo5_6_1_0"_s}));
    // How many steps run from each version; they are the last ones of the whole run. Equal is not
    // older: from 5.3.4.6 only the second of the two repairs at 5.3.4.6 and 5.3.5.1 runs.
    const struct {
        const char* from;
        int steps;
    } cases[] = {
        {"", 26},        {"5.1.6.14", 26}, {"5.1.6.15", 25}, {"5,2,0,0", 24},
        {"5.2.3.4", 23}, {"5.2.3.5", 21},  {"5.3.0.0", 20},  {"5.3.2.2", 18},
        {"5.3.4.5", 16}, {"5.3.4.6", 14},  {"5.3.5.1", 12},  {"5.4.10.0", 12},
        {"5.5.2.4", 9},  {"5.6.0.0", 4},   {"5.6.1.0", 0},   {"5.7", 0},
    };
    for (const auto& c : cases) {
        const QStringList planned = PlannedNames(c.from);
        EXPECT_EQ(planned.size(), c.steps) << c.from;
        EXPECT_EQ(planned, all.mid(all.size() - planned.size())) << c.from;
    }
}

TEST(SchemaVersion, OlderSchemasLackWhatLaterStepsAdd) {
    const campaign::Schema old = campaign::SchemaAt(V(5, 1, 0, 0));
    EXPECT_EQ(old.tables.size(), 13u) << "no tags yet";
    EXPECT_EQ(old.FindTable(u"Tags"_s), nullptr);
    EXPECT_EQ(old.relations.size(), 10u);
    const campaign::Table* volumes = old.FindTable(u"Volumes"_s);
    ASSERT_NE(volumes, nullptr);
    EXPECT_EQ(volumes->FindColumn(u"MatchUsingAncestorValues"_s), nullptr);
    EXPECT_EQ(volumes->FindColumn(u"CaseData"_s)->type, campaign::kText);
    EXPECT_EQ(old.FindTable(u"Waves"_s)->indexes.size(), 1u);
    // A version at a threshold has what that threshold's steps made.
    const campaign::Schema at = campaign::SchemaAt(V(5, 5, 2, 4));
    ASSERT_NE(at.FindTable(u"Tags"_s), nullptr);
    EXPECT_EQ(at.FindTable(u"Tags"_s)->FindColumn(u"Caption"_s)->size, 50);
    const campaign::Schema current = campaign::SchemaAt(campaign::CurrentVersion());
    EXPECT_EQ(campaign::CreateStatements(current, Connection()),
              campaign::CreateStatements(campaign::CampaignSchema(), Connection()));
}

// --- older databases migrated ---

using MigrationsTest = DatabaseTest;

TEST_P(MigrationsTest, AnOldDatabaseBecomesTheCurrentOne) {
    Connection fresh;
    Make(fresh, campaign::CampaignSchema());
    const std::string expected = Catalogue(fresh);
    ASSERT_EQ(std::count(expected.begin(), expected.end(), '\n'), 147)
        << "14 tables, 104 columns, 20 indexes, 10 relations";
    // A version text older than the tables: every step finds its work done, fills included.
    InsertCampaign(fresh);
    Exec(fresh,
         uR"(UPDATE "Questions" SET "IsDevelopLevels" = %1, "IsVisibleInAnalyse" = %1)"_s.arg(
             Bool(false)));
    const util::Outcome skipped = MigrateDatabase(fresh, u"5.0"_s);
    ASSERT_TRUE(skipped) << skipped.Reason().toStdString();
    EXPECT_EQ(Catalogue(fresh), expected);
    EXPECT_EQ(Value(fresh, R"(SELECT "IsDevelopLevels", "IsVisibleInAnalyse" FROM "Questions")"),
              u"%1|%1"_s.arg(Bool(false)));
    // Besides what a new database allows, the oldest one allows empty texts where steps let it.
    const QStringList alsoEmpty =
        Split("Questions.Versions Questions.UserData Modalities.Versions "
              "Modalities.EntryCode Waves.Description Tags.Description "
              "Volumes.ThisVolumeLinkQuestionID QuestionCaptions.LongCaption "
              "Volumes.ReconciliationSourceQuestionIDs",
              ' ');
    for (const char* from : {"", "5.1.6.15", "5,2,3,6", "5.3.4.6", "5.5.2.4", "5.6.0.0"}) {
        SCOPED_TRACE(from);
        Connection db;
        Make(db, campaign::SchemaAt(ParseVersion(QLatin1String(from)).version));
        if (*from == '\0') {
            EXPECT_NE(Catalogue(db), expected) << "the old schema differs";
        }
        InsertCampaign(db);
        const util::Outcome migrated = MigrateDatabase(db, QLatin1String(from));
        ASSERT_TRUE(migrated) << migrated.Reason().toStdString();
        EXPECT_EQ(Catalogue(db), expected);
        // The rows are kept, rebuilt tables included, and relations still cascade.
        EXPECT_EQ(Value(db,
                        R"(SELECT "CaseData", "Versions", "LongCaption", "ShortCaption" FROM )"
                        R"("Volumes", "Questions" q, "QuestionCaptions" c WHERE "VolumeID" = 1 )"
                        R"(AND q."QuestionID" = 10 AND c."QuestionID" = 10)"),
                  u"cases|v1|Long|Short"_s);
        if (Sqlite()) {
            EXPECT_EQ(Value(db, "PRAGMA foreign_keys"), u"1"_s);
        }
        if (*from == '\0') {
            // The fills of the steps that added these columns.
            EXPECT_EQ(Value(db, R"(SELECT "MatchUsingAncestorValues", "CaseSensitiveMatching", )"
                                R"("AddNoNewQuestions", "ReconciliationSourceQuestionIDs", )"
                                R"("IsDevelopLevels", "IsVisibleInAnalyse", "BaseType" FROM )"
                                R"("Volumes", "Questions", "Modalities" WHERE "VolumeID" = 1 AND )"
                                R"("Questions"."QuestionID" = 10 AND "ModalityID" = 100)"),
                      u"%1|%1|%1||%2|%2|0"_s.arg(Bool(false), Bool(true)));
            ExpectTextRules(db, alsoEmpty);
        }
        Exec(db, uR"(DELETE FROM "Volumes")"_s);
        EXPECT_EQ(Count(db, u"QuestionCaptions"_s), 0);
        EXPECT_EQ(Count(db, u"Modalities"_s), 0);
    }
}

TEST_P(MigrationsTest, AFailingStepStopsTheRestAndKeepsTheEarlierOnes) {
    Connection db;
    Make(db, campaign::SchemaAt(V(5, 2, 3, 6)));
    // Two waves in one place: the unique wave order cannot be made.
    Exec(db, uR"(INSERT INTO "Waves" ("WaveID", "WaveOrder") VALUES (1, 1), (2, 1))"_s);
    ExpectFailedIn(MigrateDatabase(db, u"5.2.3.6"_s), "CWavesRSAdo::MoveTo5_3_0_1");
    EXPECT_TRUE(db.HasColumn(u"Volumes"_s, u"AddNoNewQuestions"_s));
    EXPECT_TRUE(db.HasColumn(u"Volumes"_s, u"ReconciliationSourceQuestionIDs"_s));
    EXPECT_FALSE(db.HasColumn(u"Questions"_s, u"IsVisibleInAnalyse"_s));
    EXPECT_FALSE(db.HasTable(u"Tags"_s));
    // Once the cause is gone the same version text migrates: what was done is not done twice.
    Exec(db, uR"(DELETE FROM "Waves" WHERE "WaveID" = 2)"_s);
    Exec(db,
         uR"(INSERT INTO "Volumes" ("VolumeID", "WaveID", "AddNoNewQuestions") VALUES (1, 1, %1))"_s
             .arg(Bool(true)));
    const util::Outcome again = MigrateDatabase(db, u"5.2.3.6"_s);
    ASSERT_TRUE(again) << again.Reason().toStdString();
    EXPECT_EQ(Value(db, R"(SELECT "AddNoNewQuestions" FROM "Volumes")"), Bool(true));
    EXPECT_TRUE(db.HasTable(u"Tags"_s));
}

TEST_P(MigrationsTest, AStepThatFailsHalfWayLeavesItsTableAsItWas) {
    Connection db;
    Make(db, campaign::SchemaAt(V(5, 6, 0, 0)));
    InsertCampaign(db);
    // Too long for the Text(255) that the last step makes of it.
    const QString longText(300, u'x');
    Exec(db, uR"(UPDATE "Versions" SET "ShortCaption" = '%1')"_s.arg(longText));
    ExpectFailedIn(MigrateDatabase(db, u"5,6,0,0"_s), "CVersionsRSAdo::MoveTo5_6_1_0");
    // The step before it stays applied.
    EXPECT_TRUE(db.Exec(uR"(UPDATE "QuestionCaptions" SET "LongCaption" = '')"_s));
    // Its own first change, the long caption becoming a memo, is undone with it.
    EXPECT_FALSE(db.Exec(uR"(UPDATE "Versions" SET "LongCaption" = '%1')"_s.arg(longText)));
    EXPECT_EQ(Value(db, R"(SELECT "ShortCaption" FROM "Versions")"), longText);
    EXPECT_EQ(testutil::TableNames(db).size(), 14);
}

// Another program's write is waited for, not failed at once: a step that read the catalogue
// first could otherwise not take the lock it then needs.
TEST_P(MigrationsTest, AnotherProgramWritingIsWaitedFor) {
    Connection db;
    QString location;
    Make(db, campaign::SchemaAt(V(5, 2, 0, 0)), &location);
    std::atomic<bool> holding = false;
    std::thread other([&] {
        Connection writer;
        util::sql::Transaction transaction(writer);
        EXPECT_TRUE(writer.Open(location) && transaction.Begin() &&
                    writer.Exec(uR"(DELETE FROM "Questions" WHERE 1 = 0)"_s));
        holding = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        EXPECT_TRUE(transaction.Commit());
    });
    while (!holding)
        std::this_thread::yield();
    const util::Outcome migrated = MigrateDatabase(db, u"5,2,0,0"_s);
    other.join();
    EXPECT_TRUE(migrated) << migrated.Reason().toStdString();
}

TEST_P(MigrationsTest, TheRepairRunsOnlyForDatabasesOlderThanIt) {
    // Files at 5.3.4.6 and 5.3.5.1 whose question versions still refuse an empty text.
    campaign::Schema broken = campaign::SchemaAt(V(5, 3, 5, 1));
    for (campaign::Table& table : broken.tables)
        for (campaign::Column& column : table.columns)
            if (table.name == "Questions"_L1 && column.name == "Versions"_L1)
                column.allowZeroLength = false;
    const struct {
        const char* from;
        bool repaired;
    } cases[] = {{"5.3.4.5", true}, {"5.3.4.6", true}, {"5.3.5.1", false}, {"5.3.5.2", false}};
    for (const auto& c : cases) {
        Connection db;
        Make(db, broken);
        InsertCampaign(db);
        ASSERT_TRUE(MigrateDatabase(db, QLatin1String(c.from))) << c.from;
        EXPECT_EQ(bool(db.Exec(uR"(UPDATE "Questions" SET "Versions" = '')"_s)), c.repaired)
            << c.from;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, CampaignDatabaseTest, testutil::kEngines, testutil::EngineName);
INSTANTIATE_TEST_SUITE_P(Each, MigrationsTest, testutil::kEngines, testutil::EngineName);

// --- a database file ---

TEST(CampaignDatabaseFile, ReplacesAnExistingFileOrLeavesItWholeAndRefusesPlacesThatCannotHoldIt) {
    QTemporaryDir dir;
    const QString path = dir.filePath(u"old.qew"_s);
    ASSERT_TRUE(testutil::WriteAll(path, "not a campaign yet"));
    ExpectFailedIn(CreateDatabase(path, BrokenSchema()), "CBrokenRSAdo::CreateTable");
    EXPECT_EQ(testutil::ReadAll(path), QByteArray("not a campaign yet"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{u"old.qew"_s})
        << "nothing is left behind";

    ASSERT_TRUE(CreateDatabase(path));
    Connection db;
    ASSERT_TRUE(db.Open(path));
    EXPECT_EQ(db.Tables().size(), 14);
    db.Close();
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{u"old.qew"_s});

    // Neither a folder where the file should go nor a missing folder can hold it.
    const QString folder = dir.filePath(u"folder.qew"_s);
    ASSERT_TRUE(QDir().mkpath(folder + "/inside"_L1));
    EXPECT_FALSE(CreateDatabase(folder));
    EXPECT_TRUE(QFileInfo(folder + "/inside"_L1).isDir());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{u"old.qew"_s});
    EXPECT_FALSE(CreateDatabase(dir.filePath(u"missing/new.qew"_s)));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(u"missing"_s)));
}

} // namespace
