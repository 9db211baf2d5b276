#include "exchange/CaptionGroups.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/LocalisedText.h"

#include <algorithm>
#include <unordered_set>

namespace exchange {

using namespace questionnaire;

CaptionGroups::CaptionGroups(const CQuestionnaire& q, const CaptionList& captions, qint32 reference,
                             qsizetype columns)
    : m_q(q), m_captions(captions), m_reference(reference) {
    m_byText.reserve(captions.size());
    m_texts.reserve(size_t(captions.size()));
    std::unordered_set<const CLocalisedText*> seen;
    for (qsizetype k = 0; k < captions.size(); ++k) {
        const qint32 questionId = captions.questionIds[k];
        const CLocalisedText* texts =
            questionId == kSystemMessageMarker
                ? nullptr
                : FindCaptionTexts(q, questionId, captions.responseIds[k]);
        m_texts.push_back(texts);
        const bool listedBefore = texts && !seen.insert(texts).second;
        Group& group = m_byText[texts ? texts->Get(reference) : Text(k)];
        group.captions.append(k);
        if (group.synced.empty())
            group.synced.assign(size_t(columns), false);
        // A caption listed twice takes a row's write once, not once for each listing.
        group.syncable = group.syncable && texts && !listedBefore;
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
