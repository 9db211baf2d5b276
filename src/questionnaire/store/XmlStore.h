#pragma once

#include "questionnaire/store/QuestionnaireStore.h"

namespace questionnaire {

// ".xml": the questionnaire's XML form, always written whole.
class XmlStore : public QuestionnaireStore {
public:
    util::Outcome Load(const QString& path, CQuestionnaire& q,
                       const StoreContext& context) override;
    util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                            const StoreContext& context) override;
};

} // namespace questionnaire
