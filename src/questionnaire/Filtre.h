#pragma once

#include "questionnaire/LocalisedText.h"
#include "questionnaire/Objet.h"

#include <QString>

// A routing: after the source question, when the condition holds, the interview goes on at the
// target question. Routings of kind 2 also show the respondent a message.
class CFiltre : public CObjet {
public:
    static constexpr qint32 kKindWithMessage = 2;

    CFiltre() = default;
    CFiltre(qint32 id, qint32 kind) : m_id(id), m_kind(kind) {}

    const QString& GetLocalisedMessage(qint32 language) const { return m_message.Get(language); }
    void SetLocalisedMessage(qint32 language, const QString& text) {
        m_message.Set(language, text);
    }
    const CLocalisedText& Message() const { return m_message; }

    bool operator==(const CFiltre& other) const = default;

    qint32 m_id = 0;
    qint32 m_kind = 0; // 1 jump, 2 jump with a message, 3 end of interview, ...
    qint32 m_sourceQuestionId = 0;
    qint32 m_targetQuestionId = 0;
    QString m_condition; // expression over answers, not translated

private:
    CLocalisedText m_message;
};
