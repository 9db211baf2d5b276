// Campaigns written by another program, and campaigns moved to and shared on a server, through
// the program's batch work.
#include "app/AppContext.h"
#include "app/BatchRunner.h"
#include "app/QuestionnaireDocument.h"
#include "campaign/store/CampaignStore.h"
#include "common/PostgresServer.h"
#include "common/TestUtil.h"
#include "questionnaire/Modalite.h"
#include "util/Messages.h"
#include "util/SqlConnection.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <QTextStream>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

using namespace Qt::StringLiterals;
namespace vw = varnel_wave;

namespace {

constexpr qint32 kEnglish = 1033;
constexpr qint32 kFrench = 1036;
constexpr qint32 kGerman = 1031;

struct BatchRun {
    qint32 exitCode = 0;
    QString messages;
};

BatchRun Batch(const QStringList& arguments) {
    app::AppContext app;
    util::RecordedMessages messages;
    QString listing;
    QTextStream out(&listing);
    EXPECT_TRUE(app::RunBatch(app, QStringList{u"translator"_s} + arguments, messages, out));
    return {app.exitCode, messages.messages.join(u'\n')};
}

// A batch "Save As"; false, the messages told, when it did not save.
bool SaveAs(const QString& from, const QString& to) {
    const BatchRun run = Batch({from, u"saveas:"_s + to});
    EXPECT_EQ(run.exitCode, 0) << run.messages.toStdString();
    return run.exitCode == 0;
}

// The bytes of the tab-separated export of the campaign at `location`, written to `path`.
QByteArray Export(const QString& location, const QString& path) {
    const BatchRun run = Batch({location, u"export:"_s + path});
    EXPECT_EQ(run.exitCode, -20) << run.messages.toStdString();
    return testutil::ReadAll(path);
}

// Writes the campaign the way another program would (Python's sqlite3, version 5.5.0.0).
void WriteWithPython(const QString& path) {
    QProcess python;
    python.start(u"python3"_s, {testutil::DataPath(u"campaign/independent_writer.py"_s), path});
    ASSERT_TRUE(python.waitForFinished(60000));
    ASSERT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
}

vw::CCampaign Load(const QString& location) {
    vw::CCampaign campaign;
    const util::Outcome loaded = campaign::LoadCampaign(location, campaign);
    EXPECT_TRUE(loaded) << loaded.Reason().toStdString();
    return campaign;
}

// The long caption of question 10.
QString QuestionCaption(const vw::CCampaign& c, qint32 language) {
    const vw::CQuestionCaption* caption = c.FindQuestion(10)->FindCaption(language);
    return caption ? caption->m_longCaption : u"<none>"_s;
}

QString ResponseCaption(const vw::CCampaign& c, qint32 response, qint32 language) {
    const vw::CModality* modality = c.FindModality(response);
    const vw::CModalityCaption* caption = modality ? modality->FindCaption(language) : nullptr;
    return caption ? caption->m_shortCaption : u"<none>"_s;
}

// One campaign another program wrote: exported, moved to a server and back with the same export,
// shared there by two translators saving at once, and as a file translated, given a language and
// migrated by the save.
TEST(CampaignFromAnotherProgram, ExportsMovesToAServerAndBackIsSharedThereAndMigratesWhenSaved) {
    testutil::PostgresServer postgres;
    ASSERT_TRUE(postgres.Start()) << postgres.Error().toStdString();
    QTemporaryDir dir;
    const QString file = dir.filePath(u"panel.qew"_s);
    WriteWithPython(file);
    const QString exported = dir.filePath(u"file.txt"_s);
    const QByteArray fromFile = Export(file, exported);
    const QString text = QStringDecoder(QStringDecoder::Utf16)(fromFile);
    // The deleted response (12, "Pear") stays out; empty captions are not passed on.
    EXPECT_TRUE(text.startsWith(u"QuestionId\tResponseId\t1033(ENU)\t1036(FRA)\r\n"_s))
        << text.toStdString();
    QString translated = text; // imported at the end
    for (const auto& [row, french] :
         {std::pair{"10\t-1\tWhich fruit do you like?\t", "Quel fruit aimez-vous ?"},
          std::pair{"10\t13\tPlum\t", "Prune"}}) {
        const QString line = QLatin1String(row) + u"\r\n"_s;
        EXPECT_TRUE(text.contains(line)) << row;
        translated.replace(line, QLatin1String(row) + QLatin1String(french) + u"\r\n"_s);
    }
    EXPECT_FALSE(text.contains(u"Pear"_s));

    const QString server = postgres.CreateDatabase(u"moved"_s);
    ASSERT_FALSE(server.isEmpty()) << postgres.Error().toStdString();
    ASSERT_TRUE(SaveAs(file, server));
    EXPECT_EQ(Export(server, dir.filePath(u"server.txt"_s)), fromFile);

    // An upper-case ending names a campaign too, to save into and to open.
    const QString back = dir.filePath(u"back.QEW"_s);
    ASSERT_TRUE(SaveAs(server, back));
    EXPECT_EQ(Export(back, dir.filePath(u"back.txt"_s)), fromFile);
    // What the questionnaire does not show made the trip too; the deleted response stays only if
    // the store kept it beside the questionnaire. (The campaign questionnaire test checks that it
    // is written back whole.)
    const vw::CCampaign round = Load(back);
    EXPECT_EQ(round.m_versionNumber, u"5,6,1,0"_s);
    ASSERT_NE(round.FindModality(12), nullptr);
    EXPECT_TRUE(round.FindModality(12)->m_isDeleted);
    ASSERT_EQ(round.Waves().size(), 1u);
    EXPECT_EQ(round.Waves().front()->m_name, u"Autumn"_s);

    const QString xml = dir.filePath(u"panel.xml"_s);
    EXPECT_TRUE(SaveAs(server, xml));
    EXPECT_EQ(Export(xml, dir.filePath(u"xml.txt"_s)), fromFile);

    // A server nobody listens on: not saved, and the reason is given.
    const BatchRun refused =
        Batch({file, u"saveas:postgresql://nobody@/none?host=%1&port=1"_s.arg(dir.path())});
    EXPECT_EQ(refused.exitCode, -2);
    EXPECT_FALSE(refused.messages.isEmpty());

    // Two translators open the campaign on the server, each edits a different caption, and both
    // save at once.
    struct Translator {
        app::AppContext app;
        util::RecordedMessages messages;
        std::unique_ptr<app::QuestionnaireDocument> document;
        bool saved = false;
    };
    Translator french;
    Translator english;
    for (Translator* t : {&french, &english}) {
        t->document = std::make_unique<app::QuestionnaireDocument>(t->app, t->messages);
        ASSERT_TRUE(t->document->OpenSilently(server)) << t->document->LastError().toStdString();
    }
    CQuestion& frenchQuestion = *french.document->Questionnaire()->GetAdrQuestion(0);
    frenchQuestion.SetLocalisedLongCaption(kFrench, u"Quel fruit aimez-vous ?"_s);
    CQuestion& englishQuestion = *english.document->Questionnaire()->GetAdrQuestion(0);
    englishQuestion.GetAdrModalite(0)->SetLocalisedLongCaption(kEnglish, u"Green apple"_s);
    std::thread first([&french] { french.saved = french.document->SaveBatch(); });
    std::thread second([&english] { english.saved = english.document->SaveBatch(); });
    first.join();
    second.join();
    EXPECT_TRUE(french.saved) << french.document->LastError().toStdString();
    EXPECT_TRUE(english.saved) << english.document->LastError().toStdString();

    const vw::CCampaign both = Load(server);
    EXPECT_EQ(QuestionCaption(both, kFrench), u"Quel fruit aimez-vous ?"_s);
    EXPECT_EQ(ResponseCaption(both, 11, kEnglish), u"Green apple"_s);
    EXPECT_EQ(ResponseCaption(both, 11, kFrench), u"Pomme"_s);
    EXPECT_EQ(both.m_versionNumber, u"5,6,1,0"_s);

    // The file, translated through its export and given a language.
    ASSERT_TRUE(testutil::WriteAll(exported, testutil::Utf16Le(translated)));
    const BatchRun importRun = Batch({file, u"translate:"_s + exported});
    EXPECT_EQ(importRun.exitCode, 2) << importRun.messages.toStdString();

    const BatchRun added = Batch({file, u"addlanguage"_s, u"languages:%1"_s.arg(kGerman)});
    EXPECT_EQ(added.exitCode, 0) << added.messages.toStdString();

    // The save migrated the file: the tag table and columns are there.
    EXPECT_TRUE(testutil::Sql(
        file, {uR"(SELECT q."Tags", m."Tags" FROM "Questions" q, "Modalities" m, "Tags" t)"_s}));

    const vw::CCampaign saved = Load(file);
    EXPECT_EQ(saved.m_versionNumber, u"5,6,1,0"_s);
    EXPECT_EQ(QuestionCaption(saved, kFrench), u"Quel fruit aimez-vous ?"_s);
    EXPECT_EQ(ResponseCaption(saved, 13, kFrench), u"Prune"_s);
    EXPECT_EQ(ResponseCaption(saved, 11, kFrench), u"Pomme"_s);
    EXPECT_EQ(saved.FindQuestion(10)->m_userData, u"kept as is"_s);
    ASSERT_NE(saved.FindLanguage(kGerman), nullptr);
    EXPECT_TRUE(saved.FindLanguage(kEnglish)->m_isDefault);
}

// The state a failed "Save As" must leave: the file's bytes, or the server database's tables and
// export.
QByteArray Snapshot(const QString& location, const QString& scratch) {
    if (!util::sql::IsServerLocation(location))
        return QFileInfo::exists(location) ? testutil::ReadAll(location) : QByteArray("absent");
    util::sql::Connection db;
    EXPECT_TRUE(db.Open(location));
    QStringList tables = db.Tables();
    db.Close();
    tables.sort();
    const QByteArray names = tables.join(u' ').toUtf8();
    return tables.isEmpty() ? names : names + '\n' + Export(location, scratch);
}

// A questionnaire saved as a campaign, and saved again over it, keeps every response's captions:
// the example numbers the responses of each question from 1, a campaign numbers them across, and
// the second save finds the responses the first numbered.
//
// A save refused by the database (a shortcut longer than its column) leaves the target of "Save
// As" as it was, absent or empty included, and the document at its own file; the save that
// follows with the shortcut mended succeeds. From another type the target is a new campaign,
// from a campaign a copy of it.
TEST(CampaignSaveAs, KeepsEveryResponseCaptionAndAFailedOneChangesNeitherTargetNorDocument) {
    testutil::PostgresServer postgres;
    ASSERT_TRUE(postgres.Start()) << postgres.Error().toStdString();
    QTemporaryDir dir;
    const QString scratch = dir.filePath(u"scratch.txt"_s);
    const QString xml = testutil::SourcePath(u"examples/customer-satisfaction.xml"_s);
    const QString file = dir.filePath(u"source.qew"_s);
    for (const QString& from : {xml, file})
        ASSERT_TRUE(SaveAs(from, file));
    EXPECT_EQ(Load(file).m_versionNumber, u"5,6,1,0"_s); // as the program writes it
    app::AppContext context;
    CQuestionnaire original;
    CQuestionnaire campaign;
    ASSERT_TRUE(app::LoadQuestionnaire(context, xml, original));
    ASSERT_TRUE(app::LoadQuestionnaire(context, file, campaign));
    ASSERT_EQ(campaign.GetNbreQuestion(), original.GetNbreQuestion());
    int responses = 0;
    for (int i = 0; i < original.GetNbreQuestion(); ++i) {
        const CQuestion& b = original.GetQuestion(i);
        const CQuestion& a = campaign.GetQuestion(i);
        ASSERT_EQ(a.m_id, b.m_id);
        ASSERT_EQ(a.GetNbreModalite(), b.GetNbreModalite()) << b.m_id;
        for (int r = 0; r < b.GetNbreModalite(); ++r, ++responses)
            for (int l = 0; l < original.GetLanguageCount(); ++l) {
                const qint32 language = original.GetLanguage(l).m_id;
                EXPECT_EQ(a.GetModalite(r).GetLocalisedLongCaption(language),
                          b.GetModalite(r).GetLocalisedLongCaption(language))
                    << "question " << b.m_id << " response " << r << " language " << language;
            }
    }
    EXPECT_GT(responses, 10);

    const QString server = postgres.CreateDatabase(u"source"_s);
    ASSERT_TRUE(SaveAs(file, server));
    // Targets hold another campaign than the sources.
    const QString other = dir.filePath(u"other.qew"_s);
    WriteWithPython(other);

    enum class Target { File, Absent, Server, EmptyServer };
    const struct {
        const QString& source;
        Target target;
    } cases[] = {
        {xml, Target::File},         {xml, Target::Absent},  {xml, Target::Server},
        {file, Target::File},        {file, Target::Absent}, {file, Target::Server},
        {file, Target::EmptyServer}, {server, Target::File},
    };
    int row = 0;
    for (const auto& c : cases) {
        const QString name = u"target%1"_s.arg(++row);
        QString target = dir.filePath(name + u".qew"_s);
        if (c.target == Target::File) {
            ASSERT_TRUE(QFile::copy(other, target));
        }
        if (c.target == Target::Server || c.target == Target::EmptyServer)
            target = postgres.CreateDatabase(name);
        if (c.target == Target::Server) {
            ASSERT_TRUE(SaveAs(other, target));
        }
        const QByteArray before = Snapshot(target, scratch);
        const QStringList files = QDir(dir.path()).entryList(QDir::Files);

        app::AppContext app;
        util::RecordedMessages messages;
        app::QuestionnaireDocument document(app, messages);
        ASSERT_TRUE(document.OpenSilently(c.source)) << document.LastError().toStdString();
        QString& shortcut = document.Questionnaire()->GetAdrQuestion(0)->m_shortcut;
        const QString mended = shortcut;
        shortcut = QString(51, u'x');
        EXPECT_FALSE(document.SaveBatchAs(target)) << row;
        EXPECT_FALSE(document.LastError().isEmpty()) << row;
        EXPECT_EQ(document.Path(), c.source) << row;
        EXPECT_TRUE(Snapshot(target, scratch) == before) << row; // bytes, too many to print
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), files) << row;

        shortcut = mended;
        ASSERT_TRUE(document.SaveBatchAs(target)) << row << document.LastError().toStdString();
        EXPECT_EQ(document.Path(), target) << row;
        EXPECT_EQ(
            Load(target).FindQuestion(document.Questionnaire()->GetQuestion(0).m_id)->m_shortcut,
            mended)
            << row;
    }
}

} // namespace
