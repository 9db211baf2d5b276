#pragma once

#include "questionnaire/store/QuestionnaireStore.h"

namespace questionnaire {

// ".qes" and every ending no other store claims: a questionnaire database, saved in place part by
// part so that the tables this program does not know stay as they are.
class QesStore : public QuestionnaireStore {
public:
    util::Outcome Load(const QString& path, CQuestionnaire& q,
                       const StoreContext& context) override;
    util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                            const StoreContext& context) override;
    util::Outcome SaveParts(const QString& path, const CQuestionnaire& q,
                            questionnaire::SaveParts parts, const StoreContext& context) override;
    bool CopiesBeforeSaveAs() const override { return true; }
};

} // namespace questionnaire
