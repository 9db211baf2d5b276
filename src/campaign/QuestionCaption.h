#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A question's long and short caption in one language.
class CQuestionCaption : public CObjet {
public:
    CQuestionCaption() = default;
    CQuestionCaption(const CQuestionCaption&) = default;
    CQuestionCaption& operator=(const CQuestionCaption&) = default;
    ~CQuestionCaption() override;
    bool operator==(const CQuestionCaption&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_questionID = 0;
    qint32 m_languageID = 0;
    QString m_longCaption;
    QString m_shortCaption;
};

} // namespace varnel_wave
