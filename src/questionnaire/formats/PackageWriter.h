#pragma once

#include <QMap>
#include <QString>

struct zip;
struct zip_source;

namespace util {
class Progress;
}

namespace questionnaire::package {

// Writes a new package under a temporary name in the target's folder and renames it over the
// target only once it is complete; until then the old package stays as it was.
class PackageWriter {
public:
    explicit PackageWriter(const QString& target);
    ~PackageWriter();
    PackageWriter(const PackageWriter&) = delete;
    PackageWriter& operator=(const PackageWriter&) = delete;

    // Packs the questionnaire's XML file first, then `files` (entry name -> file).
    bool Write(const QString& xmlFile, const QMap<QString, QString>& files,
               util::Progress* progress);
    const QString& Error() const { return m_error; }

private:
    bool Begin();
    bool Add(const QString& name, zip_source* source);
    bool Finish(util::Progress* progress);

    QString m_target;      // as the user named it
    QString m_destination; // what the rename replaces: the file a link names
    QString m_temporary;
    zip* m_zip = nullptr;
    QString m_error;
};

// Adds the files below `folder` to `files` (entry name -> file), named relative to the folder
// with '/' separators; links are left out, and the stamps at its top when asked.
void ListFiles(const QString& folder, bool skipStamps, QMap<QString, QString>& files);

} // namespace questionnaire::package
