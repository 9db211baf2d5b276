#include "questionnaire/formats/PackageWriter.h"

#include "questionnaire/Strings.h"
#include "questionnaire/formats/ExchangePackage.h"
#include "questionnaire/formats/PackageFiles.h"
#include "util/FileSystem.h"
#include "util/Progress.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <zip.h>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

namespace questionnaire::package {

namespace {

// The level "zip -6" and most packers use: a tenth smaller files would cost three times as long.
constexpr zip_uint32_t kDeflateLevel = 6;

struct ProgressState {
    util::ProgressScope scope;
    ProgressState(util::Progress* progress, const QString& what) : scope(progress, what, 1000) {}
};

} // namespace

void ListFiles(const QString& folder, bool skipStamps, QMap<QString, QString>& files) {
    // Names are made relative to an absolute root: a relative folder would otherwise give every
    // file its own path as it stands, folder and all.
    const QDir root(QFileInfo(folder).absoluteFilePath());
    // Without FollowSymlinks the walk does not descend into linked folders either.
    QDirIterator it(root.path(), QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString name = root.relativeFilePath(file);
        // Nor what an unpacking that never finished (its program ended) left behind.
        if (skipStamps && (name.startsWith(QLatin1String(kUnpackingPrefix)) ||
                           (!name.contains(QLatin1Char('/')) && IsStampName(name))))
            continue;
        files.insert(name, file);
    }
}

PackageWriter::~PackageWriter() {
    if (m_zip)
        zip_discard(m_zip);
    if (!m_temporary.isEmpty())
        QFile::remove(m_temporary);
}

bool PackageWriter::Write(const QString& xmlFile, const QMap<QString, QString>& files,
                          util::Progress* progress) {
    if (!Begin())
        return false;
    // The questionnaire comes first so that a reader meets it before the media.
    if (!Add(QLatin1String(kPackageXmlName),
             zip_source_file(m_zip, ZipPath(xmlFile).constData(), 0, 0)))
        return false;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (!Add(it.key(), zip_source_file(m_zip, ZipPath(it.value()).constData(), 0, 0)))
            return false;
    }
    return Finish(progress);
}

PackageWriter::PackageWriter(const QString& target)
    : m_target(target), m_destination(util::ReplacementTarget(target)) {}

bool PackageWriter::Begin() {
    m_error = util::ReplaceRefusal(m_destination, m_target);
    if (!m_error.isEmpty())
        return false;
    // A short name, so that a target whose name is near the length limit can still be saved.
    const QString folder = QFileInfo(m_destination).absolutePath();
    QTemporaryFile reserved(folder + QStringLiteral("/.qex-XXXXXX.tmp"));
    reserved.setAutoRemove(false);
    if (!reserved.open()) {
        m_error = Tr(strings::kCannotSavePackageTemporaryFile)
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
        m_error = Tr(strings::kCannotSavePackage).arg(m_target, ZipErrorText(code));
        return false;
    }
    return true;
}

bool PackageWriter::Add(const QString& name, zip_source* source) {
    zip_int64_t index = -1;
    if (source) {
        index = zip_file_add(m_zip, name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0)
            zip_source_free(source);
    }
    if (index >= 0 &&
        zip_set_file_compression(m_zip, zip_uint64_t(index), ZIP_CM_DEFLATE, kDeflateLevel) == 0)
        return true;
    m_error =
        Tr(strings::kCannotAddPackage).arg(name, m_target, QString::fromUtf8(zip_strerror(m_zip)));
    return false;
}

bool PackageWriter::Finish(util::Progress* progress) {
    // libzip compresses while it closes: that is where the time goes, and where it can stop.
    ProgressState state(progress, Tr(strings::kPackingQuestionnaire));
    if (progress) {
        zip_register_progress_callback_with_state(
            m_zip, 0.001,
            [](zip_t*, double done, void* data) {
                static_cast<ProgressState*>(data)->scope.Advance(qint64(done * 1000));
            },
            nullptr, &state);
        zip_register_cancel_callback_with_state(
            m_zip,
            [](zip_t*, void* data) {
                return static_cast<ProgressState*>(data)->scope.Cancelled() ? 1 : 0;
            },
            nullptr, &state);
    }
    if (zip_close(m_zip) != 0) {
        // The archive stays open after a failed close; the destructor discards it.
        m_error = state.scope.Cancelled()
                      ? Tr(strings::kSavingStopped).arg(m_target)
                      : Tr(strings::kCannotSavePackage)
                            .arg(m_target, QString::fromUtf8(zip_strerror(m_zip)));
        return false;
    }
    m_zip = nullptr;
    QFile::setPermissions(m_temporary, util::ReplacementPermissions(m_destination));
    QString failure;
    if (!util::ReplaceFile(m_temporary, m_destination, &failure)) {
        m_error = Tr(strings::kCannotSavePackage).arg(m_target, failure);
        return false;
    }
    m_temporary.clear();
    return true;
}

} // namespace questionnaire::package
