#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"
#include "util/SqlConnection.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace questionnaire;
using namespace Qt::StringLiterals;

namespace {

using testutil::Dump;

constexpr qint32 kProgramVersion = 0x0100;

class QesTest : public ::testing::Test {
protected:
    QString Path(const QString& name = u"survey.qes"_s) const { return m_dir.filePath(name); }

    QString WriteSample(const CQuestionnaire& q = testutil::MakeSample()) {
        const util::Outcome written = WriteQesFile(Path(), q, kProgramVersion);
        EXPECT_TRUE(written) << written.Reason().toStdString();
        return Path();
    }

    static bool ReadAll(const QString& path, CQuestionnaire& q) {
        return q.Read(path, true, true, true, true, true, dbQesFile, kProgramVersion, true);
    }

    QTemporaryDir m_dir;
};

// A whole-file write takes the place of the file there; reading takes no lock that another
// program's save holds, and reads the file as that save found it.
TEST_F(QesTest, WholeFileWriteReadsBackWhileAnotherSaveIsUnderWay) {
    WriteSample(); // the file written below takes its place
    CQuestionnaire q = testutil::MakeSample();
    // Texts that only survive when the file keeps UTF-16 as it is.
    q.GetAdrQuestion(0)->SetLocalisedLongCaption(2000, QString(QChar(0xDC00)) + u"x"_s);
    q.GetAdrQuestion(0)->SetLocalisedShortCaption(2000,
                                                  QString::fromUtf16(u"\U0001F600\r\n\t\u0001"));
    q.GetAdrQuestion(0)->SetLocalisedComments(2001, QString()); // empty but present
    // First characters the database takes for a byte order mark unless the writer minds them.
    q.GetAdrQuestion(0)->SetLocalisedInstructions(2000, QChar(0xFEFF) + u"mark"_s);
    q.GetAdrQuestion(0)->SetLocalisedComments(2000, QChar(0xFFFE) + u"swapped"_s);
    const QString path = WriteSample(q);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files), QStringList{u"survey.qes"_s});
    util::sql::Connection other;
    ASSERT_TRUE(other.Open(path));
    util::sql::Transaction saving(other);
    ASSERT_TRUE(saving.Begin());
    ASSERT_TRUE(other.Exec(u"DELETE FROM question_captions"_s));
    CQuestionnaire read;
    ASSERT_TRUE(ReadAll(path, read)) << read.GetLastError().toStdString();
    EXPECT_EQ(read.GetStatus(), kQesOk);
    EXPECT_EQ(read, q);
}

TEST_F(QesTest, SavingCaptionsTouchesOnlyCaptionRows) {
    const QString path = WriteSample();
    EXPECT_TRUE((testutil::Sql(path, {u"CREATE TABLE layout (question_id INTEGER, css TEXT)"_s,
                                      u"INSERT INTO layout VALUES (10, 'color: red')"_s})));
    // Tables a caption save must leave as they are; the program does not know the first one.
    const QStringList untouched = {u"layout"_s, u"questions"_s, u"languages"_s,
                                   u"system_messages"_s};
    QList<QStringList> before;
    for (const QString& table : untouched)
        before.append(Dump(path, table));
    CQuestionnaire q;
    ASSERT_TRUE(ReadAll(path, q));
    WriteCaption(q, 10, -1, testutil::kGerman, u"Wie zufrieden sind Sie?"_s);
    WriteCaption(q, 10, 1, testutil::kFrench, QString());
    // Changes outside the captions must not reach the file through a caption save.
    q.SetCustomErrorMessage(testutil::kEnglish, 9, u"not saved"_s);
    q.AddLanguage(std::make_unique<CLanguage>(1040u));

    CDBStructureAdo db(CDBStructureAdo::GetQesConnectionString(path));
    ASSERT_TRUE(db.Open(false)) << db.GetLastError().toStdString();
    ASSERT_TRUE(db.SaveCaptionsOnly(&q)) << db.GetLastError().toStdString();

    for (qsizetype i = 0; i < untouched.size(); ++i)
        EXPECT_EQ(Dump(path, untouched[i]), before[i]) << untouched[i].toStdString();
    CQuestionnaire read;
    ASSERT_TRUE(ReadAll(path, read));
    EXPECT_EQ(ReadCaption(read, 10, -1, testutil::kGerman), u"Wie zufrieden sind Sie?"_s);
    EXPECT_EQ(ReadCaption(read, 10, 1, testutil::kFrench), QString());

    // Each of the other savers brings its own part, and only that.
    ASSERT_TRUE(db.SaveLanguages(q));
    ASSERT_TRUE(db.SaveErrorMessages(q));
    q.GetAdrFiltre(0)->SetLocalisedMessage(testutil::kFrench, u"On avance"_s);
    ASSERT_TRUE(db.DoSaveFilters(&q));
    CQuestionnaire all;
    ASSERT_TRUE(ReadAll(path, all));
    EXPECT_EQ(all, q);
    EXPECT_EQ(Dump(path, u"layout"_s), before[0]);
}

// Damaged files are refused with their status and leave nothing half-read; warnings (statuses
// above 8) still read the questionnaire.
TEST_F(QesTest, DamagedAndOlderFilesAreReadWithTheirStatus) {
    constexpr int kRemoved = -2;
    const struct {
        const char* name;
        quint16 status;
        const char* sql; // statements run on the sample's file, separated by ';'
        int junk = -1;   // the file replaced by this many junk bytes, or removed
        qint32 writtenBy = kProgramVersion;
        const char* message = "";
    } cases[] = {
        {"not a database", kQesNotADatabase, "", 4096},
        {"missing file", kQesCannotOpen, "", kRemoved},
        {"empty file", kQesNotAQuestionnaire, "", 0},
        {"missing table", kQesNotAQuestionnaire, "DROP TABLE routing_messages"},
        {"wrong column type", kQesBadSchema,
         "DROP TABLE versions; CREATE TABLE versions (id TEXT, position INTEGER, name TEXT)"},
        {"newer format", kQesNewerFormat, "UPDATE format SET value = '99' WHERE key = 'format'"},
        {"text in a number column", kQesBadData, "UPDATE questions SET visible = 'yes'"},
        {"negative question id", kQesBadData,
         "UPDATE questions SET id = -2 WHERE id = (SELECT MIN(id) FROM questions)"},
        {"negative response id", kQesBadData,
         "UPDATE responses SET id = -1 WHERE rowid = (SELECT MIN(rowid) FROM responses)"},
        {"number beyond 32 bits", kQesBadData,
         "UPDATE languages SET lcid = 5000000000 WHERE lcid = 1033"},
        {"captions of unknown questions and responses", kQesRowsSkipped,
         "INSERT INTO question_captions VALUES (999, -1, 1033, 'orphan');"
         "INSERT INTO response_captions VALUES (10, 77, 1033, 'orphan')",
         -1, kProgramVersion, "2 rows"},
        {"written by an older program", kQesWrittenByOlderProgram, "", -1, kProgramVersion - 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = Path();
        ASSERT_TRUE(WriteQesFile(path, testutil::MakeSample(), c.writtenBy));
        if (c.junk == kRemoved)
            QFile::remove(path);
        else if (c.junk >= 0)
            testutil::WriteAll(path, QByteArray(c.junk, 'x'));
        EXPECT_TRUE(!*c.sql || testutil::Sql(path, QString::fromLatin1(c.sql).split(u';')));
        CQuestionnaire q;
        q.AddQuestion(std::make_unique<CQuestion>(99, u"stale"_s));
        EXPECT_FALSE(ReadAll(path, q));
        EXPECT_EQ(q.GetStatus(), c.status);
        EXPECT_FALSE(q.GetLastError().isEmpty());
        EXPECT_TRUE(q.GetLastError().contains(QLatin1String(c.message)));
        if (QesStatusMeansRead(q.GetStatus())) {
            EXPECT_EQ(q, testutil::MakeSample());
            continue;
        }
        EXPECT_EQ(q.GetNbreQuestion(), 0) << "a failed read leaves nothing half-built";
        CDBStructureAdo db(CDBStructureAdo::GetQesConnectionString(path));
        if (c.status != kQesNewerFormat && c.status != kQesBadData) {
            EXPECT_FALSE(db.Open(false));
        }
    }
}

} // namespace
