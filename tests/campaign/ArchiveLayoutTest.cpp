// The archive layouts of the volume source description and the wave, against bytes assembled by
// hand, and what a damaged or misused archive reports.
#include "campaign/ArchiveVersion.h"
#include "campaign/Campaign.h"
#include "common/TestUtil.h"

#include <QtEndian>
#include <gtest/gtest.h>

#include <bit>

using namespace varnel_wave;

namespace {

QByteArray I32(qint32 value) {
    QByteArray b(4, '\0');
    qToLittleEndian(value, b.data());
    return b;
}
QByteArray F64(double value) {
    QByteArray b(8, '\0');
    qToLittleEndian(std::bit_cast<quint64>(value), b.data());
    return b;
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
    info.m_location = QStringLiteral("wave1.qes");
    info.m_codePage = 1252;
    info.m_options = -5;
    return info;
}
const QByteArray kInfoBytes =
    I32(7) + I32(3) + Wide(QStringLiteral("wave1.qes")) + I32(1252) + I32(-5);

CWave SampleWave() {
    CWave wave;
    wave.m_waveID = 12;
    wave.m_waveOrder = 2;
    wave.m_name = QStringLiteral("Spring");
    wave.m_description = QStringLiteral("2nd");
    wave.m_waveStart = 45000.5;
    wave.m_waveEnd = 45010.25;
    wave.m_waveMidpoint = 45005.375;
    wave.m_trailingValue = 77;
    return wave;
}
QByteArray WaveBytes(qint32 firstId, const QByteArray& volumes) {
    return I32(firstId) + I32(12) + I32(2) + Wide(QStringLiteral("Spring")) +
           Wide(QStringLiteral("2nd")) + Date(45000.5) + Date(45010.25) + Date(45005.375) +
           volumes + I32(77);
}

TEST(ArchiveLayoutTest, SourceInfoAndWaveMatchHandMadeBytesAndLoadBackWhole) {
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
    first.m_name = QStringLiteral("A");
    first.m_isMainVolume = true;
    first.m_sourceInfo = SampleInfo();
    first.m_sourceInfo.m_infoVersion = 0; // a loaded info keeps its own, which is 0 here
    CVolume second;
    second.m_volumeID = 101;
    second.m_reconciliationSourceQuestionIDs = QStringLiteral("1;2");
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
}

TEST(ArchiveLayoutTest, EveryShortBufferEndsAtEndOfFile) {
    CVolume volume;
    volume.m_volumeID = 3;
    volume.m_name = QStringLiteral("V");
    CWave wave = SampleWave();
    wave.AddVolume(&volume);
    const QByteArray waveBytes = Store(wave);
    for (qsizetype size = 0; size < waveBytes.size(); ++size) {
        VolumeSourceInfo info;
        if (size < kInfoBytes.size()) {
            EXPECT_EQ(Load(info, kInfoBytes.left(size)), CArchiveVersion::kEndOfFile) << size;
        }
        CWave loaded;
        EXPECT_EQ(Load(loaded, waveBytes.left(size)), CArchiveVersion::kEndOfFile) << size;
    }
}

TEST(ArchiveLayoutTest, MisuseReportsItsCauseAndTheFirstOneStays) {
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
    misused.WriteString(QStringLiteral("wave1.qes"));
    EXPECT_EQ(misused.GetCause(), CArchiveVersion::kReadOnly);
}

TEST(ArchiveLayoutTest, NegativeCountIsRefusedAndAnInvalidDateLoadsAsZero) {
    CWave loaded;
    EXPECT_EQ(Load(loaded, WaveBytes(12, I32(-1))), CArchiveVersion::kGeneric);
    EXPECT_TRUE(loaded.Volumes().empty()) << "refused before any volume";

    CArchiveVersion archive(I32(1) + F64(45000.5));
    double date = 3;
    archive.ReadDateTime(date);
    EXPECT_FALSE(archive.Failed());
    EXPECT_EQ(date, 0);
}

} // namespace
