// XLIFF for translation tools: the files validate against the published schemas, come back
// unchanged, are filled by another program's own XLIFF library, and are guarded on import as
// the tab-separated file is.
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "exchange/XliffFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/Modalite.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"
#include "util/Progress.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using exchange::XliffVersion;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

using namespace Qt::StringLiterals;

namespace {

// Everything a caption may hold that XML or a careless writer could spoil.
const QString kSpecial = u"Line 1\nLine 2\tTab \"quoted\" & <b>bold</b> "_s +
                         QString::fromUcs4(U"\U0001F600 \u05E9\u05DC\u05D5\u05DD ") + QChar(1) +
                         u" end\r\nCRLF"_s;

QString Validate(const QString& path, XliffVersion version) {
    return testutil::ValidateXliff(path, version == XliffVersion::V12 ? u"1.2"_s : u"2.0"_s);
}

class XliffTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_q = testutil::MakeSample();
        CQuestion* q10 = m_q.GetAdrQuestion(0);
        q10->SetLocalisedShortCaption(kFrench, kSpecial);
        q10->SetLocalisedShortCaption(kGerman, kSpecial + u" DE"_s);
        // A second response that shares its source text with the first.
        q10->AddModalite(std::make_unique<CModalite>(3, u"3"_s));
        q10->GetAdrModalite(2)->SetLocalisedLongCaption(kEnglish, u"Very"_s);
        m_list.clear();
        questionnaire::BuildCaptionList(m_q, m_list, false);
        m_path = m_dir.filePath(u"survey.xlf"_s);
    }

    exchange::ImportOptions ImportOptions() const {
        exchange::ImportOptions options;
        options.referenceLanguage = kEnglish;
        options.languages = {kEnglish, kFrench, kGerman};
        return options;
    }
    void Export(XliffVersion version, QList<qint32> languages = {kEnglish, kFrench}) {
        exchange::ExportOptions options;
        options.languages = languages;
        util::RecordedMessages messages;
        ASSERT_TRUE(exchange::ExportXliff(m_path, m_q, options, version, m_list, messages))
            << messages.messages.join(QLatin1Char('\n')).toStdString();
    }
    qint32 Import(const QString& path, const exchange::ImportOptions& options,
                  exchange::ImportReport* report = nullptr) {
        return exchange::ImportXliff(m_q, path, options, m_list, m_messages, report);
    }
    QString Caption(qint32 questionId, qint32 responseId, qint32 language) const {
        return questionnaire::ReadCaption(m_q, questionId, responseId, language);
    }
    // Every caption of the list in these languages, to compare before and after.
    QStringList Captions(QList<qint32> languages) const {
        QStringList texts;
        for (qsizetype k = 0; k < m_list.size(); ++k)
            for (qint32 language : languages)
                texts.append(Caption(m_list.questionIds[k], m_list.responseIds[k], language));
        return texts;
    }
    void Clear(qint32 language) {
        for (qsizetype k = 0; k < m_list.size(); ++k)
            if (m_list.questionIds[k] > 0)
                questionnaire::WriteCaption(m_q, m_list.questionIds[k], m_list.responseIds[k],
                                            language, QString());
    }

    QTemporaryDir m_dir;
    CQuestionnaire m_q;
    questionnaire::CaptionList m_list;
    QString m_path;
    util::RecordedMessages m_messages;
};

TEST_F(XliffTest, FilesValidateAndEveryCaptionComesBackUnchanged) {
    const struct {
        XliffVersion version;
        QList<qint32> languages;
        QStringList files;
    } cases[] = {
        {XliffVersion::V12, {kEnglish, kFrench}, {"survey.xlf"}},
        {XliffVersion::V12, {kEnglish, kFrench, kGerman}, {"survey.FRA.xlf", "survey.DEU.xlf"}},
        {XliffVersion::V20, {kEnglish, kFrench}, {"survey.xlf"}},
        {XliffVersion::V20, {kEnglish, kGerman, kFrench}, {"survey.DEU.xlf", "survey.FRA.xlf"}},
        // A language listed twice is exported once.
        {XliffVersion::V12, {kEnglish, kFrench, kFrench}, {"survey.xlf"}},
        {XliffVersion::V20,
         {kEnglish, kGerman, kFrench, kGerman},
         {"survey.DEU.xlf", "survey.FRA.xlf"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.files.join(QLatin1Char(' ')).toStdString());
        for (const QString& file : QDir(m_dir.path()).entryList(QDir::Files))
            QFile::remove(m_dir.filePath(file));
        Export(c.version, c.languages);
        const QList<qint32> targets = c.languages.mid(1);
        const QStringList before = Captions(targets);
        QStringList expected = c.files;
        expected.sort();
        EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files, QDir::Name), expected);
        for (qint32 language : targets)
            Clear(language);
        ASSERT_NE(Captions(targets), before);
        for (const QString& file : c.files) {
            const QString path = m_dir.filePath(file);
            EXPECT_EQ(Validate(path, c.version), QString());
            EXPECT_GT(Import(path, ImportOptions()), 0);
        }
        EXPECT_EQ(Captions(targets), before);
    }
    // The check is not a formality: a unit without an id is refused.
    QByteArray broken = testutil::ReadAll(m_dir.filePath(u"survey.FRA.xlf"_s));
    broken.replace("<unit id=\"10_-1\"", "<unit");
    testutil::WriteAll(m_path, broken);
    EXPECT_NE(Validate(m_path, XliffVersion::V20), QString());
}

TEST(XliffPaths, EveryTargetLanguageGetsAFileOfItsOwn) {
    const CQuestionnaire q = testutil::MakeSample();
    // 1131 and 3179 are both abbreviated QUZ; 99999 and 88888 have no short name. A single
    // target, and languages listed twice, are in the export test above.
    const struct {
        const char* path;
        QList<qint32> languages;
        QStringList expected;
    } cases[] = {
        {"/a/survey.xlf", {kEnglish, kFrench, kGerman}, {"/a/survey.FRA.xlf", "/a/survey.DEU.xlf"}},
        {"/a.b/survey", {kEnglish, kFrench, kGerman}, {"/a.b/survey.FRA", "/a.b/survey.DEU"}},
        {"survey.v2.xliff",
         {kEnglish, kFrench, kGerman},
         {"survey.v2.FRA.xliff", "survey.v2.DEU.xliff"}},
        {"q.xlf", {kEnglish, 99999, 88888}, {"q.99999.xlf", "q.88888.xlf"}},
        {"q.xlf", {kEnglish, 1131, kFrench, 3179}, {"q.1131.xlf", "q.FRA.xlf", "q.3179.xlf"}},
    };
    for (const auto& c : cases) {
        exchange::ExportOptions options;
        options.languages = c.languages;
        EXPECT_EQ(exchange::XliffExportPaths(QLatin1String(c.path), q, options), c.expected);
    }
}

// The import takes a file for XLIFF by its ending or by its content: an export named without
// the ending, or a file a translator renamed, still comes back.
TEST_F(XliffTest, AFileIsXliffByItsEndingOrItsContent) {
    m_path = m_dir.filePath(u"survey"_s);
    Export(XliffVersion::V12, {kEnglish, kFrench, kGerman});
    auto utf16 = [](const QString& text) {
        return QByteArray("\xFF\xFE") +
               QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    };
    const struct {
        const char* name;
        QByteArray content; // null: no such file
        bool xliff;
    } cases[] = {
        {"survey.FRA", {}, true}, // written by the export above
        {"missing.XLF", {}, true},
        {"missing", {}, false},
        {"bom.dat", "\xEF\xBB\xBF\n  <?xml version=\"1.0\"?><xliff/>", true},
        {"bare.txt", "<xliff version=\"2.0\"/>", true},
        {"wide.txt", utf16(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>"_s), true},
        {"export.txt", utf16(u"QuestionId\tResponseId\t1033(ENU)\r\n"_s), false},
    };
    for (const auto& c : cases) {
        const QString path = m_dir.filePath(QLatin1String(c.name));
        if (!c.content.isNull())
            testutil::WriteAll(path, c.content);
        EXPECT_EQ(exchange::IsXliffFile(path), c.xliff) << c.name;
    }
}

// Stops the work at its first step, as a user pressing the progress dialog's button.
class StopAtOnce : public util::Progress {
public:
    void Begin(const QString&, qint64) override {}
    bool Advance(qint64) override { return false; }
    void End() override {}
};

TEST_F(XliffTest, AStoppedExportLeavesEveryFileAsItWas) {
    const QStringList files = {m_dir.filePath(u"survey.FRA.xlf"_s),
                               m_dir.filePath(u"survey.DEU.xlf"_s)};
    for (const QString& file : files)
        ASSERT_TRUE(testutil::WriteAll(file, "old"));
    exchange::ExportOptions options;
    options.languages = {kEnglish, kFrench, kGerman};
    util::RecordedMessages messages;
    StopAtOnce stop;
    exchange::ExportReport report;
    EXPECT_FALSE(exchange::ExportXliff(m_path, m_q, options, XliffVersion::V12, m_list, messages,
                                       &report, &stop));
    EXPECT_TRUE(report.stopped);
    for (const QString& file : files)
        EXPECT_EQ(testutil::ReadAll(file), QByteArray("old")) << file.toStdString();
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files).size(), 2);
}

TEST_F(XliffTest, AFileFilledByAnotherToolImportsExactlyTheFilledUnits) {
    Clear(kFrench);
    Export(XliffVersion::V12);
    const QString filled = m_dir.filePath(u"filled.xlf"_s);
    QProcess tool;
    tool.start(u"/usr/bin/python3"_s,
               {testutil::DataPath(u"exchange/fill_xliff.py"_s), m_path, filled,
                u"10_-2=Tab\\there & <there>\\nnext \\U0001F600 \\u05E9"_s});
    ASSERT_TRUE(tool.waitForFinished(60000));
    ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    const int units = QString::fromLatin1(tool.readAllStandardOutput()).trimmed().toInt();
    ASSERT_GT(units, 5);
    EXPECT_EQ(Validate(filled, XliffVersion::V12), QString());
    EXPECT_EQ(Import(filled, ImportOptions()), units);
    EXPECT_EQ(Caption(10, -2, kFrench),
              u"Tab\there & <there>\nnext "_s + QString::fromUcs4(U"\U0001F600") + u" \u05E9"_s);
    EXPECT_EQ(Caption(10, -1, kFrench), u"T:How satisfied are you?"_s);
}

TEST_F(XliffTest, OnlyUnchangedSetsChangedUnitsAsideInAValidFile) {
    for (const XliffVersion version : {XliffVersion::V12, XliffVersion::V20}) {
        SetUp();
        Export(version);
        // After the export the source of 10/-1 changes and a translation of 10/1 is lost.
        questionnaire::WriteCaption(m_q, 10, -1, kEnglish, u"How happy are you?"_s);
        questionnaire::WriteCaption(m_q, 10, 1, kFrench, QString());
        exchange::ImportOptions options = ImportOptions();
        options.onlyUnchanged = true;
        exchange::ImportReport report;
        EXPECT_EQ(Import(m_path, options, &report), 1);
        EXPECT_EQ(Caption(10, 1, kFrench), u"Très"_s);
        EXPECT_EQ(Caption(10, -1, kFrench), u"Êtes-vous satisfait ?"_s);
        EXPECT_EQ(report.rejectedRows, 1);
        const QString unused = m_dir.filePath(u"UnusedStrings.xlf"_s);
        EXPECT_EQ(report.unusedStringsPath, unused);
        EXPECT_EQ(Validate(unused, version), QString());
        const QString text = QString::fromUtf8(testutil::ReadAll(unused));
        EXPECT_TRUE(text.contains(u"How happy are you?"_s)) << text.toStdString();
        EXPECT_FALSE(text.contains(u"\"10_1\""_s)) << text.toStdString();
        // Copy identical applies each unit to every caption with the same source.
        questionnaire::WriteCaption(m_q, 10, 1, kFrench, QString());
        options.onlyUnchanged = false;
        options.copyIdentical = true;
        EXPECT_EQ(Import(m_path, options), 2);
        EXPECT_EQ(Caption(10, 3, kFrench), u"Très"_s);
    }
}

// A one-unit XLIFF document: its languages, the unit's target and its state.
QByteArray Document(const QString& version, const QString& source, const QString& target,
                    const QString& state, const QString& text = u"Tout à fait"_s) {
    const QString form =
        version == "2.0"_L1
            ? u"<xliff xmlns=\"urn:oasis:names:tc:xliff:document:2.0\" version=\"2.0\" "
              "srcLang=\"%1\" trgLang=\"%2\"><file id=\"f\"><unit id=\"10_1\"><segment%3>"
              "<source>Very</source><target>%4</target></segment></unit></file></xliff>"_s
            : u"<xliff xmlns=\"urn:oasis:names:tc:xliff:document:1.2\" version=\"1.2\"><file "
              "original=\"s\" source-language=\"%1\" target-language=\"%2\" "
              "datatype=\"plaintext\"><body><trans-unit id=\"10_1\"><source>Very</source>"
              "<target%3>%4</target></trans-unit></body></file></xliff>"_s;
    const QString stateAttribute = state.isEmpty() ? QString() : u" state=\"%1\""_s.arg(state);
    return form.arg(source, target, stateAttribute, text).toUtf8();
}

TEST_F(XliffTest, RefusalsAndUntranslatedStatesChangeNothing) {
    const QByteArray good = Document(u"1.2"_s, u"en-US"_s, u"fr-FR"_s, QString());
    const struct {
        const char* what;
        QByteArray bytes;
        qint32 result;
    } cases[] = {
        {"tab-separated text", "QuestionId\tResponseId\t1033(ENU)\r\n", exchange::kImportNoRow},
        {"entity declared", "<!DOCTYPE xliff [<!ENTITY e \"Tout\">]>" + good.left(good.size() - 40),
         exchange::kImportNoRow},
        {"cut short", good.left(good.size() - 30), exchange::kImportNoRow},
        {"unknown tag", Document("1.2", "en-US", "xx-XX", {}), exchange::kImportUnknownLanguage},
        {"not the questionnaire's", Document("2.0", "en-US", "fr-CA", {}),
         exchange::kImportLanguageNotInQuestionnaire},
        {"source not the reference, only unchanged", Document("1.2", "de-DE", "fr-FR", {}),
         exchange::kImportNoReferenceColumn},
        {"1.2 new", Document("1.2", "en-US", "fr-FR", "new"), 0},
        {"1.2 needs-translation", Document("1.2", "en-US", "fr-FR", "needs-translation"), 0},
        {"2.0 initial", Document("2.0", "en-US", "fr-FR", "initial"), 0},
        {"empty target", Document("2.0", "en-US", "fr-FR", "translated", {}), 0},
        {"1.2 no state", good, 1},
        {"source not the reference", Document("1.2", "de-DE", "fr-FR", {}), 1},
        {"1.2 final", Document("1.2", "en-US", "fr-FR", "final"), 1},
        {"2.0 translated", Document("2.0", "en-US", "fr-FR", "translated"), 1},
    };
    const QString path = m_dir.filePath(u"in.xlf"_s);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        ASSERT_TRUE(testutil::WriteAll(path, c.bytes));
        exchange::ImportOptions options = ImportOptions();
        options.onlyUnchanged = QByteArray(c.what).endsWith("only unchanged");
        EXPECT_EQ(Import(path, options), c.result);
        EXPECT_EQ(Caption(10, 1, kFrench), c.result == 1 ? u"Tout à fait"_s : u"Très"_s);
    }
    EXPECT_EQ(Import(m_dir.filePath(u"missing.xlf"_s), ImportOptions()),
              exchange::kImportCannotRead);
}

} // namespace
