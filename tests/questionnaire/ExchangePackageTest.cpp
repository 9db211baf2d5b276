#include "questionnaire/formats/ExchangePackage.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "util/FileSystem.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <zip.h>
#include <zlib.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

using namespace questionnaire;
using namespace Qt::StringLiterals;

namespace {

// --- packages assembled byte by byte, for what libzip will not write ---

constexpr quint64 kActualSize = ~quint64(0);

struct RawEntry {
    QByteArray name;
    QByteArray data;
    quint64 declaredSize = kActualSize; // the uncompressed size the headers claim
    quint32 unixMode = 0100644;
    bool deflate = false;
};

// Little-endian fields, each given as a value and its width in bytes.
template <class... More> void Put(QByteArray& out, quint64 value, int bytes, More... more) {
    for (int i = 0; i < bytes; ++i)
        out.append(char((value >> (8 * i)) & 0xFF));
    if constexpr (sizeof...(more) > 0)
        Put(out, more...);
}

// A ZIP made on Unix; a declared size beyond 32 bits goes into a Zip64 field of both headers, as
// real tools write it.
QByteArray RawZip(const std::vector<RawEntry>& entries) {
    QByteArray local;
    QByteArray central;
    for (const RawEntry& e : entries) {
        const quint64 size =
            e.declaredSize == kActualSize ? quint64(e.data.size()) : e.declaredSize;
        // qCompress gives a length, a zlib header and an Adler-32 around the raw deflate stream.
        const QByteArray packed = e.deflate ? qCompress(e.data, 9).mid(6).chopped(4) : e.data;
        const quint64 crc =
            crc32(0, reinterpret_cast<const Bytef*>(e.data.constData()), uInt(e.data.size()));
        const bool zip64 = size >= 0xFFFFFFFFu;
        QByteArray extra;
        if (zip64)
            Put(extra, 1, 2, 16, 2, size, 8, quint64(packed.size()), 8);
        // Version needed, flags, method, time (1980-01-01 00:00), CRC, sizes, name and extra
        // lengths: the same in both headers.
        const auto fields = [&](QByteArray& out) {
            Put(out, zip64 ? 45 : 20, 2, 0, 2, e.deflate ? 8 : 0, 2, 0x00210000, 4, crc, 4,
                zip64 ? 0xFFFFFFFFu : quint64(packed.size()), 4, zip64 ? 0xFFFFFFFFu : size, 4,
                quint64(e.name.size()), 2, quint64(extra.size()), 2);
        };
        Put(central, 0x02014b50, 4, 0x0314, 2); // made by Unix
        fields(central);
        // Comment length, disk, internal attributes; the mode; where the local header starts.
        Put(central, 0, 6, quint64(e.unixMode) << 16, 4, quint64(local.size()), 4);
        central += e.name + extra;
        Put(local, 0x04034b50, 4);
        fields(local);
        local += e.name + extra + packed;
    }
    QByteArray zip = local + central;
    Put(zip, 0x06054b50, 4, 0, 4, entries.size(), 2, entries.size(), 2, quint64(central.size()), 4,
        quint64(local.size()), 4, 0, 2);
    return zip;
}

// The sample as WriteXmlFile writes it.
QByteArray SampleXml() {
    return testutil::ReadAll(testutil::DataPath(u"sample.xml"_s));
}

QByteArray PseudoRandomBytes(qsizetype size) {
    QRandomGenerator generator(42);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(generator.bounded(256));
    return bytes;
}

// --- reading packages back ---

using Entries = QList<std::pair<QString, QByteArray>>;

// A package's entries in their order with their bytes, read through libzip; our writer deflates
// every one of them.
Entries Unzip(const QString& qex) {
    Entries entries;
    zip_t* zip = zip_open(QFile::encodeName(qex).constData(), ZIP_RDONLY, nullptr);
    if (!zip)
        return {{u"<not a zip>"_s, {}}};
    for (zip_uint64_t i = 0; i < zip_uint64_t(zip_get_num_entries(zip, 0)); ++i) {
        zip_stat_t st;
        zip_file_t* file =
            zip_stat_index(zip, i, 0, &st) == 0 ? zip_fopen_index(zip, i, 0) : nullptr;
        QByteArray data(file ? qsizetype(st.size) : 0, Qt::Uninitialized);
        if (!file || zip_fread(file, data.data(), st.size) != zip_int64_t(st.size))
            data = "<unreadable>";
        EXPECT_TRUE(file && st.comp_method == ZIP_CM_DEFLATE) << st.name;
        entries.append({QString::fromUtf8(zip_get_name(zip, i, 0)), data});
        if (file)
            zip_fclose(file);
    }
    zip_discard(zip);
    return entries;
}

class ExchangePackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_root.isValid());
        QDir root(m_root.path());
        ASSERT_TRUE(root.mkdir(u"work"_s));
        ASSERT_TRUE(root.mkdir(u"outside"_s));
        Put(Outside() + u"/sentinel.txt"_s, "mine");
    }

    QString Path(const QString& name) const { return m_root.filePath(name); }
    QString Work() const { return Path(u"work"_s) + QLatin1Char('/'); }
    QString Outside() const { return Path(u"outside"_s); }

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
        EXPECT_EQ(Tree(Outside()), QStringList{u"sentinel.txt"_s});
        EXPECT_EQ(testutil::ReadAll(Outside() + u"/sentinel.txt"_s), "mine");
        const QStringList own = {"work", "outside", "extra", "linked"};
        for (const QString& name :
             QDir(m_root.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
            EXPECT_TRUE(own.contains(name) || name.endsWith(QLatin1String(".qex")))
                << "appeared beside the working folder: " << name.toStdString();
    }

    QString WritePackage(const QByteArray& bytes) const {
        const QString qex = Path(u"in.qex"_s);
        EXPECT_TRUE(testutil::WriteAll(qex, bytes));
        return qex;
    }

    QTemporaryDir m_root;
};

TEST_F(ExchangePackageTest, RoundTripKeepsEveryByteAndAFailedSaveKeepsTheOldPackage) {
    const CQuestionnaire sample = testutil::MakeSample();
    const QString qex = Path(u"survey.qex"_s);
    // Without a working folder the package holds the XML alone; the flags choose what it says.
    const struct {
        qint32 flags;
        bool captions;
        bool routings;
    } cases[] = {
        {0, false, false}, {1, true, false}, {2, false, true}, {3, true, true}, {-1, true, true}};
    CQuestionnaire read;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags);
        CQuestionnaire q = sample;
        ASSERT_TRUE(q.SaveToExchangeFormat(qex, QString(), c.flags))
            << q.GetLastError().toStdString();
        const Entries entries = Unzip(qex);
        ASSERT_EQ(entries.size(), 1);
        EXPECT_EQ(entries[0].first, kPackageXmlName);
        read = CQuestionnaire();
        ASSERT_TRUE(read.ReadFromExchangeFormat(qex, Work())) << read.GetLastError().toStdString();
        EXPECT_EQ(read.GetExchangeFolder(), Work());
        EXPECT_EQ(read.GetNbreFiltre() > 0, c.routings);
        EXPECT_EQ(!read.GetQuestion(0).GetLocalisedLongCaption(testutil::kEnglish).isEmpty(),
                  c.captions);
        EXPECT_EQ(read.GetNbreQuestion(), sample.GetNbreQuestion());
        if (c.captions && c.routings) {
            EXPECT_EQ(entries[0].second, SampleXml()); // as WriteXmlFile writes it
            EXPECT_EQ(read, sample);
        }
    }

    // Media beside the XML; stamps and links stay out of the package. An extra folder is packed
    // too, its stamps with it, but its questionnaire.xml never replaces ours. The same whether
    // the working folder is named absolutely or relatively, as a script names it.
    const QByteArray photo = PseudoRandomBytes(1536 * 1024);
    const QString extra = Path(u"extra"_s);
    Put(extra + u"/docs/manual.pdf"_s, "%PDF");
    Put(extra + u"/questionnaire.xml"_s, "not ours");
    Put(extra + u"/keep.stp"_s, "packed here");
    const QString current = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_root.path()));
    for (const QString& folder : {u"work"_s, u"./work/"_s, Work()}) {
        SCOPED_TRACE(folder.toStdString());
        read = CQuestionnaire();
        ASSERT_TRUE(read.ReadFromExchangeFormat(qex, folder)) << read.GetLastError().toStdString();
        Put(Work() + u"media/photo.png"_s, photo);
        Put(Work() + u"media/notes/.hidden.txt"_s, "h");
        Put(Work() + u"stamp3.stp"_s, "stamp");
        Put(Work() + u"model.stp"_s, "a drawing");
        ASSERT_TRUE(QFile::link(Outside() + u"/sentinel.txt"_s, Work() + u"link"_s));
        ASSERT_TRUE(QFile::link(Outside(), Work() + u"linked"_s));
        read.GetAdrQuestion(0)->SetLocalisedLongCaption(testutil::kFrench, u"Nouveau"_s);
        ASSERT_TRUE(read.SaveToExchangeFormat(qex, extra, -1)) << read.GetLastError().toStdString();
        // The working folder's XML is the saved one too.
        const QByteArray xml = testutil::ReadAll(Work() + u"questionnaire.xml"_s);
        EXPECT_EQ(Unzip(qex), (Entries{{"questionnaire.xml", xml},
                                       {"docs/manual.pdf", "%PDF"},
                                       {"keep.stp", "packed here"},
                                       {"media/notes/.hidden.txt", "h"},
                                       {"media/photo.png", photo},
                                       {"model.stp", "a drawing"}}));
    }
    ASSERT_TRUE(QDir::setCurrent(current));

    // Unpacked again, everything comes back; the stamp stays and the links are gone.
    CQuestionnaire again;
    ASSERT_TRUE(again.ReadFromExchangeFormat(qex, Work())) << again.GetLastError().toStdString();
    EXPECT_EQ(again, read);
    EXPECT_EQ(testutil::ReadAll(Work() + u"media/photo.png"_s), photo);
    EXPECT_EQ(Tree(Work()),
              (QStringList{"docs", "docs/manual.pdf", "keep.stp", "media", "media/notes",
                           "media/notes/.hidden.txt", "media/photo.png", "model.stp",
                           "questionnaire.xml", "stamp3.stp"}));

    // A failed save keeps the old package and leaves no temporary file: a missing extra folder,
    // then a working folder removed behind the questionnaire's back.
    const QByteArray old = testutil::ReadAll(qex);
    for (const QString& missing : {Path(u"no-such-folder"_s), QString()}) {
        if (missing.isEmpty()) {
            ASSERT_TRUE(QDir(Work()).removeRecursively());
        }
        const QStringList before = Tree(m_root.path());
        EXPECT_FALSE(read.SaveToExchangeFormat(qex, missing, -1));
        EXPECT_TRUE(read.GetLastError().contains(qex) || read.GetLastError().contains(missing))
            << read.GetLastError().toStdString();
        EXPECT_EQ(testutil::ReadAll(qex), old);
        EXPECT_EQ(Tree(m_root.path()), before) << "a temporary file was left behind";
    }
    // A target folder that does not exist is not created.
    EXPECT_FALSE(read.SaveToExchangeFormat(Path(u"missing/x.qex"_s), QString(), 0));
    EXPECT_FALSE(QFileInfo::exists(Path(u"missing"_s)));
    ExpectOutsideUntouched();
}

// Links planted in it are removed, never followed; stamps stay, and a stamp entry is never
// unpacked.
TEST_F(ExchangePackageTest, UnpackingReplacesOldContentsButKeepsStamps) {
    Put(Work() + u"old/deep/x.txt"_s, "x");
    Put(Work() + u".hidden"_s, "x");
    Put(Work() + u"STAMP7.STP"_s, "stamp");
    ASSERT_TRUE(QFile::link(Outside(), Work() + u"old/linked"_s));
    ASSERT_TRUE(QFile::link(Outside(), Work() + u"media"_s));
    const QString qex = WritePackage(RawZip({{"questionnaire.xml", SampleXml()},
                                             {"media/", {}},
                                             {"media/a.png", "png"},
                                             {"stamp3.stp", "not a stamp of ours"},
                                             {"plan.stp", "a model, not a stamp"}}));
    CQuestionnaire q;
    ASSERT_TRUE(q.ReadFromExchangeFormat(qex, Work())) << q.GetLastError().toStdString();
    EXPECT_EQ(q, testutil::MakeSample());
    EXPECT_EQ(Tree(Work()),
              (QStringList{"STAMP7.STP", "media", "media/a.png", "plan.stp", "questionnaire.xml"}));
    EXPECT_EQ(testutil::ReadAll(Work() + u"STAMP7.STP"_s), "stamp");
    ExpectOutsideUntouched();
}

// Two programs with one package open share its working folder. While one empties and fills it
// (opening) or packs it (saving), the other waits: a save never packs a half-emptied folder.
TEST_F(ExchangePackageTest, ProgramsSharingAWorkingFolderWaitForEachOther) {
    const QString qex = Path(u"survey.qex"_s);
    CQuestionnaire open = testutil::MakeSample();
    ASSERT_TRUE(open.SaveToExchangeFormat(qex, QString(), -1));
    ASSERT_TRUE(open.ReadFromExchangeFormat(qex, Work())) << open.GetLastError().toStdString();
    const QString marker = Work() + u"media/new.png"_s; // what the other program is working on
    for (const bool save : {false, true}) {
        SCOPED_TRACE(save ? "save" : "open");
        std::optional<util::FolderLock> other(std::in_place, Work());
        Put(marker, "png");
        const QByteArray before = testutil::ReadAll(qex);
        std::atomic<bool> done = false;
        bool ok = false;
        CQuestionnaire second;
        std::thread program([&] {
            ok = save ? open.SaveToExchangeFormat(qex, QString(), -1)
                      : second.ReadFromExchangeFormat(qex, Work());
            done = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_FALSE(done);
        EXPECT_TRUE(QFileInfo::exists(marker));
        EXPECT_EQ(testutil::ReadAll(qex), before);
        other.reset();
        program.join();
        EXPECT_TRUE(ok);
        // Opening empties the folder after the other program is done with it; saving packs what
        // that program left there.
        EXPECT_EQ(QFileInfo::exists(marker), save);
        EXPECT_EQ(Unzip(qex).size(), save ? 2 : 1);
    }
    ExpectOutsideUntouched();
}

// A package or a working folder refused: the message says why and names the entry or the place,
// and the questionnaire and the working folder stay exactly as they were. A refusal found while
// unpacking, putting the files in place or reading the questionnaire leaves the folder to the
// program that has it open, as one found before anything is written does.
TEST_F(ExchangePackageTest, RefusedPackagesLeaveTheQuestionnaireAndTheFolderAsTheyWere) {
    Put(Work() + u"old.txt"_s, "old");
    // A stamp, and a link with a stamp's name that the clean-up therefore keeps.
    Put(Work() + u"stamp1.stp"_s, "stamp");
    ASSERT_TRUE(QFile::link(Outside(), Work() + u"stamp2.stp"_s));
    const QStringList kept = {u"old.txt"_s, u"stamp1.stp"_s, u"stamp2.stp"_s};
    // A working folder that is itself a link: unpacking would empty what it points to.
    ASSERT_TRUE(QFile::link(Outside(), Path(u"linked"_s)));
    const QByteArray xml = SampleXml();
    const QByteArray good = RawZip({{"questionnaire.xml", xml}});
    // The hostile entry comes after good ones, which must not have been written either.
    const auto after = [&xml](const RawEntry& hostile) {
        return RawZip({{"questionnaire.xml", xml}, {"media/a.png", "png"}, hostile});
    };
    const QByteArray nearlyIncompressible = PseudoRandomBytes(1100000);
    std::vector<RawEntry> overTotal;
    for (int i = 1; i <= 5; ++i) // each at the entry limit and within the ratio
        overTotal.push_back(
            {"part" + QByteArray::number(i) + ".bin", nearlyIncompressible, kMaxPackageEntrySize});
    overTotal.push_back({"questionnaire.xml", xml});
    std::vector<RawEntry> tooMany{{"questionnaire.xml", xml}};
    for (qint64 i = 0; i < kMaxPackageEntries; ++i)
        tooMany.push_back({"f" + QByteArray::number(i), {}});
    const QString absolute = Outside() + u"/evil"_s;
    const struct {
        QByteArray package; // none: a package that does not exist
        const char* reason;
        QString mention = {};         // an entry is quoted
        bool nothingUnpacked = true;  // refused before anything was written, and says so
        const char* folder = "work/"; // below the root; none: no working folder given
    } cases[] = {
        {after({"../x", "e"}), "'..' path component", u"'../x'"_s},
        {after({"media/../../x", "e"}), "'..' path component", u"'media/../../x'"_s},
        {after({"media\\..\\..\\x", "e"}), "'..' path component", u"'media\\..\\..\\x'"_s},
        {after({"..", "e"}), "'..' path component", u"'..'"_s},
        {after({QFile::encodeName(absolute), "e"}), "an absolute name", u"'"_s + absolute + u"'"_s},
        {after({"\\tmp\\evil", "e"}), "an absolute name", u"'\\tmp\\evil'"_s},
        {after({"C:evil.txt", "e"}), "an absolute name", u"'C:evil.txt'"_s},
        {after({"c:/evil.txt", "e"}), "an absolute name", u"'c:/evil.txt'"_s},
        {after({"media//x", "e"}), "an empty or '.' path component", u"'media//x'"_s},
        {after({"./questionnaire.xml", "e"}), "an empty or '.' path component",
         u"'./questionnaire.xml'"_s},
        {after({"link", "/etc/passwd", kActualSize, 0120777}), "a symbolic link", u"'link'"_s},
        {after({"media/a.png", "2"}), "two entries with the same name", u"'media/a.png'"_s},
        {after({"media\\a.png", "2"}), "two entries with the same name", u"'media/a.png'"_s},
        {after({"media/a.png/x", "2"}), "both a file and a folder", u"'media/a.png'"_s},
        {after({"huge.bin", "x", 10000000000ull}), "declared larger than 1 GiB (10000000000",
         u"'huge.bin'"_s},
        {RawZip(overTotal), "more than 4 GiB", u"'part5.bin'"_s},
        {RawZip({{"Questionnaire.XML", xml}, {"questionnaire.xml/", {}}}),
         "holds no questionnaire.xml"},
        {RawZip(tooMany), "holds 10001 entries"},
        {after({.name = "zeros.bin", .data = QByteArray(2 << 20, '\0'), .deflate = true}),
         "compressed more than 1000:1", u"'zeros.bin'"_s},
        {good, "No working folder", {}, false, nullptr},
        {good, "does not exist", {}, false, "missing/"},
        {good, "is a symbolic link", Path(u"linked"_s), false, "linked/"},
        {{}, "does not exist", {}, false},
        {"PK\x03\x04 but no archive", "cannot be opened as a package", {}, false},
        // Found only while unpacking, reading the questionnaire or putting the files in place.
        {RawZip({{"questionnaire.xml", xml}, {"big.bin", QByteArray(200000, 'b'), 100}}),
         "more bytes than the 100 it declares", u"'big.bin'"_s, false},
        {RawZip({{"questionnaire.xml", "<questionnaire"}, {"media/other.png", "png"}}),
         "holds a questionnaire.xml that cannot be read",
         {},
         false},
        {RawZip({{"questionnaire.xml", xml}, {"stamp2.stp/photo.png", "evil"}}),
         "is a symbolic link", Work() + u"stamp2.stp"_s, false},
        {RawZip({{"questionnaire.xml", xml}, {"stamp1.stp/photo.png", "odd"}}),
         "Cannot create the folder", Work() + u"stamp1.stp"_s, false},
    };
    const CQuestionnaire sample = testutil::MakeSample();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason + (u": "_s + c.mention).toStdString());
        CQuestionnaire q = sample;
        const QString qex = c.package.isNull() ? Path(u"missing.qex"_s) : WritePackage(c.package);
        EXPECT_FALSE(
            q.ReadFromExchangeFormat(qex, c.folder ? Path(QLatin1String(c.folder)) : QString()));
        const QString error = q.GetLastError();
        EXPECT_TRUE(error.contains(QLatin1String(c.reason)) && error.contains(c.mention))
            << error.toStdString();
        if (c.nothingUnpacked) {
            EXPECT_TRUE(error.endsWith(QLatin1String("Nothing was unpacked.")))
                << error.toStdString();
            EXPECT_EQ(q, sample);
        }
        EXPECT_TRUE(q.GetExchangeFolder().isEmpty());
        EXPECT_EQ(Tree(Work()), kept);
        ExpectOutsideUntouched();
    }
}

} // namespace
