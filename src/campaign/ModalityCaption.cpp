#include "campaign/ModalityCaption.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CModalityCaption::~CModalityCaption() = default;

void CModalityCaption::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_modalityID);
    archive.Exchange(m_questionID);
    archive.Exchange(m_languageID);
    archive.Exchange(m_shortCaption);
}

} // namespace varnel_wave
