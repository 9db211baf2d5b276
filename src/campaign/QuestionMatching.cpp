#include "campaign/QuestionMatching.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CQuestionMatching::~CQuestionMatching() = default;

void CQuestionMatching::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_questionID);
    archive.Exchange(m_volumeID);
    archive.Exchange(m_sourceID);
    archive.Exchange(m_startVolumeID);
    archive.Exchange(m_endVolumeID);
}

} // namespace varnel_wave
