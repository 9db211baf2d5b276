#include "questionnaire/formats/ExchangePackage.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "questionnaire/formats/XmlFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <zip.h>

#include <vector>

using namespace questionnaire;

namespace {

// --- packages assembled byte by byte, for what libzip will not write ---

constexpr quint64 kActualSize = ~quint64(0);

struct RawEntry {
    QByteArray name;
    QByteArray data;
    quint64 declaredSize = kActualSize; // the uncompressed size the headers claim
    quint32 unixMode = 0100644;
};

quint32 Crc32(const QByteArray& data) {
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

void Put(QByteArray& out, quint64 value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.append(char((value >> (8 * i)) & 0xFF));
}

// A ZIP of stored entries made on Unix; a declared size beyond 32 bits goes into a Zip64 field
// of both headers, as real tools write it.
QByteArray RawZip(const std::vector<RawEntry>& entries) {
    QByteArray local;
    QByteArray central;
    for (const RawEntry& e : entries) {
        const quint64 size =
            e.declaredSize == kActualSize ? quint64(e.data.size()) : e.declaredSize;
        const bool zip64 = size >= 0xFFFFFFFFu;
        QByteArray extra;
        if (zip64) {
            Put(extra, 1, 2);
            Put(extra, 16, 2);
            Put(extra, size, 8);
            Put(extra, quint64(e.data.size()), 8);
        }
        const auto fields = [&](QByteArray& out) {
            Put(out, zip64 ? 45 : 20, 2); // version needed
            Put(out, 0, 2);               // flags
            Put(out, 0, 2);               // stored
            Put(out, 0x00210000, 4);      // 1980-01-01 00:00
            Put(out, Crc32(e.data), 4);
            Put(out, zip64 ? 0xFFFFFFFFu : quint64(e.data.size()), 4);
            Put(out, zip64 ? 0xFFFFFFFFu : size, 4);
            Put(out, quint64(e.name.size()), 2);
            Put(out, quint64(extra.size()), 2);
        };
        Put(central, 0x02014b50, 4);
        Put(central, 0x0314, 2); // made by Unix
        fields(central);
        Put(central, 0, 6); // comment length, disk, internal attributes
        Put(central, quint64(e.unixMode) << 16, 4);
        Put(central, quint64(local.size()), 4);
        central += e.name + extra;
        Put(local, 0x04034b50, 4);
        fields(local);
        local += e.name + extra + e.data;
    }
    QByteArray zip = local + central;
    Put(zip, 0x06054b50, 4);
    Put(zip, 0, 4);
    Put(zip, entries.size(), 2);
    Put(zip, entries.size(), 2);
    Put(zip, quint64(central.size()), 4);
    Put(zip, quint64(local.size()), 4);
    Put(zip, 0, 2);
    return zip;
}

QByteArray SampleXml() {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("q.xml"));
    return WriteXmlFile(path, testutil::MakeSample()) ? testutil::ReadAll(path) : QByteArray();
}

QByteArray PseudoRandomBytes(qsizetype size) {
    QRandomGenerator generator(42);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(generator.bounded(256));
    return bytes;
}

// A package as libzip writes it, every entry deflated as tightly as it can.
QByteArray DeflatedZip(const std::vector<std::pair<const char*, QByteArray>>& entries) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("deflated.qex"));
    zip_t* zip = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (!zip)
        return {};
    for (const auto& [name, data] : entries) {
        zip_source_t* source =
            zip_source_buffer(zip, data.constData(), zip_uint64_t(data.size()), 0);
        const zip_int64_t index = zip_file_add(zip, name, source, 0);
        zip_set_file_compression(zip, zip_uint64_t(index), ZIP_CM_DEFLATE, 9);
    }
    return zip_close(zip) == 0 ? testutil::ReadAll(path) : QByteArray();
}

// --- reading packages back ---

QStringList EntryNames(const QString& qex) {
    QStringList names;
    zip_t* zip = zip_open(QFile::encodeName(qex).constData(), ZIP_RDONLY, nullptr);
    if (!zip)
        return {QStringLiteral("<not a zip>")};
    for (zip_int64_t i = 0; i < zip_get_num_entries(zip, 0); ++i)
        names << QString::fromUtf8(zip_get_name(zip, zip_uint64_t(i), 0));
    zip_discard(zip);
    return names;
}

QByteArray EntryData(const QString& qex, const char* name, zip_int32_t* method = nullptr) {
    QByteArray data;
    zip_t* zip = zip_open(QFile::encodeName(qex).constData(), ZIP_RDONLY, nullptr);
    zip_stat_t st;
    if (zip && zip_stat(zip, name, 0, &st) == 0) {
        if (method)
            *method = st.comp_method;
        data.resize(qsizetype(st.size));
        zip_file_t* file = zip_fopen(zip, name, 0);
        if (!file || zip_fread(file, data.data(), st.size) != zip_int64_t(st.size))
            data = "<unreadable>";
        if (file)
            zip_fclose(file);
    }
    if (zip)
        zip_discard(zip);
    return data;
}

class ExchangePackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_root.isValid());
        QDir root(m_root.path());
        ASSERT_TRUE(root.mkdir(QStringLiteral("work")));
        ASSERT_TRUE(root.mkdir(QStringLiteral("outside")));
        Put(Outside() + QStringLiteral("/sentinel.txt"), "mine");
    }

    QString Path(const QString& name) const { return m_root.filePath(name); }
    QString Work() const { return Path(QStringLiteral("work")) + QLatin1Char('/'); }
    QString Outside() const { return Path(QStringLiteral("outside")); }

    // Writes a file, making its folders.
    static void Put(const QString& path, const QByteArray& bytes) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        ASSERT_TRUE(testutil::WriteAll(path, bytes)) << path.toStdString();
    }

    // Everything below a folder, links listed and never followed.
    static QStringList Tree(const QString& folder) {
        QStringList items;
        QDirIterator it(folder,
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            items << QDir(folder).relativeFilePath(it.next());
        items.sort();
        return items;
    }

    // Nothing outside the working folder may change, whatever a package holds; beside it there
    // is only what the tests make themselves.
    void ExpectOutsideUntouched() const {
        EXPECT_EQ(Tree(Outside()), QStringList{QStringLiteral("sentinel.txt")});
        EXPECT_EQ(testutil::ReadAll(Outside() + QStringLiteral("/sentinel.txt")), "mine");
        const QStringList own = {"work", "outside", "second", "extra"};
        for (const QString& name :
             QDir(m_root.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
            EXPECT_TRUE(own.contains(name) || name.endsWith(QLatin1String(".qex")))
                << "appeared beside the working folder: " << name.toStdString();
    }

    QString WritePackage(const QByteArray& bytes) const {
        const QString qex = Path(QStringLiteral("in.qex"));
        EXPECT_TRUE(testutil::WriteAll(qex, bytes));
        return qex;
    }

    QTemporaryDir m_root;
};

TEST_F(ExchangePackageTest, RoundTripKeepsModelAndMediaBytes) {
    const QString qex = Path(QStringLiteral("survey.qex"));
    CQuestionnaire q = testutil::MakeSample();
    ASSERT_TRUE(q.SaveToExchangeFormat(qex, QString(), -1)) << q.GetLastError().toStdString();
    // Without a working folder the package holds the XML alone, as WriteXmlFile writes it.
    EXPECT_EQ(EntryNames(qex), QStringList{QString::fromLatin1(kPackageXmlName)});
    zip_int32_t method = -1;
    EXPECT_EQ(EntryData(qex, kPackageXmlName, &method), SampleXml());
    EXPECT_EQ(method, ZIP_CM_DEFLATE);

    CQuestionnaire read;
    ASSERT_TRUE(read.ReadFromExchangeFormat(qex, Work())) << read.GetLastError().toStdString();
    EXPECT_EQ(read, q);
    EXPECT_EQ(read.GetExchangeFolder(), Work());

    // Media beside the XML; stamps and links stay out of the package.
    const QByteArray photo = PseudoRandomBytes(1536 * 1024);
    Put(Work() + QStringLiteral("media/photo.png"), photo);
    Put(Work() + QStringLiteral("media/notes/.hidden.txt"), "h");
    Put(Work() + QStringLiteral("run3.stp"), "stamp");
    ASSERT_TRUE(
        QFile::link(Outside() + QStringLiteral("/sentinel.txt"), Work() + QStringLiteral("link")));
    ASSERT_TRUE(QFile::link(Outside(), Work() + QStringLiteral("linked")));
    read.GetAdrQuestion(0)->SetLocalisedLongCaption(testutil::kFrench, QStringLiteral("Nouveau"));
    ASSERT_TRUE(read.SaveToExchangeFormat(qex, QString(), -1)) << read.GetLastError().toStdString();
    EXPECT_EQ(EntryNames(qex),
              (QStringList{"questionnaire.xml", "media/notes/.hidden.txt", "media/photo.png"}));
    EXPECT_EQ(EntryData(qex, "media/photo.png", &method), photo);
    EXPECT_EQ(method, ZIP_CM_DEFLATE);
    // The working folder's XML is the saved one too.
    EXPECT_EQ(testutil::ReadAll(Work() + QStringLiteral("questionnaire.xml")),
              EntryData(qex, kPackageXmlName));

    CQuestionnaire again;
    const QString second = Path(QStringLiteral("second"));
    ASSERT_TRUE(QDir().mkdir(second));
    ASSERT_TRUE(again.ReadFromExchangeFormat(qex, second)) << again.GetLastError().toStdString();
    EXPECT_EQ(again, read);
    EXPECT_NE(again, q);
    EXPECT_EQ(testutil::ReadAll(second + QStringLiteral("/media/photo.png")), photo);
    EXPECT_EQ(Tree(second), (QStringList{"media", "media/notes", "media/notes/.hidden.txt",
                                         "media/photo.png", "questionnaire.xml"}));
    ExpectOutsideUntouched();
}

TEST_F(ExchangePackageTest, FlagsChooseCaptionsAndRoutings) {
    const CQuestionnaire sample = testutil::MakeSample();
    ASSERT_GT(sample.GetNbreFiltre(), 0);
    const struct {
        qint32 flags;
        bool captions;
        bool routings;
    } cases[] = {
        {-1, true, true}, {0, false, false}, {1, true, false}, {2, false, true}, {3, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags);
        const QString qex = Path(QStringLiteral("flags.qex"));
        CQuestionnaire q = sample;
        ASSERT_TRUE(q.SaveToExchangeFormat(qex, QString(), c.flags));
        CQuestionnaire read;
        ASSERT_TRUE(read.ReadFromExchangeFormat(qex, Work())) << read.GetLastError().toStdString();
        EXPECT_EQ(read.GetNbreFiltre() > 0, c.routings);
        EXPECT_EQ(!read.GetQuestion(0).GetLocalisedLongCaption(testutil::kEnglish).isEmpty(),
                  c.captions);
        EXPECT_EQ(read.GetNbreQuestion(), sample.GetNbreQuestion());
        if (c.captions && c.routings) {
            EXPECT_EQ(EntryData(qex, kPackageXmlName), SampleXml());
        }
    }
}

TEST_F(ExchangePackageTest, ExtraFolderIsPackedButNeverReplacesTheQuestionnaire) {
    const QString extra = Path(QStringLiteral("extra"));
    Put(extra + QStringLiteral("/docs/manual.pdf"), "%PDF");
    Put(extra + QStringLiteral("/questionnaire.xml"), "not ours");
    Put(extra + QStringLiteral("/keep.stp"), "packed here");
    const QString qex = Path(QStringLiteral("extra.qex"));
    CQuestionnaire q = testutil::MakeSample();
    ASSERT_TRUE(q.SaveToExchangeFormat(qex, extra, -1)) << q.GetLastError().toStdString();
    EXPECT_EQ(EntryNames(qex), (QStringList{"questionnaire.xml", "docs/manual.pdf", "keep.stp"}));
    EXPECT_EQ(EntryData(qex, "docs/manual.pdf"), "%PDF");
    EXPECT_EQ(EntryData(qex, kPackageXmlName), SampleXml());
}

TEST_F(ExchangePackageTest, UnpackingReplacesOldContentsButKeepsStamps) {
    Put(Work() + QStringLiteral("old/deep/x.txt"), "x");
    Put(Work() + QStringLiteral(".hidden"), "x");
    Put(Work() + QStringLiteral("run7.STP"), "stamp");
    ASSERT_TRUE(QFile::link(Outside(), Work() + QStringLiteral("old/linked")));
    const QString qex = WritePackage(RawZip({{"questionnaire.xml", SampleXml()},
                                             {"media/", {}},
                                             {"media/a.png", "png"},
                                             {"other.stp", "not a stamp of ours"}}));
    CQuestionnaire q;
    ASSERT_TRUE(q.ReadFromExchangeFormat(qex, Work())) << q.GetLastError().toStdString();
    EXPECT_EQ(q, testutil::MakeSample());
    EXPECT_EQ(Tree(Work()), (QStringList{"media", "media/a.png", "questionnaire.xml", "run7.STP"}));
    EXPECT_EQ(testutil::ReadAll(Work() + QStringLiteral("run7.STP")), "stamp");
    ExpectOutsideUntouched();
}

// A package refused before unpacking: its message names the entry and the reason, the
// questionnaire and the working folder stay exactly as they were.
TEST_F(ExchangePackageTest, HostilePackagesAreRefusedBeforeAnythingIsWritten) {
    const QByteArray xml = SampleXml();
    struct Case {
        QByteArray package;
        QString entry;
        const char* reason;
    };
    std::vector<Case> cases;
    const struct {
        QByteArray name;
        const char* reason;
    } names[] = {
        {"../x", "'..' path component"},
        {"media/../../x", "'..' path component"},
        {"media\\..\\..\\x", "'..' path component"},
        {"..", "'..' path component"},
        {QFile::encodeName(Outside() + QStringLiteral("/evil")), "an absolute name"},
        {"\\tmp\\evil", "an absolute name"},
        {"C:evil.txt", "an absolute name"},
        {"c:/evil.txt", "an absolute name"},
        {"media//x", "an empty or '.' path component"},
        {"./questionnaire.xml", "an empty or '.' path component"},
    };
    // The hostile entry comes after good ones, which must not have been written either.
    for (const auto& n : names)
        cases.push_back(
            {RawZip({{"questionnaire.xml", xml}, {"media/a.png", "png"}, {n.name, "e"}}),
             QString::fromUtf8(n.name), n.reason});
    const QByteArray nearlyIncompressible = PseudoRandomBytes(1100000);
    std::vector<RawEntry> overTotal;
    for (int i = 1; i <= 5; ++i) // each at the entry limit and within the ratio
        overTotal.push_back(
            {"part" + QByteArray::number(i) + ".bin", nearlyIncompressible, kMaxPackageEntrySize});
    overTotal.push_back({"questionnaire.xml", xml});
    std::vector<RawEntry> tooMany{{"questionnaire.xml", xml}};
    for (qint64 i = 0; i < kMaxPackageEntries; ++i)
        tooMany.push_back({"f" + QByteArray::number(i), {}});
    const Case entries[] = {
        {RawZip({{"questionnaire.xml", xml}, {"link", "/etc/passwd", kActualSize, 0120777}}),
         QStringLiteral("link"), "a symbolic link"},
        {RawZip({{"questionnaire.xml", xml}, {"a.png", "1"}, {"a.png", "2"}}),
         QStringLiteral("a.png"), "two entries with the same name"},
        {RawZip({{"questionnaire.xml", xml}, {"m/a.png", "1"}, {"m\\a.png", "2"}}),
         QStringLiteral("m/a.png"), "two entries with the same name"},
        {RawZip({{"questionnaire.xml", xml}, {"m", "1"}, {"m/a.png", "2"}}), QStringLiteral("m"),
         "both a file and a folder"},
        {RawZip({{"questionnaire.xml", xml}, {"huge.bin", "x", 10000000000ull}}),
         QStringLiteral("huge.bin"), "declared larger than 1 GiB (10000000000"},
        {RawZip(overTotal), QStringLiteral("part5.bin"), "more than 4 GiB"},
        {RawZip({{"Questionnaire.XML", xml}, {"questionnaire.xml/", {}}}), QString(),
         "holds no questionnaire.xml"},
        {RawZip(tooMany), QString(), "holds 10001 entries"},
        {DeflatedZip({{"questionnaire.xml", xml}, {"zeros.bin", QByteArray(2 << 20, '\0')}}),
         QStringLiteral("zeros.bin"), "compressed more than 1000:1"},
    };
    cases.insert(cases.end(), std::begin(entries), std::end(entries));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason + (QStringLiteral(": ") + c.entry).toStdString());
        Put(Work() + QStringLiteral("old.txt"), "old");
        CQuestionnaire q = testutil::MakeSample();
        EXPECT_FALSE(q.ReadFromExchangeFormat(WritePackage(c.package), Work()));
        const QString error = q.GetLastError();
        EXPECT_TRUE(error.contains(QLatin1String(c.reason))) << error.toStdString();
        EXPECT_TRUE(c.entry.isEmpty() || error.contains(QLatin1Char('\'') + c.entry + '\''))
            << error.toStdString();
        EXPECT_TRUE(error.endsWith(QLatin1String("Nothing was unpacked."))) << error.toStdString();
        EXPECT_EQ(q, testutil::MakeSample());
        EXPECT_EQ(Tree(Work()), QStringList{QStringLiteral("old.txt")});
        ExpectOutsideUntouched();
    }
}

TEST_F(ExchangePackageTest, DataBeyondTheDeclaredSizeStopsUnpacking) {
    Put(Work() + QStringLiteral("run1.stp"), "stamp");
    const QString qex = WritePackage(
        RawZip({{"questionnaire.xml", SampleXml()}, {"big.bin", QByteArray(200000, 'b'), 100}}));
    CQuestionnaire q;
    EXPECT_FALSE(q.ReadFromExchangeFormat(qex, Work()));
    EXPECT_TRUE(q.GetLastError().contains(QLatin1String("'big.bin'")));
    EXPECT_TRUE(q.GetLastError().contains(QLatin1String("more bytes than the 100 it declares")))
        << q.GetLastError().toStdString();
    EXPECT_TRUE(q.GetExchangeFolder().isEmpty());
    // Nothing half-unpacked is left behind, and the stamp of the other instance stays.
    EXPECT_EQ(Tree(Work()), QStringList{QStringLiteral("run1.stp")});
    ExpectOutsideUntouched();
}

TEST_F(ExchangePackageTest, LinksPlantedInTheWorkingFolderAreNeverWrittenThrough) {
    const struct {
        QString link;
        QString target;
        QByteArray entry;
        bool read;
    } cases[] = {
        // An ordinary link is removed with the old contents; the entry lands in a real folder.
        {QStringLiteral("media"), Outside(), "media/photo.png", true},
        // Stamp-like names survive the clean-up, so the link is still there when unpacking.
        {QStringLiteral("media.stp"), Outside(), "media.stp/photo.png", false},
        // A stamp name at the top is never unpacked over.
        {QStringLiteral("run.stp"), Outside() + QStringLiteral("/sentinel.txt"), "run.stp", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entry.toStdString());
        ASSERT_TRUE(QDir(Work()).removeRecursively());
        ASSERT_TRUE(QDir().mkdir(Work()));
        ASSERT_TRUE(QFile::link(c.target, Work() + c.link));
        const QString qex =
            WritePackage(RawZip({{"questionnaire.xml", SampleXml()}, {c.entry, "evil"}}));
        CQuestionnaire q;
        EXPECT_EQ(q.ReadFromExchangeFormat(qex, Work()), c.read) << q.GetLastError().toStdString();
        if (!c.read) {
            EXPECT_TRUE(q.GetLastError().contains(QLatin1String("is a symbolic link")));
            EXPECT_TRUE(q.GetLastError().contains(Work() + c.link))
                << q.GetLastError().toStdString();
        }
        ExpectOutsideUntouched();
    }
}

TEST_F(ExchangePackageTest, UnreadableInputsAreRefusedWithAMessage) {
    const QString good = WritePackage(RawZip({{"questionnaire.xml", SampleXml()}}));
    const QString junk = Path(QStringLiteral("junk.qex"));
    Put(junk, "PK\x03\x04 but no archive");
    const QString badXml = Path(QStringLiteral("bad.qex"));
    Put(badXml, RawZip({{"questionnaire.xml", "<questionnaire"}}));
    const struct {
        QString package;
        QString folder;
        const char* reason;
    } cases[] = {
        {good, QString(), "No working folder"},
        {good, Path(QStringLiteral("missing/")), "does not exist"},
        {Path(QStringLiteral("missing.qex")), Work(), "does not exist"},
        {junk, Work(), "cannot be opened as a package"},
        {badXml, Work(), "holds a questionnaire.xml that cannot be read"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        CQuestionnaire q;
        EXPECT_FALSE(q.ReadFromExchangeFormat(c.package, c.folder));
        EXPECT_TRUE(q.GetLastError().contains(QLatin1String(c.reason)))
            << q.GetLastError().toStdString();
        EXPECT_TRUE(q.GetExchangeFolder().isEmpty());
    }
    ExpectOutsideUntouched();
}

TEST_F(ExchangePackageTest, AFailedSaveKeepsTheOldPackage) {
    // A package of the sample unpacked into the working folder, with a large media file.
    const QString qex = Path(QStringLiteral("kept.qex"));
    ASSERT_TRUE(testutil::MakeSample().SaveToExchangeFormat(qex, QString(), -1));
    CQuestionnaire q;
    ASSERT_TRUE(q.ReadFromExchangeFormat(qex, Work()));
    Put(Work() + QStringLiteral("big.bin"), PseudoRandomBytes(1 << 20));
    const QByteArray old = testutil::ReadAll(qex);
    // A missing extra folder, then a working folder removed behind the questionnaire's back.
    for (const QString& extra : {Path(QStringLiteral("no-such-folder")), QString()}) {
        if (extra.isEmpty()) {
            ASSERT_TRUE(QDir(Work()).removeRecursively());
        }
        const QStringList before = Tree(m_root.path());
        EXPECT_FALSE(q.SaveToExchangeFormat(qex, extra, -1));
        EXPECT_TRUE(q.GetLastError().contains(qex) || q.GetLastError().contains(extra))
            << q.GetLastError().toStdString();
        EXPECT_EQ(testutil::ReadAll(qex), old);
        EXPECT_EQ(Tree(m_root.path()), before) << "a temporary file was left behind";
    }
    // A target folder that does not exist is not created.
    EXPECT_FALSE(q.SaveToExchangeFormat(Path(QStringLiteral("missing/x.qex")), QString(), 0));
    EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("missing"))));
}

} // namespace
