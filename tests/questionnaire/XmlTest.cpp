#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/Markup.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlScanner.h"
#include "util/AnsiCodePage.h"
#include "util/TextFile.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace questionnaire;

namespace {

class XmlFileTest : public ::testing::Test {
protected:
    QString Path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
};

// The files as this program has always written them: the sample, and a questionnaire whose texts
// XML cannot carry plainly (line ends, markup, control characters, lone surrogates, U+FFFF, pairs,
// right-to-left text, an empty text, such characters in attributes), written as references or in
// hexadecimal. Both are valid against the schema, and read and written again give the same bytes.
TEST_F(XmlFileTest, GoldenFilesReadAndWriteByteForByte) {
    for (const char* name : {"sample.xml", "hostile.xml"}) {
        const QString invalid =
            testutil::ValidateAgainstSchema(testutil::DataPath(QLatin1String(name)));
        EXPECT_TRUE(invalid.isEmpty()) << name << ": " << invalid.toStdString();
    }
    const QString sample = Path(QStringLiteral("sample.xml"));
    ASSERT_TRUE(WriteXmlFile(sample, testutil::MakeSample()));
    EXPECT_EQ(testutil::ReadAll(sample),
              testutil::ReadAll(testutil::DataPath(QStringLiteral("sample.xml"))));
    CQuestionnaire hostile;
    ASSERT_TRUE(ReadXmlFile(testutil::DataPath(QStringLiteral("hostile.xml")), hostile));
    const QString rewritten = Path(QStringLiteral("hostile.xml"));
    ASSERT_TRUE(WriteXmlFile(rewritten, hostile));
    EXPECT_EQ(testutil::ReadAll(rewritten),
              testutil::ReadAll(testutil::DataPath(QStringLiteral("hostile.xml"))));
}

// A large file is read piece by piece: cut anywhere, it reads as when held whole.
TEST_F(XmlFileTest, ReadingInPiecesGivesWhatReadingWholeGives) {
    CQuestionnaire whole;
    for (const QString& name : {QStringLiteral("sample.xml"), QStringLiteral("hostile.xml")}) {
        const QString path = testutil::DataPath(name);
        CMarkup doc;
        ASSERT_TRUE(doc.SetDoc(util::DecodeText(testutil::ReadAll(path))));
        ASSERT_TRUE(whole.FromXML(doc));
        for (size_t piece : {1, 2, 3, 5, 8, 13, 64}) {
            util::TextFileReader reader;
            ASSERT_TRUE(reader.Open(path));
            XmlScanner scanner(reader, piece);
            CQuestionnaire q;
            EXPECT_TRUE(ReadXmlDocument(scanner, q)) << q.GetLastError().toStdString();
            EXPECT_EQ(q, whole) << name.toStdString() << " in pieces of " << piece;
        }
    }
    // Cut short at every length, read in pieces, a document is refused with a reason and leaves
    // nothing half-built; only the final line end may be missing from one that still reads.
    const QByteArray bytes = testutil::ReadAll(testutil::DataPath(QStringLiteral("sample.xml")));
    const QString path = Path(QStringLiteral("cut.xml"));
    ASSERT_TRUE(ReadXmlFile(testutil::DataPath(QStringLiteral("sample.xml")), whole));
    for (qsizetype length = 0; length < bytes.size(); ++length) {
        ASSERT_TRUE(testutil::WriteAll(path, bytes.left(length)));
        util::TextFileReader reader;
        reader.Open(path);
        XmlScanner scanner(reader, 7);
        CQuestionnaire q;
        if (ReadXmlDocument(scanner, q)) {
            EXPECT_EQ(q, whole) << length;
        } else {
            EXPECT_FALSE(q.GetLastError().isEmpty()) << length;
            EXPECT_EQ(q.GetNbreQuestion(), 0) << length;
        }
    }
}

TEST_F(XmlFileTest, ReadsAnsiTextWithoutMark) {
    util::AnsiCodePage::SetCurrent(1252);
    const QByteArray ansi =
        "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n"
        "<questionnaire format=\"1\"><languages><language id=\"1036\" main=\"true\"/></languages>"
        "<versions/><questions><question id=\"1\" shortcut=\"Q\xe9\" type=\"text\">"
        "<long lang=\"1036\">Caf\xe9 cr\xe8me \x80</long></question></questions></questionnaire>";
    const QString path = Path(QStringLiteral("ansi.xml"));
    ASSERT_TRUE(testutil::WriteAll(path, ansi));
    CQuestionnaire q;
    ASSERT_TRUE(ReadXmlFile(path, q)) << q.GetLastError().toStdString();
    EXPECT_EQ(q.GetQuestion(0).m_shortcut, QStringLiteral("Qé"));
    EXPECT_EQ(q.GetQuestion(0).GetLocalisedLongCaption(1036), QStringLiteral("Café crème €"));
    util::AnsiCodePage::Reset();

    // UTF-16 without its mark is taken as ANSI: the first zero byte ends the text.
    const QString unmarked = Path(QStringLiteral("unmarked.xml"));
    ASSERT_TRUE(testutil::WriteAll(
        unmarked, testutil::Utf16Le(QStringLiteral("<questionnaire format=\"1\"/>"), false)));
    CQuestionnaire broken;
    EXPECT_FALSE(ReadXmlFile(unmarked, broken));
    EXPECT_FALSE(broken.GetLastError().isEmpty());
}

TEST_F(XmlFileTest, MalformedAndHostileDocumentsAreRefusedWithAMessage) {
    const QString question =
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\">");
    const QString end = QStringLiteral("</question></questions></questionnaire>");
    const QString documents[] = {
        QString(),
        question,
        QStringLiteral("<other/>"),
        QStringLiteral("<questionnaire format=\"2\"/>"),
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"x\" "
                       "type=\"single\"/></questions></questionnaire>"),
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" "
                       "type=\"blob\"/></questions></questionnaire>"),
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\"/>"
                       "<question id=\"1\" type=\"text\"/></questions></questionnaire>"),
        // Negative ids name kinds of captions.
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"-2\" "
                       "type=\"text\"/></questions></questionnaire>"),
        QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" type=\"single\">"
                       "<response id=\"-1\"/></question></questions></questionnaire>"),
        QStringLiteral("<questionnaire format=\"1\"><systemMessages><message number=\"44\" "
                       "lang=\"1\">x</message></systemMessages></questionnaire>"),
        question + QStringLiteral("<long lang=\"1033\" hex=\"00Z1\"/>") + end,
        // Document types, where entity bombs and external fetches come from, are refused.
        QStringLiteral("<!DOCTYPE q [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;\">]>"
                       "<questionnaire format=\"1\">&b;</questionnaire>"),
        QStringLiteral("<!DOCTYPE q [<!ENTITY e SYSTEM \"file:///etc/passwd\">]>") + question +
            QStringLiteral("<long lang=\"1\">&e;</long>") + end,
        question + QStringLiteral("<long lang=\"1\">&e;</long>") + end,
        question + QStringLiteral("<long lang=\"1\">a") + QChar(0xD800) + QChar(0) +
            QStringLiteral("b</long>") + end,
        QStringLiteral("<questionnaire format=\"1\">") + QStringLiteral("<x>").repeated(200000),
    };
    for (const QString& text : documents) {
        CMarkup doc;
        doc.SetDoc(text);
        CQuestionnaire q = testutil::MakeSample();
        const std::string shown = text.left(120).toStdString();
        EXPECT_FALSE(q.FromXML(doc)) << shown;
        EXPECT_FALSE(q.GetLastError().isEmpty()) << shown;
        EXPECT_EQ(q.GetNbreQuestion(), 0) << "a failed read leaves nothing half-built: " << shown;
    }
    // Deep nesting is no danger: unknown elements are skipped without recursion.
    CMarkup deep;
    deep.SetDoc(question + QStringLiteral("<x>").repeated(200000) +
                QStringLiteral("</x>").repeated(200000) + end);
    CQuestionnaire q;
    EXPECT_TRUE(q.FromXML(deep)) << q.GetLastError().toStdString();
}

// Elements of a later format are skipped. Attribute values are read as any XML reader takes them:
// references decoded, literal line ends and tabs read as spaces, a line end written as CR LF as
// one.
TEST_F(XmlFileTest, UnknownElementsAreSkippedAndAttributeValuesReadAsXmlDefinesThem) {
    CMarkup doc;
    doc.SetDoc(QStringLiteral(
        "<questionnaire format=\"1\" name='A &amp; B &#x1F600;'><media><file name=\"a.png\"/>"
        "</media><languages/><versions/><questions><question id=' 7 ' type=\"single\" "
        "shortcut=\"x&#10;y\tz\r\nw&lt;\"><layout columns=\"2\"/><response id=\"1\">"
        "<caption lang=\"9\">Yes</caption><image/></response></question></questions>"
        "</questionnaire>"));
    CQuestionnaire q;
    ASSERT_TRUE(q.FromXML(doc)) << q.GetLastError().toStdString();
    EXPECT_EQ(q.GetName(), QString::fromUtf16(u"A & B \U0001F600"));
    ASSERT_EQ(q.GetNbreQuestion(), 1);
    EXPECT_EQ(q.GetQuestion(0).m_id, 7);
    EXPECT_EQ(q.GetQuestion(0).m_shortcut, QStringLiteral("x\ny z w<"));
    EXPECT_EQ(q.GetQuestion(0).GetModalite(0).GetLocalisedLongCaption(9), QStringLiteral("Yes"));
}

TEST_F(XmlFileTest, FailedSaveLeavesTheOldFile) {
    const QString path = Path(QStringLiteral("keep.xml"));
    ASSERT_TRUE(testutil::WriteAll(path, "old"));
    const util::Outcome failed =
        WriteXmlFile(Path(QStringLiteral("missing/folder/q.xml")), testutil::MakeSample());
    EXPECT_FALSE(failed);
    EXPECT_FALSE(failed.Reason().isEmpty());
    EXPECT_EQ(testutil::ReadAll(path), QByteArray("old"));
}

} // namespace
