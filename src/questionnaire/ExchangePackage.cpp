// The exchange package (.qex): a ZIP file holding questionnaire.xml and further files. Unpacking
// checks every entry before it writes anything and never writes outside the working folder;
// packing writes a new archive beside the target and renames it over the target when complete.
#include "questionnaire/ExchangePackage.h"

#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/XmlFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>
#include <QSet>
#include <QTemporaryFile>
#include <QtEndian>

#include <zip.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

using namespace questionnaire;

namespace {

// File type bits of a Unix mode, kept in the upper half of a ZIP entry's external attributes.
constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixSymLink = 0120000;
constexpr qsizetype kCopyChunk = 64 * 1024;

// libzip takes UTF-8 names on Windows and the local encoding elsewhere.
QByteArray ZipPath(const QString& path) {
#ifdef Q_OS_WIN
    return path.toUtf8();
#else
    return QFile::encodeName(path);
#endif
}

std::filesystem::path FileSystemPath(const QString& path) {
#ifdef Q_OS_WIN
    return std::filesystem::path(path.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(path).toStdString());
#endif
}

QString ZipErrorText(int code) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const QString text = QString::fromUtf8(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

bool IsStampName(const QString& name) {
    return name.endsWith(QLatin1String(kStampSuffix), Qt::CaseInsensitive);
}

bool IsAsciiLetter(QChar c) {
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
           (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
}

// An entry name with '/' for every separator; other tools write backslashes and some readers
// honour them, so they count as separators here too.
QString SlashedName(const QString& name) {
    QString path = name;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return path;
}

// Why an entry name cannot be unpacked, or "" when it names a place inside the folder.
QString NameProblem(const QString& name) {
    // libzip hands names over as C strings, so a NUL byte can only cut a name short (or, in a
    // name not marked UTF-8, turn into a CP437 character); what is left passes these checks.
    if (name.isEmpty())
        return QStringLiteral("an empty name");
    QString path = SlashedName(name);
    const bool drive = path.size() >= 2 && path[1] == QLatin1Char(':') && IsAsciiLetter(path[0]);
    if (path.startsWith(QLatin1Char('/')) || drive)
        return QStringLiteral("an absolute name");
    if (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    const QStringList parts = path.split(QLatin1Char('/'));
    if (parts.contains(QLatin1String("..")))
        return QStringLiteral("a '..' path component");
    // "a//b" and "./a" would name the same place as "a/b" and "a" and slip past the
    // duplicate check.
    if (parts.contains(QString()) || parts.contains(QLatin1String(".")))
        return QStringLiteral("an empty or '.' path component");
    return {};
}

bool IsSymLinkEntry(zip_t* zip, zip_uint64_t index) {
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(zip, index, 0, &system, &attributes) != 0)
        return false;
    return system == ZIP_OPSYS_UNIX && ((attributes >> 16) & kUnixTypeMask) == kUnixSymLink;
}

// Removes everything in `folder` except the stamps at its top. Links are removed, never
// followed (QDir::removeRecursively does not follow them either).
bool EmptyFolder(const QString& folder, QString& failed) {
    const QFileInfoList items = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& item : items) {
        const bool realFolder = item.isDir() && !item.isSymLink();
        if (!realFolder && IsStampName(item.fileName()))
            continue;
        const bool removed =
            realFolder ? QDir(item.filePath()).removeRecursively() : QFile::remove(item.filePath());
        if (!removed) {
            failed = item.filePath();
            return false;
        }
    }
    return true;
}

struct PackageEntry {
    zip_uint64_t index = 0;
    QString relative; // below the working folder, '/' separators, no trailing one
    bool isFolder = false;
    quint64 size = 0; // declared uncompressed size
};

// Unpacks one package into a working folder: Open, CheckEntries (writes nothing), Unpack.
class PackageReader {
public:
    PackageReader(const QString& path, const QString& folder) : m_path(path), m_folder(folder) {}
    ~PackageReader() {
        if (m_zip)
            zip_discard(m_zip);
    }
    PackageReader(const PackageReader&) = delete;
    PackageReader& operator=(const PackageReader&) = delete;

    bool Open();
    bool CheckEntries();
    bool Unpack();
    const QString& Error() const { return m_error; }

private:
    bool Refuse(const QString& what, const QString& entry);
    bool Fail(const QString& text);
    bool CheckEntry(zip_uint64_t index, quint64& total);
    bool CheckData(const zip_stat_t& st, const QString& name, quint64& total);
    bool CheckLayout();
    bool MakeFolders(const QString& relative);
    bool WriteEntry(const PackageEntry& entry);
    bool CopyData(zip_file_t* source, QFile& target, const PackageEntry& entry);
    bool RefuseLink(const QString& path);

    QString m_path;
    QString m_folder; // cleaned, no trailing separator
    zip_t* m_zip = nullptr;
    std::vector<PackageEntry> m_entries;
    QString m_error;
};

bool PackageReader::Refuse(const QString& what, const QString& entry) {
    m_error = QStringLiteral("The package '%1' holds %2: '%3'. Nothing was unpacked.")
                  .arg(m_path, what, entry);
    return false;
}

bool PackageReader::Fail(const QString& text) {
    m_error = text;
    return false;
}

bool PackageReader::Open() {
    if (!QFileInfo(m_path).isFile())
        return Fail(QStringLiteral("The package '%1' does not exist.").arg(m_path));
    int code = ZIP_ER_OK;
    // Without ZIP_CHECKCONS libzip lets duplicate names through, so that our own check can
    // name the entry instead of failing with a bare "file already exists".
    m_zip = zip_open(ZipPath(m_path).constData(), ZIP_RDONLY, &code);
    if (m_zip)
        return true;
    return Fail(QStringLiteral("The file '%1' cannot be opened as a package: %2.")
                    .arg(m_path, ZipErrorText(code)));
}

bool PackageReader::CheckEntries() {
    const zip_int64_t count = zip_get_num_entries(m_zip, 0);
    if (count > kMaxPackageEntries) {
        return Fail(QStringLiteral("The package '%1' holds %2 entries, more than the %3 allowed. "
                                   "Nothing was unpacked.")
                        .arg(m_path)
                        .arg(count)
                        .arg(kMaxPackageEntries));
    }
    quint64 total = 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        if (!CheckEntry(zip_uint64_t(i), total))
            return false;
    }
    return CheckLayout();
}

bool PackageReader::CheckEntry(zip_uint64_t index, quint64& total) {
    const char* raw = zip_get_name(m_zip, index, 0);
    if (!raw)
        return Refuse(QStringLiteral("an entry without a readable name"), QString::number(index));
    const QString name = QString::fromUtf8(raw);
    const QString problem = NameProblem(name);
    if (!problem.isEmpty())
        return Refuse(QStringLiteral("an entry with %1").arg(problem), name);
    if (IsSymLinkEntry(m_zip, index))
        return Refuse(QStringLiteral("an entry that is a symbolic link"), name);
    PackageEntry entry;
    entry.index = index;
    entry.relative = SlashedName(name);
    entry.isFolder = entry.relative.endsWith(QLatin1Char('/'));
    if (entry.isFolder) {
        entry.relative.chop(1);
    } else {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(m_zip, index, 0, &st) != 0)
            return Refuse(QStringLiteral("an entry whose header cannot be read"), name);
        if (!CheckData(st, name, total))
            return false;
        entry.size = st.size;
    }
    m_entries.push_back(entry);
    return true;
}

bool PackageReader::CheckData(const zip_stat_t& st, const QString& name, quint64& total) {
    if ((st.valid & ZIP_STAT_ENCRYPTION_METHOD) && st.encryption_method != ZIP_EM_NONE)
        return Refuse(QStringLiteral("an encrypted entry"), name);
    if (!(st.valid & ZIP_STAT_COMP_METHOD) || !zip_compression_method_supported(st.comp_method, 0))
        return Refuse(QStringLiteral("an entry packed with a method this program cannot read"),
                      name);
    if (!(st.valid & ZIP_STAT_SIZE) || !(st.valid & ZIP_STAT_COMP_SIZE))
        return Refuse(QStringLiteral("an entry of unknown size"), name);
    if (st.size > kMaxPackageEntrySize) {
        return Refuse(QStringLiteral("an entry declared larger than %1 GiB (%2 bytes)")
                          .arg(kMaxPackageEntrySize >> 30)
                          .arg(st.size),
                      name);
    }
    total += st.size; // cannot overflow: each size is at most 1 GiB and there are few entries
    if (total > kMaxPackageTotalSize) {
        return Refuse(QStringLiteral("more than %1 GiB of data in all, reached at the entry")
                          .arg(kMaxPackageTotalSize >> 30),
                      name);
    }
    // comp_size < size <= 1 GiB here, so the product cannot overflow.
    if (st.size > kPackageRatioCheckedAbove && st.comp_size < st.size &&
        st.size > st.comp_size * kMaxPackageRatio) {
        return Refuse(QStringLiteral("an entry compressed more than %1:1, a likely ZIP bomb")
                          .arg(kMaxPackageRatio),
                      name);
    }
    return true;
}

// Names unique once separators are unified, no name both a file and a folder, and the
// questionnaire itself present.
bool PackageReader::CheckLayout() {
    QSet<QString> names;
    QSet<QString> folders;
    bool hasXml = false;
    for (const PackageEntry& entry : m_entries) {
        if (names.contains(entry.relative))
            return Refuse(QStringLiteral("two entries with the same name"), entry.relative);
        names.insert(entry.relative);
        if (entry.isFolder)
            folders.insert(entry.relative);
        for (qsizetype cut = entry.relative.indexOf(QLatin1Char('/')); cut >= 0;
             cut = entry.relative.indexOf(QLatin1Char('/'), cut + 1))
            folders.insert(entry.relative.left(cut));
        hasXml = hasXml || (!entry.isFolder && entry.relative == QLatin1String(kPackageXmlName));
    }
    for (const PackageEntry& entry : m_entries) {
        if (!entry.isFolder && folders.contains(entry.relative))
            return Refuse(QStringLiteral("an entry that is both a file and a folder"),
                          entry.relative);
    }
    if (!hasXml) {
        return Fail(QStringLiteral("The package '%1' holds no %2. Nothing was unpacked.")
                        .arg(m_path, QLatin1String(kPackageXmlName)));
    }
    return true;
}

bool PackageReader::Unpack() {
    QString failed;
    if (!EmptyFolder(m_folder, failed)) {
        return Fail(QStringLiteral("Cannot empty the working folder '%1': '%2' cannot be removed.")
                        .arg(m_folder, failed));
    }
    for (const PackageEntry& entry : m_entries) {
        // A stamp of another running instance may have that name; stamps never travel.
        if (!entry.isFolder && !entry.relative.contains(QLatin1Char('/')) &&
            IsStampName(entry.relative))
            continue;
        const bool done = entry.isFolder ? MakeFolders(entry.relative) : WriteEntry(entry);
        if (!done) {
            EmptyFolder(m_folder, failed); // a half-unpacked folder is of no use to anyone
            return false;
        }
    }
    return true;
}

bool PackageReader::RefuseLink(const QString& path) {
    return Fail(QStringLiteral("Cannot unpack the package '%1': '%2' inside the working folder is "
                               "a symbolic link, and nothing is written through links.")
                    .arg(m_path, path));
}

bool PackageReader::MakeFolders(const QString& relative) {
    QString path = m_folder;
    for (const QString& part : relative.split(QLatin1Char('/'))) {
        path += QLatin1Char('/') + part;
        const QFileInfo info(path);
        if (info.isSymLink())
            return RefuseLink(path);
        if (info.isDir())
            continue;
        if (info.exists() || !QDir().mkdir(path)) {
            return Fail(QStringLiteral("Cannot create the folder '%1' while unpacking the "
                                       "package '%2'.")
                            .arg(path, m_path));
        }
    }
    return true;
}

bool PackageReader::WriteEntry(const PackageEntry& entry) {
    const qsizetype cut = entry.relative.lastIndexOf(QLatin1Char('/'));
    if (cut > 0 && !MakeFolders(entry.relative.left(cut)))
        return false;
    const QString target = m_folder + QLatin1Char('/') + entry.relative;
    if (QFileInfo(target).isSymLink())
        return RefuseLink(target);
    QFile file(target);
    // NewOnly creates the file or fails: it never opens a file or a link planted meanwhile.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return Fail(QStringLiteral("Cannot create the file '%1' while unpacking the package "
                                   "'%2': %3")
                        .arg(target, m_path, file.errorString()));
    }
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> source(
        zip_fopen_index(m_zip, entry.index, 0), zip_fclose);
    if (!source) {
        return Fail(QStringLiteral("Cannot read the entry '%1' of the package '%2': %3")
                        .arg(entry.relative, m_path, QString::fromUtf8(zip_strerror(m_zip))));
    }
    return CopyData(source.get(), file, entry);
}

bool PackageReader::CopyData(zip_file_t* source, QFile& target, const PackageEntry& entry) {
    QByteArray buffer(kCopyChunk, Qt::Uninitialized);
    quint64 copied = 0;
    for (;;) {
        const zip_int64_t read = zip_fread(source, buffer.data(), zip_uint64_t(buffer.size()));
        if (read < 0) {
            return Fail(
                QStringLiteral("Cannot read the entry '%1' of the package '%2': %3")
                    .arg(entry.relative, m_path, QString::fromUtf8(zip_file_strerror(source))));
        }
        if (read == 0)
            break;
        copied += quint64(read);
        // The limits were checked on the declared size, so the data may not outgrow it.
        if (copied > entry.size) {
            return Fail(QStringLiteral("The entry '%1' of the package '%2' holds more bytes than "
                                       "the %3 it declares; unpacking stopped.")
                            .arg(entry.relative, m_path)
                            .arg(entry.size));
        }
        if (target.write(buffer.constData(), read) != read)
            break;
    }
    target.close();
    if (target.error() != QFileDevice::NoError) {
        return Fail(QStringLiteral("Cannot write the file '%1' while unpacking the package "
                                   "'%2': %3")
                        .arg(target.fileName(), m_path, target.errorString()));
    }
    return true;
}

// --- packing ---


bool WriteWorkingXml(const QString& path, const QByteArray& xml, QString& error) {
    // QSaveFile writes to the target of a link; unpacking never makes links, so one is planted.
    if (QFileInfo(path).isSymLink()) {
        error = QStringLiteral("Cannot write the file '%1': it is a symbolic link.").arg(path);
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size() || !file.commit()) {
        error = QStringLiteral("Cannot write the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

// Adds the files below `folder` to `files` (entry name -> file), named relative to the folder
// with '/' separators; links are left out, and the stamps at its top when asked.
void ListFiles(const QString& folder, bool skipStamps, QMap<QString, QString>& files) {
    const QDir root(folder);
    // Without FollowSymlinks the walk does not descend into linked folders either.
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString name = root.relativeFilePath(file);
        if (skipStamps && !name.contains(QLatin1Char('/')) && IsStampName(name))
            continue;
        files.insert(name, file);
    }
}

// Writes a new archive under a temporary name in the target's folder and renames it over the
// target only once libzip has written it whole; until then the old package stays as it was.
class PackageWriter {
public:
    explicit PackageWriter(const QString& target) : m_target(target) {}
    ~PackageWriter();
    PackageWriter(const PackageWriter&) = delete;
    PackageWriter& operator=(const PackageWriter&) = delete;

    // `xml` must stay alive until Write returns: libzip reads it while closing.
    bool Write(const QByteArray& xml, const QMap<QString, QString>& files);
    const QString& Error() const { return m_error; }

private:
    bool Begin();
    bool Add(const QString& name, zip_source_t* source);
    bool Finish();

    QString m_target;
    QString m_temporary;
    zip_t* m_zip = nullptr;
    QString m_error;
};

PackageWriter::~PackageWriter() {
    if (m_zip)
        zip_discard(m_zip);
    if (!m_temporary.isEmpty())
        QFile::remove(m_temporary);
}

bool PackageWriter::Write(const QByteArray& xml, const QMap<QString, QString>& files) {
    if (!Begin())
        return false;
    // The questionnaire comes first so that a reader meets it before the media.
    if (!Add(QLatin1String(kPackageXmlName),
             zip_source_buffer(m_zip, xml.constData(), zip_uint64_t(xml.size()), 0)))
        return false;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (!Add(it.key(), zip_source_file(m_zip, ZipPath(it.value()).constData(), 0, 0)))
            return false;
    }
    return Finish();
}

bool PackageWriter::Begin() {
    // A short name, so that a target whose name is near the length limit can still be saved.
    const QString folder = QFileInfo(m_target).absolutePath();
    QTemporaryFile reserved(folder + QStringLiteral("/.qex-XXXXXX.tmp"));
    reserved.setAutoRemove(false);
    if (!reserved.open()) {
        m_error = QStringLiteral("Cannot save the package '%1': no temporary file can be created "
                                 "in '%2': %3")
                      .arg(m_target, folder, reserved.errorString());
        return false;
    }
    m_temporary = reserved.fileName();
    reserved.close();
    // libzip creates the file itself when it closes, with the mode a new file gets; the
    // reserved file would pass on its private mode.
    QFile::remove(m_temporary);
    int code = ZIP_ER_OK;
    m_zip = zip_open(ZipPath(m_temporary).constData(), ZIP_CREATE | ZIP_EXCL, &code);
    if (!m_zip) {
        m_error =
            QStringLiteral("Cannot save the package '%1': %2.").arg(m_target, ZipErrorText(code));
        return false;
    }
    return true;
}

bool PackageWriter::Add(const QString& name, zip_source_t* source) {
    zip_int64_t index = -1;
    if (source) {
        index = zip_file_add(m_zip, name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0)
            zip_source_free(source);
    }
    if (index >= 0 && zip_set_file_compression(m_zip, zip_uint64_t(index), ZIP_CM_DEFLATE, 0) == 0)
        return true;
    m_error = QStringLiteral("Cannot add '%1' to the package '%2': %3")
                  .arg(name, m_target, QString::fromUtf8(zip_strerror(m_zip)));
    return false;
}

bool PackageWriter::Finish() {
    if (zip_close(m_zip) != 0) {
        // The archive stays open after a failed close; the destructor discards it.
        m_error = QStringLiteral("Cannot save the package '%1': %2")
                      .arg(m_target, QString::fromUtf8(zip_strerror(m_zip)));
        return false;
    }
    m_zip = nullptr;
    const QFileInfo old(m_target);
    if (old.exists())
        QFile::setPermissions(m_temporary, old.permissions());
    std::error_code failure;
    std::filesystem::rename(FileSystemPath(m_temporary), FileSystemPath(m_target), failure);
    if (failure) {
        m_error = QStringLiteral("Cannot save the package '%1': %2")
                      .arg(m_target, QString::fromStdString(failure.message()));
        return false;
    }
    m_temporary.clear();
    return true;
}

} // namespace

bool CQuestionnaire::ReadFromExchangeFormat(const QString& path, const QString& workingFolder) {
    if (workingFolder.isEmpty()) {
        m_lastError = QStringLiteral("No working folder was given to unpack the package '%1' into.")
                          .arg(path);
        return false;
    }
    const QString folder = QDir::cleanPath(QDir::fromNativeSeparators(workingFolder));
    if (!QFileInfo(folder).isDir()) {
        m_lastError = QStringLiteral("The working folder '%1' does not exist.").arg(workingFolder);
        return false;
    }
    PackageReader reader(path, folder);
    if (!reader.Open() || !reader.CheckEntries()) {
        m_lastError = reader.Error();
        return false;
    }
    // From here on the folder changes: it no longer holds what this questionnaire was read from.
    if (QDir::cleanPath(QDir::fromNativeSeparators(m_exchangeFolder)) == folder)
        m_exchangeFolder.clear();
    if (!reader.Unpack()) {
        m_lastError = reader.Error();
        return false;
    }
    if (!ReadXmlFile(folder + QLatin1Char('/') + QLatin1String(kPackageXmlName), *this)) {
        m_exchangeFolder.clear();
        m_lastError = QStringLiteral("The package '%1' holds a %2 that cannot be read: %3")
                          .arg(path, QLatin1String(kPackageXmlName), m_lastError);
        return false;
    }
    m_exchangeFolder = workingFolder;
    return true;
}

bool CQuestionnaire::SaveToExchangeFormat(const QString& path, const QString& extraFolder,
                                          qint32 flags) {
    CMarkup doc;
    // -1 has every bit set, so it writes everything.
    GetQuestionsAsXML(doc, (flags & kPackageWithCaptions) != 0,
                      (flags & kPackageWithRoutings) != 0);
    const QByteArray xml = XmlFileBytes(doc);
    QMap<QString, QString> files; // sorted, so that the same folder gives the same package
    if (!m_exchangeFolder.isEmpty()) {
        const QString folder = QDir::cleanPath(QDir::fromNativeSeparators(m_exchangeFolder));
        const QString xmlPath = folder + QLatin1Char('/') + QLatin1String(kPackageXmlName);
        if (!WriteWorkingXml(xmlPath, xml, m_lastError))
            return false;
        ListFiles(folder, true, files);
    }
    if (!extraFolder.isEmpty()) {
        if (!QFileInfo(extraFolder).isDir()) {
            m_lastError = QStringLiteral("The folder '%1' to pack into '%2' does not exist.")
                              .arg(extraFolder, path);
            return false;
        }
        ListFiles(QDir::cleanPath(QDir::fromNativeSeparators(extraFolder)), false, files);
    }
    files.remove(QLatin1String(kPackageXmlName)); // written from memory, first
    PackageWriter writer(path);
    if (!writer.Write(xml, files)) {
        m_lastError = writer.Error();
        return false;
    }
    return true;
}
