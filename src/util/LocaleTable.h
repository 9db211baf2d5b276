#pragma once

#include <QHash>
#include <QList>
#include <QString>

namespace util {

// Facts about one Windows locale identifier, from the bundled locale table.
struct LocaleInfo {
    qint32 lcid = 0;
    QString tag;          // LCIDToLocaleName form, e.g. "en-US", "es-ES_tradnl"
    QString abbreviation; // three-letter abbreviated language name, e.g. "ENU"
    QString languageEnglish;
    QString countryEnglish;
    QString languageNative;
    int ansiCodePage = 0; // 0 for a Unicode-only locale
    int oemCodePage = 0;
    QString listSeparator;

    bool IsNeutral() const { return !tag.contains(QLatin1Char('-')); }
    // "English (United States)" for a specific locale, "English" for a neutral one.
    QString DisplayName() const;
};

// Read-only lookup over the locale table, built once on first use.
class LocaleTable {
public:
    static const LocaleTable& Instance();

    // nullptr for an identifier the table does not know.
    const LocaleInfo* Find(qint32 lcid) const;
    // Every locale whose abbreviation matches, case-insensitively, in identifier order.
    QList<qint32> FindByAbbreviation(const QString& abbreviation) const;
    // nullptr when no locale has this tag (compared case-insensitively, '_' and '-' alike).
    const LocaleInfo* FindByTag(const QString& tag) const;
    // All locales in ascending identifier order.
    const QList<LocaleInfo>& All() const { return m_locales; }

private:
    LocaleTable();
    QList<LocaleInfo> m_locales;
    QHash<qint32, qsizetype> m_byLcid;
    QMultiHash<QString, qsizetype> m_byAbbreviation; // key upper-cased
    QHash<QString, qsizetype> m_byTag;               // key lower-cased, '_' as '-'
};

// The language tag exchange files (XLIFF, TMX) carry for a language identifier: the table's tag
// with '-' throughout ("en-US", "es-ES-tradnl"), or "x-lcid-<number>" for an identifier the
// table lacks. And back, any letter case, '_' or '-': 0 for a tag no identifier has.
QString LanguageTag(qint32 lcid);
qint32 LanguageFromTag(const QString& tag);

} // namespace util
