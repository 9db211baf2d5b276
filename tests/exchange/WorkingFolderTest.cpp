#include "exchange/WorkingFolder.h"
#include "common/TestUtil.h"
#include "util/OleDate.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <functional>
#include <future>
#include <optional>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using exchange::StampOwner;
using namespace Qt::StringLiterals;

namespace {

// Mid-July noon: no daylight-saving change anywhere falls within hours of it.
const QDateTime kNoon(QDate(2026, 7, 15), QTime(12, 0));
constexpr qint64 kHourMs = 3600 * 1000;

StampOwner Owner(qint32 number, const QDateTime& at) {
    return StampOwner{number, [at] { return at; }};
}

QByteArray StampBytes(double oleDate) {
    QByteArray bytes(8, '\0');
    qToLittleEndian(std::bit_cast<quint64>(oleDate), bytes.data());
    return bytes;
}

class WorkingFolderTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_path = m_dir.filePath(u"survey.qex"_s);
        m_folder = exchange::WorkingFolderOf(m_path);
    }

    QString Stamp(qint32 number) const { return m_folder + exchange::StampFileName(number); }
    bool FolderExists() const { return QFileInfo::exists(m_folder); }

    // A folder holding only a foreign stamp written at `stampTime` (or holding `bytes`), cleaned
    // at `now` by a run whose number begins the foreign one's.
    bool KeptBy(const QDateTime& stampTime, const QDateTime& now,
                const std::optional<QByteArray>& bytes) {
        EXPECT_EQ(exchange::PrepareWorkingFolder(Owner(1234, stampTime), m_path), m_folder);
        if (bytes) {
            EXPECT_TRUE(testutil::WriteAll(Stamp(1234), *bytes));
        }
        exchange::CleanWorkingFolder(Owner(123, now), m_path);
        const bool kept = FolderExists();
        QDir(m_folder).removeRecursively();
        return kept;
    }

    // Runs stamp_tool to the end, as another instance of the program sharing the folder; its
    // standard output is returned through `output`.
    void Run(const QString& action, int number, int clockAhead = 0, QString* output = nullptr) {
        QProcess tool;
        tool.start(QStringLiteral(STAMP_TOOL),
                   {action, m_path, QString::number(number), QString::number(clockAhead)});
        ASSERT_TRUE(tool.waitForFinished(30000)) << tool.errorString().toStdString();
        ASSERT_EQ(tool.exitStatus(), QProcess::NormalExit);
        ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        if (output)
            *output = QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
    }

    QTemporaryDir m_dir;
    QString m_path;
    QString m_folder;
};

TEST_F(WorkingFolderTest, PrepareMakesTheFolderOfThePathCutAtItsLastDotAndStampsIt) {
    const QString folder = exchange::PrepareWorkingFolder(
        Owner(7, QDateTime(QDate(2026, 11, 22), QTime(12, 0))), m_path);
    EXPECT_EQ(folder, m_dir.filePath(u"survey.tmp/"_s));
    EXPECT_EQ(testutil::ReadAll(Stamp(7)), QByteArray::fromHex("00000000 90a1e640"));

    // A second preparation keeps what the folder holds and rewrites the stamp whole.
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"content.xml"_s, "<q/>"));
    ASSERT_TRUE(testutil::WriteAll(Stamp(7), QByteArray(20, 'x')));
    EXPECT_EQ(exchange::PrepareWorkingFolder(Owner(7, kNoon), m_path), folder);
    EXPECT_EQ(testutil::ReadAll(Stamp(7)), StampBytes(util::ToOleDate(kNoon)));
    EXPECT_EQ(testutil::ReadAll(m_folder + u"content.xml"_s), "<q/>");
    EXPECT_EQ(QDir(m_folder).entryList(QDir::Files | QDir::Hidden).size(), 2);

    // The folder is the path cut at its last dot.
    const struct {
        QString path;
        QString folder;
    } cases[] = {
        {u"a/b/survey.qes"_s, u"a/b/survey.tmp/"_s},
        {u"/srv/Wave3.QEX"_s, u"/srv/Wave3.tmp/"_s},
        {u"a/b.c.qex"_s, u"a/b.c.tmp/"_s},
        {u"a.b/survey"_s, u"a.tmp/"_s}, // the dot of a folder name
        {u"survey."_s, u"survey.tmp/"_s},
        {u"noext"_s, QString()},
        {QString(), QString()},
    };
    for (const auto& c : cases)
        EXPECT_EQ(exchange::WorkingFolderOf(c.path), c.folder) << c.path.toStdString();

    // Without a dot there is no folder to prepare or clean.
    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_dir.path()));
    ASSERT_TRUE(QDir().mkdir(u"noext.tmp"_s));
    ASSERT_TRUE(testutil::WriteAll(u"noext.tmp/stamp1.stp"_s, StampBytes(0.0)));
    EXPECT_EQ(exchange::PrepareWorkingFolder(Owner(1, kNoon), u"noext"_s), QString());
    exchange::CleanWorkingFolder(Owner(1, kNoon), u"noext"_s);
    const QStringList entries = QDir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const QStringList inside = QDir(u"noext.tmp"_s).entryList(QDir::Files);
    QDir::setCurrent(previous);
    EXPECT_EQ(entries, (QStringList{u"noext.tmp"_s, u"survey.tmp"_s})); // no new entry
    EXPECT_EQ(inside, QStringList{u"stamp1.stp"_s});
}

TEST_F(WorkingFolderTest, StampsYoungerThanThreeWholeHoursKeepTheFolder) {
    const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0));
    const QByteArray full = StampBytes(46348.5);
    const struct {
        const char* label;
        QDateTime stamp;
        QDateTime now;
        bool kept;
        std::optional<QByteArray> bytes = std::nullopt;
    } cases[] = {
        {"just written", kNoon, kNoon, true},
        {"two hours", kNoon, kNoon.addMSecs(2 * kHourMs), true},
        {"2:59:59.4 rounds down", kNoon, kNoon.addMSecs(3 * kHourMs - 600), true},
        {"2:59:59.6 rounds up to 3 h", kNoon, kNoon.addMSecs(3 * kHourMs - 400), false},
        {"exactly three hours", kNoon, kNoon.addMSecs(3 * kHourMs), false},
        {"thirty days", kNoon, kNoon.addDays(30), false},
        {"a minute in the future", kNoon, kNoon.addSecs(-60), true},
        {"five hours in the future", kNoon, kNoon.addMSecs(-5 * kHourMs), true},
        // Dates before the epoch only compare on the continuous day scale.
        {"4 h old, both before the epoch", epoch.addMSecs(-22 * kHourMs),
         epoch.addMSecs(-18 * kHourMs), false},
        {"1.5 h old, across the epoch", epoch.addMSecs(-kHourMs), epoch.addMSecs(kHourMs / 2),
         true},
        {"5 h old, across the epoch", epoch.addMSecs(-4 * kHourMs), epoch.addMSecs(kHourMs), false},
        // Short stamps read as far as they go: the missing high bytes read as zero, which leaves
        // a value next to the epoch; a clock set just after the epoch shows whether the stamp was
        // taken for that value.
        {"7 bytes, 1 h", kNoon, epoch.addMSecs(kHourMs), true, full.left(7)},
        {"7 bytes, 3 h", kNoon, epoch.addMSecs(3 * kHourMs), false, full.left(7)},
        {"0 bytes, 2 h", kNoon, epoch.addMSecs(2 * kHourMs), true, QByteArray()},
        {"3 bytes, 4 h", kNoon, epoch.addMSecs(4 * kHourMs), false, QByteArray("\x01\x02\x03", 3)},
    };
    for (const auto& c : cases)
        EXPECT_EQ(KeptBy(c.stamp, c.now, c.bytes), c.kept) << c.label;
}

TEST_F(WorkingFolderTest, OwnStampAloneLetsTheWholeFolderGo) {
    ASSERT_EQ(exchange::PrepareWorkingFolder(Owner(123, kNoon), m_path), m_folder);
    ASSERT_TRUE(QFile::rename(Stamp(123), m_folder + u"STAMP123.STP"_s));
    ASSERT_TRUE(QDir(m_folder).mkpath(u"media/images"_s));
    ASSERT_TRUE(QDir(m_folder).mkdir(u"folder.stp"_s));
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"media/images/a.png"_s, "png"));
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"questionnaire.xml"_s, "<q/>"));
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"stamp4.stp"_s,
                                   StampBytes(util::ToOleDate(kNoon.addDays(-1)))));
    // Only stamps are read: a drawing of the media that reads as a young stamp is no stamp.
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"plan.stp"_s, StampBytes(util::ToOleDate(kNoon))));
    ASSERT_TRUE(QFile::setPermissions(m_folder + u"questionnaire.xml"_s,
                                      QFileDevice::ReadOwner | QFileDevice::ReadUser));
    ASSERT_TRUE(QFile::setPermissions(m_folder + u"media"_s,
                                      QFileDevice::ReadOwner | QFileDevice::ExeOwner));
#ifdef Q_OS_UNIX
    // A stamp that cannot be read protects nothing.
    ASSERT_TRUE(QFile::link(m_dir.filePath(u"nowhere"_s), m_folder + u"stamp5.stp"_s));
    // Only regular files are stamps: opening a pipe would wait for a writer forever. Should the
    // clean-up wait all the same, a writer that comes and goes lets it go on.
    const QByteArray pipe = QFile::encodeName(m_folder + u"stamp6.stp"_s);
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
#endif
    auto cleaning = std::async(std::launch::async, [this] {
        exchange::CleanWorkingFolder(Owner(123, kNoon.addSecs(60)), m_path);
    });
#ifdef Q_OS_UNIX
    if (cleaning.wait_for(std::chrono::seconds(10)) == std::future_status::timeout) {
        ADD_FAILURE() << "the clean-up waited on a pipe";
        ::close(::open(pipe.constData(), O_WRONLY | O_NONBLOCK));
    }
#endif
    cleaning.wait();
    EXPECT_FALSE(FolderExists());
}

// Nothing but a folder of that name is stamped or cleaned: a link would lead both into whatever
// it points to. The folders above it are the user's, links or not.
TEST_F(WorkingFolderTest, OnlyAFolderOfItsOwnIsStampedOrCleaned) {
    const QString victim = m_dir.filePath(u"victim"_s);
    ASSERT_TRUE(QDir().mkpath(victim + u"/sub"_s));
    ASSERT_TRUE(testutil::WriteAll(victim + u"/keep.txt"_s, "keep"));
    ASSERT_TRUE(testutil::WriteAll(victim + u"/stamp7.stp"_s, "not a stamp"));
    const QString place = QDir::cleanPath(m_folder);
    const auto victimTree = [&victim] {
        QStringList names;
        QDirIterator it(victim, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            names.append(it.next());
        names.sort();
        return names;
    };
    const QStringList before = victimTree();
    const struct {
        const char* label;
        std::function<bool()> make;
    } cases[] = {
        {"link to a folder", [&] { return QFile::link(victim, place); }},
        {"file", [&] { return testutil::WriteAll(place, "file"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        ASSERT_TRUE(c.make());
        EXPECT_EQ(exchange::PrepareWorkingFolder(Owner(7, kNoon), m_path), m_folder);
        exchange::CleanWorkingFolder(Owner(7, kNoon.addDays(1)), m_path);
        EXPECT_EQ(victimTree(), before);
        EXPECT_EQ(testutil::ReadAll(victim + u"/stamp7.stp"_s), "not a stamp");
        EXPECT_TRUE(QFileInfo(place).isSymLink() || testutil::ReadAll(place) == "file");
        ASSERT_TRUE(QFile::remove(place));
    }

    const QString real = m_dir.filePath(u"real"_s);
    ASSERT_TRUE(QDir().mkdir(real));
    ASSERT_TRUE(QFile::link(real, m_dir.filePath(u"parent"_s)));
    const QString path = m_dir.filePath(u"parent/survey.qex"_s);
    ASSERT_FALSE(exchange::PrepareWorkingFolder(Owner(7, kNoon), path).isEmpty());
    EXPECT_TRUE(QFileInfo::exists(real + u"/survey.tmp/stamp7.stp"_s));
    exchange::CleanWorkingFolder(Owner(7, kNoon), path);
    EXPECT_FALSE(QFileInfo::exists(real + u"/survey.tmp"_s));
}

TEST_F(WorkingFolderTest, YoungForeignStampStopsTheCleanUpWhereItIsMet) {
    // Whether this run's stamp is met first depends on the file system, so folders are tried
    // with varied names and creation orders until both cases have been seen.
    const StampOwner own = Owner(1, kNoon);
    bool ownMetFirst = false;
    bool foreignMetFirst = false;
    for (int i = 0; i < 64 && !(ownMetFirst && foreignMetFirst); ++i) {
        const QString path = m_dir.filePath(u"q%1.qex"_s.arg(i));
        const StampOwner foreign = Owner(100 + i, kNoon.addSecs(-3600));
        exchange::PrepareWorkingFolder(i % 2 ? own : foreign, path);
        const QString folder = exchange::PrepareWorkingFolder(i % 2 ? foreign : own, path);
        ASSERT_TRUE(testutil::WriteAll(folder + u"data.xml"_s, "<q/>"));
        // Unsorted: in the order the file system lists them, which the clean-up follows.
        const QStringList order = QDir(folder).entryList({u"*.stp"_s}, QDir::Files, QDir::Unsorted);
        ASSERT_EQ(order.size(), 2);
        const bool ownFirst = order.first() == exchange::StampFileName(1);

        exchange::CleanWorkingFolder(own, path);
        EXPECT_TRUE(QFileInfo::exists(folder + exchange::StampFileName(100 + i)));
        EXPECT_TRUE(QFileInfo::exists(folder + u"data.xml"_s));
        EXPECT_EQ(QFileInfo::exists(folder + exchange::StampFileName(1)), !ownFirst) << i;
        (ownFirst ? ownMetFirst : foreignMetFirst) = true;
    }
    EXPECT_TRUE(ownMetFirst);
    EXPECT_TRUE(foreignMetFirst);
}

// A stamp written by one program keeps the folder from another's clean-up until it is three
// hours old. Real processes: what works within one program, a lock it holds say, need not work
// between two.
TEST_F(WorkingFolderTest, StampsCrossProcesses) {
    QString folder;
    ASSERT_NO_FATAL_FAILURE(Run(u"prepare"_s, 1, 0, &folder));
    EXPECT_EQ(folder, m_folder);
    ASSERT_TRUE(testutil::WriteAll(m_folder + u"questionnaire.xml"_s, "<q/>"));
    ASSERT_NO_FATAL_FAILURE(Run(u"clean"_s, 2));
    EXPECT_TRUE(QFileInfo::exists(Stamp(1)));
    EXPECT_TRUE(QFileInfo::exists(m_folder + u"questionnaire.xml"_s));
    ASSERT_NO_FATAL_FAILURE(Run(u"clean"_s, 2, 4 * 3600));
    EXPECT_FALSE(FolderExists());
}

} // namespace
