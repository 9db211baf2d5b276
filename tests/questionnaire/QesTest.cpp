#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace questionnaire;

namespace {

using testutil::Dump;

constexpr qint32 kProgramVersion = 0x0100;

class QesTest : public ::testing::Test {
protected:
    QString Path(const QString& name = QStringLiteral("survey.qes")) const {
        return m_dir.filePath(name);
    }

    QString WriteSample(const CQuestionnaire& q = testutil::MakeSample()) {
        const util::Outcome written = WriteQesFile(Path(), q, kProgramVersion);
        EXPECT_TRUE(written) << written.Reason().toStdString();
        return Path();
    }

    static bool ReadAll(const QString& path, CQuestionnaire& q) {
        return q.Read(path, true, true, true, true, true, dbQesFile, kProgramVersion, true);
    }

    static void Sql(const QString& path, const QStringList& statements) {
        EXPECT_TRUE(testutil::Sql(path, statements));
    }

    QTemporaryDir m_dir;
};

TEST_F(QesTest, WholeFileWriteReplacesTheFileAndReadsBackTheSameQuestionnaire) {
    WriteSample(); // the file written below takes its place
    CQuestionnaire q = testutil::MakeSample();
    // Texts that only survive when the file keeps UTF-16 as it is.
    q.GetAdrQuestion(0)->SetLocalisedLongCaption(2000,
                                                 QString(QChar(0xDC00)) + QStringLiteral("x"));
    q.GetAdrQuestion(0)->SetLocalisedShortCaption(2000,
                                                  QString::fromUtf16(u"\U0001F600\r\n\t\u0001"));
    q.GetAdrQuestion(0)->SetLocalisedComments(2001, QString()); // empty but present
    // First characters the database takes for a byte order mark unless the writer minds them.
    q.GetAdrQuestion(0)->SetLocalisedInstructions(2000, QChar(0xFEFF) + QStringLiteral("mark"));
    q.GetAdrQuestion(0)->SetLocalisedComments(2000, QChar(0xFFFE) + QStringLiteral("swapped"));
    CQuestionnaire read;
    ASSERT_TRUE(ReadAll(WriteSample(q), read)) << read.GetLastError().toStdString();
    EXPECT_EQ(read.GetStatus(), kQesOk);
    EXPECT_EQ(read, q);
}

TEST_F(QesTest, SavingCaptionsTouchesOnlyCaptionRows) {
    const QString path = WriteSample();
    Sql(path, {QStringLiteral("CREATE TABLE layout (question_id INTEGER, css TEXT)"),
               QStringLiteral("INSERT INTO layout VALUES (10, 'color: red')")});
    const QStringList questionsBefore = Dump(path, QStringLiteral("questions"));
    const QStringList languagesBefore = Dump(path, QStringLiteral("languages"));
    const QStringList messagesBefore = Dump(path, QStringLiteral("system_messages"));

    CQuestionnaire q;
    ASSERT_TRUE(ReadAll(path, q));
    WriteCaption(q, 10, -1, testutil::kGerman, QStringLiteral("Wie zufrieden sind Sie?"));
    WriteCaption(q, 10, 1, testutil::kFrench, QString());
    // Changes outside the captions must not reach the file through a caption save.
    q.SetCustomErrorMessage(testutil::kEnglish, 9, QStringLiteral("not saved"));
    q.AddLanguage(std::make_unique<CLanguage>(1040u));

    CDBStructureAdo db(CDBStructureAdo::GetQesConnectionString(path));
    ASSERT_TRUE(db.Open(false)) << db.GetLastError().toStdString();
    ASSERT_TRUE(db.SaveCaptionsOnly(&q)) << db.GetLastError().toStdString();

    EXPECT_EQ(Dump(path, QStringLiteral("layout")), QStringList{QStringLiteral("10|color: red")});
    EXPECT_EQ(Dump(path, QStringLiteral("questions")), questionsBefore);
    EXPECT_EQ(Dump(path, QStringLiteral("languages")), languagesBefore);
    EXPECT_EQ(Dump(path, QStringLiteral("system_messages")), messagesBefore);
    CQuestionnaire read;
    ASSERT_TRUE(ReadAll(path, read));
    EXPECT_EQ(ReadCaption(read, 10, -1, testutil::kGerman),
              QStringLiteral("Wie zufrieden sind Sie?"));
    EXPECT_EQ(ReadCaption(read, 10, 1, testutil::kFrench), QString());
    EXPECT_EQ(read.GetLanguageCount(), 3);

    // Each of the other savers brings its own part, and only that.
    ASSERT_TRUE(db.SaveLanguages(q));
    ASSERT_TRUE(db.SaveErrorMessages(q));
    q.GetAdrFiltre(0)->SetLocalisedMessage(testutil::kFrench, QStringLiteral("On avance"));
    ASSERT_TRUE(db.DoSaveFilters(&q));
    CQuestionnaire all;
    ASSERT_TRUE(ReadAll(path, all));
    EXPECT_EQ(all, q);
    EXPECT_EQ(Dump(path, QStringLiteral("layout")), QStringList{QStringLiteral("10|color: red")});
}

TEST_F(QesTest, BrokenFilesAreRefusedWithTheirStatus) {
    struct Case {
        const char* name;
        std::function<void(const QString&)> damage;
        quint16 status;
    } cases[] = {
        {"not a database", [](const QString& p) { testutil::WriteAll(p, QByteArray(4096, 'x')); },
         kQesNotADatabase},
        {"missing file", [](const QString& p) { QFile::remove(p); }, kQesCannotOpen},
        {"empty file", [](const QString& p) { testutil::WriteAll(p, {}); }, kQesNotAQuestionnaire},
        {"missing table",
         [](const QString& p) { Sql(p, {QStringLiteral("DROP TABLE routing_messages")}); },
         kQesNotAQuestionnaire},
        {"wrong column type",
         [](const QString& p) {
             Sql(p,
                 {QStringLiteral("DROP TABLE versions"),
                  QStringLiteral("CREATE TABLE versions (id TEXT, position INTEGER, name TEXT)")});
         },
         kQesBadSchema},
        {"newer format",
         [](const QString& p) {
             Sql(p, {QStringLiteral("UPDATE format SET value = '99' WHERE key = 'format'")});
         },
         kQesNewerFormat},
        {"text in a number column",
         [](const QString& p) { Sql(p, {QStringLiteral("UPDATE questions SET visible = 'yes'")}); },
         kQesBadData},
        {"negative question id",
         [](const QString& p) {
             Sql(p, {QStringLiteral("UPDATE questions SET id = -2 WHERE id = "
                                    "(SELECT MIN(id) FROM questions)")});
         },
         kQesBadData},
        {"negative response id",
         [](const QString& p) {
             Sql(p, {QStringLiteral("UPDATE responses SET id = -1 WHERE rowid = "
                                    "(SELECT MIN(rowid) FROM responses)")});
         },
         kQesBadData},
        {"number beyond 32 bits",
         [](const QString& p) {
             Sql(p, {QStringLiteral("UPDATE languages SET lcid = 5000000000 WHERE lcid = 1033")});
         },
         kQesBadData},
    };
    for (const Case& c : cases) {
        const QString path = WriteSample();
        c.damage(path);
        CQuestionnaire q = testutil::MakeSample();
        EXPECT_FALSE(ReadAll(path, q)) << c.name;
        EXPECT_EQ(q.GetStatus(), c.status) << c.name;
        EXPECT_FALSE(q.GetLastError().isEmpty()) << c.name;
        EXPECT_EQ(q.GetNbreQuestion(), 0) << c.name;
        CDBStructureAdo db(CDBStructureAdo::GetQesConnectionString(path));
        if (c.status != kQesNewerFormat && c.status != kQesBadData) {
            EXPECT_FALSE(db.Open(false)) << c.name;
        }
    }
}

TEST_F(QesTest, WarningsAboveEightStillReadTheQuestionnaire) {
    const QString path = WriteSample();
    Sql(path, {QStringLiteral("INSERT INTO question_captions VALUES (999, -1, 1033, 'orphan')"),
               QStringLiteral("INSERT INTO response_captions VALUES (10, 77, 1033, 'orphan')")});
    CQuestionnaire q;
    EXPECT_FALSE(ReadAll(path, q));
    EXPECT_EQ(q.GetStatus(), kQesRowsSkipped);
    EXPECT_TRUE(QesStatusMeansRead(q.GetStatus()));
    EXPECT_TRUE(q.GetLastError().contains(QLatin1String("2 rows")));
    EXPECT_EQ(q, testutil::MakeSample());

    const QString older = Path(QStringLiteral("older.qes"));
    ASSERT_TRUE(WriteQesFile(older, testutil::MakeSample(), kProgramVersion - 1));
    CQuestionnaire o;
    EXPECT_FALSE(ReadAll(older, o));
    EXPECT_EQ(o.GetStatus(), kQesWrittenByOlderProgram);
    EXPECT_EQ(o, testutil::MakeSample());
}

TEST_F(QesTest, FailedWholeFileWriteLeavesTheOldFile) {
    const QString path = WriteSample();
    const QByteArray before = testutil::ReadAll(path);
    const util::Outcome failed = WriteQesFile(m_dir.filePath(QStringLiteral("no/such/dir.qes")),
                                              testutil::MakeSample(), kProgramVersion);
    EXPECT_FALSE(failed);
    EXPECT_FALSE(failed.Reason().isEmpty());
    EXPECT_EQ(testutil::ReadAll(path), before);
    // No leftovers beside the target.
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("survey.qes")});
}

} // namespace
