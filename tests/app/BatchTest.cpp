#include "app/BatchRunner.h"
#include "common/TestUtil.h"
#include "dictionary/Dictionary.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"
#include "questionnaire/formats/XmlFile.h"
#include "util/Messages.h"

#include <QDir>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using app::BatchOptions;

namespace {

const QString kExample = testutil::SourcePath(u"examples/customer-satisfaction.xml"_s);

TEST(BatchOptions, ParsingRules) {
    auto parse = [](QStringList options) {
        return app::ParseBatchOptions(QStringList{u"translator"_s, u"survey.qes"_s} + options);
    };
    BatchOptions o = parse({u"/EXPORT:C:\\out.txt"_s});
    EXPECT_EQ(o.operation, BatchOptions::Operation::Export);
    EXPECT_EQ(o.path, u"C:\\out.txt"_s);

    o = parse({u"export:a.txt"_s, u"-translate:b.txt"_s, u"-Languages:ENU,FRA"_s,
               u"languages:1031"_s, u"ImportUnchanged"_s, u"--copyidentical"_s, u"reference"_s,
               u"colour:red"_s, u"headers:Key,Item"_s});
    EXPECT_EQ(o.operation, BatchOptions::Operation::Translate); // the last operation wins
    EXPECT_EQ(o.path, u"b.txt"_s);                              // shared with export
    EXPECT_EQ(o.languages, u"1031"_s);                          // the last value wins
    EXPECT_TRUE(o.importUnchanged);
    EXPECT_FALSE(o.copyIdentical); // only one leading hyphen is removed
    EXPECT_TRUE(o.reference.isEmpty());
    EXPECT_EQ(o.headers, u"Key,Item"_s);

    o = parse({u"translate:C:\\in.txt"_s, u"addlanguage"_s});
    EXPECT_EQ(o.operation, BatchOptions::Operation::AddLanguage);
    EXPECT_EQ(parse({}).operation, BatchOptions::Operation::None);
    EXPECT_EQ(parse({u"addlanguage:x"_s}).operation, BatchOptions::Operation::None);
}

struct ProcessRun {
    int status = 0;
    QString out;
    QString err;
    QString result; // the value of the last line "result=N", empty without one
};

class BatchProcessTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_survey = m_dir.filePath(u"survey.xml"_s);
        ASSERT_TRUE(QFile::copy(kExample, m_survey));
    }

    ProcessRun Translator(const QStringList& arguments) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // Batch work must not need a display.
        environment.remove(u"DISPLAY"_s);
        environment.remove(u"WAYLAND_DISPLAY"_s);
        environment.remove(u"QT_QPA_PLATFORM"_s);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_dir.path());
        process.start(QStringLiteral(TRANSLATOR_BINARY), arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        ProcessRun run;
        run.status = process.exitCode();
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        const QStringList lines = run.out.trimmed().split(QLatin1Char('\n'));
        if (lines.last().startsWith(QLatin1String("result=")))
            run.result = lines.last().mid(7);
        // A script that reads only the exit status sees the result's low byte.
        if (!run.result.isEmpty()) {
            EXPECT_EQ(run.status, run.result.toInt() & 0xFF) << run.result.toStdString();
        }
        return run;
    }
    QString Path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
    QString m_survey;
};

// A person at a terminal sees the work progress, on standard error; a script sees none.
TEST_F(BatchProcessTest, ExportEndsWithMinusTwentyAndShowsProgressOnATerminalOnly) {
    const ProcessRun run = Translator({m_survey, u"export:out.txt"_s, u"excludemessage"_s});
    EXPECT_EQ(run.result, u"-20"_s);
    EXPECT_EQ(run.err, QString()) << "a script reads no progress";
    const QByteArray bytes = testutil::ReadAll(Path(u"out.txt"_s));
    EXPECT_TRUE(bytes.startsWith(
        testutil::Utf16Le(u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\t1031(DEU)\r\n"_s)));
    EXPECT_FALSE(bytes.contains(testutil::Utf16Le(u"\r\n-1\t"_s, false)));

    QProcess terminal; // script(1) runs the program on a pseudo-terminal of its own
    terminal.setWorkingDirectory(m_dir.path());
    terminal.start(u"script"_s,
                   {u"-qec"_s,
                    u"'%1' '%2' export:tty.txt"_s.arg(QStringLiteral(TRANSLATOR_BINARY), m_survey),
                    u"/dev/null"_s});
    ASSERT_TRUE(terminal.waitForFinished(60000));
    const QString seen = QString::fromUtf8(terminal.readAllStandardOutput());
    EXPECT_TRUE(seen.contains(QLatin1String("\rReading the questionnaire: ")))
        << seen.toStdString();
    EXPECT_TRUE(seen.contains(QLatin1String("\rExporting the captions for translation: 100 %")))
        << seen.toStdString();
    EXPECT_TRUE(seen.contains(QLatin1String("result=-20")));
}

// Each run's result, in one folder one after the other: the file it writes and what that holds
// (other programs must read it too), or, for a file it must not write, that it did not; what it
// says on standard error. A run that fails leaves its questionnaire as it was.
TEST_F(BatchProcessTest, RunsEndWithTheirResultAndWriteOnlyWhatTheyShould) {
    ASSERT_TRUE(testutil::WriteAll(Path(u"in.txt"_s),
                                   testutil::Utf16Le(u"Key\tItem\tignored\r\n"
                                                     u"110\t3\tWenig zufrieden\r\n"
                                                     u"110\t4\tGar nicht zufrieden\r\n"_s)));
    ASSERT_EQ(testutil::WriteTmxWithToolkit(Path(u"shared.tmx"_s)), QString());
    // A database that refuses every change to its captions cannot be saved.
    const QString locked = Path(u"locked.qes"_s);
    CQuestionnaire example;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, example));
    ASSERT_TRUE(questionnaire::WriteQesFile(locked, example, 0x100));
    ASSERT_TRUE(
        testutil::Sql(locked, {u"CREATE TRIGGER locked BEFORE DELETE ON question_captions "
                               u"BEGIN SELECT RAISE(ABORT, 'captions are locked'); END"_s}));
    const struct {
        const char* command; // the first word names a file in the folder
        const char* result;  // none: no batch work was done, and the program says it failed
        bool keeps = false;  // the file the first word names is left byte for byte
        const char* file = nullptr;
        const char* holds = nullptr; // none: the file was not written
        const char* err = "";
    } runs[] = {
        {"survey.xml translate:in.txt languages:DEU headers:Key,Item reference:deu", "2"},
        {"survey.xml translate:in.txt", "-13", true}, // the headers option is missing
        {"missing.qes export:none.txt", "-1", false, "none.txt"},
        {"locked.qes translate:in.txt languages:DEU headers:Key,Item reference:deu", "-2", true},
        {"survey.xml addlanguage languages:ENU,fra,Klingon", "0", true}, // nothing to add
        {"survey.xml addlanguage languages:ESN,1040", "0"},
        {"survey.xml export:no/such/folder/out.txt", "-20", false, nullptr, nullptr,
         "Cannot create export file"},
        {"survey.xml export:survey.xml", "-20", true, nullptr, nullptr, "reads from"},
        // XLIFF for translation tools and TMX for the dictionary.
        {"survey.xml export:out.xlf languages:ENU,FRA", "0", false, "out.xlf", "version=\"1.2\""},
        {"survey.xml export:out2.XLIFF xliff:2.0 languages:ENU,FRA", "0", false, "out2.XLIFF",
         "version=\"2.0\""},
        {"survey.xml export:bad.xlf xliff:2.1", "-20", true, "bad.xlf"},
        {"survey.xml translate:out2.XLIFF", "0"}, // every target as it is
        {"memory.dic export:memory.tmx", "-1"},   // no dictionary
        {"memory.dic translate:shared.tmx", "2"},
        {"memory.dic export:memory.tmx", "0", false, "memory.tmx", "xml:lang=\"fr-FR\""},
        {"memory.dic translate:out.xlf", "-1"}, // no questionnaire
        {"survey.xml", nullptr, true},
        {"survey.xml translate:", nullptr, true},
        {"survey.xml colour:red", nullptr, true},
    };
    for (const auto& r : runs) {
        SCOPED_TRACE(r.command);
        QStringList arguments = QString::fromLatin1(r.command).split(QLatin1Char(' '));
        arguments[0] = Path(arguments[0]);
        const QByteArray before = testutil::ReadAll(arguments[0]);
        const ProcessRun run = Translator(arguments);
        EXPECT_EQ(run.result, QLatin1String(r.result)) << run.err.toStdString();
        if (!r.result) {
            EXPECT_NE(run.status, 0);
        }
        EXPECT_TRUE(run.err.contains(QLatin1String(r.err))) << run.err.toStdString();
        if (r.keeps) {
            EXPECT_EQ(testutil::ReadAll(arguments[0]), before);
        }
        // The files themselves are checked against the other programs by the XLIFF and TMX
        // tests; here, that the run chose the right writer.
        if (r.file && r.holds) {
            EXPECT_TRUE(testutil::ReadAll(Path(QLatin1String(r.file))).contains(r.holds));
        } else if (r.file) {
            EXPECT_FALSE(QFileInfo::exists(Path(QLatin1String(r.file))));
        }
    }
    // What the import and the added languages saved.
    CQuestionnaire q;
    ASSERT_TRUE(questionnaire::ReadXmlFile(m_survey, q));
    EXPECT_EQ(questionnaire::ReadCaption(q, 110, 4, 1031), u"Gar nicht zufrieden"_s);
    ASSERT_EQ(q.GetLanguageCount(), 5);
    EXPECT_EQ(q.GetLanguage(3).m_id, 3082);
    EXPECT_EQ(q.GetLanguage(4).m_id, 1040);

    // --version is checked on the installed program by the packaging test.
    const ProcessRun help = Translator({u"--help"_s});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.contains(QLatin1String("importunchanged")));
}

TEST_F(BatchProcessTest, DictionaryOptions) {
    const QString memory = Path(u"memory.dic"_s);
    ProcessRun run = Translator({m_survey, u"senddictionary"_s, u"dictionary:"_s + memory});
    const int sent = run.result.toInt();
    EXPECT_GT(sent, 10);
    EXPECT_TRUE(run.out.contains(u"%1 entrie(s) have been added to the dictionary"_s.arg(sent)))
        << run.out.toStdString();
    util::RecordedMessages messages;
    CDictionary saved;
    ASSERT_TRUE(saved.Load(memory, messages));
    EXPECT_EQ(saved.GetEntryCount(), sent);
    // Sending again adds nothing: every row matches its entry.
    EXPECT_EQ(Translator({m_survey, u"senddictionary"_s, u"dictionary:"_s + memory}).result,
              u"0"_s);

    CDictionary german;
    german.AddEntry({{1033, u"Not very satisfied"_s}, {1031, u"Wenig zufrieden"_s}});
    const QString germanPath = Path(u"german.dic"_s);
    ASSERT_TRUE(german.Save(germanPath, messages));
    run = Translator({m_survey, u"autotranslate"_s, u"dictionary:"_s + germanPath});
    EXPECT_EQ(run.result, u"1"_s);
    CQuestionnaire q;
    ASSERT_TRUE(questionnaire::ReadXmlFile(m_survey, q));
    EXPECT_EQ(questionnaire::ReadCaption(q, 110, 3, 1031), u"Wenig zufrieden"_s);

    // A save that fails (a file stands where the folder should be) adds nothing, and a script
    // must not read that it did.
    ASSERT_TRUE(testutil::WriteAll(Path(u"blocker"_s), "x"));
    ASSERT_EQ(testutil::WriteTmxWithToolkit(Path(u"shared.tmx"_s)), QString());
    const QString blocked = Path(u"blocker/memory.dic"_s);
    for (const QStringList& arguments :
         {QStringList{m_survey, u"senddictionary"_s, u"dictionary:"_s + blocked},
          QStringList{blocked, u"translate:shared.tmx"_s}}) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        run = Translator(arguments);
        EXPECT_EQ(run.result, u"-3"_s);
        EXPECT_TRUE(run.err.contains(u"Cannot save the dictionary '%1'."_s.arg(blocked)))
            << run.err.toStdString();
        EXPECT_FALSE(run.out.contains(QLatin1String("have been added"))) << run.out.toStdString();
    }
}

TEST_F(BatchProcessTest, TwoProgramsSavingOneDictionaryLeaveOneWholeSave) {
    // A second questionnaire whose question texts are all its own.
    CQuestionnaire other;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, other));
    for (int i = 0; i < other.GetNbreQuestion(); ++i)
        other.GetAdrQuestion(i)->SetLocalisedLongCaption(
            1033, u"B: "_s + other.GetQuestion(i).GetLocalisedLongCaption(1033));
    const QString otherPath = Path(u"other.xml"_s);
    ASSERT_TRUE(questionnaire::WriteXmlFile(otherPath, other));
    const QString memory = Path(u"shared.dic"_s);
    const QString option = u"dictionary:"_s + memory;
    for (int round = 0; round < 3; ++round) {
        QFile::remove(memory);
        QProcess a;
        QProcess b;
        a.start(QStringLiteral(TRANSLATOR_BINARY), {m_survey, u"senddictionary"_s, option});
        b.start(QStringLiteral(TRANSLATOR_BINARY), {otherPath, u"senddictionary"_s, option});
        ASSERT_TRUE(a.waitForFinished(60000) && b.waitForFinished(60000));
        util::RecordedMessages messages;
        CDictionary result;
        ASSERT_TRUE(result.Load(memory, messages)) << "round " << round;
        bool fromA = false;
        bool fromB = false;
        for (int e = 0; e < result.GetEntryCount(); ++e) {
            const QString english = result.GetEntry(e).GetText(1033);
            fromB = fromB || english.startsWith(QLatin1String("B: "));
            fromA = fromA ||
                    english == QLatin1String("Overall, how satisfied are you with our service?");
        }
        EXPECT_NE(fromA, fromB) << "round " << round << ": one whole save, never a mix";
    }
}

} // namespace
