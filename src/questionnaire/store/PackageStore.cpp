#include "questionnaire/store/PackageStore.h"

#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"

namespace questionnaire {

util::Outcome PackageStore::Load(const QString& path, CQuestionnaire& q,
                                 const StoreContext& context) {
    const QString folder = context.workingFolder ? context.workingFolder(path) : QString();
    if (folder.isEmpty()) {
        q.SetLastError(Tr(strings::kNoWorkingFolder).arg(path));
        return util::Outcome::Failure(q.GetLastError());
    }
    if (q.ReadFromExchangeFormat(path, folder, context.progress))
        return {};
    return util::Outcome::Failure(q.GetLastError());
}

util::Outcome PackageStore::SaveWhole(const QString& path, const CQuestionnaire& q,
                                      const StoreContext& context) {
    // Packing records nothing in the questionnaire but the reason of a failure.
    CQuestionnaire& writable = const_cast<CQuestionnaire&>(q);
    if (writable.SaveToExchangeFormat(path, QString(), -1, context.progress))
        return {};
    return util::Outcome::Failure(q.GetLastError());
}

} // namespace questionnaire
