#include "dictionary/DicLanguage.h"

#include "util/LocaleTable.h"

CDicLanguage::CDicLanguage(quint32 id) : m_id(id) {
    if (const util::LocaleInfo* info = util::LocaleTable::Instance().Find(qint32(id)))
        m_abbreviation = info->abbreviation;
}

bool CDicLanguage::FindEntries(const QString& text, std::set<qint32>& numbers) const {
    auto it = m_index.lower_bound(text);
    if (it == m_index.end())
        return false;
    for (; it != m_index.end() && it->first == text; ++it)
        numbers.insert(it->second);
    return true;
}

void CDicLanguage::Add(const QString& text, qint32 number) {
    m_index.emplace(text, number);
}

void CDicLanguage::Remove(const QString& text, qint32 number) {
    auto [first, last] = m_index.equal_range(text);
    for (auto it = first; it != last; ++it) {
        if (it->second == number) {
            m_index.erase(it);
            return;
        }
    }
}
