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

using app::BatchOptions;

namespace {

const QString kExample = testutil::SourcePath(QStringLiteral("examples/customer-satisfaction.xml"));

TEST(BatchOptions, ParsingRules) {
    auto parse = [](QStringList options) {
        return app::ParseBatchOptions(
            QStringList{QStringLiteral("translator"), QStringLiteral("survey.qes")} + options);
    };
    BatchOptions o = parse({QStringLiteral("/EXPORT:C:\\out.txt")});
    EXPECT_EQ(o.operation, BatchOptions::Operation::Export);
    EXPECT_EQ(o.path, QStringLiteral("C:\\out.txt"));

    o = parse({QStringLiteral("export:a.txt"), QStringLiteral("-translate:b.txt"),
               QStringLiteral("-Languages:ENU,FRA"), QStringLiteral("languages:1031"),
               QStringLiteral("ImportUnchanged"), QStringLiteral("--copyidentical"),
               QStringLiteral("reference"), QStringLiteral("colour:red"),
               QStringLiteral("headers:Key,Item")});
    EXPECT_EQ(o.operation, BatchOptions::Operation::Translate); // the last operation wins
    EXPECT_EQ(o.path, QStringLiteral("b.txt"));                 // shared with export
    EXPECT_EQ(o.languages, QStringLiteral("1031"));             // the last value wins
    EXPECT_TRUE(o.importUnchanged);
    EXPECT_FALSE(o.copyIdentical); // only one leading hyphen is removed
    EXPECT_TRUE(o.reference.isEmpty());
    EXPECT_EQ(o.headers, QStringLiteral("Key,Item"));

    o = parse({QStringLiteral("translate:C:\\in.txt"), QStringLiteral("addlanguage")});
    EXPECT_EQ(o.operation, BatchOptions::Operation::AddLanguage);
    EXPECT_EQ(parse({}).operation, BatchOptions::Operation::None);
    EXPECT_EQ(parse({QStringLiteral("addlanguage:x")}).operation, BatchOptions::Operation::None);
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
        m_survey = m_dir.filePath(QStringLiteral("survey.xml"));
        ASSERT_TRUE(QFile::copy(kExample, m_survey));
    }

    ProcessRun Translator(const QStringList& arguments) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // Batch work must not need a display.
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
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
        if (!run.result.isEmpty())
            EXPECT_EQ(run.status, run.result.toInt() & 0xFF) << run.result.toStdString();
        return run;
    }
    QString Path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
    QString m_survey;
};

// A person at a terminal sees the work progress, on standard error; a script sees none.
TEST_F(BatchProcessTest, ExportEndsWithMinusTwentyAndShowsProgressOnATerminalOnly) {
    const ProcessRun run =
        Translator({m_survey, QStringLiteral("export:out.txt"), QStringLiteral("excludemessage")});
    EXPECT_EQ(run.result, QStringLiteral("-20"));
    EXPECT_EQ(run.err, QString()) << "a script reads no progress";
    const QByteArray bytes = testutil::ReadAll(Path(QStringLiteral("out.txt")));
    EXPECT_TRUE(bytes.startsWith(testutil::Utf16Le(
        QStringLiteral("QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\t1031(DEU)\r\n"))));
    EXPECT_FALSE(bytes.contains(testutil::Utf16Le(QStringLiteral("\r\n-1\t"), false)));

    const ProcessRun unwritable =
        Translator({m_survey, QStringLiteral("export:no/such/folder/out.txt")});
    EXPECT_EQ(unwritable.result, QStringLiteral("-20"));
    EXPECT_TRUE(unwritable.err.contains(QLatin1String("Cannot create export file")));

    QProcess terminal; // script(1) runs the program on a pseudo-terminal of its own
    terminal.setWorkingDirectory(m_dir.path());
    terminal.start(QStringLiteral("script"), {QStringLiteral("-qec"),
                                              QStringLiteral("'%1' '%2' export:tty.txt")
                                                  .arg(QStringLiteral(TRANSLATOR_BINARY), m_survey),
                                              QStringLiteral("/dev/null")});
    ASSERT_TRUE(terminal.waitForFinished(60000));
    const QString seen = QString::fromUtf8(terminal.readAllStandardOutput());
    EXPECT_TRUE(seen.contains(QLatin1String("\rReading the questionnaire: ")))
        << seen.toStdString();
    EXPECT_TRUE(seen.contains(QLatin1String("\rExporting the captions for translation: 100 %")))
        << seen.toStdString();
    EXPECT_TRUE(seen.contains(QLatin1String("result=-20")));
}

// A run that fails gives its code and leaves the questionnaire as it was.
TEST_F(BatchProcessTest, ImportReturnsItsCountAndSavesAndFailuresSaveNothing) {
    ASSERT_TRUE(
        testutil::WriteAll(Path(QStringLiteral("in.txt")),
                           testutil::Utf16Le(QStringLiteral("Key\tItem\tignored\r\n"
                                                            "110\t3\tWenig zufrieden\r\n"
                                                            "110\t4\tGar nicht zufrieden\r\n"))));
    const QStringList import = {QStringLiteral("translate:in.txt"), QStringLiteral("languages:DEU"),
                                QStringLiteral("headers:Key,Item"),
                                QStringLiteral("reference:deu")};
    EXPECT_EQ(Translator(QStringList{m_survey} + import).result, QStringLiteral("2"));
    CQuestionnaire q;
    ASSERT_TRUE(questionnaire::ReadXmlFile(m_survey, q));
    EXPECT_EQ(questionnaire::ReadCaption(q, 110, 4, 1031), QStringLiteral("Gar nicht zufrieden"));

    // Without the headers option the file is refused.
    const QByteArray saved = testutil::ReadAll(m_survey);
    EXPECT_EQ(Translator({m_survey, QStringLiteral("translate:in.txt")}).result,
              QStringLiteral("-13"));
    EXPECT_EQ(testutil::ReadAll(m_survey), saved);

    EXPECT_EQ(
        Translator({Path(QStringLiteral("missing.qes")), QStringLiteral("export:out.txt")}).result,
        QStringLiteral("-1"));
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("out.txt"))));

    // A database that refuses every change to its captions cannot be saved.
    const QString qes = Path(QStringLiteral("locked.qes"));
    CQuestionnaire example;
    ASSERT_TRUE(questionnaire::ReadXmlFile(kExample, example));
    ASSERT_TRUE(questionnaire::WriteQesFile(qes, example, 0x100));
    ASSERT_TRUE(testutil::Sql(
        qes, {QStringLiteral("CREATE TRIGGER locked BEFORE DELETE ON question_captions "
                             "BEGIN SELECT RAISE(ABORT, 'captions are locked'); END")}));
    const QByteArray before = testutil::ReadAll(qes);
    EXPECT_EQ(Translator(QStringList{qes} + import).result, QStringLiteral("-2"));
    EXPECT_EQ(testutil::ReadAll(qes), before);
}

TEST_F(BatchProcessTest, AddLanguageSavesOnlyWhenSomethingWasAdded) {
    const QByteArray before = testutil::ReadAll(m_survey);
    ProcessRun run = Translator(
        {m_survey, QStringLiteral("addlanguage"), QStringLiteral("languages:ENU,fra,Klingon")});
    EXPECT_EQ(run.result, QStringLiteral("0"));
    EXPECT_EQ(testutil::ReadAll(m_survey), before);

    run =
        Translator({m_survey, QStringLiteral("addlanguage"), QStringLiteral("languages:ESN,1040")});
    EXPECT_EQ(run.result, QStringLiteral("0"));
    CQuestionnaire q;
    ASSERT_TRUE(questionnaire::ReadXmlFile(m_survey, q));
    ASSERT_EQ(q.GetLanguageCount(), 5);
    EXPECT_EQ(q.GetLanguage(3).m_id, 3082);
    EXPECT_EQ(q.GetLanguage(4).m_id, 1040);
}

TEST_F(BatchProcessTest, DictionaryOptions) {
    const QString memory = Path(QStringLiteral("memory.dic"));
    ProcessRun run = Translator(
        {m_survey, QStringLiteral("senddictionary"), QStringLiteral("dictionary:") + memory});
    const int sent = run.result.toInt();
    EXPECT_GT(sent, 10);
    EXPECT_TRUE(run.out.contains(
        QStringLiteral("%1 entrie(s) have been added to the dictionary").arg(sent)))
        << run.out.toStdString();
    util::RecordedMessages messages;
    CDictionary saved;
    ASSERT_TRUE(saved.Load(memory, messages));
    EXPECT_EQ(saved.GetEntryCount(), sent);
    // Sending again adds nothing: every row matches its entry.
    EXPECT_EQ(Translator({m_survey, QStringLiteral("senddictionary"),
                          QStringLiteral("dictionary:") + memory})
                  .result,
              QStringLiteral("0"));

    CDictionary german;
    german.AddEntry(
        {{1033, QStringLiteral("Not very satisfied")}, {1031, QStringLiteral("Wenig zufrieden")}});
    const QString germanPath = Path(QStringLiteral("german.dic"));
    ASSERT_TRUE(german.Save(germanPath, messages));
    run = Translator(
        {m_survey, QStringLiteral("autotranslate"), QStringLiteral("dictionary:") + germanPath});
    EXPECT_EQ(run.result, QStringLiteral("1"));
    CQuestionnaire q;
    ASSERT_TRUE(questionnaire::ReadXmlFile(m_survey, q));
    EXPECT_EQ(questionnaire::ReadCaption(q, 110, 3, 1031), QStringLiteral("Wenig zufrieden"));

    // A save that fails (a file stands where the folder should be) adds nothing, and a script
    // must not read that it did.
    ASSERT_TRUE(testutil::WriteAll(Path(QStringLiteral("blocker")), "x"));
    ASSERT_EQ(testutil::WriteTmxWithToolkit(Path(QStringLiteral("shared.tmx"))), QString());
    const QString blocked = Path(QStringLiteral("blocker/memory.dic"));
    for (const QStringList& arguments :
         {QStringList{m_survey, QStringLiteral("senddictionary"),
                      QStringLiteral("dictionary:") + blocked},
          QStringList{blocked, QStringLiteral("translate:shared.tmx")}}) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        run = Translator(arguments);
        EXPECT_EQ(run.result, QStringLiteral("-3"));
        EXPECT_TRUE(
            run.err.contains(QStringLiteral("Cannot save the dictionary '%1'.").arg(blocked)))
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
            1033, QStringLiteral("B: ") + other.GetQuestion(i).GetLocalisedLongCaption(1033));
    const QString otherPath = Path(QStringLiteral("other.xml"));
    ASSERT_TRUE(questionnaire::WriteXmlFile(otherPath, other));
    const QString memory = Path(QStringLiteral("shared.dic"));
    const QString option = QStringLiteral("dictionary:") + memory;
    for (int round = 0; round < 3; ++round) {
        QFile::remove(memory);
        QProcess a;
        QProcess b;
        a.start(QStringLiteral(TRANSLATOR_BINARY),
                {m_survey, QStringLiteral("senddictionary"), option});
        b.start(QStringLiteral(TRANSLATOR_BINARY),
                {otherPath, QStringLiteral("senddictionary"), option});
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

// XLIFF for translation tools and TMX for the dictionary, through the real program.
TEST_F(BatchProcessTest, XliffAndTmxFiles) {
    const struct {
        QStringList arguments;
        const char* result;
        const char* file; // written by the run, and what it must hold
        const char* holds;
    } runs[] = {
        {{m_survey, "export:out.xlf", "languages:ENU,FRA"}, "0", "out.xlf", "version=\"1.2\""},
        {{m_survey, "export:out2.XLIFF", "xliff:2.0", "languages:ENU,FRA"},
         "0",
         "out2.XLIFF",
         "version=\"2.0\""},
        {{m_survey, "export:bad.xlf", "xliff:2.1"}, "-20", nullptr, nullptr},
        {{m_survey, "translate:out2.XLIFF"}, "0", nullptr, nullptr}, // every target as it is
        {{Path("memory.dic"), "export:memory.tmx"}, "-1", nullptr, nullptr}, // no dictionary
        {{Path("memory.dic"), "translate:shared.tmx"}, "2", nullptr, nullptr},
        {{Path("memory.dic"), "export:memory.tmx"}, "0", "memory.tmx", "xml:lang=\"fr-FR\""},
        {{Path("memory.dic"), "translate:out.xlf"}, "-1", nullptr, nullptr}, // no questionnaire
    };
    ASSERT_EQ(testutil::WriteTmxWithToolkit(Path(QStringLiteral("shared.tmx"))), QString());
    for (const auto& r : runs) {
        SCOPED_TRACE(r.arguments.join(QLatin1Char(' ')).toStdString());
        const ProcessRun run = Translator(r.arguments);
        EXPECT_EQ(run.result, QLatin1String(r.result)) << run.err.toStdString();
        if (!r.file)
            continue;
        const QString file = Path(QLatin1String(r.file));
        EXPECT_TRUE(testutil::ReadAll(file).contains(r.holds));
        // Other programs read what this one writes.
        if (file.endsWith(QLatin1String(".tmx")))
            EXPECT_EQ(testutil::ReadTmxWithToolkit(file), QString());
        else
            EXPECT_EQ(
                testutil::ValidateXliff(file, r.arguments.contains("xliff:2.0") ? "2.0" : "1.2"),
                QString());
    }
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("bad.xlf"))));
}

TEST_F(BatchProcessTest, WithoutAnOperationNoBatchWorkIsDone) {
    for (const QStringList& arguments :
         {QStringList{m_survey}, QStringList{m_survey, QStringLiteral("translate:")},
          QStringList{m_survey, QStringLiteral("colour:red")}}) {
        const ProcessRun run = Translator(arguments);
        EXPECT_TRUE(run.result.isEmpty()) << arguments.join(u' ').toStdString();
        EXPECT_NE(run.status, 0);
    }
    ProcessRun run = Translator({QStringLiteral("--help")});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.contains(QLatin1String("importunchanged")));
    run = Translator({QStringLiteral("--version")});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.startsWith(QLatin1String("Translator ")));
}

} // namespace
