#include "campaign/schema/CampaignDatabase.h"
#include "CatalogueTestUtil.h"
#include "common/PostgresServer.h"
#include "common/TestUtil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <map>
#include <memory>

using campaign::CreateDatabase;
using util::sql::Connection;
using util::sql::Dialect;

namespace {

// The schema as it must come out of the engine, written out independently of the library's
// description. Types: L long, I 16-bit, B yes/no, F double, D date, M memo, Tn text of n.
struct ExpectedTable {
    const char* name;
    std::vector<const char*> columns;
    // "name kind columns...": kind P primary, U unique, - plain.
    std::vector<const char*> indexes;
};

const std::vector<ExpectedTable>& Expected() {
    static const std::vector<ExpectedTable> tables = {
        {"Campaigns", {"Name T50", "Description M", "VersionNumber T50"}, {}},
        {"Waves",
         {"WaveID L", "WaveOrder L", "Name T50", "Description M", "WaveStart D", "WaveEnd D",
          "WaveMidpoint D"},
         {"PrimaryKey P WaveID", "IndexWaveOrder U WaveOrder"}},
        {"Volumes",
         {"VolumeID L", "Name T50", "WaveID L", "InheritsFromVolumeID L", "SourceType L",
          "MetaData M", "CaseData M", "IsMatchingStrict B", "QuestionMatchingMethods T255",
          "ResponseMatchingMethods T255", "IsMainVolume B", "InterviewMergeMethod L",
          "MainVolumeLinkQuestionID L", "ThisVolumeLinkQuestionID T50", "Status L",
          "CaseSensitiveMatching B", "MatchUsingAncestorValues B", "AddNoNewQuestions B",
          "ReconciliationSourceQuestionIDs M"},
         {"PrimaryKey P VolumeID", "Index1 - WaveID"}},
        {"Questions",
         {"QuestionID L",
          "IsDeleted B",
          "Order L",
          "Shortcut T50",
          "Indent L",
          "ElementType L",
          "QuestionType L",
          "IsDontKnow B",
          "IsSemiOpen B",
          "IsScale B",
          "IsMultiple B",
          "IsRanked B",
          "MaxResponseCount L",
          "Decimals L",
          "MinValue F",
          "MaxValue F",
          "IsLevelLink B",
          "LinkQuestionID L",
          "IsProbabilityQuestion B",
          "DateType L",
          "QuestionClassID L",
          "Versions M",
          "UserData M",
          "IsDevelopLevels B",
          "AppearanceVolumeID L",
          "DeletionWaveID L",
          "IsVisibleInAnalyse B",
          "Tags M"},
         {"PrimaryKey P QuestionID", "Index1 - QuestionClassID", "Index2 - Order"}},
        {"QuestionMatchings",
         {"QuestionID L", "VolumeID L", "SourceID T50", "StartVolumeID L", "EndVolumeID L"},
         {"PrimaryKey P QuestionID VolumeID"}},
        {"QuestionClasses",
         {"QuestionClassID L", "Caption T255"},
         {"PrimaryKey P QuestionClassID"}},
        {"QuestionCaptions",
         {"QuestionID L", "LanguageID L", "LongCaption M", "ShortCaption M"},
         {"PrimaryKey P QuestionID LanguageID", "Index1 - QuestionID"}},
        {"Modalities",
         {"ModalityID L", "QuestionID L", "IsDeleted B", "ModalityOrder L", "Value F",
          "EntryCode T255", "IsExclusive B", "RotationBehaviour L", "Versions M", "UserData M",
          "AppearanceVolumeID L", "DeletionWaveID L", "BaseType I", "Tags M"},
         {"PrimaryKey P ModalityID", "Index1 - QuestionID ModalityOrder"}},
        {"ModalityMatchings",
         {"ModalityID L", "QuestionID L", "VolumeID L", "ModalitySourceID T50", "StartVolumeID L",
          "EndVolumeID L"},
         {"PrimaryKey P ModalityID QuestionID VolumeID"}},
        {"ModalityCaptions",
         {"ModalityID L", "QuestionID L", "LanguageID L", "ShortCaption M"},
         {"PrimaryKey P ModalityID LanguageID", "Index1 - ModalityID"}},
        {"Languages",
         {"LanguageID L", "IsDefault B", "LanguageName T255"},
         {"PrimaryKey P LanguageID"}},
        {"Versions",
         {"VersionID L", "LongCaption M", "ShortCaption T255"},
         {"PrimaryKey P VersionID"}},
        {"ModalityMergings",
         {"MasterModalityID L", "ChildModalityID L", "MergeVolumeID L"},
         {"PrimaryKey P MasterModalityID ChildModalityID"}},
        // The database shows the key column as declared.
        {"Tags", {"TagId L", "Caption T255", "Description M"}, {"PrimaryKey P TagId"}},
    };
    return tables;
}

QString EngineType(const QString& code, Dialect dialect) {
    const char kind = code.at(0).toLatin1();
    if (dialect == Dialect::Sqlite) {
        switch (kind) {
        case 'F':
        case 'D':
            return QStringLiteral("REAL");
        case 'M':
        case 'T':
            return QStringLiteral("TEXT");
        default:
            return QStringLiteral("INTEGER");
        }
    }
    switch (kind) {
    case 'L':
        return QStringLiteral("integer");
    case 'I':
        return QStringLiteral("smallint");
    case 'B':
        return QStringLiteral("boolean");
    case 'F':
        return QStringLiteral("double precision");
    case 'D':
        return QStringLiteral("timestamp without time zone");
    case 'M':
        return QStringLiteral("text");
    default:
        return QStringLiteral("character varying(%1)").arg(code.mid(1));
    }
}

using testutil::Rows;

int Count(Connection& db, const QString& table) {
    const QStringList rows =
        Rows(db, QStringLiteral("SELECT COUNT(*) FROM %1").arg(db.Quote(table)));
    return rows.isEmpty() ? -1 : rows[0].toInt();
}

// The campaign's tables and one more with a column declared twice: the last table fails, after
// every other table was made. (SQLite would take a quoted missing column for a string.)
campaign::Schema BrokenSchema() {
    campaign::Schema broken = campaign::CampaignSchema();
    broken.tables.push_back({QStringLiteral("Broken"),
                             {{QStringLiteral("Id"), campaign::kLong, 0, false},
                              {QStringLiteral("Id"), campaign::kLong, 0, false}},
                             {}});
    return broken;
}

class CampaignDatabaseTest : public ::testing::TestWithParam<Dialect> {
protected:
    static void SetUpTestSuite() {
        s_server = std::make_unique<testutil::PostgresServer>();
        s_serverStarted = s_server->Start();
    }
    static void TearDownTestSuite() { s_server.reset(); }

    void SetUp() override {
        if (GetParam() == Dialect::Sqlite) {
            m_location = m_dir.filePath(QStringLiteral("campaign.qew"));
        } else {
            ASSERT_TRUE(s_serverStarted) << s_server->Error().toStdString();
            m_location = s_server->CreateDatabase(QStringLiteral("campaign"));
            ASSERT_FALSE(m_location.isEmpty()) << s_server->Error().toStdString();
        }
        const util::Outcome created = CreateDatabase(m_location);
        ASSERT_TRUE(created) << created.Reason().toStdString();
        const util::Outcome opened = m_db.Open(m_location);
        ASSERT_TRUE(opened) << opened.Reason().toStdString();
        ASSERT_EQ(m_db.GetDialect(), GetParam());
        ASSERT_TRUE(campaign::EnableForeignKeys(m_db));
    }

    bool Sqlite() const { return GetParam() == Dialect::Sqlite; }

    util::Outcome Insert(const QString& table, const QStringList& columns,
                         const QVariantList& values) {
        QStringList quoted;
        QStringList marks;
        for (const QString& column : columns) {
            quoted.append(m_db.Quote(column));
            marks.append(QStringLiteral("?"));
        }
        QSqlQuery query(m_db.Database());
        query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                          .arg(m_db.Quote(table), quoted.join(QLatin1Char(',')),
                               marks.join(QLatin1Char(','))));
        for (int i = 0; i < values.size(); ++i)
            query.bindValue(i, values[i]);
        if (query.exec())
            return {};
        return util::Outcome::Failure(query.lastError().text());
    }

    util::Outcome Delete(const QString& table, const QStringList& columns,
                         const QVariantList& values) {
        QStringList conditions;
        for (const QString& column : columns)
            conditions.append(m_db.Quote(column) + QLatin1String(" = ?"));
        QSqlQuery query(m_db.Database());
        query.prepare(QStringLiteral("DELETE FROM %1%2")
                          .arg(m_db.Quote(table),
                               conditions.isEmpty() ? QString()
                                                    : QLatin1String(" WHERE ") +
                                                          conditions.join(QLatin1String(" AND "))));
        for (int i = 0; i < values.size(); ++i)
            query.bindValue(i, values[i]);
        if (query.exec())
            return {};
        return util::Outcome::Failure(query.lastError().text());
    }

    // A wave, two volumes, and in volume 1 a question with a caption and a matching and a
    // response with a caption, a matching and a merging into a response of volume 2.
    void InsertCampaign() {
        const auto L = [](const char* text) { return QString::fromLatin1(text); };
        const struct {
            const char* table;
            QStringList columns;
            QVariantList values;
        } rows[] = {
            {"Waves", {L("WaveID"), L("WaveOrder")}, {1, 1}},
            {"Volumes", {L("VolumeID"), L("WaveID")}, {1, 1}},
            {"Volumes", {L("VolumeID"), L("WaveID")}, {2, 1}},
            {"Questions",
             {L("QuestionID"), L("Order"), L("QuestionClassID"), L("AppearanceVolumeID")},
             {10, 1, 0, 1}},
            {"Questions",
             {L("QuestionID"), L("Order"), L("QuestionClassID"), L("AppearanceVolumeID")},
             {20, 2, 0, 2}},
            {"QuestionCaptions", {L("QuestionID"), L("LanguageID")}, {10, 1033}},
            {"QuestionCaptions", {L("QuestionID"), L("LanguageID")}, {20, 1033}},
            {"QuestionMatchings", {L("QuestionID"), L("VolumeID")}, {10, 1}},
            {"QuestionMatchings", {L("QuestionID"), L("VolumeID")}, {20, 2}},
            {"Modalities",
             {L("ModalityID"), L("QuestionID"), L("ModalityOrder"), L("AppearanceVolumeID")},
             {100, 10, 1, 1}},
            {"Modalities",
             {L("ModalityID"), L("QuestionID"), L("ModalityOrder"), L("AppearanceVolumeID")},
             {200, 20, 1, 2}},
            {"ModalityCaptions", {L("ModalityID"), L("LanguageID")}, {100, 1033}},
            {"ModalityCaptions", {L("ModalityID"), L("LanguageID")}, {200, 1033}},
            {"ModalityMatchings", {L("ModalityID"), L("QuestionID"), L("VolumeID")}, {100, 10, 1}},
            {"ModalityMatchings", {L("ModalityID"), L("QuestionID"), L("VolumeID")}, {200, 20, 2}},
            {"ModalityMergings",
             {L("MasterModalityID"), L("ChildModalityID"), L("MergeVolumeID")},
             {200, 100, 2}},
        };
        for (const auto& row : rows) {
            const util::Outcome inserted =
                Insert(QLatin1String(row.table), row.columns, row.values);
            ASSERT_TRUE(inserted) << row.table << ": " << inserted.Reason().toStdString();
        }
    }

    static std::unique_ptr<testutil::PostgresServer> s_server;
    static bool s_serverStarted;
    QTemporaryDir m_dir;
    QString m_location;
    Connection m_db;
};

std::unique_ptr<testutil::PostgresServer> CampaignDatabaseTest::s_server;
bool CampaignDatabaseTest::s_serverStarted = false;

TEST_P(CampaignDatabaseTest, TablesAndColumnsInOrder) {
    const QStringList tables = testutil::TableNames(m_db);
    QStringList expectedTables;
    for (const ExpectedTable& table : Expected())
        expectedTables.append(QLatin1String(table.name));
    EXPECT_EQ(tables, expectedTables);

    for (const ExpectedTable& table : Expected()) {
        const QString name = QLatin1String(table.name);
        // Columns of an index refuse nulls, and on a server so do Yes/No columns.
        QStringList indexed;
        for (const char* index : table.indexes)
            indexed += QString::fromLatin1(index).split(QLatin1Char(' ')).mid(2);
        QStringList expected;
        for (const char* column : table.columns) {
            const QStringList parts = QString::fromLatin1(column).split(QLatin1Char(' '));
            const bool notNull = indexed.contains(parts[0], Qt::CaseInsensitive) ||
                                 (!Sqlite() && parts[1] == QLatin1String("B"));
            expected.append(
                QStringLiteral("%1|%2|%3")
                    .arg(parts[0], EngineType(parts[1], GetParam()),
                         notNull ? QStringLiteral("not null") : QStringLiteral("null")));
        }
        const QStringList actual = testutil::ColumnCatalogue(m_db, name);
        EXPECT_EQ(actual, expected) << table.name;
    }
}

TEST_P(CampaignDatabaseTest, IndexesWithTheirNamesAndUniqueness) {
    for (const ExpectedTable& table : Expected()) {
        const QString name = QLatin1String(table.name);
        QStringList expected;
        for (const char* index : table.indexes) {
            QStringList parts = QString::fromLatin1(index).split(QLatin1Char(' '));
            expected.append(
                QStringLiteral("%1_%2 %3 %4")
                    .arg(name, parts[0], parts[1], parts.mid(2).join(QLatin1Char(','))));
        }
        expected.sort();
        const QStringList actual = testutil::IndexCatalogue(m_db, name);
        EXPECT_EQ(actual, expected) << table.name;
    }
}

TEST_P(CampaignDatabaseTest, RelationsCascadeOnUpdateAndDelete) {
    const QStringList expected = {
        QStringLiteral("Modalities_ModalityMergingsChild Modalities.ModalityID "
                       "ModalityMergings.ChildModalityID"),
        QStringLiteral("Modalities_ModalityMergingsMaster Modalities.ModalityID "
                       "ModalityMergings.MasterModalityID"),
        QStringLiteral("Modalities_Modality_Captions Modalities.ModalityID "
                       "ModalityCaptions.ModalityID"),
        QStringLiteral("Questions_Question_Captions Questions.QuestionID "
                       "QuestionCaptions.QuestionID"),
        QStringLiteral("Volumes_ModalityMergings Volumes.VolumeID ModalityMergings.MergeVolumeID"),
        QStringLiteral("Volumes_Modalities Volumes.VolumeID Modalities.AppearanceVolumeID"),
        QStringLiteral("Volumes_Modality_Matchings Volumes.VolumeID ModalityMatchings.VolumeID"),
        QStringLiteral("Volumes_Question_Matchings Volumes.VolumeID QuestionMatchings.VolumeID"),
        QStringLiteral("Volumes_Questions Volumes.VolumeID Questions.AppearanceVolumeID"),
        QStringLiteral("Waves_Volumes Waves.WaveID Volumes.WaveID"),
    };
    const QStringList actual = testutil::RelationCatalogue(m_db);
    QStringList sorted = expected;
    sorted.sort();
    EXPECT_EQ(actual, sorted);
}

TEST_P(CampaignDatabaseTest, DeletingAVolumeRemovesWhatDependsOnIt) {
    InsertCampaign();
    ASSERT_TRUE(m_db.Exec(QStringLiteral("DELETE FROM \"Volumes\" WHERE \"VolumeID\" = 1")));
    const struct {
        const char* table;
        const char* remaining; // what is left is volume 2's
    } cases[] = {
        {"Volumes", "2"},
        {"Questions", "20"},
        {"QuestionCaptions", "20"},
        {"QuestionMatchings", "20"},
        {"Modalities", "200"},
        {"ModalityCaptions", "200"},
        {"ModalityMatchings", "200"},
        {"ModalityMergings", ""},
    };
    for (const auto& c : cases) {
        const campaign::Table* table = campaign::CampaignSchema().FindTable(QLatin1String(c.table));
        ASSERT_NE(table, nullptr);
        const QString key = m_db.Quote(table->columns[0].name);
        EXPECT_EQ(Rows(m_db, QStringLiteral("SELECT %1 FROM %2").arg(key, m_db.Quote(table->name)))
                      .join(QLatin1Char(',')),
                  QLatin1String(c.remaining))
            << c.table;
    }
    // Deleting the wave takes the last volume and everything of it.
    ASSERT_TRUE(m_db.Exec(QStringLiteral("DELETE FROM \"Waves\"")));
    for (const char* table : {"Volumes", "Questions", "QuestionCaptions", "Modalities",
                              "ModalityCaptions", "ModalityMatchings", "QuestionMatchings"})
        EXPECT_EQ(Count(m_db, QLatin1String(table)), 0) << table;
}

TEST_P(CampaignDatabaseTest, ChangedKeysAreCarriedToDependentRows) {
    InsertCampaign();
    ASSERT_TRUE(m_db.Exec(QStringLiteral("UPDATE \"Volumes\" SET \"VolumeID\" = 5 WHERE "
                                         "\"VolumeID\" = 2")));
    EXPECT_EQ(Rows(m_db, QStringLiteral("SELECT \"MergeVolumeID\" FROM \"ModalityMergings\"")),
              QStringList{QStringLiteral("5")});
    EXPECT_EQ(Rows(m_db, QStringLiteral("SELECT \"AppearanceVolumeID\" FROM \"Questions\" WHERE "
                                        "\"QuestionID\" = 20")),
              QStringList{QStringLiteral("5")});
    ASSERT_TRUE(m_db.Exec(QStringLiteral("UPDATE \"Modalities\" SET \"ModalityID\" = 101 WHERE "
                                         "\"ModalityID\" = 100")));
    EXPECT_EQ(Rows(m_db, QStringLiteral("SELECT \"ChildModalityID\" FROM \"ModalityMergings\"")),
              QStringList{QStringLiteral("101")});
    EXPECT_EQ(Rows(m_db, QStringLiteral("SELECT \"ModalityID\" FROM \"ModalityCaptions\" ORDER "
                                        "BY 1")),
              (QStringList{QStringLiteral("101"), QStringLiteral("200")}));
}

TEST_P(CampaignDatabaseTest, RowsThatBreakTheSchemaAreRefused) {
    InsertCampaign();
    const auto L = [](const char* text) { return QString::fromLatin1(text); };
    const struct {
        const char* why;
        const char* table;
        QStringList columns;
        QVariantList values;
    } cases[] = {
        {"a volume of a missing wave", "Volumes", {L("VolumeID"), L("WaveID")}, {3, 9}},
        {"a caption of a missing question",
         "QuestionCaptions",
         {L("QuestionID"), L("LanguageID")},
         {99, 1033}},
        {"a merging of a missing response",
         "ModalityMergings",
         {L("MasterModalityID"), L("ChildModalityID")},
         {100, 999}},
        {"a second wave in the same place", "Waves", {L("WaveID"), L("WaveOrder")}, {2, 1}},
        {"a second caption in one language",
         "QuestionCaptions",
         {L("QuestionID"), L("LanguageID")},
         {10, 1033}},
        {"a key left empty", "Languages", {L("IsDefault")}, {false}},
        {"an indexed column left empty", "Volumes", {L("VolumeID")}, {3}},
        {"a text longer than its size",
         "Waves",
         {L("WaveID"), L("WaveOrder"), L("Name")},
         {3, 3, QString(51, QLatin1Char('n'))}},
    };
    for (const auto& c : cases)
        EXPECT_FALSE(Insert(QLatin1String(c.table), c.columns, c.values)) << c.why;
    EXPECT_TRUE(Insert(QStringLiteral("Waves"), {L("WaveID"), L("WaveOrder"), L("Name")},
                       {3, 3, QString(50, QLatin1Char('n'))}))
        << "a text of its full size fits";
    // The tag key answers to the name its index gives it.
    const campaign::Table* tags = campaign::CampaignSchema().FindTable(QStringLiteral("Tags"));
    ASSERT_TRUE(
        Insert(QStringLiteral("Tags"), {tags->ResolveColumn(QStringLiteral("TagID"))}, {7}));
    EXPECT_FALSE(
        Insert(QStringLiteral("Tags"), {tags->ResolveColumn(QStringLiteral("TagID"))}, {7}));
}

TEST_P(CampaignDatabaseTest, EmptyTextsOnlyWhereAllowed) {
    InsertCampaign();
    // A row each table accepts, using the parents InsertCampaign made.
    const auto L = [](const char* text) { return QString::fromLatin1(text); };
    const std::map<QString, std::pair<QStringList, QVariantList>> rows = {
        {L("Campaigns"), {{}, {}}},
        {L("Waves"), {{L("WaveID"), L("WaveOrder")}, {7, 7}}},
        {L("Volumes"), {{L("VolumeID"), L("WaveID")}, {7, 1}}},
        {L("Questions"), {{L("QuestionID"), L("Order"), L("QuestionClassID")}, {7, 7, 0}}},
        {L("QuestionMatchings"), {{L("QuestionID"), L("VolumeID")}, {7, 1}}},
        {L("QuestionClasses"), {{L("QuestionClassID")}, {7}}},
        {L("QuestionCaptions"), {{L("QuestionID"), L("LanguageID")}, {10, 7}}},
        {L("Modalities"), {{L("ModalityID"), L("QuestionID"), L("ModalityOrder")}, {7, 10, 7}}},
        {L("ModalityMatchings"), {{L("ModalityID"), L("QuestionID"), L("VolumeID")}, {7, 10, 1}}},
        {L("ModalityCaptions"), {{L("ModalityID"), L("LanguageID")}, {100, 7}}},
        {L("Languages"), {{L("LanguageID")}, {7}}},
        {L("Versions"), {{L("VersionID")}, {7}}},
        {L("Tags"), {{L("TagId")}, {7}}},
    };
    const QStringList allowing = {
        L("Campaigns.VersionNumber"),
        L("Waves.Name"),
        L("Volumes.Name"),
        L("Volumes.MetaData"),
        L("Volumes.CaseData"),
        L("Volumes.QuestionMatchingMethods"),
        L("Volumes.ResponseMatchingMethods"),
        L("Questions.Shortcut"),
        L("QuestionMatchings.SourceID"),
        L("QuestionClasses.Caption"),
        L("ModalityMatchings.ModalitySourceID"),
        L("ModalityCaptions.ShortCaption"),
        L("Languages.LanguageName"),
        L("Versions.LongCaption"),
        L("Versions.ShortCaption"),
        L("Tags.Caption"),
    };
    int texts = 0;
    for (const ExpectedTable& table : Expected()) {
        const QString name = QLatin1String(table.name);
        for (const char* spec : table.columns) {
            const QStringList parts = QString::fromLatin1(spec).split(QLatin1Char(' '));
            if (!parts[1].startsWith(QLatin1Char('T')) && parts[1] != QLatin1String("M"))
                continue;
            ++texts;
            const auto& [columns, values] = rows.at(name);
            const bool allowed = allowing.contains(name + QLatin1Char('.') + parts[0]);
            for (const QString& text :
                 {QString(), QStringLiteral("x"), QString(QLatin1String(""))}) {
                QVariantList all = values;
                // A null text is NULL, never refused.
                all.append(text.isNull() ? QVariant() : QVariant(text));
                const bool expected = !text.isNull() && text.isEmpty() ? allowed : true;
                const bool inserted = bool(Insert(name, columns + QStringList{parts[0]}, all));
                EXPECT_EQ(inserted, expected) << (name + QLatin1Char('.') + parts[0]).toStdString()
                                              << " with '" << text.toStdString() << "'";
                if (inserted) { // the key is free for the next case
                    ASSERT_TRUE(Delete(name, columns, values));
                }
            }
        }
    }
    EXPECT_EQ(texts, 31);
}

TEST_P(CampaignDatabaseTest, CreatingAgainReplacesTheTables) {
    InsertCampaign();
    m_db.Close();
    const util::Outcome created = CreateDatabase(m_location);
    ASSERT_TRUE(created) << created.Reason().toStdString();
    ASSERT_TRUE(m_db.Open(m_location));
    for (const ExpectedTable& table : Expected())
        EXPECT_EQ(Count(m_db, QLatin1String(table.name)), 0) << table.name;
}

TEST_P(CampaignDatabaseTest, AFailedCreationChangesNothing) {
    InsertCampaign();
    // Every table was dropped and made again before the last statement failed.
    campaign::Schema broken = BrokenSchema();
    EXPECT_FALSE(CreateDatabase(m_db, broken));
    EXPECT_FALSE(m_db.HasTable(QStringLiteral("Broken")));
    EXPECT_EQ(Count(m_db, QStringLiteral("Modalities")), 2);
    EXPECT_EQ(Count(m_db, QStringLiteral("ModalityMergings")), 1);
    // Schemas that name what is not there are refused before anything is touched.
    const auto missingIndexColumn = [] {
        campaign::Schema schema = campaign::CampaignSchema();
        schema.tables[1].indexes[1].columns = QStringList{QStringLiteral("WaveRank")};
        return schema;
    };
    const auto missingRelationTable = [] {
        campaign::Schema schema = campaign::CampaignSchema();
        schema.relations.back().primaryTable = QStringLiteral("Volume");
        return schema;
    };
    const auto missingRelationColumn = [] {
        campaign::Schema schema = campaign::CampaignSchema();
        schema.relations.front().foreignColumn = QStringLiteral("Wave");
        return schema;
    };
    const auto tableTwice = [] {
        campaign::Schema schema = campaign::CampaignSchema();
        schema.tables.push_back(schema.tables.front());
        schema.tables.back().name = QStringLiteral("CAMPAIGNS");
        return schema;
    };
    const struct {
        campaign::Schema schema;
        const char* named;
    } cases[] = {
        {missingIndexColumn(), "WaveRank"},
        {missingRelationTable(), "Volume"},
        {missingRelationColumn(), "Wave"},
        {tableTwice(), "CAMPAIGNS"},
    };
    for (const auto& c : cases) {
        const util::Outcome refused = CreateDatabase(m_db, c.schema);
        EXPECT_FALSE(refused) << c.named;
        EXPECT_TRUE(refused.Reason().contains(QLatin1String(c.named)))
            << refused.Reason().toStdString();
        EXPECT_EQ(Count(m_db, QStringLiteral("Volumes")), 2) << c.named;
    }
}

TEST_P(CampaignDatabaseTest, YesNoIsFalseUnlessSetOnAServer) {
    ASSERT_TRUE(Insert(QStringLiteral("Waves"),
                       {QStringLiteral("WaveID"), QStringLiteral("WaveOrder")}, {1, 1}));
    ASSERT_TRUE(Insert(QStringLiteral("Volumes"),
                       {QStringLiteral("VolumeID"), QStringLiteral("WaveID")}, {1, 1}));
    const QStringList flags = Rows(
        m_db, QStringLiteral("SELECT \"IsMainVolume\" IS NULL, \"IsMainVolume\" FROM \"Volumes\""));
    // On a server a Yes/No column is never null; a file keeps what was written, here nothing.
    EXPECT_EQ(flags, QStringList{Sqlite() ? QStringLiteral("1|") : QStringLiteral("false|false")});
}

INSTANTIATE_TEST_SUITE_P(Each, CampaignDatabaseTest,
                         ::testing::Values(Dialect::Sqlite, Dialect::PostgreSql),
                         [](const ::testing::TestParamInfo<Dialect>& info) {
                             return info.param == Dialect::Sqlite ? "Sqlite" : "PostgreSql";
                         });

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(CampaignDatabaseFile, ReplacesAnExistingFileOrLeavesItWhole) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("old.qew"));
    {
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("not a campaign yet");
    }
    const util::Outcome failed = CreateDatabase(path, BrokenSchema());
    EXPECT_FALSE(failed);
    EXPECT_TRUE(failed.Reason().contains(path)) << failed.Reason().toStdString();
    EXPECT_EQ(ReadAll(path), QByteArray("not a campaign yet"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("old.qew")})
        << "nothing is left behind";

    ASSERT_TRUE(CreateDatabase(path));
    Connection db;
    ASSERT_TRUE(db.Open(path));
    EXPECT_EQ(db.Tables().size(), 14);
    db.Close();
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("old.qew")});
}

TEST(CampaignDatabaseFile, PlacesThatCannotHoldTheFile) {
    QTemporaryDir dir;
    // A folder where the file should go cannot be replaced by it.
    const QString folder = dir.filePath(QStringLiteral("folder.qew"));
    ASSERT_TRUE(QDir().mkpath(folder + QLatin1String("/inside")));
    EXPECT_FALSE(CreateDatabase(folder));
    EXPECT_TRUE(QFileInfo(folder + QLatin1String("/inside")).isDir());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList());
    EXPECT_FALSE(CreateDatabase(dir.filePath(QStringLiteral("missing/new.qew"))));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));
}

} // namespace
