#include "exchange/WorkingFolder.h"

#include "questionnaire/formats/ExchangePackage.h"

#include "util/FileSystem.h"
#include "util/OleDate.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

#include <bit>
#include <cmath>
#include <cstring>

namespace exchange {

namespace {

constexpr qint64 kStampSize = 8;
// Another run still counts as working in the folder until its stamp is this old.
constexpr double kProtectingHours = 3.0;
constexpr double kHalfSecondInDays = 0.5 / 86400.0;

QByteArray EncodeStamp(double oleDate) {
    const quint64 bits = qToLittleEndian(std::bit_cast<quint64>(oleDate));
    return QByteArray(reinterpret_cast<const char*>(&bits), kStampSize);
}

// A short stamp is read as far as it goes, the missing bytes being zero.
double DecodeStamp(const QByteArray& bytes) {
    quint64 bits = 0;
    std::memcpy(&bits, bytes.constData(), size_t(qMin(qint64(bytes.size()), kStampSize)));
    return std::bit_cast<double>(qFromLittleEndian(bits));
}

// Whole hours between the stamp and now, rounded to the second first and then cut towards
// zero, so that a stamp from the future has a negative or zero age. Done in doubles: a stamp
// holding garbage must not overflow an integer conversion (not-a-number protects nothing).
bool StampProtects(double now, double stamp) {
    double days = util::OleDateToContinuousDays(now) - util::OleDateToContinuousDays(stamp);
    days += days >= 0 ? kHalfSecondInDays : -kHalfSecondInDays;
    return std::trunc(days * 24.0) < kProtectingHours;
}

// True when the file is a foreign stamp young enough to keep the folder; an unreadable stamp
// keeps nothing.
bool ForeignStampProtects(const QString& path, double now) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return StampProtects(now, DecodeStamp(file.read(kStampSize)));
}

// Stamps are written and removed only in a folder of that name, never through a link of that
// name: a link would have the clean-up and the unpacking work on whatever it points to. The
// trailing '/' is cut first, or the link would be followed.
bool IsOwnFolder(const QString& folder) {
    const QFileInfo info(QDir::cleanPath(folder));
    return info.isDir() && !info.isSymLink();
}

} // namespace

QDateTime StampOwner::Now() const {
    return now ? now() : QDateTime::currentDateTime();
}

QString WorkingFolderOf(const QString& questionnairePath) {
    const qsizetype dot = questionnairePath.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return {};
    return questionnairePath.left(dot) + QStringLiteral(".tmp/");
}

QString StampFileName(qint32 stampNumber) {
    return QStringLiteral("stamp%1.stp").arg(stampNumber);
}

QString PrepareWorkingFolder(const StampOwner& owner, const QString& questionnairePath) {
    const QString folder = WorkingFolderOf(questionnairePath);
    if (folder.isEmpty())
        return {};
    QDir().mkdir(folder); // an existing folder is what a second run expects to find
    WriteStamp(owner, folder);
    return folder;
}

void WriteStamp(const StampOwner& owner, const QString& workingFolder) {
    if (!IsOwnFolder(workingFolder))
        return;
    // Written beside and renamed into place: another run's clean-up must never catch the stamp
    // empty, which would read as a date long past and let it delete the folder.
    QSaveFile file(workingFolder + StampFileName(owner.stampNumber));
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly))
        return;
    if (file.write(EncodeStamp(util::ToOleDate(owner.Now()))) != kStampSize) {
        file.cancelWriting();
        return;
    }
    file.commit();
}

void CleanWorkingFolder(const StampOwner& owner, const QString& questionnairePath) {
    const QString folder = WorkingFolderOf(questionnairePath);
    if (!IsOwnFolder(folder))
        return;
    const QString ownStamp = StampFileName(owner.stampNumber);
    const double now = util::ToOleDate(owner.Now());
    // Visited in the order the file system lists them: whether this run's stamp goes before a
    // young foreign one stops the clean-up depends on that order alone.
    QDirIterator it(folder, {QStringLiteral("*.stp")}, QDir::Files | QDir::Hidden | QDir::System);
    while (it.hasNext()) {
        it.next();
        // Only regular files named as stamps are: reading a pipe of that name would wait forever,
        // and a drawing unpacked as "plan.stp" holds no time.
        const QFileInfo entry = it.fileInfo();
        if (!entry.isFile() || entry.isSymLink() || !questionnaire::IsStampName(it.fileName()))
            continue;
        if (it.fileName().compare(ownStamp, Qt::CaseInsensitive) == 0)
            QFile::remove(it.filePath());
        else if (ForeignStampProtects(it.filePath(), now))
            return;
    }
    util::DeleteFolder(folder);
}

} // namespace exchange
