#include "questionnaire/CaptionList.h"
#include "common/SampleQuestionnaire.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionFilters.h"

#include <gtest/gtest.h>

using namespace questionnaire;
using namespace Qt::StringLiterals;
using testutil::kEnglish;
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
// ignored.
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
    CQuestionnaire written = q;
    WriteCaption(written, -2, 7, kGerman, u"Weiter"_s);
    EXPECT_EQ(written.GetFiltre(2).GetLocalisedMessage(kGerman), u"Weiter"_s);
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

} // namespace
