#include "questionnaire/store/XmlStore.h"

#include "questionnaire/formats/XmlFile.h"

namespace questionnaire {

util::Outcome XmlStore::Load(const QString& path, CQuestionnaire& q, const StoreContext& context) {
    return ReadXmlFile(path, q, context.progress);
}

util::Outcome XmlStore::SaveWhole(const QString& path, const CQuestionnaire& q,
                                  const StoreContext& context) {
    return WriteXmlFile(path, q, context.progress);
}

} // namespace questionnaire
