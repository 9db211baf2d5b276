// The exchange package (.qex): a ZIP file holding questionnaire.xml and further files, unpacked
// into the questionnaire's working folder while it is open.
#include "questionnaire/formats/ExchangePackage.h"

#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/PackageFiles.h"
#include "questionnaire/formats/PackageReader.h"
#include "questionnaire/formats/PackageWriter.h"
#include "questionnaire/formats/XmlFile.h"
#include "util/FileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <zip.h>

#include <optional>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

namespace questionnaire::package {

QByteArray ZipPath(const QString& path) {
#ifdef Q_OS_WIN
    return path.toUtf8();
#else
    return QFile::encodeName(path);
#endif
}

QString ZipErrorText(int code) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const QString text = QString::fromUtf8(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

} // namespace questionnaire::package

using namespace questionnaire;
using namespace questionnaire::package;

namespace {

// The questionnaire's XML written to `path`, streamed; a working copy, so it is renamed into
// place without waiting for the disk.
bool WriteXmlCopy(const CQuestionnaire& q, const QString& path, qint32 flags,
                  util::Progress* progress, QString& error) {
    // Unpacking never makes links, so one there was planted: nothing is written through it.
    if (QFileInfo(path).isSymLink()) {
        error = Tr(strings::kCannotWriteFileSymbolicLink).arg(path);
        return false;
    }
    util::ReplacingFile file(path);
    // -1 has every bit set, so it writes everything.
    const bool written =
        file.Open() &&
        WriteXmlDocument(
            q, (flags & kPackageWithCaptions) != 0, (flags & kPackageWithRoutings) != 0,
            [&file](const char* data, qint64 size) { return file.Write(data, size); }, progress);
    if (written && file.Commit())
        return true;
    error = file.ErrorString().isEmpty()
                ? Tr(strings::kSavingStopped).arg(path)
                : Tr(strings::kCannotWriteFile).arg(path, file.ErrorString());
    return false;
}

} // namespace

bool questionnaire::IsStampName(const QString& name) {
    // "stamp" and a number: a model or a drawing of the questionnaire's media may end in ".stp"
    // too, and is packed as any other file.
    static const QRegularExpression stamp(QStringLiteral("^stamp-?[0-9]+\\.stp$"),
                                          QRegularExpression::CaseInsensitiveOption);
    return stamp.match(name).hasMatch();
}

bool CQuestionnaire::ReadFromExchangeFormat(const QString& path, const QString& workingFolder,
                                            util::Progress* progress) {
    if (workingFolder.isEmpty()) {
        m_lastError = Tr(strings::kWorkingFolderGivenUnpackPackage).arg(path);
        return false;
    }
    const QString folder = QDir::cleanPath(QDir::fromNativeSeparators(workingFolder));
    if (!QFileInfo(folder).isDir()) {
        m_lastError = Tr(strings::kWorkingFolderDoesExist).arg(workingFolder);
        return false;
    }
    PackageReader reader(path, folder);
    if (!reader.Open() || !reader.CheckEntries()) {
        m_lastError = reader.Error();
        return false;
    }
    // Another program may be packing this folder for its save, or reading it: it finishes first,
    // and the folder stays whole for it until this program has read what it unpacked.
    const util::FolderLock lock(folder);
    // From here on the folder changes: it no longer holds what this questionnaire was read from.
    if (QDir::cleanPath(QDir::fromNativeSeparators(m_exchangeFolder)) == folder)
        m_exchangeFolder.clear();
    if (!reader.Unpack(progress)) {
        m_lastError = reader.Error();
        return false;
    }
    // Read before the unpacked files take the folder's place: a questionnaire that cannot be
    // read leaves the folder to the program that has it open.
    const util::Outcome read =
        ReadXmlFile(reader.UnpackedFolder() + QLatin1Char('/') + QLatin1String(kPackageXmlName),
                    *this, progress);
    if (!read) {
        m_lastError = Tr(strings::kPackageHoldsCannotRead)
                          .arg(path, QLatin1String(kPackageXmlName), read.Reason());
        return false;
    }
    if (!reader.PutInPlace()) {
        m_lastError = reader.Error();
        return false;
    }
    m_exchangeFolder = workingFolder;
    return true;
}

bool CQuestionnaire::SaveToExchangeFormat(const QString& path, const QString& extraFolder,
                                          qint32 flags, util::Progress* progress) {
    QMap<QString, QString> files; // sorted, so that the same folder gives the same package
    QString xmlPath;
    QTemporaryFile xmlTemporary;
    // Another program opening the same package empties and fills this folder again: it waits
    // until the folder is packed, and this save waits for its unpacking to end.
    std::optional<util::FolderLock> lock;
    if (!m_exchangeFolder.isEmpty()) {
        lock.emplace(m_exchangeFolder);
        const QString folder = QDir::cleanPath(QDir::fromNativeSeparators(m_exchangeFolder));
        xmlPath = folder + QLatin1Char('/') + QLatin1String(kPackageXmlName);
        ListFiles(folder, true, files);
    } else {
        // Without a working folder the XML is made beside the package, and goes with it.
        xmlTemporary.setFileTemplate(QFileInfo(path).absolutePath() +
                                     QStringLiteral("/.qex-xml-XXXXXX.tmp"));
        if (!xmlTemporary.open()) {
            m_lastError = Tr(strings::kCannotSavePackage).arg(path, xmlTemporary.errorString());
            return false;
        }
        xmlPath = xmlTemporary.fileName();
    }
    if (!extraFolder.isEmpty()) {
        if (!QFileInfo(extraFolder).isDir()) {
            m_lastError = Tr(strings::kFolderPackIntoDoesExist).arg(extraFolder, path);
            return false;
        }
        ListFiles(QDir::cleanPath(QDir::fromNativeSeparators(extraFolder)), false, files);
    }
    files.remove(QLatin1String(kPackageXmlName)); // the questionnaire's own, packed first
    if (!WriteXmlCopy(*this, xmlPath, flags, progress, m_lastError))
        return false;
    PackageWriter writer(path);
    if (!writer.Write(xmlPath, files, progress)) {
        m_lastError = writer.Error();
        return false;
    }
    return true;
}
