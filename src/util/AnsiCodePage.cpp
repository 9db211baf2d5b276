#include "util/AnsiCodePage.h"

#include <QHash>
#include <QLocale>
#include <QSettings>

#include "util/LocaleTable.h"

#include <unicode/ucnv.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

namespace util {

namespace {

constexpr quint32 kFallbackCodePage = 1252;
constexpr quint32 kUnresolved = 0;

// 0 stands for "not set" / "not looked up yet"; no code page has the number 0.
std::atomic<quint32> g_override{kUnresolved};
std::atomic<quint32> g_resolved{kUnresolved};

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// A converter keeps state between calls, so each one is used by one thread at a time.
struct CachedConverter {
    std::mutex mutex;
    std::unique_ptr<UConverter, ConverterCloser> converter;
};

class ConverterCache {
public:
    // nullptr when ICU has no converter for the code page; the answer is remembered either way.
    CachedConverter* Get(quint32 codePage) {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_entries.find(codePage);
        if (it == m_entries.end())
            it = m_entries.emplace(codePage, Open(codePage)).first;
        return it->second.get();
    }

private:
    static std::unique_ptr<CachedConverter> Open(quint32 codePage) {
        const QByteArray name = AnsiCodePage::IcuName(codePage);
        if (name.isEmpty())
            return nullptr;
        UErrorCode status = U_ZERO_ERROR;
        UConverter* converter = ucnv_open(name.constData(), &status);
        if (U_FAILURE(status) || converter == nullptr)
            return nullptr;
        auto entry = std::make_unique<CachedConverter>();
        entry->converter.reset(converter);
        // Unicode converters refuse a one-byte substitute; they never need one for valid text.
        UErrorCode substStatus = U_ZERO_ERROR;
        ucnv_setSubstChars(converter, "#", 1, &substStatus);
        return entry;
    }

    std::mutex m_mutex;
    std::map<quint32, std::unique_ptr<CachedConverter>> m_entries;
};

ConverterCache& Cache() {
    static ConverterCache cache;
    return cache;
}

bool IsKnownIcuName(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    return ucnv_countAliases(name, &status) > 0 && U_SUCCESS(status);
}

bool IsUsable(quint32 codePage) {
    return codePage != kUnresolved && codePage != AnsiCodePage::kSystem &&
           Cache().Get(codePage) != nullptr;
}

quint32 CodePageFromSettings() {
    QSettings settings(QStringLiteral("Halvard Quist"), QStringLiteral("Translator"));
    bool ok = false;
    const quint32 value = settings.value(QStringLiteral("Settings/AnsiCodePage")).toUInt(&ok);
    return ok && IsUsable(value) ? value : kUnresolved;
}

quint32 CodePageFromLocale() {
    const LocaleInfo* info = LocaleTable::Instance().FindByTag(QLocale::system().name());
    if (info == nullptr || info->ansiCodePage <= 0)
        return kUnresolved;
    const quint32 value = static_cast<quint32>(info->ansiCodePage);
    return IsUsable(value) ? value : kUnresolved;
}

quint32 Resolve(quint32 codePage) {
    return codePage == AnsiCodePage::kSystem ? AnsiCodePage::Current() : codePage;
}

constexpr std::ptrdiff_t kChunk = 16384;

} // namespace

quint32 AnsiCodePage::Current() {
    const quint32 overridden = g_override.load();
    if (overridden != kUnresolved)
        return overridden;
    quint32 resolved = g_resolved.load();
    if (resolved != kUnresolved)
        return resolved;
    // Looked up once: conversions run per line and must not read the profile each time.
    resolved = CodePageFromSettings();
    if (resolved == kUnresolved)
        resolved = CodePageFromLocale();
    if (resolved == kUnresolved)
        resolved = kFallbackCodePage;
    g_resolved.store(resolved);
    return resolved;
}

void AnsiCodePage::SetCurrent(quint32 codePage) {
    g_override.store(codePage == kSystem ? kUnresolved : codePage);
}

void AnsiCodePage::Reset() {
    g_override.store(kUnresolved);
    g_resolved.store(kUnresolved);
}

QByteArray AnsiCodePage::IcuName(quint32 codePage) {
    codePage = Resolve(codePage);
    // Windows numbers that ICU knows under a different name only.
    static const QHash<quint32, QByteArray> special = {
        {28591, "ISO-8859-1"}, {12000, "UTF-32LE"}, {12001, "UTF-32BE"}};
    const auto it = special.constFind(codePage);
    if (it != special.constEnd())
        return *it;
    // "windows-N" first: for several numbers "ibm-N" is an older, different table.
    for (const char* prefix : {"windows-", "ibm-"}) {
        const QByteArray name = QByteArray(prefix) + QByteArray::number(codePage);
        if (IsKnownIcuName(name.constData()))
            return name;
    }
    return {};
}

bool AnsiCodePage::FromUnicode(const QString& text, quint32 codePage, QByteArray& out) {
    out.clear();
    CachedConverter* entry = Cache().Get(Resolve(codePage));
    if (entry == nullptr)
        return false;
    std::lock_guard<std::mutex> lock(entry->mutex);
    UConverter* converter = entry->converter.get();
    ucnv_resetFromUnicode(converter);
    const UChar* source = reinterpret_cast<const UChar*>(text.constData());
    const UChar* sourceEnd = source + text.size();
    char buffer[kChunk];
    for (;;) {
        char* target = buffer;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_fromUnicode(converter, &target, buffer + kChunk, &source, sourceEnd, nullptr, true,
                         &status);
        out.append(buffer, target - buffer);
        if (status == U_BUFFER_OVERFLOW_ERROR)
            continue;
        if (U_FAILURE(status)) {
            out.clear();
            return false;
        }
        return true;
    }
}

bool AnsiCodePage::ToUnicode(const QByteArray& bytes, quint32 codePage, QString& out) {
    out.clear();
    CachedConverter* entry = Cache().Get(Resolve(codePage));
    if (entry == nullptr)
        return false;
    std::lock_guard<std::mutex> lock(entry->mutex);
    UConverter* converter = entry->converter.get();
    ucnv_resetToUnicode(converter);
    const char* source = bytes.constData();
    const char* sourceEnd = source + bytes.size();
    UChar buffer[kChunk];
    for (;;) {
        UChar* target = buffer;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUnicode(converter, &target, buffer + kChunk, &source, sourceEnd, nullptr, true,
                       &status);
        out.append(reinterpret_cast<const QChar*>(buffer), target - buffer);
        if (status == U_BUFFER_OVERFLOW_ERROR)
            continue;
        if (U_FAILURE(status)) {
            out.clear();
            return false;
        }
        return true;
    }
}

} // namespace util
