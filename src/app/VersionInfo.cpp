#include "app/VersionInfo.h"

#include "BuildInfo.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace app {

namespace {

// The values of the fixed block's fields, as version resources number them.
constexpr quint32 kOsDos = 0x00010000;
constexpr quint32 kOsOs216 = 0x00020000;
constexpr quint32 kOsOs232 = 0x00030000;
constexpr quint32 kOsNt = 0x00040000;
constexpr quint32 kOsWindows16 = 0x00000001;
constexpr quint32 kOsPm16 = 0x00000002;
constexpr quint32 kOsWindows32 = 0x00000004;
constexpr quint32 kOsDosWindows16 = kOsDos | kOsWindows16;
constexpr quint32 kOsDosWindows32 = kOsDos | kOsWindows32;
constexpr quint32 kOsOs216Pm16 = kOsOs216 | kOsPm16;
constexpr quint32 kOsNtWindows32 = kOsNt | kOsWindows32;
constexpr quint32 kTypeApp = 1;
constexpr quint32 kTypeDll = 2;
constexpr quint32 kTypeDriver = 3;
constexpr quint32 kTypeFont = 4;
constexpr quint32 kTypeVxd = 5;
constexpr quint32 kTypeStaticLib = 7;

} // namespace

QString VersionInfo::OperatingSystemText(quint32 fileOs) {
    switch (fileOs) {
    case kOsDos:
        return QStringLiteral("MS-DOS");
    case kOsDosWindows16:
        return QStringLiteral("16-bit windows running on MS-DOS");
    case kOsDosWindows32:
        return QStringLiteral("Win32 API running on MS-DOS");
    case kOsOs216:
        return QStringLiteral("16-bit OS/2");
    case kOsOs216Pm16:
        return QStringLiteral("16-bit Presentation manager running on 16-bit OS/2");
    case kOsOs232:
        return QStringLiteral("32-bit OS/2");
    case kOsNt:
        return QStringLiteral("Windows NT");
    case kOsNtWindows32:
        return QStringLiteral("Win32 API on Windows NT");
    default:
        return QStringLiteral("Unknown OS");
    }
}

QString VersionInfo::FileTypeText(quint32 fileType, quint32 fileSubtype) {
    if (fileType == kTypeDriver) {
        static const char* const drivers[] = {
            "Unknown driver",     "Printer driver", "Keyboard driver", "Language driver",
            "Display driver",     "Mouse driver",   "Network driver",  "System driver",
            "Installable driver", "Sound driver"};
        return QString::fromLatin1(fileSubtype < std::size(drivers) ? drivers[fileSubtype]
                                                                    : drivers[0]);
    }
    if (fileType == kTypeFont) {
        static const char* const fonts[] = {"Unknown font", "Raster font", "Vector font",
                                            "Truetype font"};
        return QString::fromLatin1(fileSubtype < std::size(fonts) ? fonts[fileSubtype] : fonts[0]);
    }
    if (fileType == kTypeVxd)
        return QStringLiteral("Virtual device");
    if (fileType == kTypeStaticLib)
        return QStringLiteral("Static link library");
    // Applications and libraries were never given words of their own.
    Q_UNUSED(kTypeApp);
    Q_UNUSED(kTypeDll);
    return QStringLiteral("Unknown type");
}

bool VersionInfo::Load() {
    FixedBlock block;
    block.fileVersionMs =
        quint32(buildinfo::kVersionMajor) << 16 | quint32(buildinfo::kVersionMinor);
    block.fileVersionLs = quint32(buildinfo::kVersionPatch) << 16;
    // A program file of this platform is none of the operating systems the block can name.
    block.fileOs = 0;
    block.fileType = kTypeApp;
    return Load(QCoreApplication::applicationFilePath(), block);
}

bool VersionInfo::Load(const QString& path, const FixedBlock& block) {
    if (path.isEmpty())
        return false;
    modulePath = path;
    language = 0x0409;
    codePage = 1200;
    companyName = QString::fromLatin1(buildinfo::kCompany);
    legalCopyright = QString::fromLatin1(buildinfo::kLegal);
    productName = QString::fromLatin1(buildinfo::kProduct);
    productVersion = QString::fromLatin1(buildinfo::kVersion);
    originalFileName = QFileInfo(path).fileName();
    fileDescription = productName;
    internalName = originalFileName;
    fixed = block;
    majorVersion = QString::number(block.fileVersionMs >> 16);
    minorVersion = QString::number(block.fileVersionMs & 0xFFFF);
    fileVersion = QStringLiteral("%1.%2.%3.%4")
                      .arg(block.fileVersionMs >> 16)
                      .arg(block.fileVersionMs & 0xFFFF)
                      .arg(block.fileVersionLs >> 16)
                      .arg(block.fileVersionLs & 0xFFFF);
    fileVersionText = fileVersion;
    operatingSystem = OperatingSystemText(block.fileOs);
    fileTypeText = FileTypeText(block.fileType, block.fileSubtype);
    // The date of the file as it is on the disk, in local time; a time the clock cannot show
    // both ways is not trusted.
    const QFileInfo file(path);
    if (!file.exists()) {
        fileDate = QDateTime();
        dateStatus = DateStatus::Invalid;
        return false;
    }
    // To the second, as file dates are shown; a date and time that do not give the same moment
    // back (a gap in the local clock) are not trusted.
    fileDate = QDateTime::fromSecsSinceEpoch(file.lastModified().toSecsSinceEpoch());
    dateStatus = fileDate.isValid() && QDateTime(fileDate.date(), fileDate.time()) == fileDate
                     ? DateStatus::Valid
                     : DateStatus::Invalid;
    return true;
}

} // namespace app
