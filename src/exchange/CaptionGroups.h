#pragma once

#include "questionnaire/CaptionList.h"

#include <QHash>
#include <QList>
#include <QString>

#include <vector>

class CLocalisedText;
class CQuestionnaire;

namespace exchange {

// Captions by their reference text, in caption-list order, kept current as the import writes:
// copy identical finds its captions without walking the whole list for every row.
class CaptionGroups {
public:
    // The captions that share a reference text, which copy identical writes alike.
    struct Group {
        QList<qsizetype> captions; // in caption-list order
        // By column: every caption of the group holds the same text in the column's language,
        // the last one a row of the group wrote. A row then needs one comparison, not one for
        // each caption.
        std::vector<bool> synced;
        // Only captions with texts of their own, each listed once, system messages apart, ever
        // stay in step.
        bool syncable = true;
    };

    CaptionGroups(const CQuestionnaire& q, const questionnaire::CaptionList& captions,
                  qint32 reference, qsizetype columns);
    // Null when no caption has the text.
    Group* Find(const QString& text) {
        const auto it = m_byText.find(text);
        return it == m_byText.end() ? nullptr : &*it;
    }
    // The last caption in the list with these ids, or -1.
    qsizetype IndexOf(qint32 questionId, qint32 responseId) const {
        return m_byKey.value(Key(questionId, responseId), -1);
    }
    // Caption k's reference text.
    QString Text(qsizetype k) const;
    // Where caption k's texts live, found once: null for system messages and unknown ids.
    const CLocalisedText* Texts(qsizetype k) const { return m_texts[size_t(k)]; }
    qint32 Reference() const { return m_reference; }
    // Called after caption k's reference text may have changed from `before`: the caption moves
    // to its new group under every listing of it. Groups are never kept in step when reference
    // texts can change.
    void Moved(qsizetype k, const QString& before);

private:
    static quint64 Key(qint32 questionId, qint32 responseId) {
        return quint64(quint32(questionId)) << 32 | quint32(responseId);
    }
    const CQuestionnaire& m_q;
    const questionnaire::CaptionList& m_captions;
    qint32 m_reference;
    QHash<QString, Group> m_byText;
    std::vector<const CLocalisedText*> m_texts; // by caption
    QHash<quint64, qsizetype> m_byKey;          // caption by its ids
    // The captions the list names more than once: all their listings, in list order.
    QHash<quint64, QList<qsizetype>> m_listings;
};

} // namespace exchange
