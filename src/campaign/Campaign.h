#pragma once

#include "campaign/Language.h"
#include "campaign/QuelSurveyTag.h"
#include "campaign/Question.h"
#include "campaign/QuestionClass.h"
#include "campaign/Version.h"
#include "campaign/Volume.h"
#include "campaign/Wave.h"
#include "questionnaire/Objet.h"

#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

namespace varnel_wave {

class CArchiveVersion;

// A survey run in waves: its waves and volumes, the merged list of questions with their
// responses, and the campaign-wide lists. Owns everything it holds.
class CCampaign : public CObjet {
public:
    CCampaign();
    // A deep copy; the copy's waves list the copy's volumes and its responses are its own.
    CCampaign(const CCampaign& other);
    CCampaign& operator=(const CCampaign&) = delete;
    ~CCampaign() override;

    // Each takes the object over. An id already indexed keeps finding the object added first.
    CWave* AddWave(std::unique_ptr<CWave> wave);
    // Also lists the volume in the wave of its wave id, when the campaign holds that wave and
    // the volume points to no wave yet.
    CVolume* AddVolume(std::unique_ptr<CVolume> volume);
    // Lists the question's responses too.
    CQuestion* AddQuestion(std::unique_ptr<CQuestion> question);
    CQuestionClass* AddQuestionClass(std::unique_ptr<CQuestionClass> questionClass);
    CLanguage* AddLanguage(std::unique_ptr<CLanguage> language);
    CVersion* AddVersion(std::unique_ptr<CVersion> version);
    CQuelSurveyTag* AddTag(std::unique_ptr<CQuelSurveyTag> tag);

    // Rows added by the ids they carry, as a database gives them. A row whose owner (question or
    // response) the campaign does not hold is dropped and null returned.
    CModality* AddModality(std::unique_ptr<CModality> modality);
    CQuestionCaption* AddQuestionCaption(std::unique_ptr<CQuestionCaption> caption);
    CQuestionMatching* AddQuestionMatching(std::unique_ptr<CQuestionMatching> matching);
    CModalityCaption* AddModalityCaption(std::unique_ptr<CModalityCaption> caption);
    CModalityMatching* AddModalityMatching(std::unique_ptr<CModalityMatching> matching);
    CModalityMerging* AddModalityMerging(std::unique_ptr<CModalityMerging> merging);

    // Null for an id the campaign does not hold.
    CWave* FindWave(qint32 waveID) const;
    CVolume* FindVolume(qint32 volumeID) const;
    CQuestion* FindQuestion(qint32 questionID) const;
    CModality* FindModality(qint32 modalityID) const;
    CQuestionClass* FindQuestionClass(qint32 questionClassID) const;
    CLanguage* FindLanguage(qint32 languageID) const;

    const std::vector<std::unique_ptr<CWave>>& Waves() const { return m_waves; }
    const std::vector<std::unique_ptr<CVolume>>& Volumes() const { return m_volumes; }
    const std::vector<std::unique_ptr<CQuestion>>& Questions() const { return m_questions; }
    const std::vector<CModality*>& Modalities() const { return m_modalities; }
    const std::vector<std::unique_ptr<CQuestionClass>>& QuestionClasses() const {
        return m_questionClasses;
    }
    const std::vector<std::unique_ptr<CLanguage>>& Languages() const { return m_languages; }
    const std::vector<std::unique_ptr<CVersion>>& Versions() const { return m_versions; }
    const std::vector<std::unique_ptr<CQuelSurveyTag>>& Tags() const { return m_tags; }

    // Whether volume `first` comes before volume `second`, walking the waves in order and each
    // wave's volumes in order; the open end comes after every volume. Equal ids, an open-ended
    // `first` and ids that name no listed volume give false.
    bool IsVolumeBefore(qint32 first, qint32 second) const;

    // Cuts every response matching back to the end volume of its question's matching in the
    // same volume where that one ends earlier. Matchings of question 1 are left as they are.
    // Returns one trace text per change, for the log.
    QStringList RepairModalityMatchingEndVolumes();

    // The three texts, the waves with their volumes, the volumes no wave lists, the questions
    // with their responses, then the classes, languages, versions and tags. Loading replaces the
    // whole campaign.
    void Serialize(CArchiveVersion& archive);

    QString m_name;
    QString m_description;
    QString m_versionNumber;

private:
    using Positions = std::unordered_map<qint32, size_t>;
    Positions VolumePositions() const;
    static bool IsBefore(const Positions& positions, qint32 first, qint32 second);
    void Clear();
    void ListModalities(CQuestion& question);
    CQuestion* QuestionForRow(qint32 questionID);
    CModality* ModalityForRow(qint32 modalityID);
    void ReadVolumes(CArchiveVersion& archive);

    std::vector<std::unique_ptr<CWave>> m_waves;
    std::vector<std::unique_ptr<CVolume>> m_volumes;
    std::vector<std::unique_ptr<CQuestion>> m_questions;
    std::vector<std::unique_ptr<CQuestionClass>> m_questionClasses;
    std::vector<std::unique_ptr<CLanguage>> m_languages;
    std::vector<std::unique_ptr<CVersion>> m_versions;
    std::vector<std::unique_ptr<CQuelSurveyTag>> m_tags;
    std::vector<CModality*> m_modalities; // owned by their questions

    // Id to position in the list.
    std::map<qint32, size_t> m_waveIndex;
    std::map<qint32, size_t> m_volumeIndex;
    std::map<qint32, size_t> m_questionIndex;
    std::map<qint32, size_t> m_modalityIndex;
    std::map<qint32, size_t> m_questionClassIndex;
    std::map<qint32, size_t> m_languageIndex;

    // Rows come in runs of one owner: the last one found saves the lookups of the rest.
    CQuestion* m_lastRowQuestion = nullptr;
    CModality* m_lastRowModality = nullptr;
};

} // namespace varnel_wave
