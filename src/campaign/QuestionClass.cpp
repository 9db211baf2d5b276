#include "campaign/QuestionClass.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CQuestionClass::~CQuestionClass() = default;

void CQuestionClass::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_questionClassID);
    archive.Exchange(m_caption);
}

} // namespace varnel_wave
