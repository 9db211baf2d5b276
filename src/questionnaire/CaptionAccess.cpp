#include "questionnaire/CaptionAccess.h"

#include "questionnaire/Questionnaire.h"

namespace questionnaire {

const CLocalisedText* FindCaptionTexts(const CQuestionnaire& q, qint32 questionId,
                                       qint32 responseId) {
    int index = 0;
    if (questionId == kSystemMessageMarker)
        return nullptr;
    if (questionId == kRoutingMarker)
        return q.FindRoutingById(responseId, index) ? &q.GetFiltre(index).Message() : nullptr;
    if (!q.FindQuestionById(questionId, index))
        return nullptr;
    const CQuestion& question = q.GetQuestion(index);
    switch (responseId) {
    case kLongCaption: return &question.LongCaption();
    case kShortCaption: return &question.ShortCaption();
    case kInstructions: return &question.Instructions();
    case kComments: return &question.Comments();
    default: break;
    }
    const CModalite* response = nullptr;
    return question.FindModaliteById(responseId, response) ? &response->Caption() : nullptr;
}

QString ReadCaption(const CQuestionnaire& q, qint32 questionId, qint32 responseId,
                    qint32 language) {
    if (questionId == kSystemMessageMarker)
        return q.GetErrorMessage(language, responseId);
    const CLocalisedText* texts = FindCaptionTexts(q, questionId, responseId);
    return texts ? texts->Get(language) : QString();
}

CLocalisedText* FindWritableTexts(CQuestionnaire& q, qint32 questionId, qint32 responseId) {
    if (questionId == kSystemMessageMarker)
        return q.GetAdrCustomErrorMessages(responseId);
    // The questionnaire is ours to change; only the lookup is shared with readers.
    return const_cast<CLocalisedText*>(FindCaptionTexts(q, questionId, responseId));
}

namespace {
void WriteSystemMessage(CQuestionnaire& q, qint32 number, qint32 language, const QString& text) {
    if (text == q.GetErrorMessage(language, number))
        return;
    if (text == CQuestionnaire::GetStandardErrorMessage(language, number))
        q.SetCustomErrorMessage(language, number, QString());
    else
        q.SetCustomErrorMessage(language, number, text);
}
} // namespace

void WriteCaption(CQuestionnaire& q, qint32 questionId, qint32 responseId, qint32 language,
                  const QString& text) {
    if (questionId == kSystemMessageMarker) {
        WriteSystemMessage(q, responseId, language, text);
        return;
    }
    int index = 0;
    if (questionId == kRoutingMarker) {
        if (q.FindRoutingById(responseId, index))
            q.GetAdrFiltre(index)->SetLocalisedMessage(language, text);
        return;
    }
    if (!q.FindQuestionById(questionId, index))
        return;
    CQuestion* question = q.GetAdrQuestion(index);
    switch (responseId) {
    case kLongCaption:
        question->SetLocalisedLongCaption(language, text);
        return;
    case kShortCaption:
        question->SetLocalisedShortCaption(language, text);
        return;
    case kInstructions:
        question->SetLocalisedInstructions(language, text);
        return;
    case kComments:
        question->SetLocalisedComments(language, text);
        return;
    default:
        break;
    }
    CModalite* response = nullptr;
    if (question->FindAdrModaliteById(responseId, response))
        response->SetLocalisedLongCaption(language, text);
}

} // namespace questionnaire
