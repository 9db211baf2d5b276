#include "campaign/store/CampaignQuestionnaire.h"

#include "campaign/schema/CampaignDatabase.h"
#include "campaign/schema/Migrations.h"
#include "campaign/store/CampaignStore.h"
#include "campaign/store/StoreStrings.h"
#include "questionnaire/Modalite.h"
#include "util/SqlConnection.h"

#include <QCoreApplication>

#include <algorithm>

namespace campaign {

namespace {

using util::Outcome;
namespace vw = varnel_wave;

Outcome UnderOpen(const Outcome& outcome) {
    if (outcome)
        return outcome;
    return Outcome::Failure(
        QCoreApplication::translate(storestrings::kContext, storestrings::kDatabaseError)
            .arg(QLatin1String(operation::kOpen), outcome.Reason(), QString()));
}

bool IsOlderThan(const QString& version, const char* than) {
    return IsOlder(ParseVersion(version).version, ParseVersion(QLatin1String(than)).version);
}

std::unique_ptr<CQuestion> ToQuestionnaire(const vw::CQuestion& source, RemovedResponses& removed) {
    auto question = std::make_unique<CQuestion>(source.m_questionID, source.m_shortcut);
    if (source.m_isMultiple)
        question->SetType(QuestionType::MultipleChoice);
    for (const auto& caption : source.m_captions) {
        // An empty caption stays unset so that its language counts as untranslated.
        if (!caption->m_shortCaption.isEmpty())
            question->SetLocalisedShortCaption(caption->m_languageID, caption->m_shortCaption);
        if (!caption->m_longCaption.isEmpty())
            question->SetLocalisedLongCaption(caption->m_languageID, caption->m_longCaption);
    }
    for (const auto& modality : source.m_modalities) {
        if (modality->m_isDeleted) {
            removed.push_back(std::make_unique<vw::CModality>(*modality));
            continue;
        }
        auto response = std::make_unique<CModalite>(modality->m_modalityID, modality->m_entryCode);
        for (const auto& caption : modality->m_captions)
            if (!caption->m_shortCaption.isEmpty())
                response->SetLocalisedLongCaption(caption->m_languageID, caption->m_shortCaption);
        question->AddModalite(std::move(response));
    }
    return question;
}

void TakeLanguages(const CQuestionnaire& q, vw::CCampaign& campaign) {
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& language = q.GetLanguage(i);
        vw::CLanguage* target = campaign.FindLanguage(language.m_id);
        if (!target) {
            auto added = std::make_unique<vw::CLanguage>();
            added->m_languageID = language.m_id;
            added->m_languageName = language.m_name;
            target = campaign.AddLanguage(std::move(added));
        }
        target->m_isDefault = language.m_isMain;
    }
}

void TakeQuestionCaptions(const CQuestion& source, vw::CQuestion& target) {
    const auto take = [&](const CLocalisedText& texts, QString vw::CQuestionCaption::*field) {
        for (const auto& [language, text] : texts.Entries()) {
            vw::CQuestionCaption* caption = target.FindCaption(language);
            if (!caption) {
                auto added = std::make_unique<vw::CQuestionCaption>();
                added->m_questionID = target.m_questionID;
                added->m_languageID = language;
                caption = target.AddCaption(std::move(added));
            }
            caption->*field = text;
        }
    };
    take(source.LongCaption(), &vw::CQuestionCaption::m_longCaption);
    take(source.ShortCaption(), &vw::CQuestionCaption::m_shortCaption);
}

// The campaign's response of the questionnaire's response `responseID` of `questionID`, or the
// number a new one gets. A campaign numbers responses across the campaign, a questionnaire per
// question: a number another question's response holds is replaced by a free one, remembered in
// `keys` so that every later save finds it again.
qint32 ModalityNumber(const vw::CCampaign& campaign, qint32 questionID, qint32 responseID,
                      ResponseKeys& keys) {
    if (const auto known = keys.find({questionID, responseID}); known != keys.end())
        return known->second;
    const vw::CModality* same = campaign.FindModality(responseID);
    if (!same || same->m_questionID == questionID)
        return responseID;
    qint32 free = 0;
    for (const vw::CModality* modality : campaign.Modalities())
        free = std::max(free, modality->m_modalityID);
    for (const auto& [key, number] : keys)
        free = std::max(free, number);
    keys[{questionID, responseID}] = free + 1;
    return free + 1;
}

void TakeResponse(const CModalite& source, qint32 questionID, vw::CCampaign& campaign,
                  ResponseKeys& keys) {
    const qint32 number = ModalityNumber(campaign, questionID, source.m_id, keys);
    vw::CModality* target = campaign.FindModality(number);
    if (!target) {
        auto added = std::make_unique<vw::CModality>();
        added->m_modalityID = number;
        added->m_questionID = questionID;
        vw::CQuestion* owner = campaign.FindQuestion(questionID);
        added->m_modalityOrder = owner ? qint32(owner->m_modalities.size()) : 0;
        added->m_appearanceVolumeID = owner ? owner->m_appearanceVolumeID : 0;
        target = campaign.AddModality(std::move(added));
        if (!target)
            return;
    }
    target->m_entryCode = source.m_entryCode;
    for (const auto& [language, text] : source.Caption().Entries()) {
        vw::CModalityCaption* caption = target->FindCaption(language);
        if (!caption) {
            auto added = std::make_unique<vw::CModalityCaption>();
            added->m_modalityID = target->m_modalityID;
            added->m_questionID = questionID;
            added->m_languageID = language;
            caption = target->AddCaption(std::move(added));
        }
        caption->m_shortCaption = text;
    }
}

void TakeQuestions(const CQuestionnaire& q, vw::CCampaign& campaign, ResponseKeys& keys) {
    qint32 nextOrder = 0;
    for (const auto& question : campaign.Questions())
        nextOrder = std::max(nextOrder, question->m_order + 1);
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& source = q.GetQuestion(i);
        vw::CQuestion* target = campaign.FindQuestion(source.m_id);
        if (!target) {
            // Orders are left alone for the questions the campaign holds: translation does not
            // move questions, and deleted questions keep theirs.
            auto added = std::make_unique<vw::CQuestion>();
            added->m_questionID = source.m_id;
            added->m_order = nextOrder++;
            // A question appears in a volume; a new one in the first the campaign has.
            if (!campaign.Volumes().empty())
                added->m_appearanceVolumeID = campaign.Volumes().front()->m_volumeID;
            added->m_isMultiple = source.GetType() == QuestionType::MultipleChoice;
            target = campaign.AddQuestion(std::move(added));
        }
        target->m_shortcut = source.m_shortcut;
        TakeQuestionCaptions(source, *target);
        for (int r = 0; r < source.GetNbreModalite(); ++r)
            TakeResponse(source.GetModalite(r), source.m_id, campaign, keys);
    }
}

// The version text a campaign saved by this program carries: commas, as the program writes it.
QString WrittenVersionText() {
    return CurrentVersion().ToText().replace(QLatin1Char('.'), QLatin1Char(','));
}

void UpgradeContent(vw::CCampaign& campaign) {
    if (IsOlderThan(campaign.m_versionNumber, "5.1.9.4"))
        (void)campaign.RepairModalityMatchingEndVolumes();
    if (IsOlderThan(campaign.m_versionNumber, "5.6.1.0"))
        campaign.m_versionNumber = WrittenVersionText();
}

// A campaign for a questionnaire that had none: its questions need a volume to appear in, and
// the volume a wave.
std::unique_ptr<vw::CCampaign> NewCampaign(const QString& questionnaireName) {
    const QString name = questionnaireName.left(50); // the names' columns hold 50 characters
    auto campaign = std::make_unique<vw::CCampaign>();
    campaign->m_name = name;
    campaign->m_versionNumber = WrittenVersionText();
    auto wave = std::make_unique<vw::CWave>();
    wave->m_waveID = 1;
    wave->m_name = name;
    campaign->AddWave(std::move(wave));
    auto volume = std::make_unique<vw::CVolume>();
    volume->m_volumeID = 1;
    volume->m_waveID = 1;
    volume->m_name = name;
    volume->m_isMainVolume = true;
    campaign->AddVolume(std::move(volume));
    return campaign;
}

} // namespace

Outcome LoadCampaignAsQuestionnaire(const QString& location, CQuestionnaire& q,
                                    vw::CCampaign& campaign, RemovedResponses& removed) {
    if (const Outcome loaded = LoadCampaign(location, campaign); !loaded)
        return loaded;
    q.SetName(campaign.m_name);
    removed.clear();
    qint32 defaultLanguage = 0;
    bool hasDefault = false;
    for (const auto& source : campaign.Languages()) {
        auto language = std::make_unique<CLanguage>(quint32(source->m_languageID));
        language->m_isMain = source->m_isDefault;
        if (source->m_isDefault) {
            defaultLanguage = source->m_languageID;
            hasDefault = true;
        }
        q.AddLanguage(std::move(language));
    }
    if (hasDefault)
        q.SetDefaultLanguage(defaultLanguage); // the last one flagged
    for (const auto& source : campaign.Questions())
        if (!source->m_isDeleted)
            q.AddQuestion(ToQuestionnaire(*source, removed));
    return {};
}

Outcome SaveQuestionnaireIntoCampaign(const QString& location, const CQuestionnaire& q,
                                      std::unique_ptr<vw::CCampaign>& campaign,
                                      const RemovedResponses& removed, bool asRead,
                                      ResponseKeys* keys) {
    ResponseKeys once;
    util::sql::Connection db;
    if (const Outcome opened = UnderOpen(db.Open(location)); !opened)
        return opened;
    auto fresh =
        campaign ? std::make_unique<vw::CCampaign>(*campaign) : std::make_unique<vw::CCampaign>();
    for (const auto& response : removed)
        if (!fresh->FindModality(response->m_modalityID))
            (void)fresh->AddModality(std::make_unique<vw::CModality>(*response));
    TakeLanguages(q, *fresh);
    TakeQuestions(q, *fresh, keys ? *keys : once);
    if (const Outcome migrated = MigrateDatabase(db, fresh->m_versionNumber); !migrated)
        return migrated;
    UpgradeContent(*fresh);
    if (const Outcome checked = UnderOpen(EnableForeignKeys(db)); !checked)
        return checked;
    const vw::CCampaign* before = asRead && campaign ? campaign.get() : nullptr;
    if (const Outcome saved = SaveCampaign(db, *fresh, before); !saved)
        return saved;
    campaign = std::move(fresh);
    return {};
}

Outcome CampaignQuestionnaireStore::Load(const QString& path, CQuestionnaire& q,
                                         const questionnaire::StoreContext& context) {
    Q_UNUSED(context);
    auto campaign = std::make_unique<vw::CCampaign>();
    const Outcome loaded = LoadCampaignAsQuestionnaire(path, q, *campaign, m_removed);
    if (!loaded) {
        q.SetLastError(loaded.Reason());
        return loaded;
    }
    m_campaign = std::move(campaign);
    m_location = path;
    return {};
}

Outcome CampaignQuestionnaireStore::SaveWhole(const QString& path, const CQuestionnaire& q,
                                              const questionnaire::StoreContext& context) {
    Q_UNUSED(context);
    if (!m_campaign) {
        // Nothing was read from a campaign: the questionnaire becomes a new one.
        if (const Outcome created = CreateDatabase(path); !created)
            return created;
        m_campaign = NewCampaign(q.GetName());
        m_location.clear();
    }
    const Outcome saved =
        SaveQuestionnaireIntoCampaign(path, q, m_campaign, m_removed, path == m_location, &m_keys);
    if (saved)
        m_location = path;
    return saved;
}

Outcome CampaignQuestionnaireStore::CopyForSaveAs(const QString& source, const QString& target) {
    if (!m_campaign ||
        (!util::sql::IsServerLocation(source) && !util::sql::IsServerLocation(target))) {
        const Outcome copied = QuestionnaireStore::CopyForSaveAs(source, target);
        // The copy holds what the source held; unless someone saved into it since the load,
        // that is the campaign as read.
        if (copied && m_location == source)
            m_location = target;
        return copied;
    }
    if (const Outcome created = CreateDatabase(target); !created)
        return created;
    if (const Outcome written = SaveCampaign(target, *m_campaign); !written)
        return written;
    m_location = target;
    return {};
}

} // namespace campaign
