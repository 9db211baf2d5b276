#pragma once

#include "campaign/VolumeSourceInfo.h"
#include "questionnaire/Objet.h"

#include <QString>

#include <vector>

namespace varnel_wave {

class CArchiveVersion;
class CCampaign;
class CModalityMatching;
class CQuestion;
class CQuestionMatching;
class CWave;

// One data source of a wave: a questionnaire and its interviews.
class CVolume : public CObjet {
public:
    CVolume() = default;
    // Copies the fields and the back pointer; the copy is in no wave's list until added to one.
    CVolume(const CVolume&) = default;
    CVolume& operator=(const CVolume&) = default;
    ~CVolume() override;

    // The fields in the order of their columns, then the source description. The wave is not
    // written: the wave that reads the volume sets it.
    void Serialize(CArchiveVersion& archive);

    // Every response matching of the campaign for this volume, in the order of the campaign's
    // response list.
    std::vector<CModalityMatching*> CollectModalityMatchings(const CCampaign& campaign) const;
    // The matching of `question` for this volume, or null.
    CQuestionMatching* FindQuestionMatching(const CQuestion& question) const;

    qint32 m_volumeID = 0;
    QString m_name;
    qint32 m_waveID = 0;
    qint32 m_inheritsFromVolumeID = 0;
    qint32 m_sourceType = 0;
    QString m_metaData;
    QString m_caseData;
    bool m_isMatchingStrict = false;
    QString m_questionMatchingMethods;
    QString m_responseMatchingMethods;
    bool m_isMainVolume = false;
    qint32 m_interviewMergeMethod = 0;
    qint32 m_mainVolumeLinkQuestionID = 0;
    QString m_thisVolumeLinkQuestionID;
    qint32 m_status = 0;
    bool m_caseSensitiveMatching = false;
    bool m_matchUsingAncestorValues = false;
    bool m_addNoNewQuestions = false;
    QString m_reconciliationSourceQuestionIDs;

    CWave* m_wave = nullptr; // not owned
    VolumeSourceInfo m_sourceInfo;
};

} // namespace varnel_wave
