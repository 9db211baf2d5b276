#include "exchange/ExportRows.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"

#include <algorithm>

namespace exchange {

using namespace questionnaire;

RowSelector::RowSelector(const CQuestionnaire& q, const ExportOptions& options,
                         const VisibilityFilter* visibility)
    : m_q(q), m_options(options), m_columns(options.languages), m_visibility(visibility) {}

RowSelector::Resolved RowSelector::Resolve(qint32 questionId, qint32 responseId) const {
    Resolved row;
    const CaptionKindFilter& kinds = m_options.kinds;
    if (questionId == kSystemMessageMarker) {
        row.keep = !kinds.excludeSystemMessages;
        row.systemMessage = true;
        return row;
    }
    int index = 0;
    if (questionId == kRoutingMarker) {
        row.keep = !kinds.excludeRoutings;
        if (m_q.FindRoutingById(responseId, index))
            row.texts = &m_q.GetFiltre(index).Message();
        return row;
    }
    if (!m_q.FindQuestionById(questionId, index))
        return row;
    const CQuestion& question = m_q.GetQuestion(index);
    if ((m_visibility && !m_visibility->IsKept(index)) ||
        !QuestionPassesVersions(question, m_options.versions) ||
        kinds.Excludes(questionId, responseId))
        return row;
    row.question = &question;
    switch (responseId) {
    case kLongCaption:
        row.texts = &question.LongCaption();
        break;
    case kShortCaption:
        row.texts = &question.ShortCaption();
        break;
    case kInstructions:
        row.texts = &question.Instructions();
        break;
    case kComments:
        row.texts = &question.Comments();
        break;
    default:
        if (!question.FindModaliteById(responseId, row.response) ||
            !ResponsePassesVersions(question, *row.response, m_options.versions))
            return row;
        row.texts = &row.response->Caption();
    }
    row.keep = true;
    return row;
}

bool RowSelector::Select(const CaptionList& captions, qsizetype k, ExportRow& out) {
    const qint32 questionId = captions.questionIds[k];
    const qint32 responseId = captions.responseIds[k];
    const Resolved row = Resolve(questionId, responseId);
    if (!row.keep)
        return false;
    const qsizetype count = m_options.languages.size();
    if (row.systemMessage) {
        m_messageTexts.resize(count);
        m_texts.resize(size_t(count));
        for (qsizetype i = 0; i < count; ++i) {
            m_messageTexts[i] = m_q.GetErrorMessage(m_options.languages[i], responseId);
            m_texts[size_t(i)] = &m_messageTexts[i];
        }
    } else {
        m_columns.Read(row.texts, m_texts);
    }
    const bool anyEmpty =
        std::any_of(m_texts.begin(), m_texts.end(), [](const QString* t) { return t->isEmpty(); });
    // A row is translated when no exported language is empty, the reference included.
    if (m_options.excludeTranslated && !anyEmpty)
        return false;
    if (m_options.excludeDuplicates) {
        const QString& reference = count > 0 ? *m_texts.front() : m_empty;
        if (m_seenReferences.contains(reference))
            return false;
        m_seenReferences.insert(reference);
    }
    out = {questionId, responseId, &m_texts, row.question, row.response};
    return true;
}

} // namespace exchange
