#include "questionnaire/CaptionFilters.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"

#include <QHash>

namespace questionnaire {

bool PassesVersionFilter(const QList<qint32>& ownVersions, const QList<qint32>& selection) {
    if (selection.isEmpty() || ownVersions.isEmpty())
        return true;
    for (qint32 id : ownVersions)
        if (selection.contains(id))
            return true;
    return false;
}

bool QuestionPassesVersions(const CQuestion& question, const QList<qint32>& selection) {
    return PassesVersionFilter(question.GetVersions(), selection);
}

bool ResponsePassesVersions(const CQuestion& question, const CModalite& response,
                            const QList<qint32>& selection) {
    return QuestionPassesVersions(question, selection) &&
           PassesVersionFilter(response.GetVersions(), selection);
}

bool CaptionKindFilter::Excludes(qint32 questionId, qint32 responseId) const {
    if (questionId == kSystemMessageMarker)
        return excludeSystemMessages;
    if (questionId == kRoutingMarker)
        return excludeRoutings;
    switch (responseId) {
    case kLongCaption:
        return excludeLongCaptions;
    case kShortCaption:
        return excludeShortCaptions;
    case kInstructions:
        return excludeInstructions;
    case kComments:
        return excludeComments;
    default:
        return excludeResponses;
    }
}

VisibilityFilter::VisibilityFilter(const CQuestionnaire& q) {
    const int count = q.GetNbreQuestion();
    // Children in questionnaire order, only those placed after their parent: the walk from a
    // hidden question only ever looks forward.
    std::vector<std::vector<int>> laterChildren(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const CQuestion& question = q.GetQuestion(i);
        int parent = 0;
        if (question.m_hasParent && q.FindQuestionById(question.m_parentId, parent) && parent < i)
            laterChildren[size_t(parent)].push_back(i);
    }
    // A hidden question reaches a visible one when some later child is visible, or is hidden and
    // reaches one itself. Children come later, so a backward pass has them ready.
    std::vector<bool> reachesVisible(static_cast<size_t>(count), false);
    for (int i = count - 1; i >= 0; --i) {
        for (int child : laterChildren[size_t(i)]) {
            if (q.GetQuestion(child).m_visible != 0 || reachesVisible[size_t(child)]) {
                reachesVisible[size_t(i)] = true;
                break;
            }
        }
    }
    m_kept.resize(size_t(count));
    for (int i = 0; i < count; ++i) {
        const CQuestion& question = q.GetQuestion(i);
        const bool shown = question.m_visible != 0 || reachesVisible[size_t(i)];
        m_kept[size_t(i)] =
            shown && (question.m_shownOnScreen != 0 || question.m_shownOnPaper != 0);
    }
}

} // namespace questionnaire
