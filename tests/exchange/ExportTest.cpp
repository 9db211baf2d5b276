#include "common/TestUtil.h"
#include "exchange/ExportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <iterator>
#include <random>

using namespace exchange;
using namespace questionnaire;

namespace {

constexpr qint32 kEn = 1033;
constexpr qint32 kFr = 1036;

// Every kind of row and the escaping cases, small enough to write the expected file by hand.
CQuestionnaire MakeSmall() {
    CQuestionnaire q;
    q.AddLanguage(std::make_unique<CLanguage>(1036u));
    q.AddLanguage(std::make_unique<CLanguage>(1033u));
    q.SetDefaultLanguage(kEn);
    auto q1 = std::make_unique<CQuestion>(1, QStringLiteral("Q1"));
    q1->SetLocalisedLongCaption(kEn, QStringLiteral("Line one\nLine two"));
    q1->SetLocalisedLongCaption(kFr, QStringLiteral("Ligne un"));
    q1->SetLocalisedShortCaption(kEn, QStringLiteral("Short"));
    q1->SetLocalisedInstructions(kEn, QStringLiteral("Tab\there\r"));
    auto yes = std::make_unique<CModalite>(1, QStringLiteral("A"));
    yes->SetLocalisedLongCaption(kEn, QStringLiteral("Yes"));
    yes->SetLocalisedLongCaption(kFr, QStringLiteral("Oui"));
    q1->AddModalite(std::move(yes));
    auto no = std::make_unique<CModalite>(2, QStringLiteral("B\tX"));
    no->SetLocalisedLongCaption(kEn, QStringLiteral("Say \"no\""));
    no->SetVersions({2});
    q1->AddModalite(std::move(no));
    q.AddQuestion(std::move(q1));
    auto q2 = std::make_unique<CQuestion>(2, QStringLiteral("HIDDEN"));
    q2->m_visible = 0;
    q2->SetLocalisedLongCaption(kEn, QStringLiteral("Yes")); // a duplicate of response 1
    q2->SetLocalisedLongCaption(kFr, QStringLiteral("Oui"));
    q.AddQuestion(std::move(q2));
    auto routing = std::make_unique<CFiltre>(7, CFiltre::kKindWithMessage);
    routing->SetLocalisedMessage(kEn, QStringLiteral("back\\slash"));
    routing->SetLocalisedMessage(kFr, QStringLiteral("a\\b\n"));
    q.AddFiltre(std::move(routing));
    return q;
}

class ExportTest : public ::testing::Test {
protected:
    bool Write(const QString& path, const ExportOptions& options, const CQuestionnaire& q) {
        questionnaire::CaptionList list;
        questionnaire::BuildCaptionList(q, list, false);
        return ExportStringsForTranslation(path, q, options, list, m_messages, &m_report);
    }
    QString Export(const ExportOptions& options, const CQuestionnaire& q = MakeSmall()) {
        const QString path = m_dir.filePath(QStringLiteral("out.txt"));
        EXPECT_FALSE(Write(path, options, q));
        const QByteArray bytes = testutil::ReadAll(path);
        EXPECT_TRUE(bytes.startsWith("\xFF\xFE"));
        return QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData() + 2),
                                  (bytes.size() - 2) / 2);
    }
    static ExportOptions Options() {
        ExportOptions options;
        options.languages = {kEn, kFr};
        options.kinds.excludeSystemMessages = true;
        return options;
    }

    QTemporaryDir m_dir;
    util::RecordedMessages m_messages;
    ExportReport m_report;
};

TEST_F(ExportTest, EveryKindOfRowAndEscapingByteForByte) {
    const QString expected = QStringLiteral("QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\r\n"
                                            "1\t-1\tLine one\\nLine two\tLigne un\r\n"
                                            "1\t-2\tShort\t\r\n"
                                            "1\t-3\tTab\\there\\r\t\r\n"
                                            "1\t-4\t\t\r\n"
                                            "1\t1\tYes\tOui\r\n"
                                            "1\t2\t\"Say \"\"no\"\"\"\t\r\n"
                                            "2\t-1\tYes\tOui\r\n"
                                            "2\t-2\t\t\r\n"
                                            "2\t-3\t\t\r\n"
                                            "2\t-4\t\t\r\n"
                                            "-2\t7\tback\\\\slash\ta\\\\b\\n\r\n");
    EXPECT_EQ(Export(Options()), expected);
    EXPECT_EQ(m_report.rows, 11);
    EXPECT_TRUE(m_messages.messages.isEmpty());
    EXPECT_TRUE(m_report.written);

    // The report of the written file must not pass for this one's.
    EXPECT_FALSE(Write(m_dir.filePath(QStringLiteral("no/such/out.txt")), Options(), MakeSmall()));
    EXPECT_EQ(m_messages.messages, QStringList{QStringLiteral("Cannot create export file")});
    EXPECT_FALSE(m_report.written);
}

TEST_F(ExportTest, FiltersShortcutsAndHeaders) {
    ExportOptions options = Options();
    options.excludeNonVisible = true;
    options.versions = {1};
    options.kinds.excludeShortCaptions = true;
    options.kinds.excludeInstructions = true;
    options.kinds.excludeComments = true;
    options.kinds.excludeRoutings = true;
    options.showShortcuts = true;
    options.headers = QStringLiteral("Key,Item,English");
    EXPECT_EQ(Export(options),
              QStringLiteral("Key\tItem\tEnglish\t1036(FRA)\tShortcut\tEntrycode\r\n"
                             "1\t-1\tLine one\\nLine two\tLigne un\tQ1\t\r\n"
                             "1\t1\tYes\tOui\tQ1\tA\r\n"));
    // Response 2 is in version 2 only; with all versions it comes back, its code quoted.
    options.versions.clear();
    options.headers.clear();
    EXPECT_TRUE(
        Export(options).contains(QStringLiteral("1\t2\t\"Say \"\"no\"\"\"\t\tQ1\t\"B\tX\"\r\n")));
}

TEST_F(ExportTest, TranslatedAndDuplicateRowsAreLeftOut) {
    ExportOptions options = Options();
    options.excludeTranslated = true;
    options.excludeDuplicates = true;
    options.kinds.excludeResponses = true;
    // Rows 1/-1, 2/-1 and the routing are translated; of the rows with an empty caption only
    // the first with an empty English text survives the duplicate filter.
    EXPECT_EQ(Export(options), QStringLiteral("QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\r\n"
                                              "1\t-2\tShort\t\r\n"
                                              "1\t-3\tTab\\there\\r\t\r\n"
                                              "1\t-4\t\t\r\n"));
    // Duplicates alone: 2/-1 repeats response 1's English text.
    options.excludeTranslated = false;
    options.kinds.excludeResponses = false;
    const QString text = Export(options);
    EXPECT_TRUE(text.contains(QStringLiteral("\r\n1\t1\tYes")));
    EXPECT_FALSE(text.contains(QStringLiteral("\r\n2\t-1\t")));
}

TEST_F(ExportTest, SystemMessagesHeaderDefaultsAndEmptyResult) {
    ExportOptions options;
    options.languages = {kFr};
    options.headers = QStringLiteral("A,B");
    const QStringList lines = Export(options).split(QStringLiteral("\r\n"));
    EXPECT_EQ(lines.first(), QStringLiteral("A\tB\t1036(FRA)"));
    EXPECT_TRUE(lines.contains(QStringLiteral("-1\t2\t") +
                               EscapeCaption(CQuestionnaire::GetStandardErrorMessage(kFr, 2))));
    EXPECT_TRUE(lines.contains(QStringLiteral("-1\t43\t") +
                               EscapeCaption(CQuestionnaire::GetStandardErrorMessage(kFr, 43))));

    // No row passes: the mark and the header line only.
    options.kinds = {true, true, true, true, true, true, true};
    EXPECT_EQ(Export(options), QStringLiteral("A\tB\t1036(FRA)\r\n"));
    EXPECT_EQ(m_report.rows, 0);
}

TEST_F(ExportTest, WarnsAboutCaptionsTheRoundTripCannotCarry) {
    CQuestionnaire q = MakeSmall();
    q.GetAdrQuestion(0)->SetLocalisedShortCaption(kFr, QStringLiteral("\"quoted\""));
    q.GetAdrQuestion(0)->SetLocalisedComments(kEn, QStringLiteral("C:\\new folder"));
    q.GetAdrQuestion(1)->SetLocalisedShortCaption(kEn, QStringLiteral("x").repeated(40000));
    Export(Options(), q);
    EXPECT_EQ(m_report.unsafeCaptions, 3);
    EXPECT_EQ(m_report.unsafeKeys, (QStringList{QStringLiteral("1/-2"), QStringLiteral("1/-4"),
                                                QStringLiteral("2/-2")}));
    ASSERT_EQ(m_messages.messages.size(), 1);
    EXPECT_TRUE(m_messages.messages[0].contains(QLatin1String("1/-2, 1/-4, 2/-2")));
}

// A large export is encoded in blocks, on several threads where there are several processors:
// the file and the warnings must still come out in row order. The duplicates filter keeps an
// export to one thread, and with every source text distinct it leaves nothing out, so the two
// files must be the same bytes.
TEST_F(ExportTest, LargeExportsKeepRowOrderWhateverTheThreads) {
    CQuestionnaire q;
    QList<qint32> languages;
    for (qint32 lcid = 1025; languages.size() < 40; ++lcid) {
        q.AddLanguage(std::make_unique<CLanguage>(quint32(lcid)));
        languages.append(lcid);
    }
    q.SetDefaultLanguage(languages.front());
    for (int i = 1; i <= 1500; ++i) {
        auto question = std::make_unique<CQuestion>(i, QStringLiteral("Q%1").arg(i));
        for (qint32 lcid : languages)
            question->SetLocalisedLongCaption(lcid, QStringLiteral("q%1 \"%2\"").arg(i).arg(lcid));
        question->SetLocalisedShortCaption(languages.front(), QStringLiteral("s%1").arg(i));
        question->SetLocalisedInstructions(languages.front(), QStringLiteral("i%1").arg(i));
        question->SetLocalisedComments(languages.front(), QStringLiteral("c%1").arg(i));
        if (i % 37 == 0) // a text the round trip cannot carry
            question->SetLocalisedShortCaption(languages[i % 40], QStringLiteral("C:\\new"));
        q.AddQuestion(std::move(question));
    }
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(q, list, false);
    QStringList unsafe;
    for (qsizetype k = 0; k < list.size(); ++k)
        for (qint32 lcid : languages)
            if (!CaptionSurvivesRoundTrip(
                    ReadCaption(q, list.questionIds[k], list.responseIds[k], lcid),
                    lcid == languages.front()))
                unsafe.append(
                    QStringLiteral("%1/%2").arg(list.questionIds[k]).arg(list.responseIds[k]));
    ASSERT_GT(unsafe.size(), 10);

    ExportOptions options = Options();
    options.languages = languages;
    const QString parallel = Export(options, q);
    const ExportReport parallelReport = m_report;
    options.excludeDuplicates = true;
    const QString sequential = Export(options, q);
    EXPECT_EQ(parallel, sequential);
    const qsizetype lines = parallel.count(QStringLiteral("\r\n"));
    EXPECT_GT(lines, 3000);
    for (const ExportReport& report : {parallelReport, m_report}) {
        EXPECT_EQ(report.rows, lines - 1);
        EXPECT_EQ(report.unsafeCaptions, unsafe.size());
        EXPECT_EQ(report.unsafeKeys, unsafe.mid(0, 10));
    }
}

TEST(CaptionEscaping, EscapeAndUnescape) {
    // A caption that does not survive comes back as the import's decoding leaves it: "\\n" as
    // a backslash and a line feed, enclosing quotes taken off.
    const struct {
        QString text;
        QString escaped;
        bool survives;
        QString decoded = text;
    } cases[] = {
        {QStringLiteral("a\\b\n"), QStringLiteral("a\\\\b\\n"), true},
        {QStringLiteral("tab\there\r\n"), QStringLiteral("tab\\there\\r\\n"), true},
        {QStringLiteral("\\\n"), QStringLiteral("\\\\\\n"), true},
        {QStringLiteral("C:\\new"), QStringLiteral("C:\\\\new"), false, QStringLiteral("C:\\\new")},
        {QStringLiteral("\"q\""), QStringLiteral("\"q\""), false, QStringLiteral("q")},
        {QStringLiteral("\"a \"\"b\"\"\""), QStringLiteral("\"a \"\"b\"\"\""), false,
         QStringLiteral("a \"b\"")},
        {QStringLiteral("\""), QStringLiteral("\""), false, QString()},
        {QStringLiteral("say \"x\" now"), QStringLiteral("say \"x\" now"), true},
        {QString(QChar(0)) + QStringLiteral("x"), QString(QChar(0)) + QStringLiteral("x"), false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(EscapeCaption(c.text), c.escaped) << c.text.toStdString();
        EXPECT_EQ(CaptionSurvivesRoundTrip(c.text), c.survives) << c.text.toStdString();
        QString cell = c.escaped;
        UnescapeCell(cell);
        EXPECT_EQ(cell, c.decoded) << c.text.toStdString();
    }
}

// The decoding as files of earlier versions define it: four replacements in this order, then
// the enclosing quotes. The one-pass decoder must agree on any text.
QString ReplacementsInOrder(QString cell) {
    cell.replace(QLatin1String("\\r"), QLatin1String("\r"));
    cell.replace(QLatin1String("\\n"), QLatin1String("\n"));
    cell.replace(QLatin1String("\\t"), QLatin1String("\t"));
    cell.replace(QLatin1String("\\\\"), QLatin1String("\\"));
    if (cell.startsWith(QLatin1Char('"')) && cell.endsWith(QLatin1Char('"'))) {
        cell = cell.size() >= 2 ? cell.mid(1, cell.size() - 2) : QString();
        cell.replace(QLatin1String("\"\""), QLatin1String("\""));
    }
    return cell;
}

TEST(CaptionEscaping, UnescapingAgreesWithTheReplacementsInOrder) {
    std::mt19937 random(11);
    const char16_t alphabet[] = {u'\\', u'\\', u'r', u'n', u't', u'"', u'x', u'\n'};
    QString scratch;
    for (int round = 0; round < 5000; ++round) {
        QString text;
        const int length = int(random() % 40);
        for (int i = 0; i < length; ++i)
            text.append(QChar(alphabet[random() % std::size(alphabet)]));
        const QString expected = ReplacementsInOrder(text);
        QString cell = text;
        UnescapeCell(cell);
        EXPECT_EQ(cell, expected) << text.toStdString();
        UnescapeCellInto(text, scratch);
        EXPECT_EQ(scratch, expected) << text.toStdString();
    }
}

} // namespace
