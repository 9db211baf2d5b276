#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A class questions are filed under, with one caption for every language.
class CQuestionClass : public CObjet {
public:
    CQuestionClass() = default;
    CQuestionClass(const CQuestionClass&) = default;
    CQuestionClass& operator=(const CQuestionClass&) = default;
    ~CQuestionClass() override;
    bool operator==(const CQuestionClass&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_questionClassID = 0;
    QString m_caption;
};

} // namespace varnel_wave
