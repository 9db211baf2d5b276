#include "questionnaire/CaptionList.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"

namespace questionnaire {

namespace {
struct Appender {
    CaptionList& list;
    bool withLabels;

    void operator()(qint32 questionId, qint32 responseId, const QString& label) const {
        list.questionIds.append(questionId);
        list.responseIds.append(responseId);
        if (withLabels)
            list.labels.append(label);
    }
};

qsizetype CountRows(const CQuestionnaire& q) {
    const qsizetype perQuestion = q.IsAllowingInstructionAndComment() ? 4 : 2;
    qsizetype rows = kSystemMessageCount + q.GetNbreFiltre();
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& question = q.GetQuestion(i);
        rows += perQuestion + (question.EstAModalite() ? question.GetNbreModalite() : 0);
    }
    return rows;
}
} // namespace

void BuildCaptionList(const CQuestionnaire& q, CaptionList& list, bool withLabels) {
    const qsizetype expected = list.size() + CountRows(q);
    list.questionIds.reserve(expected);
    list.responseIds.reserve(expected);
    if (withLabels)
        list.labels.reserve(expected);
    const Appender add{list, withLabels};
    const bool withNotes = q.IsAllowingInstructionAndComment();

    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& question = q.GetQuestion(i);
        add(question.m_id, kLongCaption, question.m_shortcut);
        add(question.m_id, kShortCaption, QString());
        if (withNotes) {
            add(question.m_id, kInstructions, QString());
            add(question.m_id, kComments, QString());
        }
        if (!question.EstAModalite())
            continue;
        for (int r = 0; r < question.GetNbreModalite(); ++r)
            add(question.m_id, question.GetModalite(r).m_id, withLabels ? QString::number(r + 1) : QString());
    }
    for (qint32 number = kFirstSystemMessage; number <= kLastSystemMessage; ++number)
        add(kSystemMessageMarker, number,
            withLabels ? QString::number(number - kFirstSystemMessage + 1) : QString());
    int routingNumber = 0;
    for (int i = 0; i < q.GetNbreFiltre(); ++i) {
        const CFiltre& routing = q.GetFiltre(i);
        if (routing.m_kind != CFiltre::kKindWithMessage)
            continue;
        ++routingNumber;
        add(kRoutingMarker, routing.m_id, withLabels ? QString::number(routingNumber) : QString());
    }
}

} // namespace questionnaire
