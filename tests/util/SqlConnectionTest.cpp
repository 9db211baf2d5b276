#include "util/SqlConnection.h"
#include "common/PostgresServer.h"
#include "common/TestUtil.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

using util::sql::ColumnType;
using util::sql::Connection;
using util::sql::Dialect;
using util::sql::Inserter;
using util::sql::Transaction;

namespace {

// The same helpers against an SQLite file and against a PostgreSQL server of the test's own.
class SqlConnectionTest : public ::testing::TestWithParam<Dialect> {
protected:
    static void SetUpTestSuite() {
        s_server = std::make_unique<testutil::PostgresServer>();
        s_serverStarted = s_server->Start();
    }
    static void TearDownTestSuite() { s_server.reset(); }

    void SetUp() override {
        if (GetParam() == Dialect::Sqlite) {
            m_location = m_dir.filePath(QStringLiteral("test.db"));
            ASSERT_TRUE(m_db.Open(m_location, Connection::Mode::ReadWrite, true));
        } else {
            ASSERT_TRUE(s_serverStarted) << s_server->Error().toStdString();
            m_location = s_server->CreateDatabase(QStringLiteral("helpers"));
            ASSERT_FALSE(m_location.isEmpty()) << s_server->Error().toStdString();
            const util::Outcome opened = m_db.Open(m_location);
            ASSERT_TRUE(opened) << opened.Reason().toStdString();
        }
        ASSERT_EQ(m_db.GetDialect(), GetParam());
        // A table with a column named like a keyword, as the campaign tables have.
        const QString create =
            QStringLiteral("CREATE TABLE %1 (%2 %3 NOT NULL, %4 %5, %6 %7, PRIMARY KEY (%2))")
                .arg(m_db.Quote(QStringLiteral("Items")), m_db.Quote(QStringLiteral("Id")),
                     m_db.TypeName(ColumnType::Integer), m_db.Quote(QStringLiteral("Order")),
                     m_db.TypeName(ColumnType::Integer), m_db.Quote(QStringLiteral("Text")),
                     m_db.TypeName(ColumnType::Text));
        const util::Outcome created = m_db.Exec(create);
        ASSERT_TRUE(created) << created.Reason().toStdString();
    }

    QStringList Rows() {
        QSqlQuery query = m_db.Query();
        query.exec(
            QStringLiteral("SELECT \"Id\", \"Order\", \"Text\" FROM \"Items\" ORDER BY \"Id\""));
        const auto cell = [&query](int i) {
            return query.value(i).isNull() ? QStringLiteral("null") : query.value(i).toString();
        };
        QStringList rows;
        while (query.next())
            rows.append(QStringList{cell(0), cell(1), cell(2)}.join(QLatin1Char('|')));
        return rows;
    }

    static std::unique_ptr<testutil::PostgresServer> s_server;
    static bool s_serverStarted;
    QTemporaryDir m_dir;
    QString m_location;
    Connection m_db;
};

std::unique_ptr<testutil::PostgresServer> SqlConnectionTest::s_server;
bool SqlConnectionTest::s_serverStarted = false;

TEST_P(SqlConnectionTest, TablesColumnsInsertsAndUpserts) {
    EXPECT_TRUE(m_db.HasTable(QStringLiteral("items")));
    EXPECT_FALSE(m_db.HasTable(QStringLiteral("Other")));
    EXPECT_EQ(m_db.Columns(QStringLiteral("Items")),
              (QStringList{QStringLiteral("Id"), QStringLiteral("Order"), QStringLiteral("Text")}));
    EXPECT_TRUE(m_db.HasColumn(QStringLiteral("Items"), QStringLiteral("order")));
    EXPECT_TRUE(m_db.Columns(QStringLiteral("Missing")).isEmpty());

    Inserter row(m_db, QStringLiteral("INSERT INTO \"Items\" VALUES (?, ?, ?)"));
    // A null string is stored as an empty text; a null variant as NULL.
    ASSERT_TRUE(row.Row(1, 10, QString()));
    ASSERT_TRUE(row.Row(2, QVariant(), QStringLiteral("é \U0001F600")));
    EXPECT_FALSE(row.Row(2, 20, QStringLiteral("again"))) << "a duplicate key is refused";
    EXPECT_FALSE(row.Result().Reason().isEmpty());

    Inserter upsert(m_db, m_db.InsertOrReplace(QStringLiteral("Items"),
                                               {QStringLiteral("Id"), QStringLiteral("Order"),
                                                QStringLiteral("Text")},
                                               {QStringLiteral("Id")}));
    ASSERT_TRUE(upsert.Row(2, 21, QStringLiteral("replaced")));
    ASSERT_TRUE(upsert.Row(3, 30, QStringLiteral("new")));
    EXPECT_EQ(Rows(), (QStringList{QStringLiteral("1|10|"), QStringLiteral("2|21|replaced"),
                                   QStringLiteral("3|30|new")}));
}

TEST_P(SqlConnectionTest, TransactionsNestAsSavepoints) {
    Inserter row(m_db, QStringLiteral("INSERT INTO \"Items\" VALUES (?, ?, ?)"));
    {
        Transaction whole(m_db);
        ASSERT_TRUE(whole.Begin());
        ASSERT_TRUE(row.Row(1, 1, QStringLiteral("kept")));
        {
            Transaction part(m_db);
            ASSERT_TRUE(part.Begin());
            ASSERT_TRUE(row.Row(2, 2, QStringLiteral("rolled back")));
        } // not committed: only the part goes
        {
            Transaction part(m_db);
            ASSERT_TRUE(part.Begin());
            ASSERT_TRUE(row.Row(3, 3, QStringLiteral("part")));
            ASSERT_TRUE(part.Commit());
        }
        ASSERT_TRUE(whole.Commit());
    }
    EXPECT_EQ(Rows(), (QStringList{QStringLiteral("1|1|kept"), QStringLiteral("3|3|part")}));
    {
        Transaction abandoned(m_db);
        ASSERT_TRUE(abandoned.Begin());
        ASSERT_TRUE(m_db.Exec(QStringLiteral("DELETE FROM \"Items\"")));
    }
    EXPECT_EQ(Rows().size(), 2) << "an uncommitted transaction changes nothing";
    Transaction unopened(m_db);
    EXPECT_FALSE(unopened.Commit());
}

INSTANTIATE_TEST_SUITE_P(Each, SqlConnectionTest,
                         ::testing::Values(Dialect::Sqlite, Dialect::PostgreSql),
                         [](const ::testing::TestParamInfo<Dialect>& info) {
                             return info.param == Dialect::Sqlite ? "Sqlite" : "PostgreSql";
                         });

TEST(SqlConnection, LocationsThatCannotBeOpened) {
    QTemporaryDir dir;
    Connection db;
    EXPECT_FALSE(db.Open(dir.filePath(QStringLiteral("missing.db"))));
    EXPECT_FALSE(db.IsOpen());
    const QString notADatabase = dir.filePath(QStringLiteral("text.db"));
    ASSERT_TRUE(testutil::WriteAll(notADatabase, QByteArray(4096, 'x')));
    EXPECT_FALSE(db.Open(notADatabase));
    EXPECT_TRUE(util::sql::IsServerLocation(QStringLiteral("PostgreSQL://h/db")));
    EXPECT_FALSE(util::sql::IsServerLocation(QStringLiteral("/home/postgresql://x")));
    // No server listens there.
    const util::Outcome refused =
        db.Open(QStringLiteral("postgresql://nobody@/none?host=%1&port=1").arg(dir.path()));
    EXPECT_FALSE(refused);
    EXPECT_FALSE(refused.Reason().isEmpty());
}

} // namespace
