#pragma once

#include "campaign/Campaign.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/store/QuestionnaireStore.h"
#include "util/Outcome.h"

#include <QString>

#include <map>
#include <memory>
#include <vector>

// A campaign database translated like any questionnaire: the campaign is turned into a
// questionnaire for the translation work and the questionnaire back into the campaign to save.
namespace campaign {

// Responses the campaign marks deleted: the questionnaire does not show them, yet a save must
// write them back as they were.
using RemovedResponses = std::vector<std::unique_ptr<varnel_wave::CModality>>;

// Campaign response numbers given to questionnaire responses whose own number another question's
// response holds, by (question, response).
using ResponseKeys = std::map<std::pair<qint32, qint32>, qint32>;

// Reads the campaign at `location` into `campaign` (empty) and fills `q` (empty) from it:
// languages (the last one flagged default is the main one), the questions not deleted with their
// non-empty captions, and their responses not deleted; copies of the deleted responses go to
// `removed`. The caller prepares the questionnaire's links.
util::Outcome LoadCampaignAsQuestionnaire(const QString& location, CQuestionnaire& q,
                                          varnel_wave::CCampaign& campaign,
                                          RemovedResponses& removed);

// Writes `q` into the campaign at `location`: the campaign as read at load, with the
// questionnaire's languages, questions and captions over it and the removed responses back. The
// schema is migrated from the campaign's version first and the version raised. `asRead` says
// that the database still holds `campaign`: only what changed is written then, so that others
// saving other captions of the same campaign meanwhile keep theirs. On success `campaign`
// becomes what was written. `keys`, kept from save to save, numbers the responses the campaign
// could not take by their own number.
util::Outcome SaveQuestionnaireIntoCampaign(const QString& location, const CQuestionnaire& q,
                                            std::unique_ptr<varnel_wave::CCampaign>& campaign,
                                            const RemovedResponses& removed, bool asRead = false,
                                            ResponseKeys* keys = nullptr);

// Whether the database at `location` opens and already holds a campaign's tables (which a save
// of another questionnaire to it replaces).
bool HoldsCampaign(const QString& location);

// The store of ".qew" files; keeps the campaign as read and its removed responses from the load
// to the saves of its document.
class CampaignQuestionnaireStore : public questionnaire::QuestionnaireStore {
public:
    util::Outcome Load(const QString& path, CQuestionnaire& q,
                       const questionnaire::StoreContext& context) override;
    util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                            const questionnaire::StoreContext& context) override;
    // A campaign holds waves, volumes and matchings the questionnaire does not: "Save As" copies
    // the database and saves into the copy. A campaign made from another kind of file starts as
    // a new database.
    bool CopiesBeforeSaveAs() const override { return true; }
    // The copy is put in place only once saved into: a file is built beside the target, a server
    // database in one transaction. A file onto a file is copied as a file; otherwise (a server on
    // either side) the target gets a new schema and the campaign as read with the questionnaire.
    util::Outcome SaveCopyAs(const QString& source, const QString& target, const CQuestionnaire& q,
                             questionnaire::SaveParts parts,
                             const questionnaire::StoreContext& context) override;

private:
    // Puts at `target` a copy of the file `copyOf` (a new database when empty) with `q` saved
    // over `read`, whole or not at all; the store follows the target from then on.
    util::Outcome Build(const QString& target, const QString& copyOf,
                        const varnel_wave::CCampaign& read, const CQuestionnaire& q, bool asRead);

    std::unique_ptr<varnel_wave::CCampaign> m_campaign;
    // Where m_campaign is what the database holds: saves there write only what changed.
    QString m_location;
    RemovedResponses m_removed;
    ResponseKeys m_keys;
};

} // namespace campaign
