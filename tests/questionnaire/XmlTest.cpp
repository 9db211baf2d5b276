#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/Markup.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlScanner.h"
#include "util/AnsiCodePage.h"
#include "util/TextFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace questionnaire;
using namespace Qt::StringLiterals;

namespace {

class XmlFileTest : public ::testing::Test {
protected:
    QString Path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
};

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

} // namespace
