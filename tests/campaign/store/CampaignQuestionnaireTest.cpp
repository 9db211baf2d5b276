#include "campaign/store/CampaignQuestionnaire.h"
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "campaign/schema/CampaignDatabase.h"
#include "campaign/store/CampaignStore.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Modalite.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

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
        for (const auto& [language, longCaption, shortCaption] :
             {std::tuple{kEnglish, "How old are you?", "Age"}, std::tuple{kFrench, "", "Âge"}}) {
            auto caption = std::make_unique<vw::CQuestionCaption>();
            caption->m_questionID = id;
            caption->m_languageID = language;
            caption->m_longCaption = QString::fromUtf8(longCaption);
            caption->m_shortCaption = QString::fromUtf8(shortCaption);
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

// One campaign file read as a questionnaire, written back, and opened by its upper-case name.
TEST(CampaignQuestionnaire, ShowsWhatIsNotDeletedAndSavesBackKeepingWhatItDoesNotShow) {
    QTemporaryDir dir;
    const QString location = dir.filePath(QStringLiteral("panel.qew"));
    ASSERT_TRUE(campaign::CreateDatabase(location));
    const auto expected = BuildCampaign();
    const util::Outcome created = campaign::SaveCampaign(location, *expected);
    ASSERT_TRUE(created) << created.Reason().toStdString();

    CQuestionnaire q;
    auto read = std::make_unique<vw::CCampaign>();
    campaign::RemovedResponses removed;
    ASSERT_TRUE(campaign::LoadCampaignAsQuestionnaire(location, q, *read, removed));
    q.PrepareLinks();
    EXPECT_EQ(q.GetName(), QStringLiteral("Household panel"));
    ASSERT_EQ(q.GetLanguageCount(), 2);
    EXPECT_EQ(q.GetDefaultLanguage(), kFrench);        // the later of the two flagged
    EXPECT_FALSE(q.IsAllowingInstructionAndComment()); // a campaign keeps none
    ASSERT_EQ(q.GetNbreQuestion(), 1);
    CQuestion& question = *q.GetAdrQuestion(0);
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

    // Saved back over the campaign as read.
    question.SetLocalisedLongCaption(kFrench, QStringLiteral("Quel âge avez-vous ?"));
    question.GetAdrModalite(0)->SetLocalisedLongCaption(kEnglish, QStringLiteral("Younger"));
    const util::Outcome saved =
        campaign::SaveQuestionnaireIntoCampaign(location, q, read, removed, true);
    ASSERT_TRUE(saved) << saved.Reason().toStdString();
    vw::CCampaign written;
    ASSERT_TRUE(campaign::LoadCampaign(location, written));
    EXPECT_EQ(written.m_versionNumber, QStringLiteral("5,6,1,0"));
    const vw::CQuestion* question10 = written.FindQuestion(10);
    ASSERT_NE(question10, nullptr);
    EXPECT_EQ(question10->m_indent, 2); // not in the questionnaire, kept
    ASSERT_NE(question10->FindCaption(kFrench), nullptr);
    EXPECT_EQ(question10->FindCaption(kFrench)->m_longCaption,
              QStringLiteral("Quel âge avez-vous ?"));
    EXPECT_EQ(question10->FindCaption(kFrench)->m_shortCaption, QStringLiteral("Âge"));
    const vw::CModality* kept = written.FindModality(11);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->FindCaption(kEnglish)->m_shortCaption, QStringLiteral("Younger"));
    EXPECT_EQ(kept->m_userData, QStringLiteral("data 11"));
    // The deleted response and question are back as they were.
    const vw::CModality* deleted = written.FindModality(12);
    ASSERT_NE(deleted, nullptr);
    const vw::CModality& original = *expected->FindModality(12);
    EXPECT_TRUE(deleted->m_isDeleted);
    EXPECT_EQ(deleted->m_entryCode, original.m_entryCode);
    EXPECT_EQ(deleted->m_userData, original.m_userData);
    for (const qint32 language : {kEnglish, kFrench})
        EXPECT_EQ(deleted->FindCaption(language)->m_shortCaption,
                  original.FindCaption(language)->m_shortCaption);
    ASSERT_NE(written.FindQuestion(20), nullptr);
    EXPECT_TRUE(written.FindQuestion(20)->m_isDeleted);
    // Only the later default language stays flagged.
    ASSERT_NE(written.FindLanguage(kEnglish), nullptr);
    EXPECT_FALSE(written.FindLanguage(kEnglish)->m_isDefault);
    EXPECT_TRUE(written.FindLanguage(kFrench)->m_isDefault);

    // An upper-case ending opens as a campaign (batch work opens one in the exchange tests).
    const QString upper = dir.filePath(QStringLiteral("PANEL.QEW"));
    ASSERT_TRUE(QFile::rename(location, upper));
    app::AppContext app;
    util::RecordedMessages messages;
    app::QuestionnaireDocument document(app, messages);
    ASSERT_TRUE(document.OpenSilently(upper)) << document.LastError().toStdString();
    EXPECT_EQ(document.Type(), qint16(questionnaire::FileType::Campaign));
    EXPECT_EQ(questionnaire::ReadCaption(*document.Questionnaire(), 10, -1, kFrench),
              QStringLiteral("Quel âge avez-vous ?"));
}

} // namespace
