#pragma once

#include <QList>

#include <vector>

class CQuestion;
class CModalite;
class CQuestionnaire;

namespace questionnaire {

// A selection of version ids; empty means all versions. An object with no versions of its own
// belongs to all of them.
bool PassesVersionFilter(const QList<qint32>& ownVersions, const QList<qint32>& selection);
bool QuestionPassesVersions(const CQuestion& question, const QList<qint32>& selection);
// A response passes only when its question passes too.
bool ResponsePassesVersions(const CQuestion& question, const CModalite& response,
                            const QList<qint32>& selection);

// The caption-kind switches of an export; all off by default.
struct CaptionKindFilter {
    bool excludeLongCaptions = false;
    bool excludeShortCaptions = false;
    bool excludeInstructions = false;
    bool excludeComments = false;
    bool excludeResponses = false;
    bool excludeSystemMessages = false;
    bool excludeRoutings = false;

    // True when the row's kind is switched off.
    bool Excludes(qint32 questionId, qint32 responseId) const;
};

// Which questions a respondent can meet. A visible question counts when it appears on screen or
// on paper. A hidden question counts (under the same condition) when a later question that
// descends from it, through hidden questions only, is visible: hidden parents of visible
// sub-questions carry their captions. Computed for all questions at once, in linear time.
class VisibilityFilter {
public:
    explicit VisibilityFilter(const CQuestionnaire& q);
    bool IsKept(int questionIndex) const { return m_kept[size_t(questionIndex)]; }

private:
    std::vector<bool> m_kept;
};

} // namespace questionnaire
