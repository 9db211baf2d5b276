#include "campaign/Version.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CVersion::~CVersion() = default;

void CVersion::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_versionID);
    archive.Exchange(m_longCaption);
    archive.Exchange(m_shortCaption);
}

} // namespace varnel_wave
