#pragma once

#include <QString>
#include <QTemporaryDir>

class QFile;

#include <memory>
#include <vector>

struct zip;
struct zip_file;
struct zip_stat;

namespace util {
class Progress;
class ProgressScope;
} // namespace util

namespace questionnaire::package {

// Unpacks one package into a working folder: Open, then CheckEntries, which writes nothing and
// refuses a package that is damaged, hostile or absurdly large, then Unpack, which never writes
// outside the folder nor through a link. Open and Unpack refuse a working folder that is itself a
// link.
class PackageReader {
public:
    PackageReader(const QString& path, const QString& folder) : m_path(path), m_folder(folder) {}
    ~PackageReader();
    PackageReader(const PackageReader&) = delete;
    PackageReader& operator=(const PackageReader&) = delete;

    bool Open();
    bool CheckEntries();
    // Unpacks into a new folder inside the working folder, which stays as it was.
    bool Unpack(util::Progress* progress = nullptr);
    // Where Unpack put the files.
    const QString& UnpackedFolder() const { return m_root; }
    // The unpacked files take the place of what the working folder held, stamps apart. Until
    // then (or when the reader goes without it) a failure leaves the folder as it was.
    bool PutInPlace();
    const QString& Error() const { return m_error; }

private:
    struct Entry {
        quint64 index = 0;
        QString relative; // below the working folder, '/' separators, no trailing one
        bool isFolder = false;
        quint64 size = 0; // declared uncompressed size
    };

    bool Refuse(const QString& what, const QString& entry);
    bool Fail(const QString& text);
    // Refuses a working folder that is missing, a link or no folder at all.
    bool CheckFolder();
    bool CheckEntry(quint64 index, quint64& total);
    bool CheckData(const struct zip_stat& st, const QString& name, quint64& total);
    bool CopyData(zip_file* source, QFile& target, const Entry& entry);
    bool CannotWrite(const QFile& target);
    bool CheckLayout();
    bool UnpackEntries();
    bool MakeFolders(const QString& relative);
    bool WriteEntry(const Entry& entry);
    bool RefuseLink(const QString& path);

    QString m_path;
    QString m_folder;                       // cleaned, no trailing separator
    std::unique_ptr<QTemporaryDir> m_aside; // removed with the reader unless put in place
    QString m_root;                         // m_aside's path
    zip* m_zip = nullptr;
    std::vector<Entry> m_entries;
    util::ProgressScope* m_progress = nullptr; // while unpacking
    quint64 m_unpacked = 0;                    // bytes written so far
    QString m_error;
};

} // namespace questionnaire::package
