#include "campaign/VolumeSourceInfo.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

VolumeSourceInfo::~VolumeSourceInfo() = default;

void VolumeSourceInfo::Serialize(CArchiveVersion& archive) {
    if (archive.IsStoring())
        archive.WriteInt32(m_infoVersion);
    else
        archive.SkipInt32();
    archive.Exchange(m_sourceType);
    archive.Exchange(m_location);
    archive.Exchange(m_codePage);
    archive.Exchange(m_options);
}

} // namespace varnel_wave
