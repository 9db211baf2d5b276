#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A response's caption in one language.
class CModalityCaption : public CObjet {
public:
    CModalityCaption() = default;
    CModalityCaption(const CModalityCaption&) = default;
    CModalityCaption& operator=(const CModalityCaption&) = default;
    ~CModalityCaption() override;
    bool operator==(const CModalityCaption&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_modalityID = 0;
    qint32 m_questionID = 0;
    qint32 m_languageID = 0;
    QString m_shortCaption;
};

} // namespace varnel_wave
