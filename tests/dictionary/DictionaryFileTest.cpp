// The dictionary file byte for byte, against files assembled by hand from the format.
#include "common/TestUtil.h"
#include "dictionary/Dictionary.h"
#include "util/AnsiCodePage.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// Little-endian pieces of a hand-made file.
QByteArray I32(qint64 value) {
    QByteArray b(4, '\0');
    for (int i = 0; i < 4; ++i)
        b[i] = char((value >> (8 * i)) & 0xFF);
    return b;
}
QByteArray U16(int value) {
    return QByteArray(1, char(value & 0xFF)) + QByteArray(1, char(value >> 8));
}
QByteArray Wide(const QString& text) {
    QByteArray b("\xFF\xFE\xFF", 3);
    const qint64 n = text.size();
    if (n < 255)
        b += char(n);
    else if (n < 0xFFFE)
        b += QByteArray("\xFF", 1) + U16(int(n));
    else
        b += QByteArray("\xFF\xFF\xFF", 3) + I32(n);
    return b + testutil::Utf16Le(text, false);
}

using testutil::Unprivileged;

class DictionaryFileTest : public ::testing::Test {
protected:
    QString Path(const QString& name = u"Translator.dic"_s) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    util::RecordedMessages m_messages;
};

TEST_F(DictionaryFileTest, ReadsEveryStringLengthFormEightBitStringsAndRepeatedLanguages) {
    const QString s254 = u"a"_s.repeated(254), s255 = u"b"_s.repeated(255),
                  s65534 = u"c"_s.repeated(65534), s65535 = u"d"_s.repeated(65535);
    QByteArray file = I32(7) + I32(3); // a version other than 101 loads like any other
    file += I32(4) + I32(1033) + Wide(s254) + I32(1036) + Wide(s255) + I32(1031) + Wide(s65534) +
            I32(1040) + Wide(s65535);
    // An 8-bit string: the length prefix without the wide marker, bytes in the ANSI code page.
    file += I32(2) + I32(1033) + QByteArray(1, 5) + "Caf\xe9s" + I32(1036) + Wide(u"x"_s);
    file += I32(2) + I32(1033) + Wide(u"first"_s) + I32(1033) + Wide(u"second"_s);
    ASSERT_TRUE(testutil::WriteAll(Path(), file));
    util::AnsiCodePage::SetCurrent(1252);
    CDictionary dictionary;
    ASSERT_TRUE(dictionary.Load(Path(), m_messages));
    util::AnsiCodePage::Reset();
    ASSERT_EQ(dictionary.GetEntryCount(), 3);
    EXPECT_EQ(dictionary.GetEntry(0).m_texts,
              (CDicEntry::Texts{{1033, s254}, {1036, s255}, {1031, s65534}, {1040, s65535}}));
    EXPECT_EQ(dictionary.GetEntry(1).GetText(1033), u"Cafés"_s);
    EXPECT_EQ(dictionary.GetEntry(2).m_texts, (CDicEntry::Texts{{1033, u"second"_s}}));
    EXPECT_FALSE(dictionary.IsModified());
    // Languages in order of first appearance, an entry's in ascending order.
    ASSERT_EQ(dictionary.GetLanguageCount(), 4);
    EXPECT_EQ(dictionary.GetLanguage(0).m_id, 1031u);
    EXPECT_EQ(dictionary.GetLanguage(3).m_id, 1040u);
    EXPECT_EQ(dictionary.GetLanguage(1).m_abbreviation, u"ENU"_s);
}

TEST_F(DictionaryFileTest, SaveWritesTheFormatLeavesDeletedEntriesOutAndMakesTheFolders) {
    CDictionary dictionary;
    dictionary.AddEntry({{1036, u"Oui"_s}, {1033, u"Yes"_s}});
    dictionary.AddEntry({{1033, u"gone"_s}});
    dictionary.AddEntry({{1031, u"x"_s.repeated(300)}});
    dictionary.DeleteEntry(1);
    // The missing folders are made.
    const QString path = Path(u"Varnel/Translator/Translator.dic"_s);
    ASSERT_TRUE(dictionary.Save(path, m_messages));
    const QByteArray expected = I32(101) + I32(2) + I32(2) + I32(1033) + Wide(u"Yes"_s) +
                                I32(1036) + Wide(u"Oui"_s) + I32(1) + I32(1031) +
                                Wide(u"x"_s.repeated(300));
    EXPECT_EQ(testutil::ReadAll(path), expected);
    EXPECT_TRUE(dictionary.IsModified()); // saving leaves the flag to the caller

    // Numbers close up on reload.
    CDictionary reloaded;
    ASSERT_TRUE(reloaded.Load(path, m_messages));
    ASSERT_EQ(reloaded.GetEntryCount(), 2);
    EXPECT_EQ(reloaded.GetEntry(1).m_number, 1);
    EXPECT_EQ(reloaded.GetEntry(1).GetText(1031).size(), 300);

    // A folder that cannot be made: a file stands where it should be.
    ASSERT_TRUE(testutil::WriteAll(Path(u"blocker"_s), "x"));
    EXPECT_FALSE(dictionary.Save(Path(u"blocker/Translator.dic"_s), m_messages));
    EXPECT_EQ(m_messages.messages.last(), u"Cannot create directory!"_s);
}

// A file that is there but was not read whole keeps what was read and is kept as a backup before
// a save replaces it; one that may not be read is moved aside, as it cannot be copied. A missing
// file, and a count below one, which reads no entries and is no fault of the file, leave nothing
// to keep.
TEST_F(DictionaryFileTest, FilesNotReadWholeAreKeptBeforeASave) {
    const QByteArray kept = I32(1) + I32(1033) + Wide(u"kept"_s);
    QByteArray cut = I32(101) + I32(3) + kept + I32(2) + I32(1033) + Wide(u"cut"_s);
    cut.chop(2);
    const struct {
        const char* name;
        QByteArray bytes; // null: no file
        bool loads;
        QStringList texts;   // English of the entries read
        bool locked = false; // write-only, and loaded and saved by an unprivileged user
    } cases[] = {
        {"missing", QByteArray(), false, {}},
        {"count 0", I32(101) + I32(0) + kept, true, {}},
        {"count -1", I32(101) + I32(-1) + kept, true, {}},
        {"lowest count", I32(101) + I32(-2147483648LL) + kept, true, {}},
        {"cut short", cut, false, {"kept"}},
        {"unreadable", I32(101) + I32(1) + kept, false, {}, true},
    };
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    const auto writeOnly =
        QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = Path(QString::fromLatin1(c.name) + ".dic");
        const QString backup = path + ".bak";
        if (!c.bytes.isNull()) {
            ASSERT_TRUE(testutil::WriteAll(path, c.bytes));
        }
        if (c.locked) {
            ASSERT_TRUE(QFile::setPermissions(path, writeOnly));
        }
        util::RecordedMessages messages;
        {
            std::optional<Unprivileged> user;
            if (c.locked) {
                ASSERT_TRUE(user.emplace().Ok()) << "cannot run as an unprivileged user";
            }
            CDictionary dictionary;
            EXPECT_EQ(dictionary.Load(path, messages), c.loads);
            EXPECT_EQ(messages.messages,
                      c.loads ? QStringList()
                              : QStringList(QStringLiteral(
                                    "The dictionnary is either empty or cannot be found!")));
            QStringList texts;
            for (int n = 0; n < dictionary.GetEntryCount(); ++n)
                texts << dictionary.GetEntry(n).GetText(1033);
            EXPECT_EQ(texts, c.texts);
            EXPECT_FALSE(dictionary.IsModified());
            dictionary.AddEntry({{1033, u"new"_s}});
            ASSERT_TRUE(dictionary.Save(path, messages));
        }
        const bool damaged = !c.loads && !c.bytes.isNull();
        EXPECT_EQ(QFileInfo::exists(backup), damaged);
        if (damaged) {
            ASSERT_TRUE(QFile::setPermissions(backup, writeOnly | QFileDevice::ReadOwner));
            EXPECT_EQ(testutil::ReadAll(backup), c.bytes);
            EXPECT_TRUE(messages.messages.last().contains(backup));
        }
        CDictionary saved;
        ASSERT_TRUE(saved.Load(path, messages));
        EXPECT_EQ(saved.GetEntryCount(), c.texts.size() + 1);
    }

    // Every length of a good file: a clean refusal or the whole dictionary, never a crash.
    const QByteArray good = testutil::ReadAll(Path(u"cut short.dic"_s));
    for (qsizetype length = 0; length < good.size(); ++length) {
        ASSERT_TRUE(testutil::WriteAll(Path(u"cut.dic"_s), good.left(length)));
        CDictionary cut;
        EXPECT_FALSE(cut.Load(Path(u"cut.dic"_s), m_messages)) << length;
        EXPECT_LT(cut.GetEntryCount(), 2) << length;
    }
}

} // namespace
