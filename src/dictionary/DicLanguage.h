#pragma once

#include "questionnaire/Objet.h"

#include <QString>

#include <map>
#include <set>

// A language of the dictionary with its index from text to the entries holding it.
class CDicLanguage : public CObjet {
public:
    explicit CDicLanguage(quint32 id);

    // Adds the number of every entry whose text in this language is `text`, exactly. False only
    // when no indexed text sorts at or after `text`; callers look at the set.
    bool FindEntries(const QString& text, std::set<qint32>& numbers) const;
    void Add(const QString& text, qint32 number);
    // Removes the pair (text, number) only.
    void Remove(const QString& text, qint32 number);

    quint32 m_id = 0;
    QString m_abbreviation; // e.g. "ENU"; empty for a locale nobody knows

private:
    std::multimap<QString, qint32> m_index; // ordinal, case-sensitive order
};
