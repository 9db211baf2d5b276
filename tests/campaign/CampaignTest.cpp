// The campaign's lists and indexes, the order of volumes across waves, the repair of response
// matchings that outlive their question's, copies and the archives: the layouts of the volume
// source description and the wave against bytes assembled by hand, what a damaged or misused
// archive reports, and the campaign's own archive.
#include "campaign/Campaign.h"
#include "campaign/ArchiveVersion.h"
#include "campaign/CampaignBuilder.h"
#include "common/TestUtil.h"

#include <QtEndian>
#include <gtest/gtest.h>

#include <bit>

using namespace Qt::StringLiterals;
using namespace varnel_wave;

namespace {

template <class T> QByteArray LittleEndian(T value) {
    QByteArray b(sizeof value, '\0');
    qToLittleEndian(value, b.data());
    return b;
}
QByteArray I32(qint32 value) {
    return LittleEndian(value);
}
QByteArray F64(double value) {
    return LittleEndian(std::bit_cast<quint64>(value));
}
// Short wide strings only: the length fits the byte after the marker.
QByteArray Wide(const QString& text) {
    return QByteArray("\xFF\xFE\xFF", 3) + char(text.size()) + testutil::Utf16Le(text, false);
}
QByteArray Date(double oleDate) {
    return I32(0) + F64(oleDate);
}

template <class T> QByteArray Store(T& object) {
    CArchiveVersion archive;
    object.Serialize(archive);
    EXPECT_FALSE(archive.Failed());
    return archive.Bytes();
}
// The archive's cause after loading `object` from `bytes`; a load that succeeds reads them all.
template <class T> CArchiveVersion::Cause Load(T& object, const QByteArray& bytes) {
    CArchiveVersion archive(bytes);
    object.Serialize(archive);
    EXPECT_TRUE(archive.Failed() || archive.AtEnd());
    return archive.GetCause();
}

VolumeSourceInfo SampleInfo() {
    VolumeSourceInfo info;
    info.m_infoVersion = 7;
    info.m_sourceType = 3;
    info.m_location = u"wave1.qes"_s;
    info.m_codePage = 1252;
    info.m_options = -5;
    return info;
}
const QByteArray kInfoBytes = I32(7) + I32(3) + Wide(u"wave1.qes"_s) + I32(1252) + I32(-5);

CWave SampleWave() {
    CWave wave;
    wave.m_waveID = 12;
    wave.m_waveOrder = 2;
    wave.m_name = u"Spring"_s;
    wave.m_description = u"2nd"_s;
    wave.m_waveStart = 45000.5;
    wave.m_waveEnd = 45010.25;
    wave.m_waveMidpoint = 45005.375;
    wave.m_trailingValue = 77;
    return wave;
}
QByteArray WaveBytes(qint32 firstId, const QByteArray& volumes) {
    return I32(firstId) + I32(12) + I32(2) + Wide(u"Spring"_s) + Wide(u"2nd"_s) + Date(45000.5) +
           Date(45010.25) + Date(45005.375) + volumes + I32(77);
}

TEST(ArchiveLayoutTest, SourceInfoAndWaveMatchHandMadeBytesLoadBackWholeAndEndWhenCutShort) {
    // A loaded info keeps its own first field.
    VolumeSourceInfo info = SampleInfo();
    EXPECT_EQ(Store(info), kInfoBytes);
    VolumeSourceInfo loadedInfo;
    loadedInfo.m_infoVersion = 42;
    ASSERT_EQ(Load(loadedInfo, kInfoBytes), CArchiveVersion::kNone);
    info.m_infoVersion = 42;
    EXPECT_EQ(loadedInfo, info);

    // The volumes go between the dates and the trailer, after their count.
    CWave wave = SampleWave();
    EXPECT_EQ(Store(wave), WaveBytes(12, I32(0)));
    CVolume first;
    first.m_volumeID = 100;
    first.m_name = u"A"_s;
    first.m_isMainVolume = true;
    first.m_sourceInfo = SampleInfo();
    first.m_sourceInfo.m_infoVersion = 0; // a loaded info keeps its own, which is 0 here
    CVolume second;
    second.m_volumeID = 101;
    second.m_reconciliationSourceQuestionIDs = u"1;2"_s;
    wave.AddVolume(&first);
    wave.AddVolume(&second);
    const QByteArray volumes = I32(2) + Store(first) + Store(second);
    const QByteArray bytes = Store(wave);
    EXPECT_EQ(bytes, WaveBytes(12, volumes));

    // The load takes the second of the two ids, and storing what was loaded gives the same
    // bytes: every field of every volume was read.
    CWave loaded;
    ASSERT_EQ(Load(loaded, WaveBytes(5, volumes)), CArchiveVersion::kNone);
    ASSERT_EQ(loaded.Volumes().size(), 2u);
    for (const CVolume* volume : loaded.Volumes())
        EXPECT_EQ(volume->m_wave, &loaded);
    EXPECT_EQ(Store(loaded), bytes);

    // A copy owns copies of the volumes it read, pointing back to it.
    const CWave copy(loaded);
    ASSERT_EQ(copy.Volumes().size(), 2u);
    EXPECT_NE(copy.Volumes()[0], loaded.Volumes()[0]);
    EXPECT_EQ(copy.Volumes()[0]->m_wave, &copy);
    std::vector<std::unique_ptr<CVolume>> taken = loaded.TakeLoadedVolumes();
    EXPECT_EQ(taken.size(), 2u);
    EXPECT_EQ(loaded.Volumes()[0], taken[0].get());

    // Every short buffer, cut inside a volume and its source info too, ends at end of file.
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        VolumeSourceInfo info;
        if (size < kInfoBytes.size()) {
            EXPECT_EQ(Load(info, kInfoBytes.left(size)), CArchiveVersion::kEndOfFile) << size;
        }
        CWave cut;
        EXPECT_EQ(Load(cut, bytes.left(size)), CArchiveVersion::kEndOfFile) << size;
    }
}

TEST(ArchiveLayoutTest, MisuseAndDamageAreReportedAndTheFirstCauseStays) {
    CArchiveVersion loading(I32(1));
    loading.WriteInt32(5);
    EXPECT_EQ(loading.GetCause(), CArchiveVersion::kReadOnly);
    qint32 value = -1;
    loading.ReadInt32(value);
    EXPECT_EQ(value, -1) << "a failed archive reads nothing";
    EXPECT_EQ(loading.GetCause(), CArchiveVersion::kReadOnly);

    CArchiveVersion storing;
    storing.ReadInt32(value);
    EXPECT_EQ(storing.GetCause(), CArchiveVersion::kWriteOnly);
    storing.WriteInt32(1);
    EXPECT_TRUE(storing.Bytes().isEmpty());

    // Strings check the direction themselves.
    CArchiveVersion misused(kInfoBytes);
    misused.WriteString(u"wave1.qes"_s);
    EXPECT_EQ(misused.GetCause(), CArchiveVersion::kReadOnly);

    // Damage: a negative count is refused, an invalid date loads as zero.
    CWave loaded;
    EXPECT_EQ(Load(loaded, WaveBytes(12, I32(-1))), CArchiveVersion::kGeneric);
    EXPECT_TRUE(loaded.Volumes().empty()) << "refused before any volume";

    CArchiveVersion archive(I32(1) + F64(45000.5));
    double date = 3;
    archive.ReadDateTime(date);
    EXPECT_FALSE(archive.Failed());
    EXPECT_EQ(date, 0);
}

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

// Each case also holds a response in volume 11, where no question matching is, left alone.
TEST(CampaignTest, EndVolumeRepair) {
    const struct {
        const char* what;
        qint32 question;
        qint32 questionEnd; // of the question matching in volume 10
        qint32 responseEnd; // of the response matching in volume 10
        qint32 expectedEnd;
    } cases[] = {
        {"open end cut back", 2, 11, kOpen, 11},
        {"open end cut back to its own volume", 4, 10, kOpen, 10},
        {"later end cut back across waves", 2, 11, 5, 11},
        {"earlier end left alone", 2, 11, 10, 10},
        {"same end left alone", 2, 11, 11, 11},
        {"open question end leaves it", 2, kOpen, 11, 11},
        {"question 1 never changed", 1, 10, kOpen, kOpen},
        {"unknown question end leaves it", 2, 99, kOpen, kOpen},
    };
    for (const auto& c : cases) {
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
            expectedTraces << u"Changing modality matching end volume ID:\n"
                              "\tModality ID: 42\n\tQuestion ID: %1\n"
                              "\tOld modality matching end volume ID: %2\n"
                              "\tQuestion matching end volume ID: %3\n"_s.arg(c.question)
                                  .arg(c.responseEnd)
                                  .arg(c.questionEnd);
        EXPECT_EQ(traces, expectedTraces) << c.what;
        EXPECT_TRUE(campaign->RepairModalityMatchingEndVolumes().isEmpty()) << c.what;
        EXPECT_EQ(campaign->FindVolume(10)->CollectModalityMatchings(*campaign),
                  std::vector<CModalityMatching*>{matching})
            << c.what;
    }
}

// How volumes are listed in their waves is checked on the full campaign below.
TEST(CampaignTest, VolumesOrderByTheirWavesRowsFindTheirOwnersByIdAndUnknownOnesAreDropped) {
    auto campaign = TwoWaves();
    EXPECT_EQ(campaign->FindVolume(6), nullptr);

    const struct {
        qint32 first, second;
        bool before;
    } cases[] = {
        {10, 11, true},        {11, 10, false},   {10, 10, false},  {11, 5, true},
        {5, 10, false},        {10, kOpen, true}, {5, kOpen, true}, {kOpen, 10, false},
        {kOpen, kOpen, false}, {10, 55, false},   {55, 10, false},  {55, kOpen, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(campaign->IsVolumeBefore(c.first, c.second), c.before)
            << c.first << " before " << c.second;

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

// The shared campaign with a response added after its question joined and a volume of no wave.
std::unique_ptr<CCampaign> FullCampaign() {
    auto campaign = campaigntest::BuildCampaign();
    EXPECT_NE(AddResponse(*campaign, 3001, 300, 12, 12), nullptr);
    auto unlisted = std::make_unique<CVolume>();
    unlisted->m_volumeID = 60;
    unlisted->m_waveID = 404;
    campaign->AddVolume(std::move(unlisted));
    return campaign;
}

void ExpectLinked(const CCampaign& campaign, const char* which) {
    SCOPED_TRACE(which);
    ASSERT_EQ(campaign.Modalities().size(), 4u);
    EXPECT_EQ(campaign.FindModality(1002), campaign.FindQuestion(100)->m_modalities[1].get());
    EXPECT_EQ(campaign.FindModality(3001), campaign.FindQuestion(300)->m_modalities[0].get());
    EXPECT_EQ(campaign.FindWave(1)->Volumes()[1], campaign.FindVolume(12));
    EXPECT_EQ(campaign.FindVolume(21)->m_wave, campaign.FindWave(2));
    EXPECT_EQ(campaign.FindVolume(60)->m_wave, nullptr);
    EXPECT_TRUE(campaign.FindLanguage(1033)->m_isDefault);
    EXPECT_NE(campaign.FindQuestionClass(1), nullptr);
}

TEST(CampaignTest, CopyAndArchiveRoundTripRebuildEveryLink) {
    const auto original = FullCampaign();
    ExpectLinked(*original, "original");
    const QByteArray bytes = Store(*original);
    CCampaign copy(*original);
    ExpectLinked(copy, "copy");
    EXPECT_NE(copy.FindVolume(11), original->FindVolume(11));
    EXPECT_EQ(Store(copy), bytes);
    copy.FindQuestion(100)->m_shortcut = u"changed"_s;
    EXPECT_EQ(original->FindQuestion(100)->m_shortcut, u"Q100"_s);

    CCampaign loaded;
    AddQuestion(loaded, 77); // replaced by the load
    ASSERT_EQ(Load(loaded, bytes), CArchiveVersion::kNone);
    EXPECT_EQ(loaded.FindQuestion(77), nullptr);
    EXPECT_EQ(loaded.Volumes().size(), 4u);
    ExpectLinked(loaded, "loaded");
    EXPECT_EQ(Store(loaded), bytes);

    CCampaign cut;
    EXPECT_EQ(Load(cut, bytes.left(bytes.size() - 3)), CArchiveVersion::kEndOfFile);
}

} // namespace
