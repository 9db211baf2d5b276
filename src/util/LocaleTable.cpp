#include "util/LocaleTable.h"

#include <QHash>
#include <QStringList>

namespace util::detail {
extern const char* const kLocaleTsv;
}

namespace util {

namespace {
QString TagKey(const QString& tag) {
    QString key = tag.toLower();
    key.replace(QLatin1Char('_'), QLatin1Char('-'));
    return key;
}
} // namespace

QString LocaleInfo::DisplayName() const {
    if (IsNeutral() || countryEnglish.isEmpty())
        return languageEnglish;
    return languageEnglish + QStringLiteral(" (") + countryEnglish + QLatin1Char(')');
}

const LocaleTable& LocaleTable::Instance() {
    static const LocaleTable table;
    return table;
}

LocaleTable::LocaleTable() {
    const QStringList lines =
        QString::fromUtf8(detail::kLocaleTsv).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    // The first line names the columns.
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QStringList f = lines[i].split(QLatin1Char('\t'));
        if (f.size() < 10)
            continue;
        LocaleInfo info;
        info.lcid = f[0].toInt();
        info.tag = f[2];
        info.abbreviation = f[3];
        info.languageEnglish = f[4];
        info.countryEnglish = f[5];
        info.languageNative = f[6];
        info.ansiCodePage = f[7].toInt();
        info.oemCodePage = f[8].toInt();
        info.listSeparator = f[9].trimmed();
        m_locales.append(info);
    }
    std::sort(m_locales.begin(), m_locales.end(),
              [](const LocaleInfo& a, const LocaleInfo& b) { return a.lcid < b.lcid; });
    for (qsizetype i = 0; i < m_locales.size(); ++i) {
        const LocaleInfo& info = m_locales[i];
        m_byLcid.insert(info.lcid, i);
        m_byAbbreviation.insert(info.abbreviation.toUpper(), i);
        m_byTag.insert(TagKey(info.tag), i);
    }
}

const LocaleInfo* LocaleTable::Find(qint32 lcid) const {
    const auto it = m_byLcid.constFind(lcid);
    return it == m_byLcid.constEnd() ? nullptr : &m_locales[*it];
}

QList<qint32> LocaleTable::FindByAbbreviation(const QString& abbreviation) const {
    QList<qint32> result;
    for (auto it = m_byAbbreviation.constFind(abbreviation.toUpper());
         it != m_byAbbreviation.constEnd() && it.key() == abbreviation.toUpper(); ++it)
        result.append(m_locales[*it].lcid);
    std::sort(result.begin(), result.end());
    return result;
}

const LocaleInfo* LocaleTable::FindByTag(const QString& tag) const {
    const auto it = m_byTag.constFind(TagKey(tag));
    return it == m_byTag.constEnd() ? nullptr : &m_locales[*it];
}

QString LanguageTag(qint32 lcid) {
    const LocaleInfo* info = LocaleTable::Instance().Find(lcid);
    if (!info || info->tag.isEmpty())
        return QStringLiteral("x-lcid-%1").arg(lcid);
    return QString(info->tag).replace(QLatin1Char('_'), QLatin1Char('-'));
}

qint32 LanguageFromTag(const QString& tag) {
    static const QLatin1String kPrivate("x-lcid-");
    if (tag.startsWith(kPrivate, Qt::CaseInsensitive)) {
        bool ok = false;
        const qint32 lcid = tag.mid(kPrivate.size()).toInt(&ok);
        return ok && lcid > 0 ? lcid : 0;
    }
    const LocaleInfo* info = LocaleTable::Instance().FindByTag(tag);
    return info ? info->lcid : 0;
}

} // namespace util
