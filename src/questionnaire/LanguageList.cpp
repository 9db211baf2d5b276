#include "questionnaire/LanguageList.h"

#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"

namespace questionnaire {

QList<qint32> DefaultLanguageOrder(const CQuestionnaire& q) {
    QList<qint32> order;
    order.reserve(q.GetLanguageCount());
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& language = q.GetLanguage(i);
        // As in the grid: should two languages carry the flag, the later one ends up first.
        if (language.m_isMain)
            order.prepend(language.m_id);
        else
            order.append(language.m_id);
    }
    return order;
}

QString LanguageShortName(const CQuestionnaire& q, qint32 lcid) {
    QString name;
    // The last of a language listed twice, as the export always named it.
    for (int i = 0; i < q.GetLanguageCount(); ++i)
        if (q.GetLanguage(i).m_id == lcid)
            name = q.GetLanguage(i).m_shortName;
    return name.isEmpty() ? CLanguage(quint32(lcid)).m_shortName : name;
}

bool ParseLanguage(const QString& item, qint32& lcid) {
    const QString text = item.trimmed();
    if (text.isEmpty())
        return false;
    if (CStaticTools::EstLong(text, lcid))
        return true;
    for (const auto& language : CLanguage::WindowsLanguages()) {
        if (!language->m_shortName.isEmpty() &&
            language->m_shortName.compare(text, Qt::CaseInsensitive) == 0) {
            lcid = language->m_id;
            return true;
        }
    }
    return false;
}

QList<qint32> ParseLanguageList(const QString& text) {
    QStringList items;
    CStaticTools::LireChaineSeparateurString(text, QLatin1Char(','), items);
    QList<qint32> lcids;
    for (const QString& item : items) {
        qint32 lcid = 0;
        if (ParseLanguage(item, lcid))
            lcids.append(lcid);
    }
    return lcids;
}

int AddLanguages(CQuestionnaire& q, const QList<qint32>& lcids) {
    int added = 0;
    for (qint32 lcid : lcids) {
        if (q.HasLanguage(lcid))
            continue;
        auto language = std::make_unique<CLanguage>(quint32(lcid));
        // A number that names no language (a typing slip) would give the questionnaire a
        // column no import accepts: it is passed over like an unknown name.
        if (language->m_name.isEmpty())
            continue;
        if (q.AddLanguage(std::move(language)) >= 0)
            ++added;
    }
    return added;
}

} // namespace questionnaire
