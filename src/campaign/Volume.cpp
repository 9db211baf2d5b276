#include "campaign/Volume.h"

#include "campaign/ArchiveVersion.h"
#include "campaign/Campaign.h"

namespace varnel_wave {

CVolume::~CVolume() = default;

void CVolume::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_volumeID);
    archive.Exchange(m_name);
    archive.Exchange(m_waveID);
    archive.Exchange(m_inheritsFromVolumeID);
    archive.Exchange(m_sourceType);
    archive.Exchange(m_metaData);
    archive.Exchange(m_caseData);
    archive.Exchange(m_isMatchingStrict);
    archive.Exchange(m_questionMatchingMethods);
    archive.Exchange(m_responseMatchingMethods);
    archive.Exchange(m_isMainVolume);
    archive.Exchange(m_interviewMergeMethod);
    archive.Exchange(m_mainVolumeLinkQuestionID);
    archive.Exchange(m_thisVolumeLinkQuestionID);
    archive.Exchange(m_status);
    archive.Exchange(m_caseSensitiveMatching);
    archive.Exchange(m_matchUsingAncestorValues);
    archive.Exchange(m_addNoNewQuestions);
    archive.Exchange(m_reconciliationSourceQuestionIDs);
    m_sourceInfo.Serialize(archive);
}

std::vector<CModalityMatching*> CVolume::CollectModalityMatchings(const CCampaign& campaign) const {
    std::vector<CModalityMatching*> found;
    for (const CModality* modality : campaign.Modalities())
        for (const auto& matching : modality->m_matchings)
            if (matching->m_volumeID == m_volumeID)
                found.push_back(matching.get());
    return found;
}

CQuestionMatching* CVolume::FindQuestionMatching(const CQuestion& question) const {
    for (const auto& matching : question.m_matchings)
        if (matching->m_volumeID == m_volumeID)
            return matching.get();
    return nullptr;
}

} // namespace varnel_wave
