#include "campaign/QuestionCaption.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CQuestionCaption::~CQuestionCaption() = default;

void CQuestionCaption::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_questionID);
    archive.Exchange(m_languageID);
    archive.Exchange(m_longCaption);
    archive.Exchange(m_shortCaption);
}

} // namespace varnel_wave
