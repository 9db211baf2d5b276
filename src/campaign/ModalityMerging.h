#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// A response (the child) merged into another (the master) from a volume on.
class CModalityMerging : public CObjet {
public:
    CModalityMerging() = default;
    CModalityMerging(const CModalityMerging&) = default;
    CModalityMerging& operator=(const CModalityMerging&) = default;
    ~CModalityMerging() override;
    bool operator==(const CModalityMerging&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_masterModalityID = 0;
    qint32 m_childModalityID = 0;
    qint32 m_mergeVolumeID = 0;
};

} // namespace varnel_wave
