#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// How a campaign question is found in one volume's source: its id there, and the range of volumes
// (start to end) in which that id holds; an end of kOpenEndVolumeID holds up to the last volume.
class CQuestionMatching : public CObjet {
public:
    static constexpr qint32 kOpenEndVolumeID = 999999999;

    CQuestionMatching() = default;
    CQuestionMatching(const CQuestionMatching&) = default;
    CQuestionMatching& operator=(const CQuestionMatching&) = default;
    ~CQuestionMatching() override;
    bool operator==(const CQuestionMatching&) const = default;

    // The fields in the order of their columns.
    void Serialize(CArchiveVersion& archive);

    qint32 m_questionID = 0;
    qint32 m_volumeID = 0;
    QString m_sourceID;
    qint32 m_startVolumeID = 0;
    qint32 m_endVolumeID = 0;
};

} // namespace varnel_wave
