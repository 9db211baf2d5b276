// Damaged and hostile inputs for every reader: each ends in a clear error or a correct read,
// never in a crash, a hang or a partial write.
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Markup.h"
#include "questionnaire/formats/XmlFile.h"
#include "util/Messages.h"
#include "util/TextFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const QString kExample = testutil::SourcePath(QStringLiteral("examples/customer-satisfaction.xml"));

TEST(HostileInput, XmlTruncatedAtEveryLengthIsRefusedOrComplete) {
    const QByteArray bytes = testutil::ReadAll(kExample);
    ASSERT_GT(bytes.size(), 1000);
    CQuestionnaire whole;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, whole));
    for (qsizetype length = 0; length < bytes.size(); ++length) {
        CMarkup doc;
        doc.SetDoc(util::DecodeText(bytes.left(length)));
        CQuestionnaire q;
        if (q.FromXML(doc)) {
            // Only the final line end may be missing from a document that still reads.
            EXPECT_EQ(q, whole) << "length " << length;
        } else {
            EXPECT_FALSE(q.GetLastError().isEmpty()) << "length " << length;
            EXPECT_EQ(q.GetNbreQuestion(), 0) << "length " << length;
        }
    }
}

TEST(HostileInput, XmlNestingEntitiesAndOddCharacters) {
    const QString deep =
        QStringLiteral("<x>").repeated(200000) + QStringLiteral("</x>").repeated(200000);
    const struct {
        const char* name;
        QString xml;
        bool reads;
    } cases[] = {
        {"deep nesting inside a question",
         QStringLiteral(
             "<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\">") +
             deep + QStringLiteral("</question></questions></questionnaire>"),
         true},
        {"deep nesting, never closed",
         QStringLiteral("<questionnaire format=\"1\">") + QStringLiteral("<x>").repeated(200000),
         false},
        {"entity expansion",
         QStringLiteral("<!DOCTYPE q [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;\">"
                        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;\">]><questionnaire format=\"1\">&c;"
                        "</questionnaire>"),
         false},
        {"external entity",
         QStringLiteral("<!DOCTYPE q [<!ENTITY e SYSTEM \"file:///etc/passwd\">]>"
                        "<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\">"
                        "<long lang=\"1\">&e;</long></question></questions></questionnaire>"),
         false},
        {"undeclared entity",
         QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\">"
                        "<long lang=\"1\">&e;</long></question></questions></questionnaire>"),
         false},
        {"lone surrogate and NUL in the text",
         QStringLiteral("<questionnaire format=\"1\"><questions><question id=\"1\" type=\"text\">"
                        "<long lang=\"1\">a") +
             QChar(0xD800) + QChar(0) +
             QStringLiteral("b</long></question></questions></questionnaire>"),
         false},
    };
    for (const auto& c : cases) {
        CMarkup doc;
        doc.SetDoc(c.xml);
        CQuestionnaire q;
        EXPECT_EQ(q.FromXML(doc), c.reads) << c.name << ": " << q.GetLastError().toStdString();
        if (!c.reads) {
            EXPECT_FALSE(q.GetLastError().isEmpty()) << c.name;
            EXPECT_FALSE(q.GetLastError().contains(QLatin1String("root:"))) << c.name;
        }
    }
}

class HostileImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_q = testutil::MakeSample();
        questionnaire::BuildCaptionList(m_q, m_captions, false);
        m_options.languages = {testutil::kEnglish, testutil::kFrench, testutil::kGerman};
        m_options.referenceLanguage = testutil::kEnglish;
    }
    qint32 Import(const QString& path) {
        return exchange::ImportTranslatedFile(m_q, path, m_options, m_captions, m_messages);
    }
    QTemporaryDir m_dir;
    CQuestionnaire m_q;
    questionnaire::CaptionList m_captions;
    exchange::ImportOptions m_options;
    util::RecordedMessages m_messages;
};

TEST_F(HostileImportTest, HugeFilesAreRefusedUnreadAndLongLinesRead) {
    const QString huge = m_dir.filePath(QStringLiteral("huge.txt"));
    {
        QFile file(huge);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("\xFF\xFE", 2);
        ASSERT_TRUE(file.resize(qint64(2) << 30)); // sparse: costs no disk
    }
    const CQuestionnaire before = m_q;
    EXPECT_EQ(Import(huge), -10);
    EXPECT_TRUE(m_messages.messages.value(0).contains(QLatin1String("larger than 1 GiB")));
    EXPECT_EQ(m_q, before);

    // One line of 100 MB: read, cut and written like any other.
    const QString longLine = m_dir.filePath(QStringLiteral("long.txt"));
    const QString caption = QStringLiteral("x").repeated(50 * 1000 * 1000);
    ASSERT_TRUE(testutil::WriteAll(
        longLine, testutil::Utf16Le(QStringLiteral("QuestionId\tResponseId\t1033(ENU)\t1031(DEU)"
                                                   "\r\n10\t-1\tHow satisfied are you?\t") +
                                    caption)));
    EXPECT_EQ(Import(longLine), 1);
    EXPECT_EQ(questionnaire::ReadCaption(m_q, 10, -1, testutil::kGerman).size(), caption.size());
}

TEST_F(HostileImportTest, LoneSurrogatesAndZeroCharacters) {
    const QString path = m_dir.filePath(QStringLiteral("odd.txt"));
    const QString lone = QStringLiteral("a") + QChar(0xDC00) + QStringLiteral("b");
    ASSERT_TRUE(testutil::WriteAll(
        path, testutil::Utf16Le(
                  QStringLiteral(
                      "QuestionId\tResponseId\t1033(ENU)\t1031(DEU)\r\n10\t-2\tSatisfaction\t") +
                  lone + QStringLiteral("\r\n10\t-4\t\tbefore zero") + QChar(0) +
                  QStringLiteral("\r\n10\t-3\t\tlost\r\n"))));
    // A lone surrogate is a code unit like any other; the first zero ends the text.
    EXPECT_EQ(Import(path), 2);
    EXPECT_EQ(questionnaire::ReadCaption(m_q, 10, -2, testutil::kGerman), lone);
    EXPECT_EQ(questionnaire::ReadCaption(m_q, 10, -4, testutil::kGerman),
              QStringLiteral("before zero"));
    EXPECT_EQ(questionnaire::ReadCaption(m_q, 10, -3, testutil::kGerman), QString());
}

TEST(HostileInput, FileNamesWithSpacesLettersAndNoExtension) {
    QTemporaryDir dir;
    CQuestionnaire original;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, original));
    const QString folder = dir.filePath(QStringLiteral("Études clients 2026"));
    ASSERT_TRUE(QDir().mkdir(folder));
    for (const QString& name :
         {QStringLiteral("Enquête de satisfaction ü.xml"),
          QStringLiteral("Enquête de satisfaction ü.qex"),
          QStringLiteral("Enquête de satisfaction ü.qes"), QStringLiteral("survey")}) {
        const QString path = folder + QLatin1Char('/') + name;
        app::AppContext context;
        util::RecordedMessages messages;
        {
            app::QuestionnaireDocument document(context, messages);
            ASSERT_TRUE(document.Open(kExample));
            ASSERT_TRUE(document.Save(path)) << name.toStdString();
        }
        app::QuestionnaireDocument document(context, messages);
        ASSERT_TRUE(document.Open(path)) << name.toStdString();
        EXPECT_EQ(*document.Questionnaire(), original) << name.toStdString();
        EXPECT_TRUE(messages.messages.isEmpty()) << name.toStdString();
    }
}

} // namespace
