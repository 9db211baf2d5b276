#pragma once

#include <QByteArray>
#include <QString>

namespace util {

// The code page that stands in for the Windows "system ANSI code page": the setting
// "Settings"/"AnsiCodePage" when set, else the code page of the user's locale from the locale
// table, else 1252. Conversions go through ICU.
class AnsiCodePage {
public:
    // All bits set means "the system's ANSI code page", as the Windows converters have it.
    static constexpr quint32 kSystem = 0xFFFFFFFFu;

    static quint32 Current();
    // Overrides the code page for this process (tests, and the setting read at start-up).
    static void SetCurrent(quint32 codePage);
    // Forgets any override so the next Current() looks at the setting and the locale again.
    static void Reset();

    // ICU converter name for a Windows code page number, e.g. 1252 -> "windows-1252".
    static QByteArray IcuName(quint32 codePage);

    // Characters with no mapping become '#'. Returns false when the code page is unknown.
    static bool FromUnicode(const QString& text, quint32 codePage, QByteArray& out);
    // Returns false when the code page is unknown or the bytes cannot be converted.
    static bool ToUnicode(const QByteArray& bytes, quint32 codePage, QString& out);
};

} // namespace util
