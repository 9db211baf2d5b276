#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A language of the campaign's captions, by its Windows locale id.
class CLanguage : public CObjet {
public:
    CLanguage() = default;
    CLanguage(const CLanguage&) = default;
    CLanguage& operator=(const CLanguage&) = default;
    ~CLanguage() override;
    bool operator==(const CLanguage&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_languageID = 0;
    bool m_isDefault = false;
    QString m_languageName;
};

} // namespace varnel_wave
