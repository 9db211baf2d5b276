#include "campaign/schema/Migrations.h"

#include "CatalogueTestUtil.h"
#include "campaign/schema/CampaignDatabase.h"
#include "common/PostgresServer.h"
#include "common/TestUtil.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

using campaign::MigrateDatabase;
using campaign::ParseVersion;
using campaign::Version;
using testutil::Rows;
using util::sql::Connection;
using util::sql::Dialect;

namespace {

Version V(quint32 a, quint32 b, quint32 c, quint32 d) {
    return Version{{a, b, c, d}};
}

TEST(SchemaVersion, ParsesDotsOrCommas) {
    const struct {
        const char* text;
        Version version;
        bool found;
    } cases[] = {
        {"5.6.1.0", V(5, 6, 1, 0), true},
        {"5,6,1,0", V(5, 6, 1, 0), true},
        {"5,2,0,0", V(5, 2, 0, 0), true},
        {"5.4.10.0", V(5, 4, 10, 0), true},
        {"5.6", V(5, 6, 0, 0), true},
        {" 5 . 3 ", V(5, 3, 0, 0), true},
        {"1.2.3.4.5", V(1, 2, 3, 4), true},
        {"4294967295.0.0.1", V(4294967295u, 0, 0, 1), true},
        // Reading stops at the first part that is not a number.
        {"5.x.1.0", V(5, 0, 0, 0), true},
        {"5.-1.1", V(5, 0, 0, 0), true},
        // With a dot in it, commas do not separate.
        {"5,6.1.0", V(0, 0, 0, 0), false},
        {"4294967296", V(0, 0, 0, 0), false},
        {"", V(0, 0, 0, 0), false},
        {"version", V(0, 0, 0, 0), false},
    };
    for (const auto& c : cases) {
        const campaign::ParsedVersion parsed = ParseVersion(QLatin1String(c.text));
        EXPECT_EQ(parsed.version, c.version)
            << c.text << " read as " << parsed.version.ToText().toStdString();
        EXPECT_EQ(parsed.found, c.found) << c.text;
    }
}

TEST(SchemaVersion, ComparesNumberByNumber) {
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
}

TEST(SchemaVersion, KnownVersionsRiseToTheCurrentOne) {
    const QStringList& known = campaign::KnownVersions();
    ASSERT_EQ(known.size(), 77);
    EXPECT_EQ(known.front(), QStringLiteral("5.1.6.15"));
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
        names.append(step->threshold + QLatin1Char(' ') + step->name);
    return names;
}

TEST(SchemaVersion, EachThresholdRunsItsStepsForOlderDatabasesOnly) {
    const QStringList latest = {
        QStringLiteral("5.6.1.0 CSurveyTagsRSAdo::MoveTo5_6_1_0"),
        QStringLiteral("5.6.1.0 CModalitiesRSAdo::MoveTo5_6_1_0"),
        QStringLiteral("5.6.1.0 CQuestionCaptionsRSAdo::MoveTo5_6_1_0"),
        QStringLiteral("5.6.1.0 CVersionsRSAdo::MoveTo5_6_1_0"),
    };
    EXPECT_EQ(PlannedNames("5.6.0.0"), latest);
    EXPECT_EQ(PlannedNames("5,6,0,0"), latest);
    EXPECT_EQ(PlannedNames("5.6.1.0"), QStringList());
    EXPECT_EQ(PlannedNames("5.7"), QStringList());

    const QStringList all = PlannedNames("");
    EXPECT_EQ(all.size(), static_cast<qsizetype>(campaign::MigrationSteps().size()));
    EXPECT_EQ(all.size(), 26);
    EXPECT_EQ(all.front(), QStringLiteral("5.1.6.15 CVolumesRSAdo::MoveTo5_1_6_15"));
    EXPECT_EQ(PlannedNames("garbage"), all);

    const struct {
        const char* from;
        int steps;         // how many run
        const char* first; // the first of them
    } cases[] = {
        {"5.1.6.14", 26, "5.1.6.15 CVolumesRSAdo::MoveTo5_1_6_15"},
        {"5.1.6.15", 25, "5.2.0.0 CVolumesRSAdo::MoveTo5_2_0_0"},
        {"5,2,0,0", 24, "5.2.1.1 CQuestionsRSAdo::MoveTo5_2_1_1"},
        {"5.2.3.4", 23, "5.2.3.5 CQuestionsRSAdo::MoveTo5_2_3_5"},
        {"5.2.3.5", 21, "5.3.0.0 CVolumesRSAdo::MoveTo5_3_0_0"},
        {"5.3.0.0", 20, "5.3.0.1 CWavesRSAdo::MoveTo5_3_0_1"},
        {"5.3.2.2", 18, "5.3.2.3 CVolumesRSAdo::MoveTo5_3_2_3"},
        {"5.3.4.5", 16, "5.3.4.6 CQuestionsRSAdo::MoveTo5_2_3_5"},
        // Equal is not older: only the second repair.
        {"5.3.4.6", 14, "5.3.5.1 CQuestionsRSAdo::MoveTo5_2_3_5"},
        {"5.3.5.1", 12, "5.5.2.4 CQuestionsRSAdo::MoveTo5_5_2_4"},
        {"5.4.9.4", 12, "5.5.2.4 CQuestionsRSAdo::MoveTo5_5_2_4"},
        {"5.4.10.0", 12, "5.5.2.4 CQuestionsRSAdo::MoveTo5_5_2_4"},
        {"5.5.2.4", 9, "5.6.0.0 CCampaignsRSAdo::MoveTo5_6_0_0"},
    };
    for (const auto& c : cases) {
        const QStringList planned = PlannedNames(c.from);
        EXPECT_EQ(planned.size(), c.steps) << c.from;
        EXPECT_EQ(planned.value(0), QLatin1String(c.first)) << c.from;
        EXPECT_EQ(planned, all.mid(all.size() - planned.size())) << "a tail of the whole run";
    }
}

TEST(SchemaVersion, OlderSchemasLackWhatLaterStepsAdd) {
    const campaign::Schema old = campaign::SchemaAt(V(5, 1, 0, 0));
    EXPECT_EQ(old.tables.size(), 13u) << "no tags yet";
    EXPECT_EQ(old.FindTable(QStringLiteral("Tags")), nullptr);
    EXPECT_EQ(old.relations.size(), 10u);
    const campaign::Table* volumes = old.FindTable(QStringLiteral("Volumes"));
    ASSERT_NE(volumes, nullptr);
    EXPECT_EQ(volumes->FindColumn(QStringLiteral("MatchUsingAncestorValues")), nullptr);
    EXPECT_EQ(volumes->FindColumn(QStringLiteral("CaseData"))->type, campaign::kText);
    EXPECT_EQ(old.FindTable(QStringLiteral("Waves"))->indexes.size(), 1u);
    // A version at a threshold has what that threshold's steps made.
    const campaign::Schema at = campaign::SchemaAt(V(5, 5, 2, 4));
    ASSERT_NE(at.FindTable(QStringLiteral("Tags")), nullptr);
    EXPECT_EQ(at.FindTable(QStringLiteral("Tags"))->FindColumn(QStringLiteral("Caption"))->size,
              50);
    const campaign::Schema current = campaign::SchemaAt(campaign::CurrentVersion());
    EXPECT_EQ(campaign::CreateStatements(current, Connection()),
              campaign::CreateStatements(campaign::CampaignSchema(), Connection()));
}

// --- on the engines ---

// What only one of two catalogues holds, marked "-" and "+", one entry a line.
QString Difference(const QStringList& actual, const QStringList& expected) {
    QStringList lines;
    for (const QString& entry : actual)
        if (!expected.contains(entry))
            lines.append(QLatin1Char('-') + entry);
    for (const QString& entry : expected)
        if (!actual.contains(entry))
            lines.append(QLatin1Char('+') + entry);
    return lines.join(QLatin1Char('\n'));
}

class MigrationsTest : public ::testing::TestWithParam<Dialect> {
protected:
    static void SetUpTestSuite() {
        s_server = std::make_unique<testutil::PostgresServer>();
        s_serverStarted = s_server->Start();
    }
    static void TearDownTestSuite() { s_server.reset(); }

    bool Sqlite() const { return GetParam() == Dialect::Sqlite; }

    // A database of its own, made with `schema`, open in `db` with relations checked.
    void Make(Connection& db, const campaign::Schema& schema) {
        QString location;
        const QString name = QStringLiteral("migration%1").arg(++m_count);
        if (Sqlite()) {
            location = m_dir.filePath(name + QLatin1String(".qew"));
        } else {
            ASSERT_TRUE(s_serverStarted) << s_server->Error().toStdString();
            location = s_server->CreateDatabase(name);
            ASSERT_FALSE(location.isEmpty()) << s_server->Error().toStdString();
        }
        const util::Outcome created = campaign::CreateDatabase(location, schema);
        ASSERT_TRUE(created) << created.Reason().toStdString();
        ASSERT_TRUE(db.Open(location));
        ASSERT_TRUE(campaign::EnableForeignKeys(db));
    }

    static void Exec(Connection& db, const QString& sql) {
        const util::Outcome done = db.Exec(sql);
        ASSERT_TRUE(done) << sql.toStdString() << ": " << done.Reason().toStdString();
    }

    // Rows every version's tables hold: a wave, a volume, a question with a caption and a
    // response.
    static void InsertCampaign(Connection& db) {
        for (const char* sql : {
                 "INSERT INTO \"Waves\" (\"WaveID\", \"WaveOrder\") VALUES (1, 1)",
                 "INSERT INTO \"Volumes\" (\"VolumeID\", \"WaveID\", \"CaseData\") VALUES (1, 1, "
                 "'cases')",
                 "INSERT INTO \"Questions\" (\"QuestionID\", \"Order\", \"QuestionClassID\", "
                 "\"AppearanceVolumeID\", \"Versions\") VALUES (10, 1, 0, 1, 'v1')",
                 "INSERT INTO \"QuestionCaptions\" (\"QuestionID\", \"LanguageID\", "
                 "\"LongCaption\", \"ShortCaption\") VALUES (10, 1033, 'Long', 'Short')",
                 "INSERT INTO \"Modalities\" (\"ModalityID\", \"QuestionID\", \"ModalityOrder\", "
                 "\"AppearanceVolumeID\") VALUES (100, 10, 1, 1)",
                 "INSERT INTO \"Versions\" (\"VersionID\", \"ShortCaption\") VALUES (1, 'v1')",
             })
            Exec(db, QLatin1String(sql));
    }

    // Whether a statement goes through; a tag it adds is taken away again, so that the next case
    // can use the same key.
    static bool Accepts(Connection& db, const QString& sql) {
        QSqlQuery query(db.Database());
        const bool done = query.exec(sql);
        if (done) {
            EXPECT_TRUE(db.Exec(QStringLiteral("DELETE FROM \"Tags\"")));
        }
        return done;
    }

    static QString Value(Connection& db, const char* sql) {
        return Rows(db, QLatin1String(sql)).value(0);
    }

    QString Bool(bool value) const {
        return Sqlite() ? QString::number(value ? 1 : 0)
                        : (value ? QStringLiteral("true") : QStringLiteral("false"));
    }

    // Tables, columns (in any order: added columns come last), indexes and relations as the
    // engine's catalogue has them.
    static QStringList Catalogue(Connection& db) {
        QStringList tables = testutil::TableNames(db);
        tables.sort();
        QStringList catalogue = tables;
        for (const QString& table : tables) {
            QStringList columns = testutil::ColumnCatalogue(db, table);
            columns.sort();
            for (const QString& column : columns)
                catalogue.append(table + QLatin1Char('.') + column);
            catalogue += testutil::IndexCatalogue(db, table);
        }
        return catalogue + testutil::RelationCatalogue(db);
    }

    static std::unique_ptr<testutil::PostgresServer> s_server;
    static bool s_serverStarted;
    QTemporaryDir m_dir;
    int m_count = 0;
};

std::unique_ptr<testutil::PostgresServer> MigrationsTest::s_server;
bool MigrationsTest::s_serverStarted = false;

TEST_P(MigrationsTest, AnOldDatabaseBecomesTheCurrentOne) {
    Connection fresh;
    Make(fresh, campaign::CampaignSchema());
    const QStringList expected = Catalogue(fresh);
    ASSERT_EQ(expected.size(), 148) << "14 tables, 104 columns, 20 indexes, 10 relations";
    for (const char* from : {"", "5.1.6.15", "5,2,3,6", "5.3.4.6", "5.5.2.4", "5.6.0.0"}) {
        SCOPED_TRACE(from);
        Connection db;
        Make(db, campaign::SchemaAt(ParseVersion(QLatin1String(from)).version));
        if (std::string(from).empty()) {
            EXPECT_NE(Catalogue(db), expected) << "the old schema differs";
        }
        InsertCampaign(db);
        const util::Outcome migrated = MigrateDatabase(db, QLatin1String(from));
        ASSERT_TRUE(migrated) << migrated.Reason().toStdString();
        EXPECT_EQ(Difference(Catalogue(db), expected).toStdString(), "");
        // The rows are kept, rebuilt tables included, and relations still cascade.
        EXPECT_EQ(Value(db, "SELECT \"CaseData\" FROM \"Volumes\""), QStringLiteral("cases"));
        EXPECT_EQ(Value(db, "SELECT \"Versions\" FROM \"Questions\""), QStringLiteral("v1"));
        EXPECT_EQ(Value(db, "SELECT \"LongCaption\" || \"ShortCaption\" FROM "
                            "\"QuestionCaptions\""),
                  QStringLiteral("LongShort"));
        if (Sqlite()) {
            EXPECT_EQ(Value(db, "PRAGMA foreign_keys"), QStringLiteral("1"));
        }
        Exec(db, QStringLiteral("DELETE FROM \"Volumes\""));
        EXPECT_EQ(Value(db, "SELECT COUNT(*) FROM \"QuestionCaptions\""), QStringLiteral("0"));
        EXPECT_EQ(Value(db, "SELECT COUNT(*) FROM \"Modalities\""), QStringLiteral("0"));
    }
}

TEST_P(MigrationsTest, AddedColumnsGetTheirValuesAndChangedOnesTheirRules) {
    Connection db;
    Make(db, campaign::SchemaAt(Version{}));
    InsertCampaign(db);
    ASSERT_TRUE(MigrateDatabase(db, QString()));
    EXPECT_EQ(Value(db, "SELECT \"MatchUsingAncestorValues\", \"CaseSensitiveMatching\", "
                        "\"AddNoNewQuestions\", \"ReconciliationSourceQuestionIDs\" FROM "
                        "\"Volumes\""),
              QStringLiteral("%1|%1|%1|").arg(Bool(false)));
    EXPECT_EQ(Value(db, "SELECT \"IsDevelopLevels\", \"IsVisibleInAnalyse\" FROM \"Questions\""),
              QStringLiteral("%1|%1").arg(Bool(true)));
    EXPECT_EQ(Value(db, "SELECT \"BaseType\" FROM \"Modalities\""), QStringLiteral("0"));
    const QString longText(300, QLatin1Char('x'));
    const struct {
        const char* why;
        QString sql;
        bool accepted;
    } cases[] = {
        {"question versions may be empty",
         QStringLiteral("UPDATE \"Questions\" SET \"Versions\" = ''"), true},
        {"question user data may be empty",
         QStringLiteral("UPDATE \"Questions\" SET \"UserData\" = ''"), true},
        {"entry codes may be empty", QStringLiteral("UPDATE \"Modalities\" SET \"EntryCode\" = ''"),
         true},
        {"response versions may be empty",
         QStringLiteral("UPDATE \"Modalities\" SET \"Versions\" = ''"), true},
        {"wave descriptions may be empty",
         QStringLiteral("UPDATE \"Waves\" SET \"Description\" = ''"), true},
        {"link ids may be empty",
         QStringLiteral("UPDATE \"Volumes\" SET \"ThisVolumeLinkQuestionID\" = ''"), true},
        {"long captions may be empty",
         QStringLiteral("UPDATE \"QuestionCaptions\" SET \"LongCaption\" = ''"), true},
        {"tag descriptions may be empty",
         QStringLiteral("INSERT INTO \"Tags\" (\"TagId\", \"Description\") VALUES (1, '')"), true},
        {"response user data still refuses an empty text",
         QStringLiteral("UPDATE \"Modalities\" SET \"UserData\" = ''"), false},
        {"case data became a memo",
         QStringLiteral("UPDATE \"Volumes\" SET \"CaseData\" = '%1'").arg(longText), true},
        {"short question captions became memos",
         QStringLiteral("UPDATE \"QuestionCaptions\" SET \"ShortCaption\" = '%1'").arg(longText),
         true},
        {"response user data became a memo",
         QStringLiteral("UPDATE \"Modalities\" SET \"UserData\" = '%1'").arg(longText), true},
        {"short version captions became Text(255)",
         QStringLiteral("UPDATE \"Versions\" SET \"ShortCaption\" = '%1'").arg(longText), false},
        {"tag captions are Text(255)",
         QStringLiteral("INSERT INTO \"Tags\" (\"TagId\", \"Caption\") VALUES (1, '%1')")
             .arg(longText),
         false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Accepts(db, c.sql), c.accepted) << c.why;
}

TEST_P(MigrationsTest, AFailingStepStopsTheRestAndKeepsTheEarlierOnes) {
    Connection db;
    Make(db, campaign::SchemaAt(V(5, 2, 3, 6)));
    // Two waves in one place: the unique wave order cannot be made.
    Exec(db, QStringLiteral("INSERT INTO \"Waves\" (\"WaveID\", \"WaveOrder\") VALUES (1, 1)"));
    Exec(db, QStringLiteral("INSERT INTO \"Waves\" (\"WaveID\", \"WaveOrder\") VALUES (2, 1)"));
    const util::Outcome failed = MigrateDatabase(db, QStringLiteral("5.2.3.6"));
    ASSERT_FALSE(failed);
    EXPECT_TRUE(
        failed.Reason().startsWith(QLatin1String("ADO error CWavesRSAdo::MoveTo5_3_0_1 - ")))
        << failed.Reason().toStdString();
    EXPECT_GT(failed.Reason().size(), 45) << "the database's reason follows";
    EXPECT_TRUE(db.HasColumn(QStringLiteral("Volumes"), QStringLiteral("AddNoNewQuestions")));
    EXPECT_TRUE(
        db.HasColumn(QStringLiteral("Volumes"), QStringLiteral("ReconciliationSourceQuestionIDs")));
    EXPECT_FALSE(db.HasColumn(QStringLiteral("Questions"), QStringLiteral("IsVisibleInAnalyse")));
    EXPECT_FALSE(db.HasTable(QStringLiteral("Tags")));
    // Once the cause is gone the same version text migrates: what was done is not done twice.
    Exec(db, QStringLiteral("UPDATE \"Volumes\" SET \"AddNoNewQuestions\" = %1").arg(Bool(true)));
    Exec(db, QStringLiteral("DELETE FROM \"Waves\" WHERE \"WaveID\" = 2"));
    Exec(db, QStringLiteral("INSERT INTO \"Volumes\" (\"VolumeID\", \"WaveID\", "
                            "\"AddNoNewQuestions\") VALUES (1, 1, %1)")
                 .arg(Bool(true)));
    const util::Outcome again = MigrateDatabase(db, QStringLiteral("5.2.3.6"));
    ASSERT_TRUE(again) << again.Reason().toStdString();
    EXPECT_EQ(Value(db, "SELECT \"AddNoNewQuestions\" FROM \"Volumes\""), Bool(true));
    EXPECT_TRUE(db.HasTable(QStringLiteral("Tags")));
}

TEST_P(MigrationsTest, AStepThatFailsHalfWayLeavesItsTableAsItWas) {
    Connection db;
    Make(db, campaign::SchemaAt(V(5, 6, 0, 0)));
    InsertCampaign(db);
    // Too long for the Text(255) that the last step makes of it.
    const QString longText(300, QLatin1Char('x'));
    Exec(db, QStringLiteral("UPDATE \"Versions\" SET \"ShortCaption\" = '%1'").arg(longText));
    const util::Outcome failed = MigrateDatabase(db, QStringLiteral("5,6,0,0"));
    ASSERT_FALSE(failed);
    EXPECT_TRUE(
        failed.Reason().startsWith(QLatin1String("ADO error CVersionsRSAdo::MoveTo5_6_1_0 - ")))
        << failed.Reason().toStdString();
    // The step before it stays applied.
    EXPECT_TRUE(db.Exec(QStringLiteral("UPDATE \"QuestionCaptions\" SET \"LongCaption\" = ''")));
    // Its own first change, the long caption becoming a memo, is undone with it.
    EXPECT_FALSE(
        db.Exec(QStringLiteral("UPDATE \"Versions\" SET \"LongCaption\" = '%1'").arg(longText)));
    EXPECT_EQ(Value(db, "SELECT \"ShortCaption\" FROM \"Versions\""), longText);
    EXPECT_EQ(testutil::TableNames(db).size(), 14);
}

TEST_P(MigrationsTest, AColumnThatExistsIsSkippedWithItsFill) {
    Connection db;
    Make(db, campaign::CampaignSchema());
    InsertCampaign(db);
    Exec(db, QStringLiteral("UPDATE \"Questions\" SET \"IsDevelopLevels\" = %1, "
                            "\"IsVisibleInAnalyse\" = %1")
                 .arg(Bool(false)));
    const QStringList before = Catalogue(db);
    // A version text older than the tables: every step finds its work done.
    const util::Outcome migrated = MigrateDatabase(db, QStringLiteral("5.0"));
    ASSERT_TRUE(migrated) << migrated.Reason().toStdString();
    EXPECT_EQ(Catalogue(db), before);
    EXPECT_EQ(Value(db, "SELECT \"IsDevelopLevels\", \"IsVisibleInAnalyse\" FROM \"Questions\""),
              QStringLiteral("%1|%1").arg(Bool(false)));
}

TEST_P(MigrationsTest, TheRepairRunsOnlyForDatabasesOlderThanIt) {
    // Files at 5.3.4.6 and 5.3.5.1 whose question versions still refuse an empty text.
    campaign::Schema broken = campaign::SchemaAt(V(5, 3, 5, 1));
    for (campaign::Table& table : broken.tables)
        if (table.name == QLatin1String("Questions"))
            for (campaign::Column& column : table.columns)
                if (column.name == QLatin1String("Versions"))
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
        EXPECT_EQ(bool(db.Exec(QStringLiteral("UPDATE \"Questions\" SET \"Versions\" = ''"))),
                  c.repaired)
            << c.from;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, MigrationsTest,
                         ::testing::Values(Dialect::Sqlite, Dialect::PostgreSql),
                         [](const ::testing::TestParamInfo<Dialect>& info) {
                             return info.param == Dialect::Sqlite ? "Sqlite" : "PostgreSql";
                         });

} // namespace
