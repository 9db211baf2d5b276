#include "app/AppContext.h"

#include "BuildInfo.h"
#include "campaign/store/CampaignQuestionnaire.h"
#include "util/FileSystem.h"
#include "util/SqlConnection.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <cstdlib>
#include <ctime>

namespace app {

namespace {
QSettings Profile() {
    return QSettings(QString::fromLatin1(buildinfo::kCompany),
                     QString::fromLatin1(buildinfo::kProduct));
}
} // namespace

QStringList RecentFiles::Files() const {
    QSettings settings = Profile();
    QStringList files;
    for (int i = 1; i <= kMaxFiles; ++i) {
        const QString file =
            settings.value(QStringLiteral("Recent File List/File%1").arg(i)).toString();
        if (!file.isEmpty())
            files.append(file);
    }
    return files;
}

QString AbsoluteLocation(const QString& location) {
    return util::sql::IsServerLocation(location) ? location
                                                 : QFileInfo(location).absoluteFilePath();
}

void RecentFiles::Add(const QString& path) {
    const QString absolute = AbsoluteLocation(path);
    QStringList files = Files();
    files.removeIf([&absolute](const QString& file) { return util::SameFile(file, absolute); });
    files.prepend(absolute);
    QSettings settings = Profile();
    for (int i = 1; i <= kMaxFiles; ++i) {
        const QString key = QStringLiteral("Recent File List/File%1").arg(i);
        if (i <= files.size())
            settings.setValue(key, files[i - 1]);
        else
            settings.remove(key);
    }
}

qint32 DrawStampNumber() {
    std::srand(unsigned(std::time(nullptr)));
    (void)std::rand();
    // The classic generator's range, 0 to 32767: stamp names stay short.
    return qint32(std::rand() & 0x7FFF);
}

AppContext::AppContext()
    : stores(questionnaire::StandardStores()), dictionaryPath(DictionaryPath()) {
    stamps.stampNumber = DrawStampNumber();
    const auto campaignStore = [] {
        return std::make_unique<campaign::CampaignQuestionnaireStore>();
    };
    stores.Register(QStringLiteral("qew"), qint16(questionnaire::FileType::Campaign),
                    campaignStore);
    // A campaign on a server is named by its connection URI.
    for (const char* scheme : {"postgresql://", "postgres://"})
        stores.RegisterPrefix(QLatin1String(scheme), qint16(questionnaire::FileType::Campaign),
                              campaignStore);
}

QString AppContext::DefaultDictionaryPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Varnel/Translator/Translator.dic");
}

QString AppContext::DictionaryPath() {
    const QString configured = Profile().value(QStringLiteral("Settings/LibraryPath")).toString();
    return configured.isEmpty() ? DefaultDictionaryPath() : configured;
}

qint32 AppContext::ProgramVersion() {
    return buildinfo::kVersionMajor * 256 + buildinfo::kVersionMinor;
}

namespace {
// One folder, however its document's path spelled it (through a link, or relative).
QString FolderKey(const QString& questionnairePath) {
    const QFileInfo folder(QDir::cleanPath(exchange::WorkingFolderOf(questionnairePath)));
    const QString canonical = folder.canonicalFilePath();
    return canonical.isEmpty() ? folder.absoluteFilePath() : canonical;
}
} // namespace

void AppContext::EnterWorkingFolder(const QString& questionnairePath) {
    ++m_workingFolderUsers[FolderKey(questionnairePath)];
}

void AppContext::LeaveWorkingFolder(const QString& questionnairePath) {
    if (const auto it = m_workingFolderUsers.find(FolderKey(questionnairePath));
        it != m_workingFolderUsers.end()) {
        if (--*it > 0)
            return;
        m_workingFolderUsers.erase(it);
    }
    exchange::CleanWorkingFolder(stamps, questionnairePath);
}

} // namespace app
