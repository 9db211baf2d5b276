#include "campaign/QuelSurveyTag.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CQuelSurveyTag::~CQuelSurveyTag() = default;

void CQuelSurveyTag::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_tagID);
    archive.Exchange(m_caption);
    archive.Exchange(m_description);
}

} // namespace varnel_wave
