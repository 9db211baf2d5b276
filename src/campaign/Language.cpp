#include "campaign/Language.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CLanguage::~CLanguage() = default;

void CLanguage::Serialize(CArchiveVersion& archive) {
    archive.Exchange(m_languageID);
    archive.Exchange(m_isDefault);
    archive.Exchange(m_languageName);
}

} // namespace varnel_wave
