#include "exchange/CaptionGroups.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/LocalisedText.h"

#include <algorithm>

namespace exchange {

using namespace questionnaire;

CaptionGroups::CaptionGroups(const CQuestionnaire& q, const CaptionList& captions, qint32 reference,
                             qsizetype columns)
    : m_q(q), m_captions(captions), m_reference(reference) {
    m_byText.reserve(captions.size());
    m_texts.reserve(size_t(captions.size()));
    m_byKey.reserve(captions.size());
    for (qsizetype k = 0; k < captions.size(); ++k) {
        const qint32 questionId = captions.questionIds[k];
        const quint64 key = Key(questionId, captions.responseIds[k]);
        if (const auto it = m_byKey.find(key); it != m_byKey.end()) {
            QList<qsizetype>& listings = m_listings[key];
            if (listings.isEmpty())
                listings.append(*it);
            listings.append(k);
            *it = k;
        } else {
            m_byKey.insert(key, k);
        }
        m_texts.push_back(questionId == kSystemMessageMarker
                              ? nullptr
                              : FindCaptionTexts(q, questionId, captions.responseIds[k]));
    }
    // The reference texts are spread over memory: each is fetched ahead of its turn, its entry
    // first and its characters once the entry is there.
    constexpr size_t kEntryAhead = 16, kTextAhead = 8;
    size_t hint = 0;
    const size_t count = m_texts.size();
    for (size_t k = 0; k < count; ++k) {
#if defined(__GNUC__) || defined(__clang__)
        if (k + kEntryAhead < count && m_texts[k + kEntryAhead]) {
            const auto& entries = m_texts[k + kEntryAhead]->Entries();
            if (hint < entries.size())
                __builtin_prefetch(&entries[hint]);
        }
        if (k + kTextAhead < count && m_texts[k + kTextAhead]) {
            const auto& entries = m_texts[k + kTextAhead]->Entries();
            if (hint < entries.size())
                __builtin_prefetch(entries[hint].second.constData());
        }
#endif
        const CLocalisedText* texts = m_texts[k];
        Group& group = m_byText[texts ? texts->Get(reference, hint) : Text(qsizetype(k))];
        group.captions.append(qsizetype(k));
        if (group.synced.empty())
            group.synced.assign(size_t(columns), false);
        group.syncable = group.syncable && texts;
    }
    // A caption listed twice takes a row's write once, not once for each listing, so its group
    // never stays in step. Found by sorting: a set of every caption costs more than the rest.
    std::vector<const CLocalisedText*> sorted = m_texts;
    std::sort(sorted.begin(), sorted.end());
    for (auto it = sorted.begin(); (it = std::adjacent_find(it, sorted.end())) != sorted.end();) {
        if (*it)
            m_byText[(*it)->Get(reference)].syncable = false;
        it = std::upper_bound(it, sorted.end(), *it);
    }
}

QString CaptionGroups::Text(qsizetype k) const {
    return ReadCaption(m_q, m_captions.questionIds[k], m_captions.responseIds[k], m_reference);
}

void CaptionGroups::Moved(qsizetype k, const QString& before) {
    const QString after = Text(k);
    if (after == before)
        return;
    // A caption listed twice has one reference text: a listing left behind would still be
    // matched by its old text and missed by its new one.
    const auto repeated =
        m_listings.constFind(Key(m_captions.questionIds[k], m_captions.responseIds[k]));
    const QList<qsizetype> listings =
        repeated == m_listings.cend() ? QList<qsizetype>{k} : *repeated;
    QList<qsizetype>& old = m_byText[before].captions;
    for (qsizetype listing : listings)
        old.erase(std::lower_bound(old.begin(), old.end(), listing));
    QList<qsizetype>& now = m_byText[after].captions;
    for (qsizetype listing : listings)
        now.insert(std::lower_bound(now.begin(), now.end(), listing), listing);
}

} // namespace exchange
