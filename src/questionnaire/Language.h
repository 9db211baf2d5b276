#pragma once

#include "questionnaire/Objet.h"

#include <QString>

#include <memory>
#include <vector>

// A questionnaire language, identified by its Windows locale id.
class CLanguage : public CObjet {
public:
    CLanguage() = default;
    // Fills the short name (the abbreviated Windows name, "ENU" for 1033) and the name from the
    // locale table; both stay empty for an id the table does not know.
    explicit CLanguage(quint32 lcid);

    // Every locale the table knows: specific locales in ascending id order, then neutral ones.
    static void GetWindowsLanguages(std::vector<std::unique_ptr<CLanguage>>& out);
    // The short names of all known locales, cached: language lists given as text are matched
    // against them.
    static const std::vector<std::unique_ptr<CLanguage>>& WindowsLanguages();

    bool operator==(const CLanguage& other) const {
        return m_id == other.m_id && m_shortName == other.m_shortName &&
               m_name == other.m_name && m_isMain == other.m_isMain;
    }

    qint32 m_id = 0;
    QString m_shortName;
    QString m_name;
    bool m_isMain = false; // the questionnaire's main (default) language
};
