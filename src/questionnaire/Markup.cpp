#include "questionnaire/Markup.h"

bool CMarkup::SetDoc(const QString& xml) {
    m_doc = xml;
    return xml.contains(QLatin1Char('<'));
}
