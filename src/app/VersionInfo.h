#pragma once

#include <QDateTime>
#include <QString>

namespace app {

// The program's own version information: the facts compiled into it, the derived version texts,
// and the date of its executable file, read once at start-up for the about box.
class VersionInfo {
public:
    // The fixed part of the version information.
    struct FixedBlock {
        quint32 fileVersionMs = 0; // major << 16 | minor
        quint32 fileVersionLs = 0; // patch << 16 | build
        quint32 fileOs = 0;
        quint32 fileType = 0;
        quint32 fileSubtype = 0;
    };
    enum class DateStatus { Null, Valid, Invalid };

    // Reads the version information of the running program; false when its file cannot be
    // found or the compiled-in facts are missing.
    bool Load();
    // The same from given facts and a given file: what Load does, for any program file.
    bool Load(const QString& modulePath, const FixedBlock& fixed);

    QString modulePath;
    quint16 language = 0; // of the version texts: English (United States)
    quint16 codePage = 0; // Unicode
    QString companyName, legalCopyright, productName, productVersion, originalFileName,
        fileDescription, fileVersionText, internalName;
    FixedBlock fixed;
    QString majorVersion;    // "%d"
    QString minorVersion;    // "%d"
    QString fileVersion;     // "%d.%d.%d.%d"
    QString operatingSystem; // what the file runs on, in words
    QString fileTypeText;    // what the file is, in words
    QDateTime fileDate;      // the file's last write, local time
    DateStatus dateStatus = DateStatus::Null;

    // The descriptive texts of the fixed block's operating-system and type fields.
    static QString OperatingSystemText(quint32 fileOs);
    static QString FileTypeText(quint32 fileType, quint32 fileSubtype);
};

} // namespace app
