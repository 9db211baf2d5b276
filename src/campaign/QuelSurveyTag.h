#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A tag that questions and responses can carry.
class CQuelSurveyTag : public CObjet {
public:
    CQuelSurveyTag() = default;
    CQuelSurveyTag(const CQuelSurveyTag&) = default;
    CQuelSurveyTag& operator=(const CQuelSurveyTag&) = default;
    ~CQuelSurveyTag() override;
    bool operator==(const CQuelSurveyTag&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_tagID = 0;
    QString m_caption;
    QString m_description;
};

} // namespace varnel_wave
