#pragma once

#include "questionnaire/Objet.h"

#include <QString>

#include <map>

class CDictionary;

// One caption in several languages, as the dictionary keeps it.
class CDicEntry : public CObjet {
public:
    using Texts = std::map<qint32, QString>; // language id -> text, ascending

    CDicEntry() = default;
    CDicEntry(const Texts& texts, qint32 number) : m_texts(texts), m_number(number) {}

    // Empty when the entry has no text in that language.
    QString GetText(qint32 language) const;
    // True when a language of `row` that the entry also has holds another text.
    bool HasConflict(const Texts& row) const;
    // Takes the row's texts into this entry (number `number` of `dictionary`); true when the
    // entry changed. A text in a language the entry lacked is deliberately not indexed: it is
    // found through that language only after the dictionary was saved and loaded again.
    bool MergeInto(const Texts& row, qint32 number, CDictionary& dictionary);

    bool m_deleted = false;
    Texts m_texts;
    qint32 m_number = 0;
};
