#include "campaign/Campaign.h"

#include "campaign/ArchiveVersion.h"
#include "campaign/OwnedList.h"

#include <unordered_set>

namespace varnel_wave {

namespace {

template <class T> T* Raw(const std::unique_ptr<T>& item) {
    return item.get();
}
template <class T> T* Raw(T* item) {
    return item;
}

template <class T>
auto Find(const std::map<qint32, size_t>& index, const std::vector<T>& list, qint32 id)
    -> decltype(Raw(list.front())) {
    const auto found = index.find(id);
    return found == index.end() ? nullptr : Raw(list[found->second]);
}

// Appends `item`, indexing it by `id` unless that id is indexed already.
template <class T>
T* AddIndexed(std::vector<std::unique_ptr<T>>& list, std::map<qint32, size_t>& index, qint32 id,
              std::unique_ptr<T> item) {
    index.try_emplace(id, list.size());
    list.push_back(std::move(item));
    return list.back().get();
}

} // namespace

CCampaign::CCampaign() = default;

CCampaign::CCampaign(const CCampaign& other)
    : CObjet(other), m_name(other.m_name), m_description(other.m_description),
      m_versionNumber(other.m_versionNumber) {
    std::unordered_map<const CWave*, CWave*> waves;
    for (const auto& wave : other.m_waves) {
        auto copy = std::make_unique<CWave>(*wave);
        copy->m_volumes.clear();
        copy->m_loadedVolumes.clear();
        waves[wave.get()] = AddWave(std::move(copy));
    }
    std::unordered_map<const CVolume*, CVolume*> volumes;
    for (const auto& volume : other.m_volumes) {
        auto copy = std::make_unique<CVolume>(*volume);
        const auto wave = waves.find(volume->m_wave);
        copy->m_wave = wave == waves.end() ? nullptr : wave->second;
        const qint32 id = copy->m_volumeID;
        volumes[volume.get()] = AddIndexed(m_volumes, m_volumeIndex, id, std::move(copy));
    }
    for (const auto& wave : other.m_waves)
        for (const CVolume* volume : wave->m_volumes)
            if (const auto copy = volumes.find(volume); copy != volumes.end())
                waves[wave.get()]->m_volumes.push_back(copy->second);
    for (const auto& question : other.m_questions)
        AddQuestion(std::make_unique<CQuestion>(*question));
    for (const auto& questionClass : other.m_questionClasses)
        AddQuestionClass(std::make_unique<CQuestionClass>(*questionClass));
    for (const auto& language : other.m_languages)
        AddLanguage(std::make_unique<CLanguage>(*language));
    for (const auto& version : other.m_versions)
        AddVersion(std::make_unique<CVersion>(*version));
    for (const auto& tag : other.m_tags)
        AddTag(std::make_unique<CQuelSurveyTag>(*tag));
}

CCampaign::~CCampaign() = default;

CWave* CCampaign::AddWave(std::unique_ptr<CWave> wave) {
    const qint32 id = wave->m_waveID;
    return AddIndexed(m_waves, m_waveIndex, id, std::move(wave));
}

CVolume* CCampaign::AddVolume(std::unique_ptr<CVolume> volume) {
    const qint32 id = volume->m_volumeID;
    CVolume* added = AddIndexed(m_volumes, m_volumeIndex, id, std::move(volume));
    if (!added->m_wave)
        if (CWave* wave = FindWave(added->m_waveID))
            wave->AddVolume(added);
    return added;
}

CQuestion* CCampaign::AddQuestion(std::unique_ptr<CQuestion> question) {
    const qint32 id = question->m_questionID;
    CQuestion* added = AddIndexed(m_questions, m_questionIndex, id, std::move(question));
    ListModalities(*added);
    return added;
}

void CCampaign::ListModalities(CQuestion& question) {
    for (const auto& modality : question.m_modalities) {
        m_modalityIndex.try_emplace(modality->m_modalityID, m_modalities.size());
        m_modalities.push_back(modality.get());
    }
}

CQuestionClass* CCampaign::AddQuestionClass(std::unique_ptr<CQuestionClass> questionClass) {
    const qint32 id = questionClass->m_questionClassID;
    return AddIndexed(m_questionClasses, m_questionClassIndex, id, std::move(questionClass));
}

CLanguage* CCampaign::AddLanguage(std::unique_ptr<CLanguage> language) {
    const qint32 id = language->m_languageID;
    return AddIndexed(m_languages, m_languageIndex, id, std::move(language));
}

CVersion* CCampaign::AddVersion(std::unique_ptr<CVersion> version) {
    m_versions.push_back(std::move(version));
    return m_versions.back().get();
}

CQuelSurveyTag* CCampaign::AddTag(std::unique_ptr<CQuelSurveyTag> tag) {
    m_tags.push_back(std::move(tag));
    return m_tags.back().get();
}

CQuestion* CCampaign::QuestionForRow(qint32 questionID) {
    if (!m_lastRowQuestion || m_lastRowQuestion->m_questionID != questionID)
        m_lastRowQuestion = FindQuestion(questionID);
    return m_lastRowQuestion;
}

CModality* CCampaign::ModalityForRow(qint32 modalityID) {
    if (!m_lastRowModality || m_lastRowModality->m_modalityID != modalityID)
        m_lastRowModality = FindModality(modalityID);
    return m_lastRowModality;
}

CModality* CCampaign::AddModality(std::unique_ptr<CModality> modality) {
    CQuestion* question = QuestionForRow(modality->m_questionID);
    if (!question)
        return nullptr;
    CModality* added = question->AddModality(std::move(modality));
    m_modalityIndex.try_emplace(added->m_modalityID, m_modalities.size());
    m_modalities.push_back(added);
    return added;
}

CQuestionCaption* CCampaign::AddQuestionCaption(std::unique_ptr<CQuestionCaption> caption) {
    CQuestion* question = QuestionForRow(caption->m_questionID);
    return question ? question->AddCaption(std::move(caption)) : nullptr;
}

CQuestionMatching* CCampaign::AddQuestionMatching(std::unique_ptr<CQuestionMatching> matching) {
    CQuestion* question = QuestionForRow(matching->m_questionID);
    return question ? question->AddMatching(std::move(matching)) : nullptr;
}

CModalityCaption* CCampaign::AddModalityCaption(std::unique_ptr<CModalityCaption> caption) {
    CModality* modality = ModalityForRow(caption->m_modalityID);
    return modality ? modality->AddCaption(std::move(caption)) : nullptr;
}

CModalityMatching* CCampaign::AddModalityMatching(std::unique_ptr<CModalityMatching> matching) {
    CModality* modality = ModalityForRow(matching->m_modalityID);
    return modality ? modality->AddMatching(std::move(matching)) : nullptr;
}

CModalityMerging* CCampaign::AddModalityMerging(std::unique_ptr<CModalityMerging> merging) {
    CModality* modality = ModalityForRow(merging->m_masterModalityID);
    return modality ? modality->AddMerging(std::move(merging)) : nullptr;
}

CWave* CCampaign::FindWave(qint32 waveID) const {
    return Find(m_waveIndex, m_waves, waveID);
}

CVolume* CCampaign::FindVolume(qint32 volumeID) const {
    return Find(m_volumeIndex, m_volumes, volumeID);
}

CQuestion* CCampaign::FindQuestion(qint32 questionID) const {
    return Find(m_questionIndex, m_questions, questionID);
}

CModality* CCampaign::FindModality(qint32 modalityID) const {
    return Find(m_modalityIndex, m_modalities, modalityID);
}

CQuestionClass* CCampaign::FindQuestionClass(qint32 questionClassID) const {
    return Find(m_questionClassIndex, m_questionClasses, questionClassID);
}

CLanguage* CCampaign::FindLanguage(qint32 languageID) const {
    return Find(m_languageIndex, m_languages, languageID);
}

CCampaign::Positions CCampaign::VolumePositions() const {
    Positions positions;
    for (const auto& wave : m_waves)
        for (const CVolume* volume : wave->Volumes())
            positions.try_emplace(volume->m_volumeID, positions.size());
    return positions;
}

bool CCampaign::IsBefore(const Positions& positions, qint32 first, qint32 second) {
    constexpr qint32 kOpenEnd = CQuestionMatching::kOpenEndVolumeID;
    if (first == second || first == kOpenEnd)
        return false;
    const auto from = positions.find(first);
    if (from == positions.end())
        return false;
    if (second == kOpenEnd)
        return true;
    const auto to = positions.find(second);
    return to != positions.end() && from->second < to->second;
}

bool CCampaign::IsVolumeBefore(qint32 first, qint32 second) const {
    return IsBefore(VolumePositions(), first, second);
}

QStringList CCampaign::RepairModalityMatchingEndVolumes() {
    const Positions positions = VolumePositions();
    // One pass over the responses instead of one per volume.
    std::unordered_map<qint32, std::vector<CModalityMatching*>> byVolume;
    for (CModality* modality : m_modalities)
        for (const auto& matching : modality->m_matchings)
            byVolume[matching->m_volumeID].push_back(matching.get());
    QStringList traces;
    for (const auto& wave : m_waves) {
        for (const CVolume* volume : wave->Volumes()) {
            const auto matchings = byVolume.find(volume->m_volumeID);
            if (matchings == byVolume.end())
                continue;
            for (CModalityMatching* matching : matchings->second) {
                // Question 1 has always been left alone here; changing it now would change
                // campaigns that rely on it.
                if (matching->m_questionID == 1)
                    continue;
                const CQuestion* question = FindQuestion(matching->m_questionID);
                const CQuestionMatching* questionMatching =
                    question ? volume->FindQuestionMatching(*question) : nullptr;
                if (!questionMatching ||
                    !IsBefore(positions, questionMatching->m_endVolumeID, matching->m_endVolumeID))
                    continue;
                traces << QString::asprintf(
                    "Changing modality matching end volume ID:\n\tModality ID: %d\n\tQuestion ID: "
                    "%d\n\tOld modality matching end volume ID: %d\n\tQuestion matching end "
                    "volume ID: %d\n",
                    matching->m_modalityID, matching->m_questionID, matching->m_endVolumeID,
                    questionMatching->m_endVolumeID);
                matching->m_endVolumeID = questionMatching->m_endVolumeID;
            }
        }
    }
    return traces;
}

void CCampaign::Clear() {
    m_modalities.clear();
    m_waves.clear();
    m_volumes.clear();
    m_questions.clear();
    m_questionClasses.clear();
    m_languages.clear();
    m_versions.clear();
    m_tags.clear();
    m_waveIndex.clear();
    m_volumeIndex.clear();
    m_questionIndex.clear();
    m_modalityIndex.clear();
    m_questionClassIndex.clear();
    m_languageIndex.clear();
    m_lastRowQuestion = nullptr;
    m_lastRowModality = nullptr;
}

void CCampaign::ReadVolumes(CArchiveVersion& archive) {
    qint32 count = 0;
    archive.ReadCount(count);
    for (qint32 i = 0; i < count && !archive.Failed(); ++i) {
        auto wave = std::make_unique<CWave>();
        wave->Serialize(archive);
        if (archive.Failed())
            break;
        std::vector<std::unique_ptr<CVolume>> volumes = wave->TakeLoadedVolumes();
        AddWave(std::move(wave));
        for (auto& volume : volumes) {
            const qint32 id = volume->m_volumeID;
            AddIndexed(m_volumes, m_volumeIndex, id, std::move(volume));
        }
    }
    // Volumes that no wave listed stay unlisted.
    std::vector<std::unique_ptr<CVolume>> unlisted;
    detail::SerializeOwned(archive, unlisted);
    for (auto& volume : unlisted) {
        const qint32 id = volume->m_volumeID;
        AddIndexed(m_volumes, m_volumeIndex, id, std::move(volume));
    }
}

void CCampaign::Serialize(CArchiveVersion& archive) {
    if (archive.IsLoading())
        Clear();
    archive.Exchange(m_name);
    archive.Exchange(m_description);
    archive.Exchange(m_versionNumber);
    if (archive.IsStoring()) {
        archive.WriteInt32(qint32(m_waves.size()));
        std::unordered_set<const CVolume*> listed;
        for (const auto& wave : m_waves) {
            wave->Serialize(archive);
            listed.insert(wave->Volumes().begin(), wave->Volumes().end());
        }
        std::vector<CVolume*> unlisted;
        for (const auto& volume : m_volumes)
            if (!listed.contains(volume.get()))
                unlisted.push_back(volume.get());
        archive.WriteInt32(qint32(unlisted.size()));
        for (CVolume* volume : unlisted)
            volume->Serialize(archive);
        detail::SerializeOwned(archive, m_questions);
        detail::SerializeOwned(archive, m_questionClasses);
        detail::SerializeOwned(archive, m_languages);
        detail::SerializeOwned(archive, m_versions);
        detail::SerializeOwned(archive, m_tags);
        return;
    }
    ReadVolumes(archive);
    std::vector<std::unique_ptr<CQuestion>> questions;
    std::vector<std::unique_ptr<CQuestionClass>> classes;
    std::vector<std::unique_ptr<CLanguage>> languages;
    std::vector<std::unique_ptr<CVersion>> versions;
    std::vector<std::unique_ptr<CQuelSurveyTag>> tags;
    detail::SerializeOwned(archive, questions);
    detail::SerializeOwned(archive, classes);
    detail::SerializeOwned(archive, languages);
    detail::SerializeOwned(archive, versions);
    detail::SerializeOwned(archive, tags);
    for (auto& question : questions)
        AddQuestion(std::move(question));
    for (auto& questionClass : classes)
        AddQuestionClass(std::move(questionClass));
    for (auto& language : languages)
        AddLanguage(std::move(language));
    for (auto& version : versions)
        AddVersion(std::move(version));
    for (auto& tag : tags)
        AddTag(std::move(tag));
}

} // namespace varnel_wave
