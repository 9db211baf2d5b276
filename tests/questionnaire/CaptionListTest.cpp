#include "questionnaire/CaptionList.h"
#include "common/SampleQuestionnaire.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionFilters.h"

#include <gtest/gtest.h>

using namespace questionnaire;
using testutil::kEnglish;

namespace {

struct Row {
    qint32 q;
    qint32 r;
    QString label;
    bool operator==(const Row&) const = default;
};

std::vector<Row> Rows(const CQuestionnaire& q) {
    CaptionList list;
    BuildCaptionList(q, list);
    std::vector<Row> rows;
    for (qsizetype i = 0; i < list.size(); ++i)
        rows.push_back({list.questionIds[i], list.responseIds[i], list.labels[i]});
    return rows;
}

std::vector<Row> Expected(bool withNotes) {
    std::vector<Row> rows = {{10, -1, QStringLiteral("Q1")}, {10, -2, {}}};
    if (withNotes)
        rows.insert(rows.end(), {{10, -3, {}}, {10, -4, {}}});
    rows.insert(rows.end(), {{10, 1, QStringLiteral("1")}, {10, 2, QStringLiteral("2")}});
    rows.insert(rows.end(), {{20, -1, QStringLiteral("GRID")}, {20, -2, {}}});
    if (withNotes)
        rows.insert(rows.end(), {{20, -3, {}}, {20, -4, {}}});
    rows.insert(rows.end(), {{21, -1, QStringLiteral("GRID_A")}, {21, -2, {}}});
    if (withNotes)
        rows.insert(rows.end(), {{21, -3, {}}, {21, -4, {}}});
    for (int n = 2; n <= 43; ++n)
        rows.push_back({-1, n, QString::number(n - 1)});
    // Routing 6 has kind 1 and is not a caption; routing 7 is the second one listed.
    rows.insert(rows.end(), {{-2, 5, QStringLiteral("1")}, {-2, 7, QStringLiteral("2")}});
    return rows;
}

TEST(CaptionList, OrderAndLabelsFollowTheInstructionsSwitch) {
    for (bool withNotes : {true, false}) {
        CQuestionnaire q = testutil::MakeSample();
        q.SetAllowingInstructionAndComment(withNotes);
        // The numeric question 21 has no response list even if it held responses.
        EXPECT_EQ(Rows(q), Expected(withNotes)) << "instructions and comments: " << withNotes;
    }
}

TEST(CaptionList, EmptyQuestionnaireStillListsSystemMessagesThenRoutings) {
    CQuestionnaire q;
    q.AddFiltre(std::make_unique<CFiltre>(9, CFiltre::kKindWithMessage));
    const std::vector<Row> rows = Rows(q);
    ASSERT_EQ(rows.size(), 43u);
    EXPECT_EQ(rows.front(), (Row{-1, 2, QStringLiteral("1")}));
    EXPECT_EQ(rows[41], (Row{-1, 43, QStringLiteral("42")}));
    EXPECT_EQ(rows.back(), (Row{-2, 9, QStringLiteral("1")}));
}

TEST(CaptionAccess, ReadsEveryKindAndEmptyForUnknownIds) {
    const CQuestionnaire q = testutil::MakeSample();
    struct Case {
        qint32 q, r;
        QString expected;
    } cases[] = {
        {10, -1, QStringLiteral("How satisfied are you?")},
        {10, -2, QStringLiteral("Satisfaction")},
        {10, -3, QStringLiteral("Read out\nthe scale")},
        {10, -4, QStringLiteral("Tab\there")},
        {10, 2, QStringLiteral("Not \"really\"")},
        {10, 99, QString()},  // unknown response
        {999, -1, QString()}, // unknown question
        {-2, 5, QStringLiteral("Skipping ahead")},
        {-2, 77, QString()}, // unknown routing
        {-1, 3, QStringLiteral("Please answer this one.")},
        {-1, 1, QString()}, // no such system message
    };
    for (const Case& c : cases)
        EXPECT_EQ(ReadCaption(q, c.q, c.r, kEnglish), c.expected) << c.q << "/" << c.r;
    EXPECT_EQ(ReadCaption(q, -1, 2, kEnglish),
              CQuestionnaire::GetStandardErrorMessage(kEnglish, 2));
}

TEST(CaptionAccess, WritesReachTheRightCaptionAndIgnoreUnknownIds) {
    CQuestionnaire q = testutil::MakeSample();
    const CQuestionnaire before = q;
    WriteCaption(q, 999, -1, kEnglish, QStringLiteral("x"));
    WriteCaption(q, 10, 99, kEnglish, QStringLiteral("x"));
    WriteCaption(q, -2, 77, kEnglish, QStringLiteral("x"));
    EXPECT_EQ(q, before);
    for (qint32 r : {-1, -2, -3, -4, 1}) {
        WriteCaption(q, 10, r, testutil::kGerman, QStringLiteral("de %1").arg(r));
        EXPECT_EQ(ReadCaption(q, 10, r, testutil::kGerman), QStringLiteral("de %1").arg(r));
    }
    WriteCaption(q, -2, 7, testutil::kGerman, QStringLiteral("Weiter"));
    EXPECT_EQ(q.GetFiltre(2).GetLocalisedMessage(testutil::kGerman), QStringLiteral("Weiter"));
}

TEST(SystemMessages, LanguagesFallBackToEnglish) {
    for (qint32 n = 2; n <= 43; ++n) {
        const QString english = CQuestionnaire::GetStandardErrorMessage(kEnglish, n);
        EXPECT_FALSE(english.isEmpty()) << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(2057, n), english) << "en-GB " << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(1049, n), english) << "Russian " << n;
        EXPECT_NE(CQuestionnaire::GetStandardErrorMessage(testutil::kFrench, n), english) << n;
        EXPECT_EQ(CQuestionnaire::GetStandardErrorMessage(3084, n),
                  CQuestionnaire::GetStandardErrorMessage(testutil::kFrench, n))
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
        EXPECT_EQ(QuestionPassesVersions(q10, c.selection), c.q10) << c.selection.size();
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
struct VisibilityCase {
    const char* name;
    // id, visible, parent (0 = none), onScreen, onPaper
    std::vector<std::array<qint32, 5>> questions;
    std::vector<bool> kept;
};

CQuestionnaire Build(const VisibilityCase& c) {
    CQuestionnaire q;
    for (const auto& [id, visible, parent, screen, paper] : c.questions) {
        auto question = std::make_unique<CQuestion>(id, QString::number(id));
        question->m_visible = visible;
        question->m_hasParent = parent != 0;
        question->m_parentId = parent;
        question->m_shownOnScreen = screen;
        question->m_shownOnPaper = paper;
        q.AddQuestion(std::move(question));
    }
    return q;
}

TEST(VisibilityFilter, WalksForwardThroughHiddenDescendants) {
    const VisibilityCase cases[] = {
        {"visible question, shown somewhere", {{1, 1, 0, 1, 0}, {2, 1, 0, 0, 1}}, {true, true}},
        {"visible but on neither screen nor paper", {{1, 1, 0, 0, 0}}, {false}},
        {"hidden parent with a visible child", {{1, 0, 0, 1, 1}, {2, 1, 1, 1, 1}}, {true, true}},
        {"hidden parent without visible child", {{1, 0, 0, 1, 1}, {2, 0, 1, 1, 1}}, {false, false}},
        {"visible grandchild through a hidden child",
         {{1, 0, 0, 1, 1}, {2, 0, 1, 1, 1}, {3, 1, 2, 1, 1}},
         {true, true, true}},
        {"child placed before its parent does not count",
         {{2, 1, 1, 1, 1}, {1, 0, 0, 1, 1}},
         {true, false}},
        {"grandchild placed before the hidden child is never reached",
         {{1, 0, 0, 1, 1}, {3, 1, 2, 1, 1}, {2, 0, 1, 1, 1}},
         {false, true, false}},
        {"a visible child stops the chain: its children do not matter",
         {{1, 0, 0, 1, 1}, {2, 1, 1, 1, 1}, {3, 0, 2, 1, 1}},
         {true, true, false}},
        {"hidden parent with a visible child still needs screen or paper",
         {{1, 0, 0, 0, 0}, {2, 1, 1, 1, 1}},
         {false, true}},
        {"unrelated visible question later does not help",
         {{1, 0, 0, 1, 1}, {2, 1, 0, 1, 1}},
         {false, true}},
        {"parent id naming no question", {{2, 0, 7, 1, 1}, {3, 1, 2, 1, 1}}, {true, true}},
    };
    for (const VisibilityCase& c : cases) {
        const CQuestionnaire q = Build(c);
        const VisibilityFilter filter(q);
        for (size_t i = 0; i < c.kept.size(); ++i)
            EXPECT_EQ(filter.IsKept(int(i)), c.kept[i]) << c.name << ", question index " << i;
    }
}

} // namespace
