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

LanguageColumns::LanguageColumns(const QList<qint32>& languages) : m_columnCount(languages.size()) {
    for (qsizetype i = 0; i < languages.size(); ++i)
        if (languages[i] != 0)
            m_byLanguage.emplace_back(languages[i], i);
    std::sort(m_byLanguage.begin(), m_byLanguage.end());
}

void LanguageColumns::Read(const CLocalisedText* texts, std::vector<const QString*>& out) const {
    out.assign(m_columnCount, &kEmpty);
    if (!texts)
        return;
    // Both lists ascend by language: one merge instead of a search per column.
    const std::vector<CLocalisedText::Entry>& entries = texts->Entries();
    auto entry = entries.begin();
    for (const auto& [language, column] : m_byLanguage) {
        while (entry != entries.end() && entry->first < language)
            ++entry;
        if (entry == entries.end())
            break;
        if (entry->first == language)
            out[column] = &entry->second;
    }
}
