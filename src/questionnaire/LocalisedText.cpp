#include "questionnaire/LocalisedText.h"

#include <algorithm>

namespace {
const QString kEmpty;

bool LanguageLess(const CLocalisedText::Entry& entry, qint32 language) {
    return entry.first < language;
}
} // namespace

std::vector<CLocalisedText::Entry>::const_iterator CLocalisedText::Find(qint32 language) const {
    const auto it = std::lower_bound(m_texts.begin(), m_texts.end(), language, LanguageLess);
    return (it != m_texts.end() && it->first == language) ? it : m_texts.end();
}

const QString& CLocalisedText::Get(qint32 language) const {
    const auto it = Find(language);
    return it == m_texts.end() ? kEmpty : it->second;
}

bool CLocalisedText::Has(qint32 language) const {
    return Find(language) != m_texts.end();
}

void CLocalisedText::Set(qint32 language, const QString& text) {
    const auto it = std::lower_bound(m_texts.begin(), m_texts.end(), language, LanguageLess);
    if (it != m_texts.end() && it->first == language)
        it->second = text;
    else
        m_texts.emplace(it, language, text);
}

void CLocalisedText::Remove(qint32 language) {
    const auto it = std::lower_bound(m_texts.begin(), m_texts.end(), language, LanguageLess);
    if (it != m_texts.end() && it->first == language)
        m_texts.erase(it);
}
