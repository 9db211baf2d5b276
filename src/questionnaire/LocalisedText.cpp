#include "questionnaire/LocalisedText.h"

#include <algorithm>
#include <iterator>

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

const QString& CLocalisedText::Get(qint32 language, size_t& hint) const {
    if (hint < m_texts.size() && m_texts[hint].first == language)
        return m_texts[hint].second;
    const auto it = Find(language);
    if (it == m_texts.end())
        return kEmpty;
    hint = size_t(it - m_texts.begin());
    return it->second;
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

void CLocalisedText::SetMany(std::span<const Entry> texts) {
    size_t added = 0;
    auto at = m_texts.begin();
    for (const Entry& entry : texts) {
        at = std::lower_bound(at, m_texts.end(), entry.first, LanguageLess);
        if (at != m_texts.end() && at->first == entry.first)
            at->second = entry.second;
        else
            ++added;
    }
    if (added == 0)
        return;
    std::vector<Entry> merged;
    merged.reserve(m_texts.size() + added);
    auto old = m_texts.begin();
    for (const Entry& entry : texts) {
        while (old != m_texts.end() && old->first < entry.first)
            merged.push_back(std::move(*old++));
        if (old != m_texts.end() && old->first == entry.first)
            merged.push_back(std::move(*old++)); // already set above
        else
            merged.push_back(entry);
    }
    std::move(old, m_texts.end(), std::back_inserter(merged));
    m_texts = std::move(merged);
}

void CLocalisedText::Remove(qint32 language) {
    const auto it = std::lower_bound(m_texts.begin(), m_texts.end(), language, LanguageLess);
    if (it != m_texts.end() && it->first == language)
        m_texts.erase(it);
}

namespace {
// Languages are Windows locale ids, below this in practice; a table of columns by language up
// to it stays small.
constexpr qint32 kTableLanguages = 0x10000;
} // namespace

LanguageColumns::LanguageColumns(const QList<qint32>& languages) : m_columnCount(languages.size()) {
    for (qsizetype i = 0; i < languages.size(); ++i)
        if (languages[i] != 0)
            m_byLanguage.emplace_back(languages[i], i);
    std::sort(m_byLanguage.begin(), m_byLanguage.end());
    const bool once = std::adjacent_find(m_byLanguage.begin(), m_byLanguage.end(),
                                         [](const auto& a, const auto& b) {
                                             return a.first == b.first;
                                         }) == m_byLanguage.end();
    const bool small = std::all_of(m_byLanguage.begin(), m_byLanguage.end(), [](const auto& e) {
        return e.first > 0 && e.first < kTableLanguages;
    });
    if (once && small && !m_byLanguage.empty()) {
        // The last slot stands for every language past the table; all without a column lead to
        // the spare slot past the columns.
        m_columnOf.assign(size_t(m_byLanguage.back().first) + 2, qint32(m_columnCount));
        for (const auto& [language, column] : m_byLanguage)
            m_columnOf[size_t(language)] = qint32(column);
    }
}

void LanguageColumns::Read(const CLocalisedText* texts, std::vector<const QString*>& out) const {
    const size_t spare = size_t(m_columnCount);
    out.assign(spare + 1, &kEmpty);
    if (texts && !m_columnOf.empty()) {
        // Each text goes straight to its column. A caption has texts in an unforeseeable share
        // of its languages, and a merge of the two lists would guess wrong about every other one.
        const size_t last = m_columnOf.size() - 1;
        for (const CLocalisedText::Entry& entry : texts->Entries())
            out[size_t(m_columnOf[std::min(size_t(quint32(entry.first)), last)])] = &entry.second;
    } else if (texts) {
        // Both lists ascend by language: one merge instead of a search per column.
        const std::vector<CLocalisedText::Entry>& entries = texts->Entries();
        auto entry = entries.begin();
        for (const auto& [language, column] : m_byLanguage) {
            while (entry != entries.end() && entry->first < language)
                ++entry;
            if (entry == entries.end())
                break;
            if (entry->first == language)
                out[size_t(column)] = &entry->second;
        }
    }
    out.pop_back(); // the spare slot
}
