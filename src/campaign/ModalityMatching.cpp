#include "campaign/ModalityMatching.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CModalityMatching::~CModalityMatching() = default;

void CModalityMatching::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_modalityID);
    archive.Exchange(m_questionID);
    archive.Exchange(m_volumeID);
    archive.Exchange(m_modalitySourceID);
    archive.Exchange(m_startVolumeID);
    archive.Exchange(m_endVolumeID);
}

} // namespace varnel_wave
