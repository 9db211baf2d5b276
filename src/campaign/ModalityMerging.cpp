#include "campaign/ModalityMerging.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CModalityMerging::~CModalityMerging() = default;

void CModalityMerging::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_masterModalityID);
    archive.Exchange(m_childModalityID);
    archive.Exchange(m_mergeVolumeID);
}

} // namespace varnel_wave
