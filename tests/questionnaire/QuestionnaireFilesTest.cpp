#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Markup.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlScanner.h"
#include "util/AnsiCodePage.h"
#include "util/SqlConnection.h"
#include "util/TextFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace questionnaire;
using namespace Qt::StringLiterals;

namespace {

using testutil::Dump;

constexpr qint32 kProgramVersion = 0x0100;

// Each test has a folder of its own for the files it writes.
class FileTest : public ::testing::Test {
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
class XmlFileTest : public FileTest {};
class QesTest : public FileTest {};

// The files as this program has always written them: the sample, and a questionnaire whose texts
// XML cannot carry plainly (line ends, markup, control characters, lone surrogates, U+FFFF, pairs,
// right-to-left text, an empty text, such characters in attributes), written as references or in
// hexadecimal. Both are valid against the schema, read alike whole or piece by piece (as a large
// file is read, cut anywhere), and written again give the same bytes.
TEST_F(XmlFileTest, GoldenFilesReadWholeOrInPiecesAndWriteByteForByte) {
    for (const QString& name : {u"sample.xml"_s, u"hostile.xml"_s}) {
        SCOPED_TRACE(name.toStdString());
        const QString golden = testutil::DataPath(name);
        EXPECT_EQ(testutil::ValidateAgainstSchema(golden), QString());
        CMarkup doc;
        ASSERT_TRUE(doc.SetDoc(util::DecodeText(testutil::ReadAll(golden))));
        CQuestionnaire whole;
        ASSERT_TRUE(whole.FromXML(doc));
        for (size_t piece : {1, 2, 3, 5, 8, 13, 64}) {
            util::TextFileReader reader;
            ASSERT_TRUE(reader.Open(golden));
            XmlScanner scanner(reader, piece);
            CQuestionnaire q;
            EXPECT_TRUE(ReadXmlDocument(scanner, q)) << q.GetLastError().toStdString();
            EXPECT_EQ(q, whole) << "in pieces of " << piece;
        }
        CQuestionnaire read;
        ASSERT_TRUE(ReadXmlFile(golden, read));
        ASSERT_TRUE(
            WriteXmlFile(Path(name), name == u"sample.xml"_s ? testutil::MakeSample() : read));
        EXPECT_EQ(testutil::ReadAll(Path(name)), testutil::ReadAll(golden));
    }
    const QByteArray bytes = testutil::ReadAll(testutil::DataPath(u"sample.xml"_s));

    // Cut short at every length, read in pieces, a document is refused with a reason and leaves
    // nothing half-built; only the final line end may be missing from one that still reads.
    const QString path = Path(u"cut.xml"_s);
    for (qsizetype length = 0; length < bytes.size(); ++length) {
        ASSERT_TRUE(testutil::WriteAll(path, bytes.left(length)));
        util::TextFileReader reader;
        reader.Open(path);
        XmlScanner scanner(reader, 7);
        CQuestionnaire q;
        if (ReadXmlDocument(scanner, q)) {
            EXPECT_EQ(q, testutil::MakeSample()) << length;
        } else {
            EXPECT_FALSE(q.GetLastError().isEmpty()) << length;
            EXPECT_EQ(q.GetNbreQuestion(), 0) << length;
        }
    }
}

// A file without a mark is ANSI text: UTF-16 without its mark is refused, its first zero byte
// ending the text.
TEST_F(XmlFileTest, FilesWithoutAMarkAreReadAsAnsi) {
    util::AnsiCodePage::SetCurrent(1252);
    const QByteArray ansi =
        "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n"
        "<questionnaire format=\"1\"><languages><language id=\"1036\" main=\"true\"/></languages>"
        "<versions/><questions><question id=\"1\" shortcut=\"Q\xe9\" type=\"text\">"
        "<long lang=\"1036\">Caf\xe9 cr\xe8me \x80</long></question></questions></questionnaire>";
    const QString path = Path(u"ansi.xml"_s);
    ASSERT_TRUE(testutil::WriteAll(path, ansi));
    CQuestionnaire q;
    ASSERT_TRUE(ReadXmlFile(path, q)) << q.GetLastError().toStdString();
    EXPECT_EQ(q.GetQuestion(0).m_shortcut, u"Qé"_s);
    EXPECT_EQ(q.GetQuestion(0).GetLocalisedLongCaption(1036), u"Café crème €"_s);
    util::AnsiCodePage::Reset();
    ASSERT_TRUE(
        testutil::WriteAll(path, testutil::Utf16Le(uR"(<questionnaire format="1"/>)"_s, false)));
    CQuestionnaire broken;
    EXPECT_FALSE(ReadXmlFile(path, broken));
    EXPECT_FALSE(broken.GetLastError().isEmpty());
}

// Elements of a later format are skipped, however deep: without recursion, deep nesting is no
// danger. Attribute values are read as any XML reader takes them: references decoded, literal
// line ends and tabs read as spaces, a line end written as CR LF as one.
TEST_F(XmlFileTest, DocumentsAreReadAsXmlDefinesThemOrRefusedWithAMessage) {
    CMarkup doc;
    doc.SetDoc(QStringLiteral(
        "<questionnaire format=\"1\" name='A &amp; B &#x1F600;'><media><file name=\"a.png\"/>"
        "</media><languages/><versions/><questions><question id=' 7 ' type=\"single\" "
        "shortcut=\"x&#10;y\tz\r\nw&lt;\"><layout columns=\"2\"/><response id=\"1\">"
        "<caption lang=\"9\">Yes</caption><image/></response></question></questions>"
        "</questionnaire>"));
    CQuestionnaire read;
    ASSERT_TRUE(read.FromXML(doc)) << read.GetLastError().toStdString();
    EXPECT_EQ(read.GetName(), QString::fromUtf16(u"A & B \U0001F600"));
    ASSERT_EQ(read.GetNbreQuestion(), 1);
    EXPECT_EQ(read.GetQuestion(0).m_id, 7);
    EXPECT_EQ(read.GetQuestion(0).m_shortcut, u"x\ny z w<"_s);
    EXPECT_EQ(read.GetQuestion(0).GetModalite(0).GetLocalisedLongCaption(9), u"Yes"_s);
    const QString question =
        uR"(<questionnaire format="1"><questions><question id="1" type="text">)"_s;
    const QString end = u"</question></questions></questionnaire>"_s;
    doc.SetDoc(question + u"<x>"_s.repeated(200000) + u"</x>"_s.repeated(200000) + end);
    EXPECT_TRUE(read.FromXML(doc)) << read.GetLastError().toStdString();

    const auto questions = [](const QString& inside) {
        return uR"(<questionnaire format="1"><questions>)"_s + inside +
               u"</questions></questionnaire>"_s;
    };
    const QString documents[] = {
        QString(),
        question,
        u"<other/>"_s,
        uR"(<questionnaire format="2"/>)"_s,
        questions(uR"(<question id="x" type="single"/>)"_s),
        questions(uR"(<question id="1" type="blob"/>)"_s),
        questions(uR"(<question id="1" type="text"/><question id="1" type="text"/>)"_s),
        // Negative ids name kinds of captions.
        questions(uR"(<question id="-2" type="text"/>)"_s),
        questions(uR"(<question id="1" type="single"><response id="-1"/></question>)"_s),
        uR"(<questionnaire format="1"><systemMessages><message number="44" lang="1">x</message>)"
        uR"(</systemMessages></questionnaire>)"_s,
        question + uR"(<long lang="1033" hex="00Z1"/>)"_s + end,
        // Document types, where entity bombs and external fetches come from, are refused.
        uR"(<!DOCTYPE q [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;">]>)"
        uR"(<questionnaire format="1">&b;</questionnaire>)"_s,
        uR"(<!DOCTYPE q [<!ENTITY e SYSTEM "file:///etc/passwd">]>)"_s + question +
            uR"(<long lang="1">&e;</long>)"_s + end,
        question + uR"(<long lang="1">&e;</long>)"_s + end,
        question + uR"(<long lang="1">a)"_s + QChar(0xD800) + QChar(0) + u"b</long>"_s + end,
        uR"(<questionnaire format="1">)"_s + u"<x>"_s.repeated(200000),
    };
    for (const QString& text : documents) {
        SCOPED_TRACE(text.left(120).toStdString());
        doc.SetDoc(text);
        CQuestionnaire q = testutil::MakeSample();
        EXPECT_FALSE(q.FromXML(doc));
        EXPECT_FALSE(q.GetLastError().isEmpty());
        EXPECT_EQ(q.GetNbreQuestion(), 0) << "a failed read leaves nothing half-built";
    }
}

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
