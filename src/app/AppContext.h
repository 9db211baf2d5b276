#pragma once

#include "app/VersionInfo.h"
#include "exchange/WorkingFolder.h"
#include "questionnaire/store/QuestionnaireStore.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace app {

// The location as the program keeps it: a file's absolute path, or a server URI as given.
QString AbsoluteLocation(const QString& location);

// The recent-file list kept in the profile, most recent first.
class RecentFiles {
public:
    static constexpr int kMaxFiles = 4;

    QStringList Files() const;
    void Add(const QString& path);
};

// The run-wide values: the stamp number of this run, the dictionary's location, the exit code,
// and the stores that read and write each type of questionnaire file.
class AppContext {
public:
    AppContext();

    // The dictionary file: the profile's "Settings"/"LibraryPath" when set, else the default
    // location in the user's data folder.
    static QString DictionaryPath();
    static QString DefaultDictionaryPath();
    // Major * 256 + minor: stored in the files this program writes.
    static qint32 ProgramVersion();

    // A run's documents that unpacked a file into its working folder. The run's one stamp cannot
    // tell them apart, so the folder is cleaned when the last of them leaves it, not the first.
    void EnterWorkingFolder(const QString& questionnairePath);
    void LeaveWorkingFolder(const QString& questionnairePath);

    exchange::StampOwner stamps;
    questionnaire::StoreRegistry stores;
    qint32 exitCode = 0;
    QString dictionaryPath;
    RecentFiles recentFiles;
    VersionInfo versionInfo; // read when the window starts

private:
    QHash<QString, int> m_workingFolderUsers; // by the folder's own path
};

// The stamp number of a run: the clock starts the random generator, the first number is thrown
// away and the second kept.
qint32 DrawStampNumber();

} // namespace app
