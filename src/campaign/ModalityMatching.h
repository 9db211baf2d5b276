#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// How a campaign response is found in one volume's source, over a range of volumes like a
// question matching.
class CModalityMatching : public CObjet {
public:
    CModalityMatching() = default;
    CModalityMatching(const CModalityMatching&) = default;
    CModalityMatching& operator=(const CModalityMatching&) = default;
    ~CModalityMatching() override;
    bool operator==(const CModalityMatching&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_modalityID = 0;
    qint32 m_questionID = 0;
    qint32 m_volumeID = 0;
    QString m_modalitySourceID;
    qint32 m_startVolumeID = 0;
    qint32 m_endVolumeID = 0;
};

} // namespace varnel_wave
