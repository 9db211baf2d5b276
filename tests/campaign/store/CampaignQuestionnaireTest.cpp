#include "campaign/store/CampaignQuestionnaire.h"
#include "app/AppContext.h"
#include "app/BatchRunner.h"
#include "app/QuestionnaireDocument.h"
#include "campaign/schema/CampaignDatabase.h"
#include "campaign/store/CampaignStore.h"
#include "questionnaire/Modalite.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <QTextStream>
#include <gtest/gtest.h>

#include <memory>

namespace vw = varnel_wave;

namespace {

constexpr qint32 kEnglish = 1033;
constexpr qint32 kFrench = 1036;

std::unique_ptr<vw::CModality> Response(qint32 id, qint32 order, bool deleted, const char* english,
                                        const char* french) {
    auto m = std::make_unique<vw::CModality>();
    m->m_modalityID = id;
    m->m_questionID = 10;
    m->m_modalityOrder = order;
    m->m_isDeleted = deleted;
    m->m_entryCode = QString::number(order + 1);
    m->m_userData = QStringLiteral("data %1").arg(id);
    m->m_appearanceVolumeID = 5;
    for (const auto& [language, text] :
         {std::pair{kEnglish, english}, std::pair{kFrench, french}}) {
        auto caption = std::make_unique<vw::CModalityCaption>();
        caption->m_modalityID = id;
        caption->m_questionID = 10;
        caption->m_languageID = language;
        caption->m_shortCaption = QString::fromUtf8(text);
        m->AddCaption(std::move(caption));
    }
    return m;
}

// Both languages flagged default; question 10 has no French long caption, response 12 is
// deleted, and question 20 is deleted.
std::unique_ptr<vw::CCampaign> BuildCampaign() {
    auto c = std::make_unique<vw::CCampaign>();
    c->m_name = QStringLiteral("Household panel");
    c->m_versionNumber = QStringLiteral("5.6.0.0");
    auto wave = std::make_unique<vw::CWave>();
    wave->m_waveID = 1;
    wave->m_name = QStringLiteral("Spring");
    c->AddWave(std::move(wave));
    auto volume = std::make_unique<vw::CVolume>();
    volume->m_volumeID = 5;
    volume->m_waveID = 1;
    volume->m_name = QStringLiteral("Main");
    c->AddVolume(std::move(volume));
    for (const qint32 id : {kEnglish, kFrench}) {
        auto language = std::make_unique<vw::CLanguage>();
        language->m_languageID = id;
        language->m_isDefault = true;
        language->m_languageName =
            id == kEnglish ? QStringLiteral("English") : QStringLiteral("French");
        c->AddLanguage(std::move(language));
    }
    for (const qint32 id : {10, 20}) {
        auto q = std::make_unique<vw::CQuestion>();
        q->m_questionID = id;
        q->m_order = id / 10;
        q->m_isDeleted = id == 20;
        q->m_shortcut = QStringLiteral("Q%1").arg(id);
        q->m_indent = 2;
        q->m_appearanceVolumeID = 5;
        for (const qint32 language : {kEnglish, kFrench}) {
            auto caption = std::make_unique<vw::CQuestionCaption>();
            caption->m_questionID = id;
            caption->m_languageID = language;
            caption->m_longCaption =
                language == kEnglish ? QStringLiteral("How old are you?") : QString();
            caption->m_shortCaption =
                language == kEnglish ? QStringLiteral("Age") : QStringLiteral("Âge");
            q->AddCaption(std::move(caption));
        }
        if (id == 10) {
            q->AddModality(Response(11, 0, false, "Young", "Jeune"));
            q->AddModality(Response(12, 1, true, "Old", "Vieux"));
        }
        c->AddQuestion(std::move(q));
    }
    return c;
}

class CampaignQuestionnaire : public ::testing::Test {
protected:
    void SetUp() override {
        m_location = m_dir.filePath(QStringLiteral("panel.qew"));
        ASSERT_TRUE(campaign::CreateDatabase(m_location));
        const util::Outcome saved = campaign::SaveCampaign(m_location, *BuildCampaign());
        ASSERT_TRUE(saved) << saved.Reason().toStdString();
    }

    QTemporaryDir m_dir;
    QString m_location;
};

TEST_F(CampaignQuestionnaire, LoadShowsWhatIsNotDeletedWithItsNonEmptyCaptions) {
    CQuestionnaire q;
    vw::CCampaign read;
    campaign::RemovedResponses removed;
    ASSERT_TRUE(campaign::LoadCampaignAsQuestionnaire(m_location, q, read, removed));
    q.PrepareLinks();
    EXPECT_EQ(q.GetName(), QStringLiteral("Household panel"));
    ASSERT_EQ(q.GetLanguageCount(), 2);
    EXPECT_EQ(q.GetDefaultLanguage(), kFrench); // the later of the two flagged
    ASSERT_EQ(q.GetNbreQuestion(), 1);
    const CQuestion& question = q.GetQuestion(0);
    EXPECT_EQ(question.m_id, 10);
    EXPECT_EQ(question.m_shortcut, QStringLiteral("Q10"));
    const struct {
        const CLocalisedText& text;
        qint32 language;
        bool has;
        const char* value;
    } captions[] = {
        {question.LongCaption(), kEnglish, true, "How old are you?"},
        {question.LongCaption(), kFrench, false, ""}, // empty: untranslated
        {question.ShortCaption(), kEnglish, true, "Age"},
        {question.ShortCaption(), kFrench, true, "Âge"},
    };
    for (const auto& c : captions) {
        EXPECT_EQ(c.text.Has(c.language), c.has) << c.value;
        EXPECT_EQ(c.text.Get(c.language), QString::fromUtf8(c.value));
    }
    ASSERT_EQ(question.GetNbreModalite(), 1);
    EXPECT_EQ(question.GetModalite(0).m_id, 11);
    EXPECT_EQ(question.GetModalite(0).GetLocalisedLongCaption(kFrench), QStringLiteral("Jeune"));
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_EQ(removed[0]->m_modalityID, 12);
    EXPECT_TRUE(removed[0]->m_isDeleted);
}

TEST_F(CampaignQuestionnaire, SaveWritesTheCaptionsAndKeepsWhatTheQuestionnaireDoesNotShow) {
    campaign::CampaignQuestionnaireStore store;
    CQuestionnaire q;
    ASSERT_TRUE(store.Load(m_location, q, {}));
    q.PrepareLinks();
    q.GetAdrQuestion(0)->SetLocalisedLongCaption(kFrench, QStringLiteral("Quel âge avez-vous ?"));
    q.GetAdrQuestion(0)->GetAdrModalite(0)->SetLocalisedLongCaption(kEnglish,
                                                                    QStringLiteral("Younger"));
    const util::Outcome saved = store.SaveWhole(m_location, q, {});
    ASSERT_TRUE(saved) << saved.Reason().toStdString();

    vw::CCampaign written;
    ASSERT_TRUE(campaign::LoadCampaign(m_location, written));
    EXPECT_EQ(written.m_versionNumber, QStringLiteral("5,6,1,0"));
    const auto expected = BuildCampaign();
    const vw::CQuestion* question = written.FindQuestion(10);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->m_indent, 2); // not in the questionnaire, kept
    ASSERT_NE(question->FindCaption(kFrench), nullptr);
    EXPECT_EQ(question->FindCaption(kFrench)->m_longCaption,
              QStringLiteral("Quel âge avez-vous ?"));
    EXPECT_EQ(question->FindCaption(kFrench)->m_shortCaption, QStringLiteral("Âge"));
    const vw::CModality* kept = written.FindModality(11);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->FindCaption(kEnglish)->m_shortCaption, QStringLiteral("Younger"));
    EXPECT_EQ(kept->m_userData, QStringLiteral("data 11"));
    // The deleted response and question are back as they were.
    const vw::CModality* removed = written.FindModality(12);
    ASSERT_NE(removed, nullptr);
    const vw::CModality& original = *expected->FindModality(12);
    EXPECT_TRUE(removed->m_isDeleted);
    EXPECT_EQ(removed->m_entryCode, original.m_entryCode);
    EXPECT_EQ(removed->m_userData, original.m_userData);
    for (const qint32 language : {kEnglish, kFrench})
        EXPECT_EQ(removed->FindCaption(language)->m_shortCaption,
                  original.FindCaption(language)->m_shortCaption);
    ASSERT_NE(written.FindQuestion(20), nullptr);
    EXPECT_TRUE(written.FindQuestion(20)->m_isDeleted);
    // Only the later default language stays flagged.
    ASSERT_NE(written.FindLanguage(kEnglish), nullptr);
    EXPECT_FALSE(written.FindLanguage(kEnglish)->m_isDefault);
    EXPECT_TRUE(written.FindLanguage(kFrench)->m_isDefault);
}

TEST_F(CampaignQuestionnaire, AnUpperCaseEndingOpensInTheDocumentAndInBatchWork) {
    const QString upper = m_dir.filePath(QStringLiteral("PANEL.QEW"));
    ASSERT_TRUE(QFile::rename(m_location, upper));
    app::AppContext app;
    util::RecordedMessages messages;
    {
        app::QuestionnaireDocument document(app, messages);
        ASSERT_TRUE(document.OpenSilently(upper)) << document.LastError().toStdString();
        ASSERT_NE(document.Questionnaire(), nullptr);
        EXPECT_EQ(document.Questionnaire()->GetNbreQuestion(), 1);
        EXPECT_EQ(document.Type(), qint16(questionnaire::FileType::Campaign));
    }
    QString listing;
    QTextStream out(&listing);
    ASSERT_TRUE(app::RunBatch(
        app, {QStringLiteral("translator"), upper, QStringLiteral("listcaptions")}, messages, out));
    out.flush();
    EXPECT_EQ(app.exitCode, 0) << messages.messages.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(listing.contains(QStringLiteral("How old are you?"))) << listing.toStdString();
    EXPECT_TRUE(listing.contains(QStringLiteral("Jeune"))) << listing.toStdString();
    EXPECT_FALSE(listing.contains(QStringLiteral("Vieux"))) << listing.toStdString();
}

} // namespace
