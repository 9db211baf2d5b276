#pragma once

#include "questionnaire/store/QuestionnaireStore.h"

namespace questionnaire {

// ".qex": a package unpacked into the questionnaire's working folder while it is open, and
// packed again whole, with whatever else the folder holds, when it is saved.
class PackageStore : public QuestionnaireStore {
public:
    util::Outcome Load(const QString& path, CQuestionnaire& q,
                       const StoreContext& context) override;
    util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                            const StoreContext& context) override;
};

} // namespace questionnaire
