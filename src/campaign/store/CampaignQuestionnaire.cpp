#include "campaign/store/CampaignQuestionnaire.h"

#include "campaign/schema/CampaignDatabase.h"
#include "campaign/schema/Migrations.h"
#include "campaign/schema/SchemaStrings.h"
#include "campaign/store/CampaignStore.h"
#include "campaign/store/StoreStrings.h"
#include "questionnaire/Modalite.h"
#include "questionnaire/Strings.h"
#include "util/FileSystem.h"
#include "util/SqlConnection.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <functional>

namespace campaign {

namespace {

using util::Outcome;
using util::sql::Connection;
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

// Numbers the questionnaire's responses in the campaign during one save. A campaign numbers
// responses across the campaign, a questionnaire per question: a number another question's
// response holds is replaced by a free one, remembered in `keys` so that every later save finds
// it again. The highest number in use is followed as responses are added, so that a free one is
// found without walking them all.
class ResponseNumbering {
public:
    ResponseNumbering(const vw::CCampaign& campaign, ResponseKeys& keys) : m_keys(keys) {
        for (const vw::CModality* modality : campaign.Modalities())
            m_highest = std::max(m_highest, modality->m_modalityID);
        for (const auto& [key, number] : keys)
            m_highest = std::max(m_highest, number);
    }

    // The campaign's response of the questionnaire's response `responseID` of `questionID`, or
    // the number a new one gets.
    qint32 Number(const vw::CCampaign& campaign, qint32 questionID, qint32 responseID) {
        if (const auto known = m_keys.find({questionID, responseID}); known != m_keys.end())
            return known->second;
        const vw::CModality* same = campaign.FindModality(responseID);
        if (!same || same->m_questionID == questionID)
            return responseID;
        m_keys[{questionID, responseID}] = ++m_highest;
        return m_highest;
    }
    // A response the campaign holds from now on.
    void Added(qint32 number) { m_highest = std::max(m_highest, number); }

private:
    ResponseKeys& m_keys;
    qint32 m_highest = 0;
};

void TakeResponse(const CModalite& source, qint32 questionID, vw::CCampaign& campaign,
                  ResponseNumbering& numbering) {
    const qint32 number = numbering.Number(campaign, questionID, source.m_id);
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
        numbering.Added(number);
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
    ResponseNumbering numbering(campaign, keys);
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
            TakeResponse(source.GetModalite(r), source.m_id, campaign, numbering);
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

// Writes `q` over `read` (the campaign as read, or a new one) into `db`; on success `written` is
// the campaign the database now holds and `keys` has the numbers given meanwhile.
Outcome WriteQuestionnaire(Connection& db, const CQuestionnaire& q, const vw::CCampaign& read,
                           const RemovedResponses& removed, bool asRead, ResponseKeys& keys,
                           std::unique_ptr<vw::CCampaign>& written) {
    auto fresh = std::make_unique<vw::CCampaign>(read);
    for (const auto& response : removed)
        if (!fresh->FindModality(response->m_modalityID))
            (void)fresh->AddModality(std::make_unique<vw::CModality>(*response));
    ResponseKeys given = keys;
    TakeLanguages(q, *fresh);
    TakeQuestions(q, *fresh, given);
    if (const Outcome migrated = MigrateDatabase(db, fresh->m_versionNumber); !migrated)
        return migrated;
    UpgradeContent(*fresh);
    if (const Outcome checked = UnderOpen(EnableForeignKeys(db)); !checked)
        return checked;
    if (const Outcome saved = SaveCampaign(db, *fresh, asRead ? &read : nullptr); !saved)
        return saved;
    written = std::move(fresh);
    keys = std::move(given);
    return {};
}

// Puts a campaign database filled by `fill` at `location`, whole or not at all, so that a failed
// save leaves what was there. A file is built beside it, from a copy of the file `copyOf` or
// else a new schema, and renamed over it once filled. On a server the new schema and the fill
// are one transaction: the server drops and creates tables within transactions.
Outcome BuildCampaign(const QString& location, const QString& copyOf,
                      const std::function<Outcome(Connection&)>& fill) {
    if (util::sql::IsServerLocation(location)) {
        Connection db;
        if (const Outcome opened = UnderOpen(db.Open(location)); !opened)
            return opened;
        util::sql::Transaction transaction(db);
        if (const Outcome begun = UnderOpen(transaction.Begin()); !begun)
            return begun;
        if (const Outcome created = CreateDatabase(db); !created)
            return created;
        if (const Outcome filled = fill(db); !filled)
            return filled;
        return transaction.Commit();
    }
    return ReplaceDatabaseFile(location, copyOf, [&](const QString& building) {
        Connection db;
        Outcome outcome =
            UnderOpen(db.Open(building, Connection::Mode::ReadWrite, copyOf.isEmpty()));
        if (outcome && copyOf.isEmpty())
            outcome = CreateDatabase(db);
        return outcome ? fill(db) : outcome;
    });
}

} // namespace

Outcome LoadCampaignAsQuestionnaire(const QString& location, CQuestionnaire& q,
                                    vw::CCampaign& campaign, RemovedResponses& removed) {
    if (const Outcome loaded = LoadCampaign(location, campaign); !loaded)
        return loaded;
    // Negative ids are the keys of system messages and of other captions: a question or a
    // response holding one would show and save another caption's text.
    for (const auto& question : campaign.Questions()) {
        if (question->m_isDeleted)
            continue;
        if (question->m_questionID < 0)
            return Outcome::Failure(
                QCoreApplication::translate("questionnaire",
                                            questionnaire::strings::kQuestionIdNegative)
                    .arg(question->m_questionID));
        for (const auto& modality : question->m_modalities)
            if (!modality->m_isDeleted && modality->m_modalityID < 0)
                return Outcome::Failure(
                    QCoreApplication::translate("questionnaire",
                                                questionnaire::strings::kResponseIdNegative)
                        .arg(modality->m_modalityID)
                        .arg(question->m_questionID));
    }
    q.SetName(campaign.m_name);
    // A campaign keeps no instructions or comments: offered, their translations would be lost.
    q.SetAllowingInstructionAndComment(false);
    removed.clear();
    // Each language keeps its flag, so that a save writes back both of two flagged languages;
    // the questionnaire's default is then the later one.
    for (const auto& source : campaign.Languages()) {
        auto language = std::make_unique<CLanguage>(quint32(source->m_languageID));
        language->m_isMain = source->m_isDefault;
        q.AddLanguage(std::move(language));
    }
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
    Connection db;
    if (const Outcome opened = UnderOpen(db.Open(location)); !opened)
        return opened;
    const vw::CCampaign empty;
    return WriteQuestionnaire(db, q, campaign ? *campaign : empty, removed, asRead && campaign,
                              keys ? *keys : once, campaign);
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
        return Build(path, QString(), *NewCampaign(q.GetName()), q, false);
    }
    const Outcome saved =
        SaveQuestionnaireIntoCampaign(path, q, m_campaign, m_removed, path == m_location, &m_keys);
    if (saved)
        m_location = path;
    return saved;
}

Outcome CampaignQuestionnaireStore::SaveCopyAs(const QString& source, const QString& target,
                                               const CQuestionnaire& q,
                                               questionnaire::SaveParts parts,
                                               const questionnaire::StoreContext& context) {
    Q_UNUSED(parts); // a campaign is always saved whole
    if (!m_campaign)
        return SaveWhole(target, q, context);
    // A file onto a file is copied as a file, which holds the campaign as read unless someone
    // saved into it since the load. With a server on either side the target gets a new schema
    // and the whole campaign.
    const bool files = !util::sql::IsServerLocation(source) && !util::sql::IsServerLocation(target);
    return Build(target, files ? source : QString(), *m_campaign, q, files && m_location == source);
}

Outcome CampaignQuestionnaireStore::Build(const QString& target, const QString& copyOf,
                                          const vw::CCampaign& read, const CQuestionnaire& q,
                                          bool asRead) {
    std::unique_ptr<vw::CCampaign> written;
    ResponseKeys keys = m_keys;
    const Outcome built = BuildCampaign(target, copyOf, [&](Connection& db) {
        return WriteQuestionnaire(db, q, read, m_removed, asRead, keys, written);
    });
    if (!built)
        return built;
    m_campaign = std::move(written);
    m_keys = std::move(keys);
    m_location = target;
    return {};
}

bool HoldsCampaign(const QString& location) {
    util::sql::Connection db;
    return db.Open(location) && db.HasTable(QStringLiteral("Campaigns"));
}

} // namespace campaign
