// Unpacking checks every entry before it writes anything and never writes outside the working
// folder.
#include "questionnaire/formats/PackageReader.h"

#include "questionnaire/Strings.h"
#include "questionnaire/formats/ExchangePackage.h"
#include "questionnaire/formats/PackageFiles.h"
#include "util/Progress.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>

#include <zip.h>

#include <memory>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

namespace questionnaire::package {

namespace {

// File type bits of a Unix mode, kept in the upper half of a ZIP entry's external attributes.
constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixSymLink = 0120000;
constexpr qsizetype kCopyChunk = qsizetype(1) << 20;

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
        return Tr(strings::kEmptyName);
    QString path = SlashedName(name);
    const bool drive = path.size() >= 2 && path[1] == QLatin1Char(':') && IsAsciiLetter(path[0]);
    if (path.startsWith(QLatin1Char('/')) || drive)
        return Tr(strings::kAbsoluteName);
    if (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    const QStringList parts = path.split(QLatin1Char('/'));
    if (parts.contains(QLatin1String("..")))
        return Tr(strings::kPathComponent);
    // "a//b" and "./a" would name the same place as "a/b" and "a" and slip past the
    // duplicate check.
    if (parts.contains(QString()) || parts.contains(QLatin1String(".")))
        return Tr(strings::kEmptyPathComponent);
    return {};
}

bool IsSymLinkEntry(zip_t* zip, zip_uint64_t index) {
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(zip, index, 0, &system, &attributes) != 0)
        return false;
    return system == ZIP_OPSYS_UNIX && ((attributes >> 16) & kUnixTypeMask) == kUnixSymLink;
}

QFileInfoList FolderItems(const QString& folder) {
    return QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                      QDir::NoDotAndDotDot);
}

// Removes everything in `folder` except the stamps at its top and the item named `keep`. Links
// are removed, never followed (QDir::removeRecursively does not follow them either).
bool EmptyFolder(const QString& folder, QString& failed, const QString& keep = QString()) {
    for (const QFileInfo& item : FolderItems(folder)) {
        const bool realFolder = item.isDir() && !item.isSymLink();
        if ((!realFolder && IsStampName(item.fileName())) || item.fileName() == keep)
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

} // namespace

PackageReader::~PackageReader() {
    if (m_zip)
        zip_discard(m_zip);
}

bool PackageReader::Refuse(const QString& what, const QString& entry) {
    m_error = Tr(strings::kPackageHoldsNothingUnpacked).arg(m_path, what, entry);
    return false;
}

bool PackageReader::Fail(const QString& text) {
    m_error = text;
    return false;
}

// The folder's own name, not where a link of that name leads: emptying through a link would
// empty whatever it points to.
bool PackageReader::CheckFolder() {
    const QFileInfo info(m_folder);
    if (info.isSymLink())
        return Fail(Tr(strings::kWorkingFolderSymbolicLink).arg(m_folder));
    if (!info.isDir())
        return Fail(Tr(strings::kWorkingFolderDoesExist).arg(m_folder));
    return true;
}

bool PackageReader::Open() {
    if (!CheckFolder())
        return false;
    if (!QFileInfo(m_path).isFile())
        return Fail(Tr(strings::kPackageDoesExist).arg(m_path));
    int code = ZIP_ER_OK;
    // Without ZIP_CHECKCONS libzip lets duplicate names through, so that our own check can
    // name the entry instead of failing with a bare "file already exists".
    m_zip = zip_open(ZipPath(m_path).constData(), ZIP_RDONLY, &code);
    if (m_zip)
        return true;
    return Fail(Tr(strings::kFileCannotOpenedPackage).arg(m_path, ZipErrorText(code)));
}

bool PackageReader::CheckEntries() {
    const zip_int64_t count = zip_get_num_entries(m_zip, 0);
    if (count > kMaxPackageEntries) {
        return Fail(Tr(strings::kPackageHoldsEntriesMoreThan)
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

bool PackageReader::CheckEntry(quint64 index, quint64& total) {
    const char* raw = zip_get_name(m_zip, index, 0);
    if (!raw)
        return Refuse(Tr(strings::kEntryWithoutReadableName), QString::number(index));
    const QString name = QString::fromUtf8(raw);
    const QString problem = NameProblem(name);
    if (!problem.isEmpty())
        return Refuse(Tr(strings::kEntryWith).arg(problem), name);
    if (IsSymLinkEntry(m_zip, index))
        return Refuse(Tr(strings::kEntrySymbolicLink), name);
    Entry entry;
    entry.index = index;
    entry.relative = SlashedName(name);
    entry.isFolder = entry.relative.endsWith(QLatin1Char('/'));
    if (entry.isFolder) {
        entry.relative.chop(1);
    } else {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(m_zip, index, 0, &st) != 0)
            return Refuse(Tr(strings::kEntryWhoseHeaderCannotRead), name);
        if (!CheckData(st, name, total))
            return false;
        entry.size = st.size;
    }
    m_entries.push_back(entry);
    return true;
}

bool PackageReader::CheckData(const struct zip_stat& st, const QString& name, quint64& total) {
    if ((st.valid & ZIP_STAT_ENCRYPTION_METHOD) && st.encryption_method != ZIP_EM_NONE)
        return Refuse(Tr(strings::kEncryptedEntry), name);
    if (!(st.valid & ZIP_STAT_COMP_METHOD) || !zip_compression_method_supported(st.comp_method, 0))
        return Refuse(Tr(strings::kEntryPackedMethodProgramCannot), name);
    if (!(st.valid & ZIP_STAT_SIZE) || !(st.valid & ZIP_STAT_COMP_SIZE))
        return Refuse(Tr(strings::kEntryUnknownSize), name);
    if (st.size > kMaxPackageEntrySize) {
        return Refuse(
            Tr(strings::kEntryDeclaredLargerThanGiB).arg(kMaxPackageEntrySize >> 30).arg(st.size),
            name);
    }
    total += st.size; // cannot overflow: each size is at most 1 GiB and there are few entries
    if (total > kMaxPackageTotalSize) {
        return Refuse(Tr(strings::kMoreThanGiBDataAll).arg(kMaxPackageTotalSize >> 30), name);
    }
    // comp_size < size <= 1 GiB here, so the product cannot overflow.
    if (st.size > kPackageRatioCheckedAbove && st.comp_size < st.size &&
        st.size > st.comp_size * kMaxPackageRatio) {
        return Refuse(Tr(strings::kEntryCompressedMoreThanLikely).arg(kMaxPackageRatio), name);
    }
    return true;
}

// Names unique once separators are unified, no name both a file and a folder, and the
// questionnaire itself present.
bool PackageReader::CheckLayout() {
    QSet<QString> names;
    QSet<QString> folders;
    bool hasXml = false;
    for (const Entry& entry : m_entries) {
        if (names.contains(entry.relative))
            return Refuse(Tr(strings::kTwoEntriesSameName), entry.relative);
        names.insert(entry.relative);
        if (entry.isFolder)
            folders.insert(entry.relative);
        for (qsizetype cut = entry.relative.indexOf(QLatin1Char('/')); cut >= 0;
             cut = entry.relative.indexOf(QLatin1Char('/'), cut + 1))
            folders.insert(entry.relative.left(cut));
        hasXml = hasXml || (!entry.isFolder && entry.relative == QLatin1String(kPackageXmlName));
    }
    for (const Entry& entry : m_entries) {
        if (!entry.isFolder && folders.contains(entry.relative))
            return Refuse(Tr(strings::kEntryBothFileFolder), entry.relative);
    }
    if (!hasXml) {
        return Fail(
            Tr(strings::kPackageHoldsNoQuestionnaire).arg(m_path, QLatin1String(kPackageXmlName)));
    }
    return true;
}

bool PackageReader::Unpack(util::Progress* progress) {
    if (!CheckFolder()) // again: it may have been replaced since Open
        return false;
    // Unpacked aside first: a package that fails or is stopped part-way, or whose questionnaire
    // cannot be read, leaves the folder as it was, for another program with the package open
    // may pack it at its next save.
    const QString aside =
        m_folder + QLatin1Char('/') + QLatin1String(kUnpackingPrefix) + QStringLiteral("XXXXXX");
    m_aside = std::make_unique<QTemporaryDir>(aside);
    if (!m_aside->isValid())
        return Fail(Tr(strings::kCannotCreateFolderWhileUnpacking).arg(aside, m_path));
    m_root = m_aside->path();
    quint64 total = 0;
    for (const Entry& entry : m_entries)
        total += entry.size;
    util::ProgressScope scope(progress, Tr(strings::kUnpackingQuestionnaire), qint64(total));
    m_progress = &scope;
    m_unpacked = 0;
    return UnpackEntries();
}

bool PackageReader::UnpackEntries() {
    for (const Entry& entry : m_entries) {
        // A stamp of another running instance may have that name; stamps never travel.
        if (!entry.isFolder && !entry.relative.contains(QLatin1Char('/')) &&
            IsStampName(entry.relative))
            continue;
        if (!(entry.isFolder ? MakeFolders(entry.relative) : WriteEntry(entry)))
            return false;
    }
    return true;
}

bool PackageReader::PutInPlace() {
    const QFileInfoList items = FolderItems(m_root);
    // Emptying keeps stamps (and links of a stamp's name): a package folder of such a name could
    // not take its place, and is refused before anything changes.
    for (const QFileInfo& item : items) {
        const QString target = m_folder + QLatin1Char('/') + item.fileName();
        const QFileInfo there(target);
        if (there.isSymLink() && IsStampName(item.fileName()))
            return RefuseLink(target);
        if (there.exists() && IsStampName(item.fileName()))
            return Fail(Tr(strings::kCannotCreateFolderWhileUnpacking).arg(target, m_path));
    }
    QString failed;
    if (!EmptyFolder(m_folder, failed, QFileInfo(m_root).fileName()))
        return Fail(Tr(strings::kCannotEmptyWorkingFolder).arg(m_folder, failed));
    for (const QFileInfo& item : items) {
        const QString target = m_folder + QLatin1Char('/') + item.fileName();
        if (!QDir().rename(item.filePath(), target))
            return Fail(Tr(strings::kCannotCreateFolderWhileUnpacking).arg(target, m_path));
    }
    return true;
}

bool PackageReader::RefuseLink(const QString& path) {
    return Fail(Tr(strings::kCannotUnpackPackageInsideWorking).arg(m_path, path));
}

bool PackageReader::MakeFolders(const QString& relative) {
    QString path = m_root;
    for (const QString& part : relative.split(QLatin1Char('/'))) {
        path += QLatin1Char('/') + part;
        const QFileInfo info(path);
        if (info.isSymLink())
            return RefuseLink(path);
        if (info.isDir())
            continue;
        if (info.exists() || !QDir().mkdir(path)) {
            return Fail(Tr(strings::kCannotCreateFolderWhileUnpacking).arg(path, m_path));
        }
    }
    return true;
}

bool PackageReader::WriteEntry(const Entry& entry) {
    const qsizetype cut = entry.relative.lastIndexOf(QLatin1Char('/'));
    if (cut > 0 && !MakeFolders(entry.relative.left(cut)))
        return false;
    const QString target = m_root + QLatin1Char('/') + entry.relative;
    if (QFileInfo(target).isSymLink())
        return RefuseLink(target);
    QFile file(target);
    // NewOnly creates the file or fails: it never opens a file or a link planted meanwhile.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return Fail(
            Tr(strings::kCannotCreateFileWhileUnpacking).arg(target, m_path, file.errorString()));
    }
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> source(
        zip_fopen_index(m_zip, entry.index, 0), zip_fclose);
    if (!source) {
        return Fail(Tr(strings::kCannotReadEntryPackage)
                        .arg(entry.relative, m_path, QString::fromUtf8(zip_strerror(m_zip))));
    }
    return CopyData(source.get(), file, entry);
}

bool PackageReader::CopyData(zip_file* source, QFile& target, const Entry& entry) {
    QByteArray buffer(kCopyChunk, Qt::Uninitialized);
    quint64 copied = 0;
    for (;;) {
        const zip_int64_t read = zip_fread(source, buffer.data(), zip_uint64_t(buffer.size()));
        if (read < 0) {
            return Fail(
                Tr(strings::kCannotReadEntryPackage)
                    .arg(entry.relative, m_path, QString::fromUtf8(zip_file_strerror(source))));
        }
        if (read == 0)
            break;
        copied += quint64(read);
        // The limits were checked on the declared size, so the data may not outgrow it.
        if (copied > entry.size) {
            return Fail(Tr(strings::kEntryPackageHoldsMoreBytes)
                            .arg(entry.relative, m_path)
                            .arg(entry.size));
        }
        // A short write (a full disk, a size limit) fails here: a close that then succeeds would
        // forget the error, and a file cut short would be packed at the next save.
        if (target.write(buffer.constData(), read) != read)
            return CannotWrite(target);
        m_unpacked += quint64(read);
        if (!m_progress->Advance(qint64(m_unpacked)))
            return Fail(Tr(strings::kUnpackingStopped).arg(m_path));
    }
    if (!target.flush())
        return CannotWrite(target);
    target.close();
    if (target.error() != QFileDevice::NoError)
        return CannotWrite(target);
    return true;
}

bool PackageReader::CannotWrite(const QFile& target) {
    return Fail(Tr(strings::kCannotWriteFileWhileUnpacking)
                    .arg(target.fileName(), m_path, target.errorString()));
}

} // namespace questionnaire::package
