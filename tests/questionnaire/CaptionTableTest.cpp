#include "questionnaire/CaptionTable.h"
#include "common/SampleQuestionnaire.h"
#include "questionnaire/CaptionAccess.h"

#include <gtest/gtest.h>

#include <functional>

using namespace questionnaire;
using namespace Qt::StringLiterals;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

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
    const qsizetype lastMessage = RowOf(table, -1, 43);
    ASSERT_GE(lastMessage, 0);
    EXPECT_EQ(table.Kind(lastMessage), RowKind::SystemMessage);
    EXPECT_EQ(table.RowLabel(lastMessage), u"42"_s);
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
