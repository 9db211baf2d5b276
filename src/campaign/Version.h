#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A questionnaire version (a mode of collection, say); questions may belong to some only.
class CVersion : public CObjet {
public:
    CVersion() = default;
    CVersion(const CVersion&) = default;
    CVersion& operator=(const CVersion&) = default;
    ~CVersion() override;
    bool operator==(const CVersion&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_versionID = 0;
    QString m_longCaption;
    QString m_shortCaption;
};

} // namespace varnel_wave
