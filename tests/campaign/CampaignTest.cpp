// The campaign's lists and indexes, the order of volumes across waves, the repair of response
// matchings that outlive their question's, copies and the campaign's own archive.
#include "campaign/Campaign.h"
#include "campaign/ArchiveVersion.h"
#include "common/TestUtil.h"

#include <gtest/gtest.h>

using namespace varnel_wave;

namespace {

constexpr qint32 kOpen = CQuestionMatching::kOpenEndVolumeID;

// Waves in campaign order: wave 7 holds volumes 10 and 11, then wave 3 holds volume 5, so that
// the order of ids is not the order of volumes.
std::unique_ptr<CCampaign> TwoWaves() {
    auto campaign = std::make_unique<CCampaign>();
    for (qint32 waveID : {7, 3}) {
        auto wave = std::make_unique<CWave>();
        wave->m_waveID = waveID;
        campaign->AddWave(std::move(wave));
    }
    for (auto [volumeID, waveID] : {std::pair{10, 7}, {11, 7}, {5, 3}}) {
        auto volume = std::make_unique<CVolume>();
        volume->m_volumeID = volumeID;
        volume->m_waveID = waveID;
        campaign->AddVolume(std::move(volume));
    }
    return campaign;
}

CQuestion* AddQuestion(CCampaign& campaign, qint32 id) {
    auto question = std::make_unique<CQuestion>();
    question->m_questionID = id;
    return campaign.AddQuestion(std::move(question));
}

void AddQuestionMatching(CCampaign& campaign, qint32 question, qint32 volume, qint32 end) {
    auto matching = std::make_unique<CQuestionMatching>();
    matching->m_questionID = question;
    matching->m_volumeID = volume;
    matching->m_startVolumeID = volume;
    matching->m_endVolumeID = end;
    ASSERT_NE(campaign.AddQuestionMatching(std::move(matching)), nullptr);
}

CModalityMatching* AddResponse(CCampaign& campaign, qint32 id, qint32 question, qint32 volume,
                               qint32 end) {
    auto modality = std::make_unique<CModality>();
    modality->m_modalityID = id;
    modality->m_questionID = question;
    if (!campaign.AddModality(std::move(modality)))
        return nullptr;
    auto matching = std::make_unique<CModalityMatching>();
    matching->m_modalityID = id;
    matching->m_questionID = question;
    matching->m_volumeID = volume;
    matching->m_endVolumeID = end;
    return campaign.AddModalityMatching(std::move(matching));
}

TEST(CampaignTest, VolumesAreListedAndOrderedByTheirWaves) {
    const auto campaign = TwoWaves();
    const CWave* first = campaign->FindWave(7);
    ASSERT_NE(first, nullptr);
    ASSERT_EQ(first->Volumes().size(), 2u);
    EXPECT_EQ(first->Volumes()[1], campaign->FindVolume(11));
    EXPECT_EQ(campaign->FindVolume(11)->m_wave, first);
    EXPECT_EQ(campaign->FindVolume(5)->m_wave, campaign->FindWave(3));
    EXPECT_EQ(campaign->FindVolume(6), nullptr);

    struct Case {
        qint32 first, second;
        bool before;
    };
    const Case cases[] = {
        {10, 11, true},        {11, 10, false},   {10, 10, false},  {11, 5, true},
        {5, 10, false},        {10, kOpen, true}, {5, kOpen, true}, {kOpen, 10, false},
        {kOpen, kOpen, false}, {10, 55, false},   {55, 10, false},  {55, kOpen, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(campaign->IsVolumeBefore(c.first, c.second), c.before)
            << c.first << " before " << c.second;
}

// Each case also holds a response in volume 11, where no question matching is, left alone.
TEST(CampaignTest, EndVolumeRepair) {
    struct Case {
        const char* what;
        qint32 question;
        qint32 questionEnd; // of the question matching in volume 10
        qint32 responseEnd; // of the response matching in volume 10
        qint32 expectedEnd;
    };
    const Case cases[] = {
        {"open end cut back", 2, 11, kOpen, 11},
        {"open end cut back to its own volume", 4, 10, kOpen, 10},
        {"later end cut back across waves", 2, 11, 5, 11},
        {"earlier end left alone", 2, 11, 10, 10},
        {"same end left alone", 2, 11, 11, 11},
        {"open question end leaves it", 2, kOpen, 11, 11},
        {"question 1 never changed", 1, 10, kOpen, kOpen},
        {"unknown question end leaves it", 2, 99, kOpen, kOpen},
    };
    for (const Case& c : cases) {
        auto campaign = TwoWaves();
        AddQuestion(*campaign, c.question);
        AddQuestionMatching(*campaign, c.question, 10, c.questionEnd);
        CModalityMatching* inOtherVolume = AddResponse(*campaign, 41, c.question, 11, kOpen);
        CModalityMatching* matching = AddResponse(*campaign, 42, c.question, 10, c.responseEnd);
        ASSERT_TRUE(inOtherVolume && matching) << c.what;
        const QStringList traces = campaign->RepairModalityMatchingEndVolumes();
        EXPECT_EQ(matching->m_endVolumeID, c.expectedEnd) << c.what;
        EXPECT_EQ(inOtherVolume->m_endVolumeID, kOpen) << c.what;
        QStringList expectedTraces;
        if (c.expectedEnd != c.responseEnd)
            expectedTraces << QStringLiteral("Changing modality matching end volume ID:\n"
                                             "\tModality ID: 42\n\tQuestion ID: %1\n"
                                             "\tOld modality matching end volume ID: %2\n"
                                             "\tQuestion matching end volume ID: %3\n")
                                  .arg(c.question)
                                  .arg(c.responseEnd)
                                  .arg(c.questionEnd);
        EXPECT_EQ(traces, expectedTraces) << c.what;
        EXPECT_TRUE(campaign->RepairModalityMatchingEndVolumes().isEmpty()) << c.what;
        EXPECT_EQ(campaign->FindVolume(10)->CollectModalityMatchings(*campaign),
                  std::vector<CModalityMatching*>{matching})
            << c.what;
    }
}

TEST(CampaignTest, RowsFindTheirOwnersByIdAndUnknownOnesAreDropped) {
    auto campaign = TwoWaves();
    CQuestion* two = AddQuestion(*campaign, 2);
    CQuestion* three = AddQuestion(*campaign, 3);
    AddQuestion(*campaign, 2); // listed, but the id keeps finding the first
    EXPECT_EQ(campaign->Questions().size(), 3u);
    EXPECT_EQ(campaign->FindQuestion(2), two);
    // Runs of one question, then back to an earlier one, then one nobody holds.
    for (qint32 question : {2, 2, 3, 2, 99}) {
        auto caption = std::make_unique<CQuestionCaption>();
        caption->m_questionID = question;
        caption->m_languageID = 1033 + qint32(two->m_captions.size() + three->m_captions.size());
        const bool added = campaign->AddQuestionCaption(std::move(caption)) != nullptr;
        EXPECT_EQ(added, question != 99) << question;
    }
    EXPECT_EQ(two->m_captions.size(), 3u);
    EXPECT_EQ(three->m_captions.size(), 1u);
    EXPECT_NE(two->FindCaption(1036), nullptr);
    EXPECT_EQ(two->FindCaption(1035), nullptr);
    EXPECT_NE(three->FindCaption(1035), nullptr);

    EXPECT_EQ(AddResponse(*campaign, 300, 99, 10, kOpen), nullptr) << "response of no question";
    EXPECT_EQ(campaign->FindModality(300), nullptr);
    ASSERT_NE(AddResponse(*campaign, 301, 3, 10, kOpen), nullptr);
    EXPECT_EQ(campaign->FindModality(301), three->m_modalities[0].get());
    auto caption = std::make_unique<CModalityCaption>();
    caption->m_modalityID = 999;
    EXPECT_EQ(campaign->AddModalityCaption(std::move(caption)), nullptr);
    auto merging = std::make_unique<CModalityMerging>();
    merging->m_masterModalityID = 301;
    merging->m_childModalityID = 302;
    EXPECT_NE(campaign->AddModalityMerging(std::move(merging)), nullptr);
}

// A campaign with something in every list, responses held before and after the question joined.
std::unique_ptr<CCampaign> FullCampaign() {
    auto campaign = TwoWaves();
    campaign->m_name = QStringLiteral("Panel");
    campaign->m_versionNumber = QStringLiteral("5.6.1.0");
    auto question = std::make_unique<CQuestion>();
    question->m_questionID = 2;
    question->m_shortcut = QStringLiteral("Q2");
    question->m_maxValue = 10.5;
    auto early = std::make_unique<CModality>();
    early->m_modalityID = 20;
    early->m_questionID = 2;
    question->AddModality(std::move(early));
    campaign->AddQuestion(std::move(question));
    AddQuestionMatching(*campaign, 2, 10, kOpen);
    AddResponse(*campaign, 21, 2, 11, 11);
    auto unlisted = std::make_unique<CVolume>();
    unlisted->m_volumeID = 60;
    unlisted->m_waveID = 404;
    campaign->AddVolume(std::move(unlisted));
    auto language = std::make_unique<CLanguage>();
    language->m_languageID = 1036;
    language->m_isDefault = true;
    campaign->AddLanguage(std::move(language));
    auto questionClass = std::make_unique<CQuestionClass>();
    questionClass->m_questionClassID = 4;
    campaign->AddQuestionClass(std::move(questionClass));
    campaign->AddVersion(std::make_unique<CVersion>());
    campaign->AddTag(std::make_unique<CQuelSurveyTag>());
    return campaign;
}

QByteArray Store(CCampaign& campaign) {
    CArchiveVersion archive;
    campaign.Serialize(archive);
    EXPECT_FALSE(archive.Failed());
    return archive.Bytes();
}

void ExpectLinked(const CCampaign& campaign) {
    ASSERT_EQ(campaign.Modalities().size(), 2u);
    EXPECT_EQ(campaign.FindModality(20), campaign.FindQuestion(2)->m_modalities[0].get());
    EXPECT_EQ(campaign.FindModality(21), campaign.FindQuestion(2)->m_modalities[1].get());
    EXPECT_EQ(campaign.FindWave(7)->Volumes()[0], campaign.FindVolume(10));
    EXPECT_EQ(campaign.FindVolume(5)->m_wave, campaign.FindWave(3));
    EXPECT_EQ(campaign.FindVolume(60)->m_wave, nullptr);
    EXPECT_TRUE(campaign.FindLanguage(1036)->m_isDefault);
    EXPECT_NE(campaign.FindQuestionClass(4), nullptr);
}

TEST(CampaignTest, CopyAndArchiveRoundTripRebuildEveryLink) {
    const auto original = FullCampaign();
    const QByteArray bytes = Store(*original);
    CCampaign copy(*original);
    ExpectLinked(copy);
    EXPECT_NE(copy.FindVolume(10), original->FindVolume(10));
    EXPECT_EQ(Store(copy), bytes);
    copy.FindQuestion(2)->m_shortcut = QStringLiteral("changed");
    EXPECT_EQ(original->FindQuestion(2)->m_shortcut, QStringLiteral("Q2"));

    CCampaign loaded;
    AddQuestion(loaded, 77); // replaced by the load
    CArchiveVersion archive(bytes);
    loaded.Serialize(archive);
    ASSERT_FALSE(archive.Failed());
    EXPECT_TRUE(archive.AtEnd());
    EXPECT_EQ(loaded.FindQuestion(77), nullptr);
    EXPECT_EQ(loaded.Volumes().size(), 4u);
    ExpectLinked(loaded);
    EXPECT_EQ(Store(loaded), bytes);

    CCampaign cut;
    CArchiveVersion shortArchive(bytes.left(bytes.size() - 3));
    cut.Serialize(shortArchive);
    EXPECT_EQ(shortArchive.GetCause(), CArchiveVersion::kEndOfFile);
}

} // namespace
