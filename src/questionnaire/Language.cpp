#include "questionnaire/Language.h"

#include "util/LocaleTable.h"

CLanguage::CLanguage(quint32 lcid) : m_id(qint32(lcid)) {
    if (const util::LocaleInfo* info = util::LocaleTable::Instance().Find(m_id)) {
        m_shortName = info->abbreviation;
        m_name = info->DisplayName();
    }
}

void CLanguage::GetWindowsLanguages(std::vector<std::unique_ptr<CLanguage>>& out) {
    // Specific locales before neutral ones: a neutral locale shares its abbreviation with its
    // default country ("ENU" is both 9 and 1033), and a short name given by a user means the
    // locale a questionnaire actually carries.
    const QList<util::LocaleInfo>& all = util::LocaleTable::Instance().All();
    for (bool neutral : {false, true})
        for (const util::LocaleInfo& info : all)
            if (info.IsNeutral() == neutral)
                out.push_back(std::make_unique<CLanguage>(quint32(info.lcid)));
}

const std::vector<std::unique_ptr<CLanguage>>& CLanguage::WindowsLanguages() {
    static const std::vector<std::unique_ptr<CLanguage>> languages = [] {
        std::vector<std::unique_ptr<CLanguage>> all;
        GetWindowsLanguages(all);
        return all;
    }();
    return languages;
}
