#include "exchange/CaptionGroups.h"

#include "questionnaire/CaptionAccess.h"

#include <algorithm>

namespace exchange {

using namespace questionnaire;

CaptionGroups::CaptionGroups(const CQuestionnaire& q, const CaptionList& captions, qint32 reference,
                             qsizetype columns)
    : m_q(q), m_captions(captions), m_reference(reference) {
    m_byText.reserve(captions.size());
    for (qsizetype k = 0; k < captions.size(); ++k) {
        Group& group = m_byText[Text(k)];
        group.captions.append(k);
        if (group.synced.empty())
            group.synced.assign(size_t(columns), false);
        const qint32 questionId = captions.questionIds[k];
        group.syncable = group.syncable && questionId != kSystemMessageMarker &&
                         FindCaptionTexts(q, questionId, captions.responseIds[k]);
    }
}

QString CaptionGroups::Text(qsizetype k) const {
    return ReadCaption(m_q, m_captions.questionIds[k], m_captions.responseIds[k], m_reference);
}

void CaptionGroups::Moved(qsizetype k, const QString& before) {
    const QString after = Text(k);
    if (after == before)
        return;
    QList<qsizetype>& old = m_byText[before].captions;
    old.erase(std::lower_bound(old.begin(), old.end(), k));
    QList<qsizetype>& now = m_byText[after].captions;
    now.insert(std::lower_bound(now.begin(), now.end(), k), k);
}

} // namespace exchange
