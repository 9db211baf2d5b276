#include "util/SqlConnection.h"
#include "common/PostgresServer.h"
#include "common/TestUtil.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

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
            m_location = m_dir.filePath(u"test.db"_s);
            ASSERT_TRUE(m_db.Open(m_location, Connection::Mode::ReadWrite, true));
        } else {
            ASSERT_TRUE(s_serverStarted) << s_server->Error().toStdString();
            m_location = s_server->CreateDatabase(u"helpers"_s);
            ASSERT_FALSE(m_location.isEmpty()) << s_server->Error().toStdString();
            const util::Outcome opened = m_db.Open(m_location);
            ASSERT_TRUE(opened) << opened.Reason().toStdString();
        }
        ASSERT_EQ(m_db.GetDialect(), GetParam());
        // A table with a column named like a keyword, as the campaign tables have.
        const QString create =
            u"CREATE TABLE %1 (%2 %3 NOT NULL, %4 %5, %6 %7, PRIMARY KEY (%2))"_s.arg(
                m_db.Quote(u"Items"_s), m_db.Quote(u"Id"_s), m_db.TypeName(ColumnType::Integer),
                m_db.Quote(u"Order"_s), m_db.TypeName(ColumnType::Integer), m_db.Quote(u"Text"_s),
                m_db.TypeName(ColumnType::Text));
        const util::Outcome created = m_db.Exec(create);
        ASSERT_TRUE(created) << created.Reason().toStdString();
    }

    QStringList Rows() {
        QSqlQuery query = m_db.Query();
        query.exec(u"SELECT \"Id\", \"Order\", \"Text\" FROM \"Items\" ORDER BY \"Id\""_s);
        const auto cell = [&query](int i) {
            return query.value(i).isNull() ? u"null"_s : query.value(i).toString();
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
    EXPECT_TRUE(m_db.HasTable(u"items"_s));
    EXPECT_FALSE(m_db.HasTable(u"Other"_s));
    EXPECT_EQ(m_db.Columns(u"Items"_s), (QStringList{u"Id"_s, u"Order"_s, u"Text"_s}));
    EXPECT_TRUE(m_db.HasColumn(u"Items"_s, u"order"_s));
    EXPECT_TRUE(m_db.Columns(u"Missing"_s).isEmpty());

    Inserter row(m_db, u"INSERT INTO \"Items\" VALUES (?, ?, ?)"_s);
    // A null string is stored as an empty text; a null variant as NULL.
    ASSERT_TRUE(row.Row(1, 10, QString()));
    ASSERT_TRUE(row.Row(2, QVariant(), u"é \U0001F600"_s));
    EXPECT_FALSE(row.Row(2, 20, u"again"_s)) << "a duplicate key is refused";
    EXPECT_FALSE(row.Result().Reason().isEmpty());
    EXPECT_EQ(Rows(), (QStringList{u"1|10|"_s, u"2|null|é \U0001F600"_s}));

    Inserter upsert(m_db,
                    m_db.InsertOrReplace(u"Items"_s, {u"Id"_s, u"Order"_s, u"Text"_s}, {u"Id"_s}));
    ASSERT_TRUE(upsert.Row(2, 21, u"replaced"_s));
    ASSERT_TRUE(upsert.Row(3, 30, u"new"_s));
    EXPECT_EQ(Rows(), (QStringList{u"1|10|"_s, u"2|21|replaced"_s, u"3|30|new"_s}));
}

TEST_P(SqlConnectionTest, TransactionsNestAsSavepoints) {
    Inserter row(m_db, u"INSERT INTO \"Items\" VALUES (?, ?, ?)"_s);
    {
        Transaction whole(m_db);
        ASSERT_TRUE(whole.Begin());
        ASSERT_TRUE(row.Row(1, 1, u"kept"_s));
        {
            Transaction part(m_db);
            ASSERT_TRUE(part.Begin());
            ASSERT_TRUE(row.Row(2, 2, u"rolled back"_s));
        } // not committed: only the part goes
        {
            Transaction part(m_db);
            ASSERT_TRUE(part.Begin());
            ASSERT_TRUE(row.Row(3, 3, u"part"_s));
            ASSERT_TRUE(part.Commit());
        }
        ASSERT_TRUE(whole.Commit());
    }
    EXPECT_EQ(Rows(), (QStringList{u"1|1|kept"_s, u"3|3|part"_s}));
    {
        Transaction abandoned(m_db);
        ASSERT_TRUE(abandoned.Begin());
        ASSERT_TRUE(m_db.Exec(u"DELETE FROM \"Items\""_s));
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
    EXPECT_FALSE(db.Open(dir.filePath(u"missing.db"_s)));
    EXPECT_FALSE(db.IsOpen());
    const QString notADatabase = dir.filePath(u"text.db"_s);
    ASSERT_TRUE(testutil::WriteAll(notADatabase, QByteArray(4096, 'x')));
    EXPECT_FALSE(db.Open(notADatabase));
    EXPECT_TRUE(util::sql::IsServerLocation(u"PostgreSQL://h/db"_s));
    EXPECT_FALSE(util::sql::IsServerLocation(u"/home/postgresql://x"_s));
    // No server listens there.
    const util::Outcome refused =
        db.Open(u"postgresql://nobody@/none?host=%1&port=1"_s.arg(dir.path()));
    EXPECT_FALSE(refused);
    EXPECT_FALSE(refused.Reason().isEmpty());
}

} // namespace
