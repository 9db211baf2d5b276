#pragma once

#include <QString>

// Names and limits of the exchange package (.qex), a ZIP file holding questionnaire.xml and any
// further files. CQuestionnaire::ReadFromExchangeFormat and SaveToExchangeFormat use them.
namespace questionnaire {

// The entry that holds the questionnaire, at the top of the package.
inline constexpr char kPackageXmlName[] = "questionnaire.xml";

// Unpacking refuses a package beyond these before it writes anything. A questionnaire with its
// media is far below them; only a damaged or hostile package reaches them.
inline constexpr qint64 kMaxPackageEntries = 10000;
inline constexpr quint64 kMaxPackageEntrySize = quint64(1) << 30;      // 1 GiB, uncompressed
inline constexpr quint64 kMaxPackageTotalSize = quint64(4) << 30;      // 4 GiB, uncompressed
inline constexpr quint64 kMaxPackageRatio = 1000;                      // uncompressed : compressed
inline constexpr quint64 kPackageRatioCheckedAbove = quint64(1) << 20; // 1 MiB

// A stamp file of a running instance ("stamp12.stp", any letter case) at the top of a working
// folder: never packed, never overwritten by unpacking, and only such files keep a folder from
// its clean-up.
bool IsStampName(const QString& name);

// Bits of SaveToExchangeFormat's `flags`; -1 writes everything.
inline constexpr qint32 kPackageWithCaptions = 1;
inline constexpr qint32 kPackageWithRoutings = 2;

} // namespace questionnaire
