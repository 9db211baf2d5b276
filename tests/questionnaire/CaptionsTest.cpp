#include "common/SampleQuestionnaire.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionFilters.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/CaptionTable.h"

#include <gtest/gtest.h>

#include <functional>

using namespace questionnaire;
using namespace Qt::StringLiterals;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

using Row = std::tuple<qint32, qint32, QString>; // question id, response id, label

std::vector<Row> Rows(const CQuestionnaire& q) {
    CaptionList list;
    BuildCaptionList(q, list);
    std::vector<Row> rows;
    for (qsizetype i = 0; i < list.size(); ++i)
        rows.push_back({list.questionIds[i], list.responseIds[i], list.labels[i]});
    return rows;
}

// A question's rows: long and short captions, instructions and comments when listed, responses.
void Question(std::vector<Row>& rows, qint32 id, const QString& label, bool withNotes,
              int responses = 0) {
    for (qint32 r = -1; r >= (withNotes ? -4 : -2); --r)
        rows.push_back({id, r, r == -1 ? label : QString()});
    for (int n = 1; n <= responses; ++n)
        rows.push_back({id, n, QString::number(n)});
}

// The system messages follow the questions; the routings with a message come last.
TEST(CaptionList, OrderAndLabelsFollowTheInstructionsSwitch) {
    CQuestionnaire empty;
    empty.AddFiltre(std::make_unique<CFiltre>(9, CFiltre::kKindWithMessage));
    for (int round = 0; round < 3; ++round) {
        const bool withNotes = round == 0;
        CQuestionnaire q = round == 2 ? empty : testutil::MakeSample();
        q.SetAllowingInstructionAndComment(withNotes);
        std::vector<Row> expected;
        if (round < 2) {
            Question(expected, 10, u"Q1"_s, withNotes, 2);
            Question(expected, 20, u"GRID"_s, withNotes);
            // The numeric question 21 has no response list even if it held responses.
            Question(expected, 21, u"GRID_A"_s, withNotes);
        }
        for (int n = 2; n <= 43; ++n)
            expected.push_back({-1, n, QString::number(n - 1)});
        // Routing 6 has kind 1 and is not a caption; routing 7 is the second one listed.
        if (round < 2)
            expected.insert(expected.end(), {{-2, 5, u"1"_s}, {-2, 7, u"2"_s}});
        else
            expected.push_back({-2, 9, u"1"_s});
        EXPECT_EQ(Rows(q), expected) << "round " << round << " (2: empty questionnaire)";
    }
}

// Each id read in English, then written in German: known ids take the text, unknown ones are
// ignored. The routings' English texts tell them apart, so a German text read back went to the
// routing the id names.
TEST(CaptionAccess, ReadsAndWritesEveryKindAndIgnoresUnknownIds) {
    const CQuestionnaire q = testutil::MakeSample();
    const struct {
        qint32 q, r;
        QString english;
        bool known = true;
    } cases[] = {
        {10, -1, u"How satisfied are you?"_s},
        {10, -2, u"Satisfaction"_s},
        {10, -3, u"Read out\nthe scale"_s},
        {10, -4, u"Tab\there"_s},
        {10, 1, u"Very"_s},
        {10, 2, u"Not \"really\""_s},
        {10, 99, QString(), false},  // unknown response
        {999, -1, QString(), false}, // unknown question
        {-2, 5, u"Skipping ahead"_s},
        {-2, 7, QString()},
        {-2, 77, QString(), false}, // unknown routing
        {-1, 3, u"Please answer this one."_s},
        {-1, 2, CQuestionnaire::GetStandardErrorMessage(kEnglish, 2)},
        {-1, 1, QString(), false}, // no such system message
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.q << "/" << c.r);
        EXPECT_EQ(ReadCaption(q, c.q, c.r, kEnglish), c.english);
        CQuestionnaire written = q;
        const QString german = u"de %1/%2"_s.arg(c.q).arg(c.r);
        WriteCaption(written, c.q, c.r, kGerman, german);
        if (c.known)
            EXPECT_EQ(ReadCaption(written, c.q, c.r, kGerman), german);
        else
            EXPECT_EQ(written, q);
    }
}

TEST(SystemMessages, LanguagesFallBackToEnglish) {
    for (qint32 n = 2; n <= 43; ++n) {
        const QString english = CQuestionnaire::GetStandardErrorMessage(kEnglish, n);
        EXPECT_FALSE(english.isEmpty()) << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(2057, n), english) << "en-GB " << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(1049, n), english) << "Russian " << n;
        EXPECT_NE(CQuestionnaire::GetStandardErrorMessage(kFrench, n), english) << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(3084, n),
                  CQuestionnaire::GetStandardErrorMessage(kFrench, n))
            << n;
    }
}

TEST(VersionFilter, QuestionsAndResponses) {
    const CQuestionnaire q = testutil::MakeSample();
    const CQuestion& q10 = q.GetQuestion(0); // all versions; response 2 in version 2 only
    const CQuestion& q20 = q.GetQuestion(1); // version 1 only
    const CModalite& all = q10.GetModalite(0);
    const CModalite& phoneOnly = q10.GetModalite(1);
    struct Case {
        QList<qint32> selection;
        bool q10, q20, response1, response2;
    } cases[] = {
        {{}, true, true, true, true},    {{1}, true, true, true, false},
        {{2}, true, false, true, true},  {{1, 2}, true, true, true, true},
        {{3}, true, false, true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "selection of " << c.selection.size());
        EXPECT_EQ(QuestionPassesVersions(q10, c.selection), c.q10);
        EXPECT_EQ(QuestionPassesVersions(q20, c.selection), c.q20);
        EXPECT_EQ(ResponsePassesVersions(q10, all, c.selection), c.response1);
        EXPECT_EQ(ResponsePassesVersions(q10, phoneOnly, c.selection), c.response2);
    }
    // A response of a question that fails fails too, whatever its own versions.
    EXPECT_FALSE(ResponsePassesVersions(q20, all, {2}));
}

TEST(KindFilter, EachSwitchRemovesItsRowsOnly) {
    using F = CaptionKindFilter;
    // Each row with the switch that removes it; marker rows are judged by their question id,
    // whatever their response id.
    const struct {
        qint32 q, r;
        bool F::*removedBy;
    } rows[] = {
        {10, -1, &F::excludeLongCaptions},  {10, -2, &F::excludeShortCaptions},
        {10, -3, &F::excludeInstructions},  {10, -4, &F::excludeComments},
        {10, 0, &F::excludeResponses},      {10, 7, &F::excludeResponses},
        {-1, 2, &F::excludeSystemMessages}, {-1, -1, &F::excludeSystemMessages},
        {-2, 5, &F::excludeRoutings},       {-2, -1, &F::excludeRoutings},
    };
    // Nothing switched off (round 0), then each row's switch alone.
    for (size_t i = 0; i <= std::size(rows); ++i) {
        F filter;
        bool F::*on = i == 0 ? nullptr : rows[i - 1].removedBy;
        if (on)
            filter.*on = true;
        for (const auto& row : rows)
            EXPECT_EQ(filter.Excludes(row.q, row.r), row.removedBy == on)
                << "round " << i << ", row " << row.q << "/" << row.r;
    }
}

// Visibility: a hidden question stays when a later descendant, reached through hidden
// questions only, is visible.
TEST(VisibilityFilter, WalksForwardThroughHiddenDescendants) {
    const struct {
        const char* name;
        // id, visible, parent (0 = none), shown (1 on screen, 2 on paper, 3 both)
        std::vector<std::array<qint32, 4>> questions;
        const char* kept; // one digit a question
    } cases[] = {
        {"visible question, shown somewhere", {{1, 1, 0, 1}, {2, 1, 0, 2}}, "11"},
        {"visible but on neither screen nor paper", {{1, 1, 0, 0}}, "0"},
        {"hidden parent with a visible child", {{1, 0, 0, 3}, {2, 1, 1, 3}}, "11"},
        {"hidden parent without visible child", {{1, 0, 0, 3}, {2, 0, 1, 3}}, "00"},
        {"grandchild through a hidden child", {{1, 0, 0, 3}, {2, 0, 1, 3}, {3, 1, 2, 3}}, "111"},
        {"child placed before its parent does not count", {{2, 1, 1, 3}, {1, 0, 0, 3}}, "10"},
        {"grandchild before the hidden child", {{1, 0, 0, 3}, {3, 1, 2, 3}, {2, 0, 1, 3}}, "010"},
        {"a visible child ends the chain", {{1, 0, 0, 3}, {2, 1, 1, 3}, {3, 0, 2, 3}}, "110"},
        {"hidden parent on neither screen nor paper", {{1, 0, 0, 0}, {2, 1, 1, 3}}, "01"},
        {"unrelated visible question later does not help", {{1, 0, 0, 3}, {2, 1, 0, 3}}, "01"},
        {"parent id naming no question", {{2, 0, 7, 3}, {3, 1, 2, 3}}, "11"},
    };
    for (const auto& c : cases) {
        CQuestionnaire q;
        for (const auto& [id, visible, parent, shown] : c.questions) {
            auto question = std::make_unique<CQuestion>(id, QString::number(id));
            question->m_visible = visible;
            question->m_hasParent = parent != 0;
            question->m_parentId = parent;
            question->m_shownOnScreen = shown & 1;
            question->m_shownOnPaper = shown >> 1;
            q.AddQuestion(std::move(question));
        }
        const VisibilityFilter filter(q);
        for (size_t i = 0; i < c.questions.size(); ++i)
            EXPECT_EQ(filter.IsKept(int(i)), c.kept[i] == '1')
                << c.name << ", question index " << i;
    }
}

// --- the grid's table of captions ---

struct Heard : CaptionTableListener {
    void CellChanged(qsizetype row, int column) override { cells.append({row, column}); }
    void QuestionnaireModified() override { ++modified; }
    void TableRefilled() override { ++refilled; }
    QList<std::pair<qsizetype, int>> cells;
    int modified = 0;
    int refilled = 0;
};

qsizetype RowOf(const CaptionTable& table, qint32 questionId, qint32 responseId) {
    for (qsizetype row = 0; row < table.RowCount(); ++row)
        if (table.QuestionId(row) == questionId && table.ResponseId(row) == responseId)
            return row;
    return -1;
}

// Questions, routings and, unless kept, languages removed behind the table's back.
void KeepFirstQuestionOnly(CQuestionnaire& q, bool keepLanguages) {
    CQuestionnaire fewer;
    for (int i = 0; keepLanguages && i < q.GetLanguageCount(); ++i)
        fewer.AddLanguage(std::make_unique<CLanguage>(q.GetLanguage(i)));
    fewer.AddQuestion(std::make_unique<CQuestion>(q.GetQuestion(0)));
    q = fewer;
}

TEST(CaptionTable, RowsColumnsAndCells) {
    CQuestionnaire q = testutil::MakeSample();
    // Two languages flagged as the default: the later one leads.
    q.GetAdrLanguage(2)->m_isMain = true;
    const CaptionTable table(&q);
    EXPECT_EQ(table.Languages(), (QList<qint32>{kGerman, kEnglish, kFrench}));
    EXPECT_EQ(table.ColumnTitle(0), u"DEU"_s);
    ASSERT_EQ(table.RowCount(), 3 * 4 + 2 + 42 + 2);
    // Each kind of row; system-message and routing rows are so whatever their response id.
    const std::tuple<qint32, qint32, RowKind> kinds[] = {
        {10, -1, RowKind::LongCaption},   {10, -2, RowKind::ShortCaption},
        {10, -3, RowKind::Instructions},  {10, -4, RowKind::Comments},
        {10, 2, RowKind::Response},       {-1, 2, RowKind::SystemMessage},
        {-1, -1, RowKind::SystemMessage}, {-2, 7, RowKind::Routing},
        {-2, -3, RowKind::Routing},
    };
    for (const auto& [questionId, responseId, kind] : kinds)
        EXPECT_EQ(RowKindOf(questionId, responseId), kind) << questionId << "/" << responseId;
    // Cells are read when asked, escaped as the grid shows them.
    const qsizetype instructions = RowOf(table, 10, -3);
    EXPECT_EQ(table.Text(instructions, 1), u"Read out\\nthe scale"_s);
    EXPECT_EQ(table.Caption(instructions, 1), u"Read out\nthe scale"_s);
    q.GetAdrQuestion(0)->SetLocalisedInstructions(kEnglish, u"a\\b\tc"_s);
    EXPECT_EQ(table.Text(instructions, 1), u"a\\\\b\\tc"_s);
    EXPECT_EQ(table.Text(RowOf(table, -1, 3), 1), u"Please answer this one."_s);
}

// Each rule of writing back an edit: whether it is accepted, what the caption holds afterwards,
// and what the listeners hear.
TEST(CaptionTable, WriteBackRules) {
    const QString standard = CQuestionnaire::GetStandardErrorMessage(kEnglish, 3);
    const struct Case {
        const char* rule;
        qint32 questionId, responseId;
        int column; // 0 English, 1 French, 2 German
        QString typed;
        bool accepted;
        QString stored; // the caption afterwards, in the column's language
        bool modified;
        bool cellChanged;
        std::function<void(CQuestionnaire&)> meanwhile = {}; // done after the table was built
    } cases[] = {
        {"first column never emptied", 10, -1, 0, QString(), false, u"How satisfied are you?"_s,
         false, false},
        {"first column of a routing never emptied", -2, 5, 0, QString(), false, u"Skipping ahead"_s,
         false, false},
        {"other columns may be emptied", 10, -1, 1, QString(), true, QString(), true, true},
        {"unchanged text changes nothing", 10, -2, 0, u"Satisfaction"_s, true, u"Satisfaction"_s,
         false, false},
        {"letter case alone is a change", 10, -2, 0, u"satisfaction"_s, true, u"satisfaction"_s,
         true, true},
        {"escapes decoded, the doubled backslash last", 10, -3, 1, u"a\\nb \\\\n \\\\ \\t\\r"_s,
         true, u"a\nb \\\n \\ \t\r"_s, true, true},
        {"comments", 10, -4, 2, u"Kommentar"_s, true, u"Kommentar"_s, true, true},
        {"response", 10, 1, 2, u"Sehr"_s, true, u"Sehr"_s, true, true},
        {"response gone since", 10, 2, 2, u"x"_s, false, QString(), false, false,
         [](CQuestionnaire& q) { q.GetAdrQuestion(0)->RemoveModalite(1); }},
        {"question gone since", 21, -1, 1, u"x"_s, false, QString(), false, false,
         [](CQuestionnaire& q) { KeepFirstQuestionOnly(q, true); }},
        {"routing", -2, 7, 1, u"On saute"_s, true, u"On saute"_s, true, true},
        {"routing gone since: modified all the same", -2, 7, 1, u"x"_s, true, QString(), true,
         false, [](CQuestionnaire& q) { KeepFirstQuestionOnly(q, false); }},
        {"system message made custom", -1, 4, 1, u"Réponse ?"_s, true, u"Réponse ?"_s, true, true},
        {"system message unchanged", -1, 3, 0, u"Please answer this one."_s, true,
         u"Please answer this one."_s, false, false},
        {"system message back to its standard text", -1, 3, 0, standard, true, standard, true,
         true},
        {"system message emptied, first column too", -1, 3, 0, QString(), true, standard, true,
         true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.rule);
        CQuestionnaire q = testutil::MakeSample();
        CaptionTable table(&q);
        const qsizetype row = RowOf(table, c.questionId, c.responseId);
        ASSERT_GE(row, 0);
        if (c.meanwhile)
            c.meanwhile(q);
        Heard heard;
        table.AddListener(&heard);
        const CQuestionnaire before = q;
        EXPECT_EQ(table.WriteBack(row, c.column, c.typed), c.accepted);
        const qint32 language = table.ColumnLanguage(c.column);
        EXPECT_EQ(ReadCaption(q, c.questionId, c.responseId, language), c.stored);
        EXPECT_EQ(heard.modified, c.modified ? 1 : 0);
        using Cells = QList<std::pair<qsizetype, int>>;
        const Cells expected = c.cellChanged ? Cells{{row, c.column}} : Cells{};
        EXPECT_EQ(heard.cells, expected);
        if (!c.modified) {
            EXPECT_TRUE(q == before) << "nothing may change";
        }
        // A system message set back to its standard text is no longer customised.
        if (c.questionId == -1 && c.stored == standard) {
            EXPECT_TRUE(q.GetCustomErrorMessages(c.responseId).IsEmpty());
        }
    }
}

TEST(CaptionTable, WithoutQuestionnaireEditsAreRefusedAndChangesRefill) {
    CaptionTable empty;
    EXPECT_EQ(empty.RowCount(), 0);
    EXPECT_FALSE(empty.WriteBack(0, 0, u"x"_s));

    CQuestionnaire q = testutil::MakeSample();
    CaptionTable table(&q);
    Heard heard;
    table.AddListener(&heard);
    q.AddLanguage(std::make_unique<CLanguage>(1040u));
    EXPECT_EQ(table.ColumnCount(), 3) << "the table is built again only when told";
    table.QuestionnaireChanged();
    EXPECT_EQ(table.ColumnCount(), 4);
    EXPECT_EQ(heard.modified, 1);
    EXPECT_EQ(heard.refilled, 1);
    table.SetQuestionnaire(nullptr);
    EXPECT_EQ(table.RowCount(), 0);
    EXPECT_EQ(heard.refilled, 2);
    table.RemoveListener(&heard);
    table.SetQuestionnaire(&q);
    EXPECT_EQ(heard.refilled, 2);
}

} // namespace
