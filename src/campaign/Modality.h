#pragma once

#include "campaign/ModalityCaption.h"
#include "campaign/ModalityMatching.h"
#include "campaign/ModalityMerging.h"
#include "questionnaire/Objet.h"

#include <QString>

#include <memory>
#include <vector>

namespace varnel_wave {

class CArchiveVersion;

// A response of a closed question, with its captions, matchings and mergings.
class CModality : public CObjet {
public:
    CModality() = default;
    CModality(const CModality& other); // copies every caption, matching and merging
    CModality& operator=(const CModality&) = delete;
    ~CModality() override;

    CModalityCaption* AddCaption(std::unique_ptr<CModalityCaption> caption);
    CModalityMatching* AddMatching(std::unique_ptr<CModalityMatching> matching);
    CModalityMerging* AddMerging(std::unique_ptr<CModalityMerging> merging);
    // The caption in `languageID`, or null.
    CModalityCaption* FindCaption(qint32 languageID) const;

    // The fields in the order of their columns, then the captions, matchings and mergings.
    void Serialize(CArchiveVersion& archive);

    qint32 m_modalityID = 0;
    qint32 m_questionID = 0;
    bool m_isDeleted = false;
    qint32 m_modalityOrder = 0;
    double m_value = 0;
    QString m_entryCode;
    bool m_isExclusive = false;
    qint32 m_rotationBehaviour = 0;
    QString m_versions;
    QString m_userData;
    qint32 m_appearanceVolumeID = 0;
    qint32 m_deletionWaveID = 0;
    qint32 m_baseType = 0;
    QString m_tags;

    std::vector<std::unique_ptr<CModalityCaption>> m_captions;
    std::vector<std::unique_ptr<CModalityMatching>> m_matchings;
    std::vector<std::unique_ptr<CModalityMerging>> m_mergings;
};

} // namespace varnel_wave
