#pragma once

#include "campaign/Modality.h"
#include "campaign/QuestionCaption.h"
#include "campaign/QuestionMatching.h"
#include "questionnaire/Objet.h"

#include <QString>

#include <memory>
#include <vector>

namespace varnel_wave {

class CArchiveVersion;

// A question of the campaign's merged list, with its captions, matchings and responses.
class CQuestion : public CObjet {
public:
    CQuestion() = default;
    CQuestion(const CQuestion& other); // copies every caption, matching and response
    CQuestion& operator=(const CQuestion&) = delete;
    ~CQuestion() override;

    CQuestionCaption* AddCaption(std::unique_ptr<CQuestionCaption> caption);
    CQuestionMatching* AddMatching(std::unique_ptr<CQuestionMatching> matching);
    // A question held by a campaign gets its responses through the campaign, which lists them.
    CModality* AddModality(std::unique_ptr<CModality> modality);
    // The caption in `languageID`, or null.
    CQuestionCaption* FindCaption(qint32 languageID) const;

    // The fields in the order of their columns, then the captions, matchings and responses.
    void Serialize(CArchiveVersion& archive);

    qint32 m_questionID = 0;
    bool m_isDeleted = false;
    qint32 m_order = 0;
    QString m_shortcut;
    qint32 m_indent = 0;
    qint32 m_elementType = 0;
    qint32 m_questionType = 0;
    bool m_isDontKnow = false;
    bool m_isSemiOpen = false;
    bool m_isScale = false;
    bool m_isMultiple = false;
    bool m_isRanked = false;
    qint32 m_maxResponseCount = 0;
    qint32 m_decimals = 0;
    double m_minValue = 0;
    double m_maxValue = 0;
    bool m_isLevelLink = false;
    qint32 m_linkQuestionID = 0;
    bool m_isProbabilityQuestion = false;
    qint32 m_dateType = 0;
    qint32 m_questionClassID = 0;
    QString m_versions;
    QString m_userData;
    bool m_isDevelopLevels = false;
    qint32 m_appearanceVolumeID = 0;
    qint32 m_deletionWaveID = 0;
    bool m_isVisibleInAnalyse = false;
    QString m_tags;

    std::vector<std::unique_ptr<CQuestionCaption>> m_captions;
    std::vector<std::unique_ptr<CQuestionMatching>> m_matchings;
    std::vector<std::unique_ptr<CModality>> m_modalities;
};

} // namespace varnel_wave
