#include "campaign/Question.h"

#include "campaign/ArchiveVersion.h"
#include "campaign/OwnedList.h"

namespace varnel_wave {

CQuestion::CQuestion(const CQuestion& other)
    : CObjet(other), m_questionID(other.m_questionID), m_isDeleted(other.m_isDeleted),
      m_order(other.m_order), m_shortcut(other.m_shortcut), m_indent(other.m_indent),
      m_elementType(other.m_elementType), m_questionType(other.m_questionType),
      m_isDontKnow(other.m_isDontKnow), m_isSemiOpen(other.m_isSemiOpen),
      m_isScale(other.m_isScale), m_isMultiple(other.m_isMultiple), m_isRanked(other.m_isRanked),
      m_maxResponseCount(other.m_maxResponseCount), m_decimals(other.m_decimals),
      m_minValue(other.m_minValue), m_maxValue(other.m_maxValue),
      m_isLevelLink(other.m_isLevelLink), m_linkQuestionID(other.m_linkQuestionID),
      m_isProbabilityQuestion(other.m_isProbabilityQuestion), m_dateType(other.m_dateType),
      m_questionClassID(other.m_questionClassID), m_versions(other.m_versions),
      m_userData(other.m_userData), m_isDevelopLevels(other.m_isDevelopLevels),
      m_appearanceVolumeID(other.m_appearanceVolumeID), m_deletionWaveID(other.m_deletionWaveID),
      m_isVisibleInAnalyse(other.m_isVisibleInAnalyse), m_tags(other.m_tags),
      m_captions(detail::CopyOwned(other.m_captions)),
      m_matchings(detail::CopyOwned(other.m_matchings)),
      m_modalities(detail::CopyOwned(other.m_modalities)) {}

CQuestion::~CQuestion() = default;

CQuestionCaption* CQuestion::AddCaption(std::unique_ptr<CQuestionCaption> caption) {
    m_captions.push_back(std::move(caption));
    return m_captions.back().get();
}

CQuestionMatching* CQuestion::AddMatching(std::unique_ptr<CQuestionMatching> matching) {
    m_matchings.push_back(std::move(matching));
    return m_matchings.back().get();
}

CModality* CQuestion::AddModality(std::unique_ptr<CModality> modality) {
    m_modalities.push_back(std::move(modality));
    return m_modalities.back().get();
}

CQuestionCaption* CQuestion::FindCaption(qint32 languageID) const {
    for (const auto& caption : m_captions)
        if (caption->m_languageID == languageID)
            return caption.get();
    return nullptr;
}

void CQuestion::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_questionID);
    archive.Exchange(m_isDeleted);
    archive.Exchange(m_order);
    archive.Exchange(m_shortcut);
    archive.Exchange(m_indent);
    archive.Exchange(m_elementType);
    archive.Exchange(m_questionType);
    archive.Exchange(m_isDontKnow);
    archive.Exchange(m_isSemiOpen);
    archive.Exchange(m_isScale);
    archive.Exchange(m_isMultiple);
    archive.Exchange(m_isRanked);
    archive.Exchange(m_maxResponseCount);
    archive.Exchange(m_decimals);
    archive.Exchange(m_minValue);
    archive.Exchange(m_maxValue);
    archive.Exchange(m_isLevelLink);
    archive.Exchange(m_linkQuestionID);
    archive.Exchange(m_isProbabilityQuestion);
    archive.Exchange(m_dateType);
    archive.Exchange(m_questionClassID);
    archive.Exchange(m_versions);
    archive.Exchange(m_userData);
    archive.Exchange(m_isDevelopLevels);
    archive.Exchange(m_appearanceVolumeID);
    archive.Exchange(m_deletionWaveID);
    archive.Exchange(m_isVisibleInAnalyse);
    archive.Exchange(m_tags);
    detail::SerializeOwned(archive, m_captions);
    detail::SerializeOwned(archive, m_matchings);
    detail::SerializeOwned(archive, m_modalities);
}

} // namespace varnel_wave
