#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/XmlFile.h"
#include "util/Messages.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;

using questionnaire::FileType;

namespace {

const QString kExample = testutil::SourcePath(u"examples/customer-satisfaction.xml"_s);

TEST(FileType, FromTheLastThreeLetters) {
    const std::pair<const char*, FileType> cases[] = {
        {"a/survey.qes", FileType::Database}, {"survey.QEX", FileType::Exchange},
        {"survey.Qew", FileType::Campaign},   {"survey.xml", FileType::Xml},
        {"surveyxml", FileType::Xml},         {"survey.txt", FileType::Database},
        {"survey", FileType::Database},       {"xml.d/survey", FileType::Database},
    };
    for (const auto& [path, type] : cases)
        EXPECT_EQ(questionnaire::FileTypeOf(QString::fromLatin1(path)), type) << path;
}

// A file type of its own for the document to use, keeping its questionnaires in memory beside
// a marker file on disk, and noting what the document asked of it.
class FakeStore : public questionnaire::QuestionnaireStore {
public:
    struct Log {
        // Each save writes a token of its own into the file; what it stands for is kept here, so
        // that copies and renames of the file carry it.
        std::map<QByteArray, CQuestionnaire> files;
        QStringList calls;
        bool copiesBeforeSaveAs = false;
        bool refusing = false; // every save fails
        int saves = 0;
        const CQuestionnaire* Held(const QString& path) const {
            const auto it = files.find(testutil::ReadAll(path));
            return it == files.end() ? nullptr : &it->second;
        }
    };
    explicit FakeStore(Log& log) : m_log(log) {}

    util::Outcome Load(const QString& path, CQuestionnaire& q,
                       const questionnaire::StoreContext&) override {
        m_log.calls.append(u"load "_s + QFileInfo(path).fileName());
        const CQuestionnaire* held = m_log.Held(path);
        if (!held)
            return util::Outcome::Failure(u"no such fake file"_s);
        q = *held;
        return {};
    }
    util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                            const questionnaire::StoreContext&) override {
        m_log.calls.append(u"whole "_s + QFileInfo(path).fileName());
        return Write(path, q);
    }
    util::Outcome SaveParts(const QString& path, const CQuestionnaire& q,
                            questionnaire::SaveParts parts,
                            const questionnaire::StoreContext& context) override {
        if (!m_log.copiesBeforeSaveAs)
            return SaveWhole(path, q, context); // files of this kind are written whole
        m_log.calls.append(u"parts %1 %2"_s.arg(QFileInfo(path).fileName()).arg(int(parts)));
        if (!QFileInfo::exists(path))
            return util::Outcome::Failure(u"nothing to save into"_s);
        return Write(path, q);
    }
    bool CopiesBeforeSaveAs() const override { return m_log.copiesBeforeSaveAs; }

private:
    util::Outcome Write(const QString& path, const CQuestionnaire& q) {
        if (m_log.refusing)
            return util::Outcome::Failure(u"refused"_s);
        const QByteArray token = "fake " + QByteArray::number(++m_log.saves);
        m_log.files[token] = q;
        return testutil::WriteAll(path, token) ? util::Outcome()
                                               : util::Outcome::Failure(u"disk"_s);
    }
    Log& m_log;
};

class DocumentTest : public ::testing::Test {
protected:
    QString Path(const QString& name) const { return m_dir.filePath(name); }

    CQuestionnaire Load(const QString& path) {
        app::QuestionnaireDocument document(m_app, m_messages);
        EXPECT_TRUE(document.OpenSilently(path)) << path.toStdString();
        return document.Questionnaire() ? *document.Questionnaire() : CQuestionnaire();
    }

    QTemporaryDir m_dir;
    app::AppContext m_app;
    util::RecordedMessages m_messages;
};

TEST_F(DocumentTest, EveryTypeSavedAsEveryOtherReadsBackTheSame) {
    CQuestionnaire original;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, original));
    // Names with spaces and accented letters, and a database without an extension.
    const QString folder = Path(u"Études clients 2026"_s);
    ASSERT_TRUE(QDir().mkdir(folder));
    const QStringList types = {u"xml"_s, u"qes"_s, u"qex"_s, QString()};
    for (const QString& from : types) {
        const QString source = folder + u"/Enquête source ü"_s +
                               (from.isEmpty() ? QString() : QLatin1Char('.') + from);
        {
            app::QuestionnaireDocument document(m_app, m_messages);
            ASSERT_TRUE(document.Open(kExample));
            ASSERT_TRUE(document.Save(source)) << m_messages.messages.join(u'\n').toStdString();
        }
        for (const QString& to : types) {
            const QString target = folder + u"/%1 to %2"_s.arg(from, to) +
                                   (to.isEmpty() ? QString() : QLatin1Char('.') + to);
            app::QuestionnaireDocument document(m_app, m_messages);
            ASSERT_TRUE(document.Open(source));
            ASSERT_TRUE(document.Save(target)) << from.toStdString() << " -> " << to.toStdString();
            EXPECT_EQ(document.Type(), qint16(questionnaire::FileTypeOf(target)));
            EXPECT_EQ(Load(target), original) << from.toStdString() << " -> " << to.toStdString();
        }
    }
    EXPECT_TRUE(m_messages.messages.isEmpty());
}

TEST_F(DocumentTest, ANewFileTypeNeedsOnlyAStore) {
    FakeStore::Log log;
    constexpr qint16 kFakeType = 42;
    m_app.stores.Register(u".fake"_s, kFakeType,
                          [&log] { return std::make_unique<FakeStore>(log); });
    const int interactive = int(questionnaire::kInteractiveSave);
    const int batch = int(questionnaire::kBatchSave);
    for (bool copies : {false, true}) {
        log = FakeStore::Log();
        log.copiesBeforeSaveAs = copies;
        app::QuestionnaireDocument document(m_app, m_messages);
        ASSERT_TRUE(document.Open(kExample));
        // "Save As" from another type: a store that saves in place gets a whole file first.
        ASSERT_TRUE(document.Save(Path(u"a.fake"_s)));
        EXPECT_EQ(document.Type(), kFakeType);
        EXPECT_EQ(log.calls, QStringList{u"whole a.fake"_s});
        questionnaire::WriteCaption(*document.Questionnaire(), 100, -1, testutil::kGerman,
                                    u"Neu"_s);
        document.SetModified(true);
        ASSERT_TRUE(document.Save(document.Path()));
        ASSERT_TRUE(document.SaveBatch());
        EXPECT_FALSE(document.IsModified());
        // "Save As" within the type: copied first when the store asks for it.
        log.calls.clear();
        ASSERT_TRUE(document.Save(Path(u"b.fake"_s)));
        // A copy is saved into beside the target, under a name of its own, and put in place once
        // saved.
        ASSERT_EQ(log.calls.size(), 1);
        if (copies)
            EXPECT_TRUE(log.calls[0].startsWith(u"parts .save-"_s) &&
                        log.calls[0].endsWith(u" %1"_s.arg(interactive)))
                << log.calls[0].toStdString();
        else
            EXPECT_EQ(log.calls[0], u"whole b.fake"_s);
        ASSERT_TRUE(log.Held(Path(u"b.fake"_s)));
        EXPECT_TRUE(
            QDir(m_dir.path()).entryList({u".save-*"_s}, QDir::Files | QDir::Hidden).isEmpty());
        // A "Save As" whose save fails leaves the document at its file.
        log.refusing = true;
        EXPECT_FALSE(document.SaveBatchAs(Path(u"c.fake"_s)));
        EXPECT_EQ(document.Path(), Path(u"b.fake"_s));
        EXPECT_EQ(document.LastError(), u"refused"_s);
        EXPECT_TRUE(QDir(m_dir.path())
                        .entryList({u"c.fake*"_s, u".save-*"_s}, QDir::Files | QDir::Hidden)
                        .isEmpty());
        log.refusing = false;

        app::QuestionnaireDocument reopened(m_app, m_messages);
        ASSERT_TRUE(reopened.Open(Path(u"b.fake"_s)));
        EXPECT_EQ(questionnaire::ReadCaption(*reopened.Questionnaire(), 100, -1, testutil::kGerman),
                  u"Neu"_s);
        log.calls.clear();
        ASSERT_TRUE(reopened.SaveBatch());
        EXPECT_EQ(log.calls, copies ? QStringList{u"parts b.fake %1"_s.arg(batch)}
                                    : QStringList{u"whole b.fake"_s});
        // Back to a type of the program's own, written whole.
        ASSERT_TRUE(reopened.Save(Path(u"back.xml"_s)));
        EXPECT_EQ(reopened.Type(), qint16(FileType::Xml));
        EXPECT_EQ(Load(Path(u"back.xml"_s)), *log.Held(Path(u"b.fake"_s)));
    }
    EXPECT_TRUE(m_messages.messages.isEmpty());
}

TEST_F(DocumentTest, SaveAsRules) {
    const QString qes = Path(u"survey.qes"_s);
    ASSERT_TRUE(questionnaire::WriteQesFile(qes, testutil::MakeSample(), 0x100));
    // A table the program does not know travels with a database copied by "Save As".
    ASSERT_TRUE(testutil::Sql(qes, {u"CREATE TABLE extra (x TEXT)"_s}));
    app::QuestionnaireDocument document(m_app, m_messages);
    ASSERT_TRUE(document.Open(qes));
    questionnaire::WriteCaption(*document.Questionnaire(), 10, -1, testutil::kGerman, u"Neu"_s);
    const QString copy = Path(u"copy.qes"_s);
    ASSERT_TRUE(document.Save(copy));
    EXPECT_EQ(document.Path(), copy);
    EXPECT_TRUE(testutil::Sql(copy, {u"SELECT * FROM extra"_s}));
    EXPECT_EQ(questionnaire::ReadCaption(Load(copy), 10, -1, testutil::kGerman), u"Neu"_s);
    // The original was not saved.
    EXPECT_EQ(questionnaire::ReadCaption(Load(qes), 10, -1, testutil::kGerman), QString());

    // Another name of the same file saves in place; a name in other letter case is another
    // file where the file system tells case apart, and "Save As" makes it.
    ASSERT_TRUE(QFile::link(copy, Path(u"link.qes"_s)));
    ASSERT_TRUE(document.Save(Path(u"link.qes"_s)));
    EXPECT_EQ(document.Path(), copy);
    EXPECT_TRUE(QFileInfo(Path(u"link.qes"_s)).isSymLink());
    const QString upper = Path(u"COPY.QES"_s);
    questionnaire::WriteCaption(*document.Questionnaire(), 10, -1, testutil::kGerman, u"Groß"_s);
    ASSERT_TRUE(document.Save(upper));
    EXPECT_EQ(document.Path(), upper);
    EXPECT_EQ(questionnaire::ReadCaption(Load(upper), 10, -1, testutil::kGerman), u"Groß"_s);
    EXPECT_EQ(questionnaire::ReadCaption(Load(copy), 10, -1, testutil::kGerman), u"Neu"_s);
    ASSERT_TRUE(document.Save(copy));

    // A copy that cannot be made stops the save with its message.
    EXPECT_FALSE(document.Save(Path(u"missing/folder/x.qes"_s)));
    EXPECT_EQ(m_messages.messages.value(0), u"Cannot save the file"_s);
    EXPECT_EQ(document.Path(), copy);

    // A save into the copy that fails leaves the target as it was, and nothing beside it.
    ASSERT_TRUE(testutil::Sql(copy, {u"CREATE TRIGGER refuse BEFORE INSERT ON question_captions "
                                     u"BEGIN SELECT RAISE(ABORT, 'refused'); END"_s}));
    questionnaire::WriteCaption(*document.Questionnaire(), 10, -1, testutil::kGerman, u"Neuer"_s);
    const QByteArray before = testutil::ReadAll(qes);
    const QStringList files = QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden);
    EXPECT_FALSE(document.Save(qes));
    EXPECT_EQ(testutil::ReadAll(qes), before);
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden), files);
    EXPECT_EQ(document.Path(), copy);
}

TEST_F(DocumentTest, LoadFailuresAreShownUnlessSilent) {
    const QString broken = Path(u"broken.xml"_s);
    ASSERT_TRUE(testutil::WriteAll(broken, "<questionnaire"));
    const QString campaign = Path(u"wave.qew"_s);
    ASSERT_TRUE(testutil::WriteAll(campaign, "x"));
    for (const QString& path : {broken, campaign, Path(u"missing.qes"_s)}) {
        m_messages.messages.clear();
        app::QuestionnaireDocument document(m_app, m_messages);
        EXPECT_FALSE(document.OpenSilently(path));
        EXPECT_TRUE(m_messages.messages.isEmpty());
        EXPECT_EQ(document.Questionnaire(), nullptr);
        EXPECT_FALSE(document.Open(path));
        ASSERT_EQ(m_messages.messages.size(), 1) << path.toStdString();
        EXPECT_FALSE(m_messages.messages[0].isEmpty());
    }
}

TEST_F(DocumentTest, CaptionEditsMarkTheDocumentModifiedAndAPackageWorkingFolderLivesWithIt) {
    const QString qex = Path(u"survey.qex"_s);
    const QString folder = Path(u"survey.tmp"_s);
    {
        app::QuestionnaireDocument document(m_app, m_messages);
        EXPECT_EQ(document.Captions().RowCount(), 0);
        ASSERT_TRUE(document.Open(kExample));
        questionnaire::CaptionTable& table = document.Captions();
        ASSERT_GT(table.RowCount(), 42);
        // An edit that changes nothing leaves the document as it was: the caption table's
        // write-back rules and the window's long-caption edit check that.
        EXPECT_FALSE(document.IsModified());
        EXPECT_TRUE(table.WriteBack(0, 1, u"Nouveau\\\\n"_s));
        EXPECT_TRUE(document.IsModified());
        ASSERT_TRUE(document.Save(qex));
        EXPECT_FALSE(document.IsModified());
        document.DeleteContents();
        EXPECT_EQ(table.RowCount(), 0);

        ASSERT_TRUE(document.Open(qex));
        EXPECT_TRUE(QFileInfo::exists(folder + u"/questionnaire.xml"_s));
        EXPECT_TRUE(QFileInfo::exists(folder + u"/stamp%1.stp"_s.arg(m_app.stamps.stampNumber)));
        EXPECT_EQ(questionnaire::ReadCaption(*document.Questionnaire(), table.QuestionId(0),
                                             table.ResponseId(0), table.ColumnLanguage(1)),
                  u"Nouveau\\\n"_s);
        questionnaire::WriteCaption(*document.Questionnaire(), 110, 4, testutil::kFrench,
                                    u"Pas du tout satisfait"_s);
        ASSERT_TRUE(document.SaveBatch());
        // A second document of the run on the package, named through a link: the two share the
        // folder, which stays until the last of them leaves it.
        ASSERT_TRUE(QFile::link(m_dir.path(), Path(u"alias"_s)));
        {
            app::QuestionnaireDocument second(m_app, m_messages);
            ASSERT_TRUE(second.Open(Path(u"alias/survey.qex"_s)));
        }
        EXPECT_TRUE(QFileInfo::exists(folder + u"/questionnaire.xml"_s));
        ASSERT_TRUE(document.SaveBatch()) << document.LastError().toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_EQ(questionnaire::ReadCaption(Load(qex), 110, 4, testutil::kFrench),
              u"Pas du tout satisfait"_s);
}

TEST(AppContext, DictionaryPathAndRecentFiles) {
    QSettings settings(u"Halvard Quist"_s, u"Translator"_s);
    settings.remove(u"Settings/LibraryPath"_s);
    const QString fallback = app::AppContext::DictionaryPath();
    EXPECT_TRUE(fallback.endsWith(QLatin1String("/Varnel/Translator/Translator.dic")));
    // The tests run with their own data folder, never the user's.
    EXPECT_TRUE(fallback.startsWith(QString::fromLocal8Bit(qgetenv("XDG_DATA_HOME"))));
    settings.setValue(u"Settings/LibraryPath"_s, QString());
    EXPECT_EQ(app::AppContext::DictionaryPath(), fallback);
    settings.setValue(u"Settings/LibraryPath"_s, u"/x/my.dic"_s);
    settings.sync();
    EXPECT_EQ(app::AppContext::DictionaryPath(), u"/x/my.dic"_s);
    settings.remove(u"Settings/LibraryPath"_s);

    app::RecentFiles recent;
    for (const char* name : {"/a.qes", "/b.qes", "/c.qes", "/d.qes", "/e.qes", "/B.QES"})
        recent.Add(QString::fromLatin1(name));
    EXPECT_EQ(recent.Files(), (QStringList{u"/B.QES"_s, u"/e.qes"_s, u"/d.qes"_s, u"/c.qes"_s}));
    const qint32 stamp = app::DrawStampNumber();
    EXPECT_GE(stamp, 0);
    EXPECT_LE(stamp, 32767);
}

} // namespace
