#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "exchange/ImportFile.h"
#include "exchange/RowCutter.h"
#include "exchange/WindowMasks.h"
#include "exchange/XliffFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/StaticTools.h"
#include "util/Messages.h"
#include "util/Progress.h"
#include "util/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <utility>

using namespace exchange;
using questionnaire::ReadCaption;
using questionnaire::WriteCaption;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

using namespace Qt::StringLiterals;

namespace {

const QString kHeader = u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\r\n"_s;

class ImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_q = testutil::MakeSample();
        m_captions = {};
        questionnaire::BuildCaptionList(m_q, m_captions, false);
        m_options = ImportOptions();
        m_options.languages = {kEnglish, kFrench, kGerman};
        m_options.referenceLanguage = kEnglish;
    }
    QString Write(const QString& text, const QString& name = u"in.txt"_s, bool mark = true) {
        const QString path = m_dir.filePath(name);
        EXPECT_TRUE(testutil::WriteAll(path, testutil::Utf16Le(text, mark)));
        return path;
    }
    qint32 Import(const QString& text) { return ImportPath(Write(text)); }
    qint32 ImportPath(const QString& path) {
        m_messages.messages.clear();
        m_messages.kinds.clear();
        return ImportTranslatedFile(m_q, path, m_options, m_captions, m_messages, &m_report);
    }
    QString Unused() const { return m_dir.filePath(u"UnusedStrings.txt"_s); }
    QString Caption(qint32 questionId, qint32 responseId, qint32 language) const {
        return ReadCaption(m_q, questionId, responseId, language);
    }

    QTemporaryDir m_dir;
    CQuestionnaire m_q;
    questionnaire::CaptionList m_captions;
    ImportOptions m_options;
    ImportReport m_report;
    util::RecordedMessages m_messages;
};

TEST_F(ImportTest, RefusedAndUnreadableFilesGiveTheirCodeAndMessageAndChangeNothing) {
    int files = 0;
    // A header and, unless it is empty, a row.
    auto withRow = [&](const char* header) {
        const QString text = QString::fromLatin1(header);
        return Write(text.isEmpty() ? text : text + u"10\t-1\tchanged\tchangé\r\n"_s,
                     u"f%1.txt"_s.arg(++files));
    };
    const QString huge = Write(QString(), u"huge.txt"_s); // the mark alone
    ASSERT_TRUE(QFile::resize(huge, qint64(2) << 30));    // sparse: costs no disk
    // A zero character ends the text; well before the end of the file it makes the file binary,
    // whether it stands in the header or after rows that would be imported.
    const QString rows = u"10\t-1\tx\tchanged\r\n"_s.repeated(3);
    const QString padding(30, QLatin1Char(' '));
    const QString cannotOpen = u"Cannot open the file '%1'"_s;
    const QString notOurs = u"This does not seem to be a translation file"_s;
    const struct {
        QString path;
        qint32 code;
        QString message; // %1 is the path
        bool onlyUnchanged = false;
    } cases[] = {
        {m_dir.filePath(u"missing.txt"_s), -10, cannotOpen},
        // UTF-16 without its mark is read as ANSI and stops at the first zero byte.
        {Write(kHeader + u"10\t-1\tx\ty\r\n"_s, u"unmarked.txt"_s, false), -10, cannotOpen},
        {Write(u"Quest"_s + QChar(0) + padding, u"zero1.txt"_s), -10, cannotOpen},
        {Write(kHeader + rows + QChar(0) + padding, u"zero2.txt"_s), -10, cannotOpen},
        {huge, -10,
         u"The file '%1' is larger than 1 GiB: a translation file is never "
         "that large."_s},
        {withRow(""), -11, notOurs},
        {withRow("\r\n\r\n"), -12, notOurs},
        {withRow("QuestionId\tResponseId\r\n1\t-1\r\n"), -12, notOurs},
        {withRow("questionid\tResponseId\t1033(ENU)\r\n"), -13, notOurs},
        {withRow("QuestionId\tResponse\t1033(ENU)\r\n"), -14, notOurs},
        {withRow("QuestionId\tResponseId\tEnglish\r\n"), -15, notOurs},
        {withRow("QuestionId\tResponseId\tEN(ENU)\r\n"), -16, notOurs},
        {withRow("QuestionId\tResponseId\t32767(XYZ)\r\n"), -17, u"Language not recognised..."_s},
        {withRow("QuestionId\tResponseId\t1033(ENU)\t1034(ESP)\r\n"), -18,
         u"The language 'Spanish (Spain)' is not defined in the qes file!"_s},
        {withRow("QuestionId\tResponseId\t1036(FRA)\r\n"), -19,
         u"The reference language has not been found in the file! It is not "
         "possible to know if a caption has changed!"_s,
         true},
    };
    const CQuestionnaire before = m_q;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        m_options.onlyUnchanged = c.onlyUnchanged;
        EXPECT_EQ(ImportPath(c.path), c.code);
        EXPECT_EQ(m_messages.messages,
                  QStringList{c.message.contains(u'%') ? c.message.arg(c.path) : c.message});
        EXPECT_EQ(m_messages.kinds, QList<util::MessageKind>{util::MessageKind::Error});
        EXPECT_EQ(m_q, before);
    }
}

// Stops the work at the given step, as a user pressing the progress dialog's button.
class StopAtStep : public util::Progress {
public:
    explicit StopAtStep(int step) : m_step(step) {}
    void Begin(const QString&, qint64) override {}
    bool Advance(qint64) override { return ++m_steps < m_step; }
    void End() override {}

private:
    const int m_step;
    int m_steps = 0;
};

TEST_F(ImportTest, AStoppedImportChangesNothing) {
    // Rows enough for more pieces of the file than are read ahead, so that the first ones are
    // written before the stop: texts replaced, and languages new to their captions.
    const QString padding(150, QLatin1Char('.'));
    m_q.AddLanguage(std::make_unique<CLanguage>(1040));
    m_options.languages.append(1040);
    QString file = u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\t1040(ITA)\r\n"_s;
    for (int i = 0, rows = 0; rows < 30000; ++i) {
        const qsizetype k = i % m_captions.size();
        const qint32 question = m_captions.questionIds[k];
        const qint32 response = m_captions.responseIds[k];
        if (question == questionnaire::kSystemMessageMarker)
            continue;
        ++rows;
        file += u"%1\t%2\t%3\tf%4%5\ti%4%5\r\n"_s.arg(question)
                    .arg(response)
                    .arg(Caption(question, response, kEnglish))
                    .arg(i)
                    .arg(padding);
    }
    const QString path = Write(file);
    const CQuestionnaire before = m_q;
    for (const bool identical : {false, true}) {
        m_options.copyIdentical = identical;
        StopAtStep stop(2); // the import has then written the first piece of its file
        util::RecordedMessages messages;
        EXPECT_EQ(
            ImportTranslatedFile(m_q, path, m_options, m_captions, messages, &m_report, &stop),
            kImportStopped);
        EXPECT_TRUE(m_report.stopped);
        EXPECT_TRUE(m_q == before) << "copy identical " << identical;
    }
}

// Each file against the captions it writes; every row starts from the sample questionnaire.
TEST_F(ImportTest, RowsAndLayoutsAreRead) {
    struct Written {
        qint32 question, response, language;
        QString text;
    };
    // A lone surrogate is a code unit like any other; the first zero ends the text.
    const QString lone = u"a"_s + QChar(0xDC00) + u"b"_s;
    const QString huge = u"x"_s.repeated(50 * 1000 * 1000);
    const struct {
        const char* name;
        QString text;
        qint32 written;
        QList<Written> captions;
        QList<qint32> explicitLanguages = {};
    } cases[] = {
        // A cell differing from a caption that does not exist counts as written, though the
        // write finds nothing to change: the unknown question's two cells are in the count.
        {"cells differing from the questionnaire",
         kHeader + u"10\t-1\tHow satisfied are you?\tÊtes-vous satisfait ?\r\n"
                   "10\t-2\tSatisfaction\tSatisfaction\r\n"
                   "10\t-3\t\t\r\n"        // empty English: kept as it was
                   "10\t1\tVery\t\r\n"     // empty French: cleared
                   "0\t-1\tzero\tzero\r\n" // a zero key is never imported
                   "10\t0\tzero\tzero\r\n"
                   "abc\t-1\tx\tx\r\n" // not a number reads as 0
                   "999\t-1\tx\tx\r\n" // unknown question
                   "10\r\n"            // too short
                   "-2\t5\tSkipping ahead\tOn saute\r\n"
                   "-1\t3\tPlease answer this one.\tRépondez\\nsvp\r\n"_s,
         6,
         {{10, -2, kFrench, u"Satisfaction"_s},
          {10, -3, kEnglish, u"Read out\nthe scale"_s},
          {10, 1, kFrench, QString()},
          {-2, 5, kFrench, u"On saute"_s},
          {-1, 3, kFrench, u"Répondez\nsvp"_s}}},
        {"LF line ends, quoted cells with tabs, quotes and line feeds, trailing empty cells",
         u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\t1031(DEU)\n"
         "10\t-2\tSatisfaction\t\"Sa\ttis \"\"fac\"\"\ntion\"\n"
         "10\t-4\t\t\t\"Kommentar\"\n"
         "\n"
         "10\t1\tVery\tTrès\tSehr"_s,
         3,
         {{10, -2, kFrench, u"Sa\ttis \"fac\"\ntion"_s},
          {10, -2, kGerman, QString()},
          {10, -4, kGerman, u"Kommentar"_s},
          {10, 1, kGerman, u"Sehr"_s}}},
        {"shortcut columns skipped, an empty title ends the languages",
         u"QuestionId\tResponseId\t1031(DEU)\tshortcut\t1036(FRA)\t\t1033(ENU)\r\n"
         "10\t-2\tZufriedenheit\tQ1\tSatisfaction\tx\tignored\r\n"_s,
         2,
         {{10, -2, kGerman, u"Zufriedenheit"_s}, {10, -2, kEnglish, u"Satisfaction"_s}}},
        // The header's language cells are not read, its first two still are.
        {"explicit languages",
         u"Key\tItem\tanything at all\r\n10\t-4\tAnmerkung\r\n"_s,
         1,
         {{10, -4, kGerman, u"Anmerkung"_s}},
         {kGerman}},
        {"explicit languages, other first titles",
         u"QuestionId\tResponseId\tx\r\n"_s,
         -13,
         {},
         {kGerman}},
        // Read, cut and written like any other.
        {"one line of 100 MB",
         kHeader + u"10\t-1\tHow satisfied are you?\t"_s + huge,
         1,
         {{10, -1, kFrench, huge}}},
        {"a lone surrogate and a zero",
         kHeader + u"10\t-2\tSatisfaction\t"_s + lone + u"\r\n10\t-4\t\tbefore zero"_s + QChar(0) +
             u"\r\n10\t-3\t\tlost\r\n"_s,
         2,
         {{10, -2, kFrench, lone}, {10, -4, kFrench, u"before zero"_s}, {10, -3, kFrench, {}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        m_options.explicitLanguages = c.explicitLanguages;
        m_options.headerNames = c.explicitLanguages.isEmpty() ? QString() : u"Key,Item"_s;
        EXPECT_EQ(Import(c.text), c.written);
        EXPECT_EQ(m_messages.messages,
                  QStringList{c.written < 0 ? u"This does not seem to be a translation file"_s
                                            : u"%1 captions have been modified!"_s.arg(c.written)});
        for (const Written& e : c.captions)
            EXPECT_EQ(Caption(e.question, e.response, e.language), e.text)
                << e.question << "/" << e.response << " in " << e.language;
    }
    // Importing the same file again changes nothing but still counts the unknown question.
    SetUp();
    Import(cases[0].text);
    const CQuestionnaire after = m_q;
    EXPECT_EQ(Import(cases[0].text), 2);
    EXPECT_EQ(m_q, after);
}

// Every row a cutter gives; a cell says it holds a backslash exactly when it does.
QList<QStringList> CutAll(RowCutter& cutter) {
    QList<QStringList> rows;
    std::vector<CutCell> cells;
    while (cutter.Next(cells)) {
        rows.append(RowCutter::Strings(cells));
        for (const CutCell& cell : cells)
            EXPECT_EQ(cell.backslash, cell.text.contains(u'\\'));
    }
    return rows;
}

TEST_F(ImportTest, OnlyUnchangedRejectsRowsWhoseSourceChanged) {
    m_options.onlyUnchanged = true;
    // One rejected row (a change of letter case counts): no file, the plain message.
    EXPECT_EQ(Import(kHeader + u"10\t-2\tSATISFACTION\tSatisfaction\r\n"
                               "10\t1\tVery\tTrès bien\r\n"_s),
              1);
    EXPECT_EQ(m_messages.messages, QStringList{u"1 captions have been modified!"_s});
    EXPECT_FALSE(QFileInfo::exists(Unused()));
    EXPECT_EQ(Caption(10, -2, kFrench), QString());

    // Three rejected rows: all in the file, with the current source text; the message says two.
    // They go out as the export writes rows, so that cutting the file again gives the same
    // cells: a quote, a tab or a line break in a cell would otherwise lose its quotes or split
    // the row.
    EXPECT_EQ(Import(kHeader + u"10\t-1\tOld question\t\"deux\nlignes\"\r\n"
                               "10\t-3\tOld\\ninstructions\tx\ty\r\n"
                               "10\t2\tNot really\t\"Il dit \"\"oui\"\"\tmaintenant\"\r\n"
                               "10\t-2\tSatisfaction\tSatisfaction\r\n"_s),
              1);
    EXPECT_EQ(m_report.rejectedRows, 3);
    const QString rejected =
        u"10\t-1\tHow satisfied are you?\t\"deux\nlignes\"\r\n"
        "10\t-3\tRead out\\nthe scale\tx\ty\r\n"
        "10\t2\t\"Not \"\"really\"\"\"\t\"Il dit \"\"oui\"\"\tmaintenant\"\r\n"_s;
    EXPECT_EQ(testutil::ReadAll(Unused()), testutil::Utf16Le(rejected));
    EXPECT_EQ(m_messages.messages,
              QStringList{u"1 captions have been imported!\r\n2 captions had been "
                          "modified since the export and were ignored. The file "
                          "'%1' has been created that will need to be "
                          "retranslated."_s.arg(Unused())});
    // A row too short to hold the reference cell reads it as empty: set aside when the source is
    // not empty, else imported, its missing cells left alone.
    m_options.languages = {kFrench, kEnglish, kGerman};
    WriteCaption(m_q, 10, -3, kEnglish, QString());
    WriteCaption(m_q, 10, -3, kGerman, u"Vorlesen"_s);
    EXPECT_EQ(Import(u"QuestionId\tResponseId\t1036(FRA)\t1031(DEU)\t1033(ENU)\r\n"
                     "10\t1\tTrès\r\n10\t2\tPas vraiment\r\n"
                     "10\t-3\tLisez\r\n"_s),
              1);
    EXPECT_EQ(m_report.rejectedRows, 2);
    EXPECT_EQ(Caption(10, -3, kFrench), u"Lisez"_s);
    EXPECT_EQ(Caption(10, -3, kGerman), u"Vorlesen"_s);

    // The rejected rows cannot be written: the import still counts; the failure is shown before
    // the closing message, which is the same as ever.
    ASSERT_TRUE(QFile::remove(Unused()));
    ASSERT_TRUE(QDir(m_dir.path()).mkdir(u"UnusedStrings.txt"_s));
    EXPECT_EQ(Import(u"QuestionId\tResponseId\t1036(FRA)\t1033(ENU)\r\n"
                     "10\t1\tTrès\r\n10\t2\tPas vraiment\r\n"_s),
              0);
    EXPECT_TRUE(m_report.unusedStringsPath.isEmpty());
    ASSERT_EQ(m_messages.messages.size(), 2);
    EXPECT_EQ(m_messages.messages[0], u"Cannot create export file"_s);
    EXPECT_TRUE(m_messages.messages[1].startsWith(u"0 captions have been imported!"_s));
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files),
              QStringList{u"in.txt"_s}); // nothing left behind
}

// What the cutter must do, read one character at a time with nothing taken in one go.
QList<QStringList> CutOneByOne(QStringView text) {
    QList<QStringList> rows;
    QStringList row;
    QString cell;
    bool inQuotes = false;
    bool atLineStart = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'"') {
            if (inQuotes && i + 1 < text.size() && text[i + 1] == u'"')
                cell.append(text[++i]);
            else
                inQuotes = !inQuotes;
        } else if (c != u'\t' && c != u'\r' && c != u'\n') {
            cell.append(c);
            atLineStart = false;
        } else if (inQuotes) {
            cell.append(c);
        } else if (c == u'\t') {
            row.append(std::exchange(cell, QString()));
            atLineStart = false;
        } else if (!atLineStart) {
            row.append(std::exchange(cell, QString()));
            rows.append(std::exchange(row, QStringList()));
            atLineStart = true;
        }
    }
    if (!cell.isEmpty())
        row.append(cell);
    if (!row.isEmpty())
        rows.append(row);
    return rows;
}

// Copy identical applies each row to every caption with its source text, which the import
// does group by group; here the rule is followed to the letter, row by row and caption by
// caption, and both must leave the same questionnaire and count the same writes.
qint32 CopyIdenticalByTheRule(CQuestionnaire& q, const questionnaire::CaptionList& captions,
                              const QList<qint32>& columns, qint32 reference, const QString& text) {
    qint32 count = 0;
    for (QStringList cells : CutOneByOne(text).mid(1)) {
        if (cells.size() <= 2 || CStaticTools::ToLong(cells[0]) == 0 ||
            CStaticTools::ToLong(cells[1]) == 0)
            continue;
        questionnaire::UnescapeCell(cells[2]);
        for (qsizetype k = 0; k < captions.size(); ++k) {
            const qint32 qid = captions.questionIds[k], rid = captions.responseIds[k];
            if (ReadCaption(q, qid, rid, reference) != cells[2])
                continue;
            for (qsizetype i = 3; i < cells.size() && i - 2 < columns.size(); ++i) {
                questionnaire::UnescapeCell(cells[i]);
                if (cells[i].isEmpty() || ReadCaption(q, qid, rid, columns[i - 2]) == cells[i])
                    continue;
                WriteCaption(q, qid, rid, columns[i - 2], cells[i]);
                ++count;
            }
        }
    }
    return count;
}

TEST_F(ImportTest, CopyIdenticalDoesWhatTheRuleDoesRowByRow) {
    std::mt19937 random(11);
    const QStringList pieces = {u"a"_s, u"b"_s, u"\\"_s, u"n"_s, u"t"_s, QString()};
    auto text = [&](int most) {
        QString t;
        for (int i = int(random() % most); i > 0; --i)
            t += pieces[random() % pieces.size()];
        return t;
    };
    const QList<qint32> languages = {kEnglish, kFrench, kGerman, 1040};
    // Columns as the file may give them: the reference first, the reference again later (its
    // groups then change as rows are written), a language twice.
    const QList<QList<qint32>> layouts = {{kEnglish, kFrench, kGerman, 1040},
                                          {kEnglish, kFrench, kEnglish, kGerman},
                                          {kEnglish, kGerman, kGerman, kFrench}};
    auto languagesOnly = [&] {
        CQuestionnaire q;
        for (qint32 lcid : languages)
            q.AddLanguage(std::make_unique<CLanguage>(quint32(lcid)));
        q.SetDefaultLanguage(kEnglish);
        return q;
    };
    auto check = [&](const CQuestionnaire& q, const questionnaire::CaptionList& captions,
                     const QList<qint32>& layout, const QString& file, int round) {
        CQuestionnaire expected = q;
        const qint32 count = CopyIdenticalByTheRule(expected, captions, layout, kEnglish, file);
        m_q = q;
        m_captions = captions;
        m_options.copyIdentical = true;
        m_options.languages = languages;
        m_options.explicitLanguages = layout;
        EXPECT_EQ(Import(file), count) << "round " << round;
        EXPECT_TRUE(m_q == expected) << "round " << round;
    };
    {
        // A caption listed twice whose source a row rewrites is matched under both listings by
        // its new source; the second listing decodes the cell once more than the first.
        CQuestionnaire q = languagesOnly();
        for (int id = 1; id <= 2; ++id) {
            auto question = std::make_unique<CQuestion>(id, u"Q%1"_s.arg(id));
            question->SetLocalisedLongCaption(kEnglish, u"x"_s);
            q.AddQuestion(std::move(question));
        }
        const questionnaire::CaptionList captions{{1, 2, 1}, {-1, -1, -1}, {}};
        check(q, captions, {kEnglish, kFrench, kEnglish},
              u"QuestionId\tResponseId\tE\tF\tE\r\n1\t-1\tx\t\ty\r\n"
              "2\t-1\ty\t\\\\\\\\\t\r\n"_s,
              -1);
        EXPECT_EQ(Caption(1, -1, kFrench), u"\\"_s);
    }
    for (int round = 0; round < 60; ++round) {
        CQuestionnaire q = languagesOnly();
        for (int id = 1; id <= 12; ++id) {
            auto question = std::make_unique<CQuestion>(id, u"Q%1"_s.arg(id));
            for (qint32 lcid : languages)
                if (random() % 3 != 0)
                    question->SetLocalisedLongCaption(lcid, text(3));
            for (int r = 1; r <= 2; ++r) {
                auto response = std::make_unique<CModalite>(r, QString::number(r));
                for (qint32 lcid : languages)
                    if (random() % 2 != 0)
                        response->SetLocalisedLongCaption(lcid, text(3));
                question->AddModalite(std::move(response));
            }
            q.AddQuestion(std::move(question));
        }
        q.SetCustomErrorMessage(kEnglish, 5, u"b"_s);
        questionnaire::CaptionList captions;
        questionnaire::BuildCaptionList(q, captions, false);
        // A caller's list may name a caption twice: it is still written once for each match.
        if (round % 2 == 1) {
            const qsizetype twice = qsizetype(random() % captions.size());
            captions.questionIds.append(captions.questionIds[twice]);
            captions.responseIds.append(captions.responseIds[twice]);
        }
        const QList<qint32>& layout = layouts[round % layouts.size()];
        QString file = u"QuestionId\tResponseId"_s;
        for (qint32 lcid : layout)
            file += u"\t%1(X)"_s.arg(lcid);
        file += u"\r\n"_s;
        for (int n = 0; n < 40; ++n) {
            const qsizetype k = qsizetype(random() % captions.size());
            file += u"%1\t%2"_s.arg(captions.questionIds[k]).arg(captions.responseIds[k]);
            for (qsizetype c = 0; c < layout.size(); ++c)
                file += QLatin1Char('\t') + text(4);
            file += u"\r\n"_s;
        }
        check(q, captions, layout, file, round);
    }
}

// Rows cut in batches, two used in turn as the import's cutting thread uses them: a batch's rows
// are read only after the other batch has been filled.
QList<QStringList> CutInTurns(RowCutter& cutter) {
    QList<QStringList> rows;
    RowBatch batches[2];
    bool filled[2] = {cutter.NextBatch(batches[0]), false};
    for (int b = 0; filled[b % 2]; ++b) {
        filled[(b + 1) % 2] = cutter.NextBatch(batches[(b + 1) % 2]);
        const RowBatch& batch = batches[b % 2];
        for (size_t r = 0; r < batch.RowCount(); ++r) {
            QStringList row;
            for (const CutCell& cell : batch.Row(r))
                row.append(cell.text.toString());
            rows.append(row);
        }
    }
    return rows;
}

// The masks the cutter takes 64 characters at a time, against one character at a time, over
// characters whose low or high byte is one it looks for, and every control character.
TEST(RowCutter, WindowMasksAgreeWithACharacterAtATime) {
    std::mt19937 random(5);
    std::vector<char16_t> alphabet = {u'\t',     u'\r',     u'\n',     u'"',      u'\\',
                                      u'a',      u'\u0109', u'\u0a0d', u'\u225c', u'\u2209',
                                      u'\u5c00', u'\u7f7f', u'\u8000', u'\uff09', u'\uff89',
                                      u'\uffff', u'\u0080'};
    for (char16_t c = 0; c < 0x20; ++c)
        alphabet.push_back(c);
    char16_t window[64];
    for (int round = 0; round < 2000; ++round) {
        for (char16_t& c : window)
            c = alphabet[random() % alphabet.size()];
        const WindowMasks fast = MasksOf(window);
        const WindowMasks slow = MasksOfOneByOne(window);
        EXPECT_EQ(fast.tabs, slow.tabs) << round;
        EXPECT_EQ(fast.backslashes, slow.backslashes) << round;
        EXPECT_EQ(fast.others, slow.others) << round;
    }
}

// Every way the cutter is driven (a whole text, row by row or in batches; a file read in pieces
// smaller or larger than a row, row by row or in batches) cuts as a reading one character at a
// time does: first on texts whose rows are written out, then on generated ones. Half of these
// are dense with quotes, tabs and line ends that straddle pieces; the others have long runs of
// ordinary text, as real files do, which the cutter takes many characters at a time, among them
// characters whose low byte is a tab, a quote or a backslash.
TEST(RowCutter, CutsLikeASpreadsheetReaderHoweverDriven) {
    QTemporaryDir dir;
    int files = 0;
    const auto expectCuts = [&](const QString& text, const QList<QStringList>& expected,
                                const std::vector<size_t>& pieces) {
        RowCutter whole(text);
        EXPECT_EQ(CutAll(whole), expected);
        RowCutter wholeInBatches(text);
        EXPECT_EQ(CutInTurns(wholeInBatches), expected);
        const QString path = dir.filePath(u"t%1.txt"_s.arg(++files));
        ASSERT_TRUE(testutil::WriteAll(path, testutil::Utf16Le(text)));
        for (size_t piece : pieces) {
            util::TextFileReader reader;
            ASSERT_TRUE(reader.Open(path));
            RowCutter streamed(reader, piece);
            EXPECT_EQ(CutAll(streamed), expected) << "piece " << piece;
            EXPECT_FALSE(streamed.Failed());
            ASSERT_TRUE(reader.Open(path));
            RowCutter batched(reader, piece);
            EXPECT_EQ(CutInTurns(batched), expected) << "piece " << piece;
        }
    };
    const struct {
        QString text;
        QList<QStringList> rows;
    } cases[] = {
        {u"a\tb\r\nc\td\r\n"_s, {{"a", "b"}, {"c", "d"}}},
        {u"a\n\n\r\n\rb"_s, {{"a"}, {"b"}}},
        {u"a\t\r\n"_s, {{"a", ""}}},
        {u"a\t"_s, {{"a"}}}, // at the end an empty last cell is dropped
        {u"\"x\ty\r\nz\"\tw"_s, {{"x\ty\r\nz", "w"}}},
        {u"\"say \"\"hi\"\"\""_s, {{"say \"hi\""}}},
        {u"ab\"c\td\"e"_s, {{"abc\tde"}}}, // a quote may stand anywhere
        {u"\r\na"_s, {{""}, {"a"}}},       // a line end first ends an empty row
        // Quoted cells as spreadsheet programs write them, and shapes they do not write.
        {u"1\t\"a \"\"b\"\" c\"\t\"\"\r\n2\t\"\"\"\"\n"_s, {{"1", "a \"b\" c", ""}, {"2", "\""}}},
        {u"1\t\"x\ty\r\nz\"\r\n"_s, {{"1", "x\ty\r\nz"}}},
        {u"1\t\"a\"b\"c\"\td"_s, {{"1", "abc", "d"}}},
        {u"1\t\"a\"\"b"_s, {{"1", "a\"b"}}},
        {u"1\t\"a\"\"b\"\"\"\"\"\t"_s, {{"1", "a\"b\"\""}}},
        {QString(), {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(CutOneByOne(c.text), c.rows); // the reading the generated texts are held to
        expectCuts(c.text, c.rows, {1, 2, 5});
    }

    std::mt19937 random(11);
    const char16_t ordinary[] = {u'a',      u' ',      u'\u0109',       u'\u0a0d',
                                 u'\u225c', u'\u4e2d', u'\uff09',       u'\u0001',
                                 u'\u00e9', u'\u0122', char16_t(0xd83d)};
    const char16_t special[] = {u'\t', u'\t', u'\t', u'\r', u'\n', u'"', u'"', u'\\'};
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const bool dense = round % 2 == 0;
        QString text;
        for (int r = int(random() % (dense ? 30 : 80)); r > 0; --r) {
            for (int i = int(random() % (dense ? 3 : 150)); i > 0; --i)
                text.append(QChar(ordinary[random() % std::size(ordinary)]));
            for (int i = 1 + int(random() % 3); i > 0; --i)
                text.append(QChar(special[random() % std::size(special)]));
        }
        expectCuts(text, CutOneByOne(text),
                   dense ? std::vector<size_t>{1, 2, 5, 16} : std::vector<size_t>{63, 4096});
    }
}

// Everything a caption may hold that XML or a careless writer could spoil.
const QString kSpecial = u"Line 1\nLine 2\tTab \"quoted\" & <b>bold</b> "_s +
                         QString::fromUcs4(U"\U0001F600 \u05E9\u05DC\u05D5\u05DD ") + QChar(1) +
                         u" end\r\nCRLF"_s;

QString Validate(const QString& path, XliffVersion version) {
    return testutil::ValidateXliff(path, version == XliffVersion::V12 ? u"1.2"_s : u"2.0"_s);
}

// XLIFF for translation tools: the files validate against the published schemas, come back
// unchanged, are filled by another program's own XLIFF library, and are guarded on import as
// the tab-separated file is.
class XliffTest : public ImportTest {
protected:
    void SetUp() override {
        ImportTest::SetUp();
        CQuestion* q10 = m_q.GetAdrQuestion(0);
        q10->SetLocalisedShortCaption(kFrench, kSpecial);
        q10->SetLocalisedShortCaption(kGerman, kSpecial + u" DE"_s);
        // A second response that shares its source text with the first.
        q10->AddModalite(std::make_unique<CModalite>(3, u"3"_s));
        q10->GetAdrModalite(2)->SetLocalisedLongCaption(kEnglish, u"Very"_s);
        m_captions = {};
        questionnaire::BuildCaptionList(m_q, m_captions, false);
        m_path = m_dir.filePath(u"survey.xlf"_s);
    }
    void Export(XliffVersion version, QList<qint32> languages = {kEnglish, kFrench}) {
        ExportOptions options;
        options.languages = languages;
        ASSERT_TRUE(ExportXliff(m_path, m_q, options, version, m_captions, m_messages))
            << m_messages.messages.join(QLatin1Char('\n')).toStdString();
    }
    qint32 ImportXliff(const QString& path) {
        return exchange::ImportXliff(m_q, path, m_options, m_captions, m_messages, &m_report);
    }
    // Every caption of the list in these languages, to compare before and after.
    QStringList Captions(QList<qint32> languages) const {
        QStringList texts;
        for (qsizetype k = 0; k < m_captions.size(); ++k)
            for (qint32 language : languages)
                texts.append(
                    Caption(m_captions.questionIds[k], m_captions.responseIds[k], language));
        return texts;
    }
    void Clear(qint32 language) {
        for (qsizetype k = 0; k < m_captions.size(); ++k)
            if (m_captions.questionIds[k] > 0)
                WriteCaption(m_q, m_captions.questionIds[k], m_captions.responseIds[k], language,
                             QString());
    }

    QString m_path;
};

TEST_F(XliffTest, FilesValidateAndEveryCaptionComesBackUnchanged) {
    const struct {
        XliffVersion version;
        QList<qint32> languages;
        QStringList files;
    } cases[] = {
        {XliffVersion::V12, {kEnglish, kFrench}, {"survey.xlf"}},
        {XliffVersion::V12, {kEnglish, kFrench, kGerman}, {"survey.DEU.xlf", "survey.FRA.xlf"}},
        {XliffVersion::V20, {kEnglish, kFrench}, {"survey.xlf"}},
        {XliffVersion::V20, {kEnglish, kGerman, kFrench}, {"survey.DEU.xlf", "survey.FRA.xlf"}},
        // A language listed twice is exported once.
        {XliffVersion::V12, {kEnglish, kFrench, kFrench}, {"survey.xlf"}},
        {XliffVersion::V20,
         {kEnglish, kGerman, kFrench, kGerman},
         {"survey.DEU.xlf", "survey.FRA.xlf"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "row " << (&c - cases));
        for (const QString& file : QDir(m_dir.path()).entryList(QDir::Files))
            QFile::remove(m_dir.filePath(file));
        Export(c.version, c.languages);
        const QList<qint32> targets = c.languages.mid(1);
        const QStringList before = Captions(targets);
        EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files), c.files); // both sorted by name
        for (qint32 language : targets)
            Clear(language);
        ASSERT_NE(Captions(targets), before);
        for (const QString& file : c.files) {
            const QString path = m_dir.filePath(file);
            EXPECT_EQ(Validate(path, c.version), QString());
            EXPECT_GT(ImportXliff(path), 0);
        }
        EXPECT_EQ(Captions(targets), before);
    }
    // The check is not a formality: a unit without an id is refused.
    QByteArray broken = testutil::ReadAll(m_dir.filePath(u"survey.FRA.xlf"_s));
    broken.replace("<unit id=\"10_-1\"", "<unit");
    testutil::WriteAll(m_path, broken);
    EXPECT_NE(Validate(m_path, XliffVersion::V20), QString());
}

TEST_F(XliffTest, EveryTargetLanguageGetsAFileOfItsOwn) {
    // 1131 and 3179 are both abbreviated QUZ; 99999 and 88888 have no short name. A single
    // target, and languages listed twice, are in the export test above.
    const struct {
        const char* path;
        QList<qint32> languages;
        QStringList expected;
    } cases[] = {
        {"/a/survey.xlf", {kEnglish, kFrench, kGerman}, {"/a/survey.FRA.xlf", "/a/survey.DEU.xlf"}},
        {"/a.b/survey", {kEnglish, kFrench, kGerman}, {"/a.b/survey.FRA", "/a.b/survey.DEU"}},
        {"survey.v2.xliff",
         {kEnglish, kFrench, kGerman},
         {"survey.v2.FRA.xliff", "survey.v2.DEU.xliff"}},
        {"q.xlf", {kEnglish, 99999, 88888}, {"q.99999.xlf", "q.88888.xlf"}},
        {"q.xlf", {kEnglish, 1131, kFrench, 3179}, {"q.1131.xlf", "q.FRA.xlf", "q.3179.xlf"}},
    };
    for (const auto& c : cases) {
        ExportOptions options;
        options.languages = c.languages;
        EXPECT_EQ(XliffExportPaths(QLatin1String(c.path), m_q, options), c.expected);
    }
}

// The import takes a file for XLIFF by its ending or by its content: an export named without
// the ending, or a file a translator renamed, still comes back.
TEST_F(XliffTest, AFileIsXliffByItsEndingOrItsContent) {
    m_path = m_dir.filePath(u"survey"_s);
    Export(XliffVersion::V12, {kEnglish, kFrench, kGerman});
    const struct {
        const char* name;
        QByteArray content; // null: no such file
        bool xliff;
    } cases[] = {
        {"survey.FRA", {}, true}, // written by the export above
        {"missing.XLF", {}, true},
        {"missing", {}, false},
        {"bom.dat", "\xEF\xBB\xBF\n  <?xml version=\"1.0\"?><xliff/>", true},
        {"bare.txt", "<xliff version=\"2.0\"/>", true},
        {"wide.txt", testutil::Utf16Le(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>"_s), true},
        {"export.txt", testutil::Utf16Le(u"QuestionId\tResponseId\t1033(ENU)\r\n"_s), false},
    };
    for (const auto& c : cases) {
        const QString path = m_dir.filePath(QLatin1String(c.name));
        if (!c.content.isNull())
            testutil::WriteAll(path, c.content);
        EXPECT_EQ(IsXliffFile(path), c.xliff) << c.name;
    }
}

TEST_F(XliffTest, AStoppedExportLeavesEveryFileAsItWas) {
    const QStringList files = {m_dir.filePath(u"survey.FRA.xlf"_s),
                               m_dir.filePath(u"survey.DEU.xlf"_s)};
    for (const QString& file : files)
        ASSERT_TRUE(testutil::WriteAll(file, "old"));
    ExportOptions options;
    options.languages = {kEnglish, kFrench, kGerman};
    StopAtStep stop(1);
    ExportReport report;
    EXPECT_FALSE(ExportXliff(m_path, m_q, options, XliffVersion::V12, m_captions, m_messages,
                             &report, &stop));
    EXPECT_TRUE(report.stopped);
    for (const QString& file : files)
        EXPECT_EQ(testutil::ReadAll(file), QByteArray("old")) << file.toStdString();
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files).size(), 2);
}

TEST_F(XliffTest, AFileFilledByAnotherToolImportsExactlyTheFilledUnits) {
    Clear(kFrench);
    Export(XliffVersion::V12);
    const QString filled = m_dir.filePath(u"filled.xlf"_s);
    QProcess tool;
    tool.start(u"/usr/bin/python3"_s,
               {testutil::DataPath(u"exchange/fill_xliff.py"_s), m_path, filled,
                u"10_-2=Tab\\there & <there>\\nnext \\U0001F600 \\u05E9"_s});
    ASSERT_TRUE(tool.waitForFinished(60000));
    ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    const int units = QString::fromLatin1(tool.readAllStandardOutput()).trimmed().toInt();
    ASSERT_GT(units, 5);
    EXPECT_EQ(Validate(filled, XliffVersion::V12), QString());
    EXPECT_EQ(ImportXliff(filled), units);
    EXPECT_EQ(Caption(10, -2, kFrench),
              u"Tab\there & <there>\nnext "_s + QString::fromUcs4(U"\U0001F600") + u" \u05E9"_s);
    EXPECT_EQ(Caption(10, -1, kFrench), u"T:How satisfied are you?"_s);
}

TEST_F(XliffTest, OnlyUnchangedSetsChangedUnitsAsideInAValidFile) {
    for (const XliffVersion version : {XliffVersion::V12, XliffVersion::V20}) {
        SetUp();
        Export(version);
        // After the export the source of 10/-1 changes and a translation of 10/1 is lost.
        WriteCaption(m_q, 10, -1, kEnglish, u"How happy are you?"_s);
        WriteCaption(m_q, 10, 1, kFrench, QString());
        m_options.onlyUnchanged = true;
        EXPECT_EQ(ImportXliff(m_path), 1);
        EXPECT_EQ(Caption(10, 1, kFrench), u"Très"_s);
        EXPECT_EQ(Caption(10, -1, kFrench), u"Êtes-vous satisfait ?"_s);
        EXPECT_EQ(m_report.rejectedRows, 1);
        const QString unused = m_dir.filePath(u"UnusedStrings.xlf"_s);
        EXPECT_EQ(m_report.unusedStringsPath, unused);
        EXPECT_EQ(Validate(unused, version), QString());
        const QString text = QString::fromUtf8(testutil::ReadAll(unused));
        EXPECT_TRUE(text.contains(u"How happy are you?"_s)) << text.toStdString();
        EXPECT_FALSE(text.contains(u"\"10_1\""_s)) << text.toStdString();
        // Copy identical applies each unit to every caption with the same source.
        WriteCaption(m_q, 10, 1, kFrench, QString());
        m_options.onlyUnchanged = false;
        m_options.copyIdentical = true;
        EXPECT_EQ(ImportXliff(m_path), 2);
        EXPECT_EQ(Caption(10, 3, kFrench), u"Très"_s);
    }
}

// A one-unit XLIFF document: its languages, the unit's target and its state.
QByteArray Document(const QString& version, const QString& source, const QString& target,
                    const QString& state, const QString& text = u"Tout à fait"_s) {
    const QString form =
        version == "2.0"_L1
            ? u"<xliff xmlns=\"urn:oasis:names:tc:xliff:document:2.0\" version=\"2.0\" "
              "srcLang=\"%1\" trgLang=\"%2\"><file id=\"f\"><unit id=\"10_1\"><segment%3>"
              "<source>Very</source><target>%4</target></segment></unit></file></xliff>"_s
            : u"<xliff xmlns=\"urn:oasis:names:tc:xliff:document:1.2\" version=\"1.2\"><file "
              "original=\"s\" source-language=\"%1\" target-language=\"%2\" "
              "datatype=\"plaintext\"><body><trans-unit id=\"10_1\"><source>Very</source>"
              "<target%3>%4</target></trans-unit></body></file></xliff>"_s;
    const QString stateAttribute = state.isEmpty() ? QString() : u" state=\"%1\""_s.arg(state);
    return form.arg(source, target, stateAttribute, text).toUtf8();
}

TEST_F(XliffTest, RefusalsAndUntranslatedStatesChangeNothing) {
    const QByteArray good = Document(u"1.2"_s, u"en-US"_s, u"fr-FR"_s, QString());
    const struct {
        const char* what;
        QByteArray bytes;
        qint32 result;
    } cases[] = {
        {"tab-separated text", "QuestionId\tResponseId\t1033(ENU)\r\n", kImportNoRow},
        {"entity declared", "<!DOCTYPE xliff [<!ENTITY e \"Tout\">]>" + good.left(good.size() - 40),
         kImportNoRow},
        {"cut short", good.left(good.size() - 30), kImportNoRow},
        {"unknown tag", Document("1.2", "en-US", "xx-XX", {}), kImportUnknownLanguage},
        {"not the questionnaire's", Document("2.0", "en-US", "fr-CA", {}),
         kImportLanguageNotInQuestionnaire},
        {"source not the reference, only unchanged", Document("1.2", "de-DE", "fr-FR", {}),
         kImportNoReferenceColumn},
        {"1.2 new", Document("1.2", "en-US", "fr-FR", "new"), 0},
        {"1.2 needs-translation", Document("1.2", "en-US", "fr-FR", "needs-translation"), 0},
        {"2.0 initial", Document("2.0", "en-US", "fr-FR", "initial"), 0},
        {"empty target", Document("2.0", "en-US", "fr-FR", "translated", {}), 0},
        {"1.2 no state", good, 1},
        {"source not the reference", Document("1.2", "de-DE", "fr-FR", {}), 1},
        {"1.2 final", Document("1.2", "en-US", "fr-FR", "final"), 1},
        {"2.0 translated", Document("2.0", "en-US", "fr-FR", "translated"), 1},
    };
    const QString path = m_dir.filePath(u"in.xlf"_s);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        ASSERT_TRUE(testutil::WriteAll(path, c.bytes));
        m_options.onlyUnchanged = QByteArray(c.what).endsWith("only unchanged");
        EXPECT_EQ(ImportXliff(path), c.result);
        EXPECT_EQ(Caption(10, 1, kFrench), c.result == 1 ? u"Tout à fait"_s : u"Très"_s);
    }
    EXPECT_EQ(ImportXliff(m_dir.filePath(u"missing.xlf"_s)), kImportCannotRead);
}

} // namespace
