#include "dictionary/DicEntry.h"

#include "dictionary/DicLanguage.h"
#include "dictionary/Dictionary.h"

QString CDicEntry::GetText(qint32 language) const {
    const auto it = m_texts.find(language);
    return it == m_texts.end() ? QString() : it->second;
}

bool CDicEntry::HasConflict(const Texts& row) const {
    for (const auto& [language, text] : row) {
        const auto it = m_texts.find(language);
        if (it != m_texts.end() && it->second != text)
            return true;
    }
    return false;
}

bool CDicEntry::MergeInto(const Texts& row, qint32 number, CDictionary& dictionary) {
    bool changed = false;
    for (const auto& [language, text] : row) {
        const auto it = m_texts.find(language);
        if (it == m_texts.end()) {
            m_texts.emplace(language, text);
            changed = true;
        } else if (it->second != text) {
            if (CDicLanguage* indexed = dictionary.FindLanguage(language)) {
                indexed->Remove(it->second, number);
                indexed->Add(text, number);
            }
            it->second = text;
            changed = true;
        }
    }
    return changed;
}
