#include "common/TestUtil.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <random>

using namespace exchange;
using namespace questionnaire;

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 kEn = 1033;
constexpr qint32 kFr = 1036;

// Every kind of row and the escaping cases, small enough to write the expected file by hand.
CQuestionnaire MakeSmall() {
    CQuestionnaire q;
    q.AddLanguage(std::make_unique<CLanguage>(1036u));
    q.AddLanguage(std::make_unique<CLanguage>(1033u));
    q.SetDefaultLanguage(kEn);
    auto q1 = std::make_unique<CQuestion>(1, u"Q1"_s);
    q1->SetLocalisedLongCaption(kEn, u"Line one\nLine two"_s);
    q1->SetLocalisedLongCaption(kFr, u"Ligne un"_s);
    q1->SetLocalisedShortCaption(kEn, u"Short"_s);
    q1->SetLocalisedInstructions(kEn, u"Tab\there\r"_s);
    auto yes = std::make_unique<CModalite>(1, u"A"_s);
    yes->SetLocalisedLongCaption(kEn, u"Yes"_s);
    yes->SetLocalisedLongCaption(kFr, u"Oui"_s);
    q1->AddModalite(std::move(yes));
    auto no = std::make_unique<CModalite>(2, u"B\tX"_s);
    no->SetLocalisedLongCaption(kEn, u"Say \"no\""_s);
    no->SetVersions({2});
    q1->AddModalite(std::move(no));
    q.AddQuestion(std::move(q1));
    auto q2 = std::make_unique<CQuestion>(2, u"HIDDEN"_s);
    q2->m_visible = 0;
    q2->SetLocalisedLongCaption(kEn, u"Yes"_s); // a duplicate of response 1
    q2->SetLocalisedLongCaption(kFr, u"Oui"_s);
    q.AddQuestion(std::move(q2));
    auto routing = std::make_unique<CFiltre>(7, CFiltre::kKindWithMessage);
    routing->SetLocalisedMessage(kEn, u"back\\slash"_s);
    routing->SetLocalisedMessage(kFr, u"a\\b\n"_s);
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
        const QString path = m_dir.filePath(u"out.txt"_s);
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

// Each set of options against the whole file it gives, byte for byte.
TEST_F(ExportTest, OptionsChooseTheRowsColumnsAndHeaders) {
    const QStringList rows = {u"1\t-1\tLine one\\nLine two\tLigne un"_s,
                              u"1\t-2\tShort\t"_s,
                              u"1\t-3\tTab\\there\\r\t"_s,
                              u"1\t-4\t\t"_s,
                              u"1\t1\tYes\tOui"_s,
                              u"1\t2\t\"Say \"\"no\"\"\"\t"_s,
                              u"2\t-1\tYes\tOui"_s,
                              u"2\t-2\t\t"_s,
                              u"2\t-3\t\t"_s,
                              u"2\t-4\t\t"_s,
                              u"-2\t7\tback\\\\slash\ta\\\\b\\n"_s};
    // The header and the rows of these keys ("question/response"), all of them by default.
    const auto file = [&](QStringList keys = {}) {
        QString text = u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\r\n"_s;
        for (const QString& row : rows)
            if (keys.isEmpty() || keys.contains(row.section(u'\t', 0, 1).replace(u'\t', u'/')))
                text += row + u"\r\n"_s;
        return text;
    };
    // Visible rows of long captions and responses, with the shortcut columns.
    const auto texts = [](ExportOptions& o) {
        o.excludeNonVisible = o.showShortcuts = true;
        o.kinds.excludeShortCaptions = o.kinds.excludeInstructions = true;
        o.kinds.excludeComments = o.kinds.excludeRoutings = true;
    };
    const QString shortcutRows = u"1\t-1\tLine one\\nLine two\tLigne un\tQ1\t\r\n"
                                 "1\t1\tYes\tOui\tQ1\tA\r\n"_s;
    const struct {
        const char* name;
        std::function<void(ExportOptions&)> set;
        QString expected;
    } cases[] = {
        {"every kind of row and the escaping", [](ExportOptions&) {}, file()},
        {"version 1 and headers given",
         [&](ExportOptions& o) {
             texts(o);
             o.versions = {1};
             o.headers = u"Key,Item,English"_s;
         },
         u"Key\tItem\tEnglish\t1036(FRA)\tShortcut\tEntrycode\r\n"_s + shortcutRows},
        // Response 2 is in version 2 only; with all versions it comes back, its code quoted.
        {"all versions", texts,
         u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\tShortcut\tEntrycode\r\n"_s + shortcutRows +
             u"1\t2\t\"Say \"\"no\"\"\"\t\tQ1\t\"B\tX\"\r\n"_s},
        // Rows 1/-1, 2/-1 and the routing are translated; of the rows with an empty caption
        // only the first with an empty English text survives the duplicate filter.
        {"translated and duplicate rows left out",
         [](ExportOptions& o) {
             o.excludeTranslated = o.excludeDuplicates = o.kinds.excludeResponses = true;
         },
         file({"1/-2", "1/-3", "1/-4"})},
        // 2/-1 repeats response 1's English text.
        {"duplicates alone", [](ExportOptions& o) { o.excludeDuplicates = true; },
         file({"1/-1", "1/-2", "1/-3", "1/-4", "1/1", "1/2", "-2/7"})},
        // No row passes: the mark and the header line only.
        {"no row",
         [](ExportOptions& o) {
             o.languages = {kFr};
             o.headers = u"A,B"_s;
             o.kinds = {true, true, true, true, true, true, true};
         },
         u"A\tB\t1036(FRA)\r\n"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ExportOptions options = Options();
        c.set(options);
        EXPECT_EQ(Export(options), c.expected);
        EXPECT_EQ(m_report.rows, c.expected.count(u"\r\n"_s) - 1);
        EXPECT_TRUE(m_messages.messages.isEmpty());
        EXPECT_TRUE(m_report.written);
    }

    // System messages, in the chosen language.
    ExportOptions options;
    options.languages = {kFr};
    const QStringList lines = Export(options).split(u"\r\n"_s);
    for (const int id : {2, 43})
        EXPECT_TRUE(lines.contains(u"-1\t%1\t"_s.arg(id) +
                                   EscapeCaption(CQuestionnaire::GetStandardErrorMessage(kFr, id))))
            << id;

    // The report of the written file must not pass for this one's.
    EXPECT_FALSE(Write(m_dir.filePath(u"no/such/out.txt"_s), Options(), MakeSmall()));
    EXPECT_EQ(m_messages.messages, QStringList{u"Cannot create export file"_s});
    EXPECT_FALSE(m_report.written);
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
    QStringList unsafe;
    for (int i = 1; i <= 1500; ++i) {
        auto question = std::make_unique<CQuestion>(i, u"Q%1"_s.arg(i));
        for (qint32 lcid : languages)
            question->SetLocalisedLongCaption(lcid, u"q%1 \"%2\""_s.arg(i).arg(lcid));
        question->SetLocalisedShortCaption(languages.front(), u"s%1"_s.arg(i));
        question->SetLocalisedInstructions(languages.front(), u"i%1"_s.arg(i));
        question->SetLocalisedComments(languages.front(), u"c%1"_s.arg(i));
        if (i % 37 == 0) { // a text the round trip cannot carry
            question->SetLocalisedShortCaption(languages[i % 40], u"C:\\new"_s);
            unsafe.append(u"%1/-2"_s.arg(i));
        }
        q.AddQuestion(std::move(question));
    }
    ExportOptions options = Options();
    options.languages = languages;
    const QString parallel = Export(options, q);
    const ExportReport parallelReport = m_report;
    options.excludeDuplicates = true;
    const QString sequential = Export(options, q);
    EXPECT_EQ(parallel, sequential);
    const qsizetype lines = parallel.count(u"\r\n"_s);
    EXPECT_EQ(lines, 1 + 1500 * 4);
    for (const ExportReport& report : {parallelReport, m_report}) {
        EXPECT_EQ(report.rows, lines - 1);
        EXPECT_EQ(report.unsafeCaptions, unsafe.size());
        EXPECT_EQ(report.unsafeKeys, unsafe.mid(0, 10));
    }
    // The warning of each export names those rows.
    ASSERT_EQ(m_messages.messages.size(), 2);
    for (const QString& message : m_messages.messages)
        EXPECT_TRUE(message.contains(unsafe.mid(0, 10).join(u", "_s))) << message.toStdString();
}

// The decoding as files of earlier versions define it: four replacements in this order, then
// the enclosing quotes. The one-pass decoder must agree on any text.
QString ReplacementsInOrder(QString cell) {
    cell.replace("\\r"_L1, "\r"_L1);
    cell.replace("\\n"_L1, "\n"_L1);
    cell.replace("\\t"_L1, "\t"_L1);
    cell.replace("\\\\"_L1, "\\"_L1);
    if (cell.startsWith(u'"') && cell.endsWith(u'"')) {
        cell = cell.size() >= 2 ? cell.mid(1, cell.size() - 2) : QString();
        cell.replace("\"\""_L1, "\""_L1);
    }
    return cell;
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
        {u"a\\b\n"_s, u"a\\\\b\\n"_s, true},
        {u"tab\there\r\n"_s, u"tab\\there\\r\\n"_s, true},
        {u"\\\n"_s, u"\\\\\\n"_s, true},
        {u"C:\\new"_s, u"C:\\\\new"_s, false, u"C:\\\new"_s},
        {u"\"q\""_s, u"\"q\""_s, false, u"q"_s},
        {u"\"a \"\"b\"\"\""_s, u"\"a \"\"b\"\"\""_s, false, u"a \"b\""_s},
        {u"\""_s, u"\""_s, false, QString()},
        {u"say \"x\" now"_s, u"say \"x\" now"_s, true},
        {QString(QChar(0)) + u"x"_s, QString(QChar(0)) + u"x"_s, false},
        {u"x"_s.repeated(40000), u"x"_s.repeated(40000), false}, // longer than a cell holds
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(EscapeCaption(c.text), c.escaped);
        EXPECT_EQ(CaptionSurvivesRoundTrip(c.text), c.survives);
        QString cell = c.escaped;
        UnescapeCell(cell);
        EXPECT_EQ(cell, c.decoded);
    }

    std::mt19937 random(11);
    const char16_t alphabet[] = {u'\\', u'\\', u'r', u'n', u't', u'"', u'x', u'\n'};
    QString scratch;
    for (int round = 0; round < 5000; ++round) {
        QString text;
        for (int i = int(random() % 40); i > 0; --i)
            text.append(QChar(alphabet[random() % std::size(alphabet)]));
        const QString expected = ReplacementsInOrder(text);
        QString cell = text;
        UnescapeCell(cell);
        EXPECT_EQ(cell, expected) << text.toStdString();
        UnescapeCellInto(text, scratch);
        EXPECT_EQ(scratch, expected) << text.toStdString();
    }
}

const QList<qint32> kLanguages = {1033, 1036, 1037}; // English (main), French, Hebrew

// A caption's key, "question id/response id/language", for row `k` of `list`.
QString Key(const CaptionList& list, qsizetype k, qint32 lcid) {
    return u"%1/%2/%3"_s.arg(list.questionIds[k]).arg(list.responseIds[k]).arg(lcid);
}

class Generator {
public:
    explicit Generator(unsigned start) : m_random(start) {}

    QString Caption(bool safeOnly) {
        static const QStringList pieces =
            u"word| |\"|\t|\n|\r\n|\\|n|t|é|\U0001F600|\u05E9\u05DC\u05D5\u05DD|\"\"|,|'"_s.split(
                u'|');
        for (;;) {
            QString text;
            const int count = int(m_random() % 8);
            for (int i = 0; i < count; ++i)
                text += pieces[m_random() % pieces.size()];
            if (!safeOnly || CaptionSurvivesRoundTrip(text, true))
                return text;
        }
    }

    CQuestionnaire Questionnaire(bool safeOnly) {
        CQuestionnaire q;
        for (qint32 lcid : kLanguages)
            q.AddLanguage(std::make_unique<CLanguage>(quint32(lcid)));
        q.SetDefaultLanguage(1033);
        for (int i = 1; i <= 40; ++i) {
            auto question = std::make_unique<CQuestion>(i, u"Q%1"_s.arg(i));
            for (qint32 lcid : kLanguages) {
                question->SetLocalisedLongCaption(lcid, Caption(safeOnly));
                question->SetLocalisedShortCaption(lcid, Caption(safeOnly));
            }
            for (int r = 1; r <= int(m_random() % 4); ++r) {
                auto response = std::make_unique<CModalite>(r, QString::number(r));
                for (qint32 lcid : kLanguages)
                    response->SetLocalisedLongCaption(lcid, Caption(safeOnly));
                question->AddModalite(std::move(response));
            }
            q.AddQuestion(std::move(question));
        }
        // Every caption row has a distinct English text, so that rows can be told apart.
        CaptionList list;
        BuildCaptionList(q, list, false);
        for (qsizetype k = 0; k < list.size(); ++k)
            if (list.questionIds[k] > 0)
                WriteCaption(q, list.questionIds[k], list.responseIds[k], 1033,
                             u"#%1 "_s.arg(k) +
                                 ReadCaption(q, list.questionIds[k], list.responseIds[k], 1033));
        return q;
    }

    std::mt19937 m_random;
};

// Round-trip properties on generated questionnaires whose captions hold quotes, tabs, line
// breaks, backslashes, characters outside the BMP and right-to-left text.
class RoundTripTest : public ExportTest, public ::testing::WithParamInterface<unsigned> {
protected:
    QString Export(const CQuestionnaire& q) {
        ExportOptions options;
        options.languages = DefaultLanguageOrder(q);
        const QString path = m_dir.filePath(u"export.txt"_s);
        Write(path, options, q);
        return path;
    }
    qint32 Import(CQuestionnaire& q, const QString& path, bool onlyUnchanged) {
        ImportOptions options;
        options.languages = DefaultLanguageOrder(q);
        options.referenceLanguage = 1033;
        options.onlyUnchanged = onlyUnchanged;
        CaptionList list;
        BuildCaptionList(q, list, false);
        return ImportTranslatedFile(q, path, options, list, m_messages, &m_importReport);
    }
    // Every (row, language) of the questionnaire, in row order, whose caption is picked.
    template <typename Pick> static QStringList Keys(const CQuestionnaire& q, Pick pick) {
        QStringList keys;
        CaptionList list;
        BuildCaptionList(q, list, false);
        for (qsizetype k = 0; k < list.size(); ++k)
            for (qint32 lcid : kLanguages)
                if (pick(list.questionIds[k], list.responseIds[k], lcid))
                    keys.append(Key(list, k, lcid));
        return keys;
    }
    static QStringList Differences(const CQuestionnaire& a, const CQuestionnaire& b) {
        return Keys(a, [&](qint32 question, qint32 response, qint32 lcid) {
            return ReadCaption(a, question, response, lcid) !=
                   ReadCaption(b, question, response, lcid);
        });
    }

    Generator m_generator{GetParam()};
    ImportReport m_importReport;
};

TEST_P(RoundTripTest, UntouchedFileChangesOnlyCaptionsTheExportWarnedAbout) {
    const CQuestionnaire original = m_generator.Questionnaire(false);
    CQuestionnaire q = original;
    const qint32 written = Import(q, Export(q), false);
    const QStringList changed = Differences(original, q);
    EXPECT_EQ(written, changed.size());
    // The export counts every caption that may not survive and names its first ten rows.
    const QStringList unsafe = Keys(original, [&](qint32 question, qint32 response, qint32 lcid) {
        return !CaptionSurvivesRoundTrip(ReadCaption(original, question, response, lcid),
                                         lcid == 1033);
    });
    QStringList rows;
    for (const QString& key : unsafe)
        rows.append(key.section(u'/', 0, 1));
    rows.removeDuplicates();
    EXPECT_EQ(m_report.unsafeCaptions, unsafe.size());
    EXPECT_EQ(m_report.unsafeKeys, rows.mid(0, 10));
    for (const QString& key : changed)
        EXPECT_TRUE(unsafe.contains(key)) << key.toStdString();
}

// A translator fills some French and Hebrew cells: the file is the export of a copy with those
// cells changed. Importing it with only unchanged rows writes exactly those cells: no row whose
// source text holds quotes, tabs, line breaks or backslashes passes for changed.
TEST_P(RoundTripTest, ATranslatorsFileWritesExactlyTheEditedCells) {
    const CQuestionnaire original = m_generator.Questionnaire(true);
    CaptionList list;
    BuildCaptionList(original, list, false);
    CQuestionnaire translated = original;
    QStringList edited;
    for (qsizetype k = 0; k < list.size(); k += 3) {
        const qint32 lcid = k % 2 ? 1036 : 1037;
        const QString text = u"tr%1 "_s.arg(k) + m_generator.Caption(true);
        if (text == ReadCaption(original, list.questionIds[k], list.responseIds[k], lcid))
            continue;
        WriteCaption(translated, list.questionIds[k], list.responseIds[k], lcid, text);
        if (ReadCaption(translated, list.questionIds[k], list.responseIds[k], lcid) == text)
            edited.append(Key(list, k, lcid));
    }
    CQuestionnaire q = original;
    EXPECT_EQ(Import(q, Export(translated), true), edited.size());
    EXPECT_EQ(m_importReport.rejectedRows, 0);
    EXPECT_EQ(Differences(original, q), edited);
    EXPECT_EQ(q, translated);
}

INSTANTIATE_TEST_SUITE_P(Generated, RoundTripTest, ::testing::Values(1u, 2u, 3u, 4u, 5u));

} // namespace
