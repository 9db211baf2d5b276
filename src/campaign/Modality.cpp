#include "campaign/Modality.h"

#include "campaign/ArchiveVersion.h"
#include "campaign/OwnedList.h"

namespace varnel_wave {

CModality::CModality(const CModality& other)
    : CObjet(other), m_modalityID(other.m_modalityID), m_questionID(other.m_questionID),
      m_isDeleted(other.m_isDeleted), m_modalityOrder(other.m_modalityOrder),
      m_value(other.m_value), m_entryCode(other.m_entryCode), m_isExclusive(other.m_isExclusive),
      m_rotationBehaviour(other.m_rotationBehaviour), m_versions(other.m_versions),
      m_userData(other.m_userData), m_appearanceVolumeID(other.m_appearanceVolumeID),
      m_deletionWaveID(other.m_deletionWaveID), m_baseType(other.m_baseType), m_tags(other.m_tags),
      m_captions(detail::CopyOwned(other.m_captions)),
      m_matchings(detail::CopyOwned(other.m_matchings)),
      m_mergings(detail::CopyOwned(other.m_mergings)) {}

CModality::~CModality() = default;

CModalityCaption* CModality::AddCaption(std::unique_ptr<CModalityCaption> caption) {
    m_captions.push_back(std::move(caption));
    return m_captions.back().get();
}

CModalityMatching* CModality::AddMatching(std::unique_ptr<CModalityMatching> matching) {
    m_matchings.push_back(std::move(matching));
    return m_matchings.back().get();
}

CModalityMerging* CModality::AddMerging(std::unique_ptr<CModalityMerging> merging) {
    m_mergings.push_back(std::move(merging));
    return m_mergings.back().get();
}

CModalityCaption* CModality::FindCaption(qint32 languageID) const {
    for (const auto& caption : m_captions)
        if (caption->m_languageID == languageID)
            return caption.get();
    return nullptr;
}

void CModality::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_modalityID);
    archive.Exchange(m_questionID);
    archive.Exchange(m_isDeleted);
    archive.Exchange(m_modalityOrder);
    archive.Exchange(m_value);
    archive.Exchange(m_entryCode);
    archive.Exchange(m_isExclusive);
    archive.Exchange(m_rotationBehaviour);
    archive.Exchange(m_versions);
    archive.Exchange(m_userData);
    archive.Exchange(m_appearanceVolumeID);
    archive.Exchange(m_deletionWaveID);
    archive.Exchange(m_baseType);
    archive.Exchange(m_tags);
    detail::SerializeOwned(archive, m_captions);
    detail::SerializeOwned(archive, m_matchings);
    detail::SerializeOwned(archive, m_mergings);
}

} // namespace varnel_wave
