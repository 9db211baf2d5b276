#include "campaign/store/CampaignQuestionnaire.h"
#include "campaign/CampaignBuilder.h"
#include "campaign/schema/CampaignDatabase.h"
#include "campaign/store/CampaignStore.h"
#include "common/TestUtil.h"
#include "questionnaire/Modalite.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
namespace vw = varnel_wave;

namespace {

constexpr qint32 kEnglish = 1033;
constexpr qint32 kFrench = 1036;

// One campaign file read as a questionnaire and written back. (Batch work opens one by an
// upper-case name in the exchange tests.)
TEST(CampaignQuestionnaire, ShowsWhatIsNotDeletedAndSavesBackKeepingWhatItDoesNotShow) {
    QTemporaryDir dir;
    const QString location = dir.filePath(u"panel.qew"_s);
    ASSERT_TRUE(campaign::CreateDatabase(location));
    // Both languages flagged default, question 300 deleted, and an older version text.
    const auto expected = vw::campaigntest::BuildCampaign();
    expected->m_versionNumber = u"5.6.0.0"_s;
    expected->FindLanguage(kFrench)->m_isDefault = true;
    expected->FindQuestion(300)->m_isDeleted = true;
    const util::Outcome created = campaign::SaveCampaign(location, *expected);
    ASSERT_TRUE(created) << created.Reason().toStdString();

    CQuestionnaire q;
    auto read = std::make_unique<vw::CCampaign>();
    campaign::RemovedResponses removed;
    ASSERT_TRUE(campaign::LoadCampaignAsQuestionnaire(location, q, *read, removed));
    q.PrepareLinks();
    EXPECT_EQ(q.GetName(), u"Panel"_s);
    ASSERT_EQ(q.GetLanguageCount(), 2);
    EXPECT_EQ(q.GetDefaultLanguage(), kFrench);        // the later of the two flagged
    EXPECT_FALSE(q.IsAllowingInstructionAndComment()); // a campaign keeps none
    ASSERT_EQ(q.GetNbreQuestion(), 2);
    CQuestion& question = *q.GetAdrQuestion(0);
    EXPECT_EQ(question.m_id, 100);
    EXPECT_EQ(question.m_shortcut, u"Q100"_s);
    EXPECT_EQ(q.GetQuestion(1).m_id, 200);
    const struct {
        const CLocalisedText& text;
        qint32 language;
        bool has;
        const char* value;
    } captions[] = {
        {question.LongCaption(), kEnglish, true, "How old are you?"},
        {question.LongCaption(), kFrench, true, "Quel âge avez-vous ?"},
        {question.ShortCaption(), kEnglish, true, "Age"},
        {question.ShortCaption(), kFrench, false, ""}, // empty: untranslated
    };
    for (const auto& c : captions) {
        EXPECT_EQ(c.text.Has(c.language), c.has) << c.value;
        EXPECT_EQ(c.text.Get(c.language), QString::fromUtf8(c.value));
    }
    ASSERT_EQ(question.GetNbreModalite(), 1);
    EXPECT_EQ(question.GetModalite(0).m_id, 1001);
    EXPECT_EQ(question.GetModalite(0).GetLocalisedLongCaption(kFrench), u"Oui"_s);
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_EQ(removed[0]->m_modalityID, 1002);
    EXPECT_TRUE(removed[0]->m_isDeleted);

    // Saved back over the campaign as read.
    question.SetLocalisedShortCaption(kFrench, u"Âge"_s);
    question.GetAdrModalite(0)->SetLocalisedLongCaption(kEnglish, u"Certainly"_s);
    const util::Outcome saved =
        campaign::SaveQuestionnaireIntoCampaign(location, q, read, removed, true);
    ASSERT_TRUE(saved) << saved.Reason().toStdString();
    vw::CCampaign written;
    ASSERT_TRUE(campaign::LoadCampaign(location, written));
    EXPECT_EQ(written.m_versionNumber, u"5,6,1,0"_s);
    const vw::CQuestion* question100 = written.FindQuestion(100);
    ASSERT_NE(question100, nullptr);
    EXPECT_EQ(question100->m_indent, 1); // not in the questionnaire, kept
    ASSERT_NE(question100->FindCaption(kFrench), nullptr);
    EXPECT_EQ(question100->FindCaption(kFrench)->m_shortCaption, u"Âge"_s);
    EXPECT_EQ(question100->FindCaption(kFrench)->m_longCaption, u"Quel âge avez-vous ?"_s);
    const vw::CModality* kept = written.FindModality(1001);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->FindCaption(kEnglish)->m_shortCaption, u"Certainly"_s);
    EXPECT_EQ(kept->m_userData, u"data of 1001"_s);
    // The deleted response and question are back as they were.
    const vw::CModality* deleted = written.FindModality(1002);
    ASSERT_NE(deleted, nullptr);
    const vw::CModality& original = *expected->FindModality(1002);
    EXPECT_TRUE(deleted->m_isDeleted);
    EXPECT_EQ(deleted->m_entryCode, original.m_entryCode);
    EXPECT_EQ(deleted->m_userData, original.m_userData);
    for (const qint32 language : {kEnglish, kFrench})
        EXPECT_EQ(deleted->FindCaption(language)->m_shortCaption,
                  original.FindCaption(language)->m_shortCaption);
    ASSERT_NE(written.FindQuestion(300), nullptr);
    EXPECT_TRUE(written.FindQuestion(300)->m_isDeleted);
    // Both default languages stay flagged; the later one is the questionnaire's default.
    ASSERT_NE(written.FindLanguage(kEnglish), nullptr);
    EXPECT_TRUE(written.FindLanguage(kEnglish)->m_isDefault);
    EXPECT_TRUE(written.FindLanguage(kFrench)->m_isDefault);
}

} // namespace

// Ids below 0 key system messages and other captions: a campaign showing a question or response
// with one is refused, for it would show and save another caption's text.
TEST(CampaignQuestionnaire, RefusesIdsBelowZeroItWouldShow) {
    const struct {
        const char* change;
        const char* reason; // none: the campaign opens
    } cases[] = {
        {R"(UPDATE "Questions" SET "QuestionID" = -1 WHERE "QuestionID" = 200)",
         "question id -1 is below 0"},
        {R"(UPDATE "Modalities" SET "ModalityID" = -3 WHERE "ModalityID" = 1001)",
         "response id -3 of question 100 is below 0"},
        {R"(UPDATE "Questions" SET "QuestionID" = -2 WHERE "QuestionID" = 300)", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.change);
        QTemporaryDir dir;
        const QString location = dir.filePath(u"panel.qew"_s);
        ASSERT_TRUE(campaign::CreateDatabase(location));
        const auto built = vw::campaigntest::BuildCampaign();
        built->FindQuestion(300)->m_isDeleted = true;
        ASSERT_TRUE(campaign::SaveCampaign(location, *built));
        ASSERT_TRUE(testutil::Sql(location, {QString::fromUtf8(c.change)}));
        CQuestionnaire q;
        vw::CCampaign read;
        campaign::RemovedResponses removed;
        const util::Outcome loaded =
            campaign::LoadCampaignAsQuestionnaire(location, q, read, removed);
        EXPECT_EQ(bool(loaded), c.reason == nullptr);
        if (c.reason) {
            EXPECT_EQ(loaded.Reason(), QString::fromUtf8(c.reason));
        }
    }
}
