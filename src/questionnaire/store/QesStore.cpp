#include "questionnaire/store/QesStore.h"

#include "questionnaire/Questionnaire.h"
#include "questionnaire/formats/QesDatabase.h"

namespace questionnaire {

util::Outcome QesStore::Load(const QString& path, CQuestionnaire& q, const StoreContext& context) {
    // A false result with a status above 8 read the questionnaire and only warns.
    if (q.Read(path, true, true, true, true, true, dbQesFile, context.programVersion, true,
               context.progress) ||
        q.GetStatus() > 8)
        return {};
    return util::Outcome::Failure(q.GetLastError());
}

util::Outcome QesStore::SaveWhole(const QString& path, const CQuestionnaire& q,
                                  const StoreContext& context) {
    return WriteQesFile(path, q, context.programVersion, context.progress);
}

util::Outcome QesStore::SaveParts(const QString& path, const CQuestionnaire& q,
                                  questionnaire::SaveParts parts, const StoreContext&) {
    CDBStructureAdo db(CDBStructureAdo::GetQesConnectionString(path));
    // The parts go in one transaction: a save that fails or is killed half-way leaves the file
    // as it was.
    bool saved = db.Open(false) && db.BeginTransaction();
    if (saved && parts.testFlag(SavePart::Languages))
        saved = db.SaveLanguages(q);
    if (saved && parts.testFlag(SavePart::Captions))
        saved = db.SaveCaptionsOnly(&q);
    if (saved && parts.testFlag(SavePart::SystemMessages))
        saved = db.SaveErrorMessages(q);
    if (saved && parts.testFlag(SavePart::Routings))
        saved = db.DoSaveFilters(&q);
    if (saved && db.CommitTransaction())
        return {};
    const QString reason = db.GetLastError();
    db.RollbackTransaction();
    return util::Outcome::Failure(reason);
}

} // namespace questionnaire
