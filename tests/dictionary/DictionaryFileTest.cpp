// The dictionary file byte for byte, against files assembled by hand from the format.
#include "common/TestUtil.h"
#include "dictionary/Dictionary.h"
#include "util/AnsiCodePage.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

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
    QString Path(const QString& name = QStringLiteral("Translator.dic")) const {
        return m_dir.filePath(name);
    }
    QTemporaryDir m_dir;
    util::RecordedMessages m_messages;
};

TEST_F(DictionaryFileTest, ReadsEveryStringLengthFormEightBitStringsAndRepeatedLanguages) {
    const QString s254 = QStringLiteral("a").repeated(254),
                  s255 = QStringLiteral("b").repeated(255);
    const QString s65534 = QStringLiteral("c").repeated(65534);
    const QString s65535 = QStringLiteral("d").repeated(65535);
    QByteArray file = I32(7) + I32(3); // a version other than 101 loads like any other
    file += I32(4) + I32(1033) + Wide(s254) + I32(1036) + Wide(s255) + I32(1031) + Wide(s65534) +
            I32(1040) + Wide(s65535);
    // An 8-bit string: the length prefix without the wide marker, bytes in the ANSI code page.
    file +=
        I32(2) + I32(1033) + QByteArray(1, 5) + "Caf\xe9s" + I32(1036) + Wide(QStringLiteral("x"));
    file += I32(2) + I32(1033) + Wide(QStringLiteral("first")) + I32(1033) +
            Wide(QStringLiteral("second"));
    ASSERT_TRUE(testutil::WriteAll(Path(), file));
    util::AnsiCodePage::SetCurrent(1252);
    CDictionary dictionary;
    ASSERT_TRUE(dictionary.Load(Path(), m_messages));
    util::AnsiCodePage::Reset();
    ASSERT_EQ(dictionary.GetEntryCount(), 3);
    EXPECT_EQ(dictionary.GetEntry(0).GetText(1033), s254);
    EXPECT_EQ(dictionary.GetEntry(0).GetText(1036), s255);
    EXPECT_EQ(dictionary.GetEntry(0).GetText(1031), s65534);
    EXPECT_EQ(dictionary.GetEntry(0).GetText(1040), s65535);
    EXPECT_EQ(dictionary.GetEntry(1).GetText(1033), QStringLiteral("Cafés"));
    EXPECT_EQ(dictionary.GetEntry(2).m_texts, (CDicEntry::Texts{{1033, QStringLiteral("second")}}));
    EXPECT_FALSE(dictionary.IsModified());
    // Languages in order of first appearance, an entry's in ascending order.
    ASSERT_EQ(dictionary.GetLanguageCount(), 4);
    EXPECT_EQ(dictionary.GetLanguage(0).m_id, 1031u);
    EXPECT_EQ(dictionary.GetLanguage(3).m_id, 1040u);
    EXPECT_EQ(dictionary.GetLanguage(1).m_abbreviation, QStringLiteral("ENU"));
}

TEST_F(DictionaryFileTest, SaveWritesTheFormatAndLeavesDeletedEntriesOut) {
    CDictionary dictionary;
    dictionary.AddEntry({{1036, QStringLiteral("Oui")}, {1033, QStringLiteral("Yes")}});
    dictionary.AddEntry({{1033, QStringLiteral("gone")}});
    dictionary.AddEntry({{1031, QStringLiteral("x").repeated(300)}});
    dictionary.DeleteEntry(1);
    ASSERT_TRUE(dictionary.Save(Path(), m_messages));
    const QByteArray expected =
        I32(101) + I32(2) + I32(2) + I32(1033) + Wide(QStringLiteral("Yes")) + I32(1036) +
        Wide(QStringLiteral("Oui")) + I32(1) + I32(1031) + Wide(QStringLiteral("x").repeated(300));
    EXPECT_EQ(testutil::ReadAll(Path()), expected);
    EXPECT_TRUE(dictionary.IsModified()); // saving leaves the flag to the caller

    // Numbers close up on reload.
    CDictionary reloaded;
    ASSERT_TRUE(reloaded.Load(Path(), m_messages));
    ASSERT_EQ(reloaded.GetEntryCount(), 2);
    EXPECT_EQ(reloaded.GetEntry(1).m_number, 1);
    EXPECT_EQ(reloaded.GetEntry(1).GetText(1031).size(), 300);
}

TEST_F(DictionaryFileTest, DamagedFilesKeepWhatWasReadAndAreNeverLost) {
    QByteArray file = I32(101) + I32(3) + I32(1) + I32(1033) + Wide(QStringLiteral("kept")) +
                      I32(2) + I32(1033) + Wide(QStringLiteral("cut"));
    file.chop(2);
    ASSERT_TRUE(testutil::WriteAll(Path(), file));
    CDictionary dictionary;
    EXPECT_FALSE(dictionary.Load(Path(), m_messages));
    EXPECT_EQ(m_messages.messages,
              QStringList{QStringLiteral("The dictionnary is either empty or cannot be found!")});
    ASSERT_EQ(dictionary.GetEntryCount(), 1);
    EXPECT_EQ(dictionary.GetEntry(0).GetText(1033), QStringLiteral("kept"));
    EXPECT_FALSE(dictionary.IsModified());

    dictionary.AddEntry({{1033, QStringLiteral("new")}});
    ASSERT_TRUE(dictionary.Save(Path(), m_messages));
    EXPECT_EQ(testutil::ReadAll(Path(QStringLiteral("Translator.dic.bak"))), file);
    EXPECT_TRUE(m_messages.messages.last().contains(QLatin1String("Translator.dic.bak")));

    // Every length of a good file: a clean refusal or the whole dictionary, never a crash.
    const QByteArray good = testutil::ReadAll(Path());
    for (qsizetype length = 0; length < good.size(); ++length) {
        ASSERT_TRUE(testutil::WriteAll(Path(QStringLiteral("cut.dic")), good.left(length)));
        CDictionary cut;
        EXPECT_FALSE(cut.Load(Path(QStringLiteral("cut.dic")), m_messages)) << length;
        EXPECT_LT(cut.GetEntryCount(), 2) << length;
    }

    // A file that is there but may not be read is kept too, moved aside as it cannot be copied.
    const QString locked = Path(QStringLiteral("locked.dic"));
    ASSERT_TRUE(testutil::WriteAll(locked, good));
    const auto writeOnly =
        QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    ASSERT_TRUE(QFile::setPermissions(locked, writeOnly));
    ASSERT_TRUE(QFile::setPermissions(m_dir.path(), QFileDevice::Permissions(0x7777)));
    {
        Unprivileged user;
        ASSERT_TRUE(user.Ok()) << "cannot run as an unprivileged user";
        CDictionary unread;
        EXPECT_FALSE(unread.Load(locked, m_messages));
        EXPECT_EQ(m_messages.messages.last(),
                  QStringLiteral("The dictionnary is either empty or cannot be found!"));
        unread.AddEntry({{1033, QStringLiteral("one session")}});
        EXPECT_TRUE(unread.Save(locked, m_messages));
        EXPECT_TRUE(m_messages.messages.last().contains(QLatin1String("locked.dic.bak")));
    }
    ASSERT_TRUE(
        QFile::setPermissions(locked + QStringLiteral(".bak"), writeOnly | QFileDevice::ReadOwner));
    EXPECT_EQ(testutil::ReadAll(locked + QStringLiteral(".bak")), good);
    CDictionary saved;
    ASSERT_TRUE(saved.Load(locked, m_messages));
    EXPECT_EQ(saved.GetEntryCount(), 1);
}

// The version, the count, then that many entries: a count below one reads none, and that is no
// fault of the file.
TEST_F(DictionaryFileTest, CountsBelowOneLoadAnEmptyDictionary) {
    const QByteArray entry = I32(1) + I32(1033) + Wide(QStringLiteral("unread"));
    for (const qint64 count : {0LL, -1LL, -2147483648LL}) {
        SCOPED_TRACE(count);
        ASSERT_TRUE(testutil::WriteAll(Path(), I32(101) + I32(count) + entry));
        CDictionary dictionary;
        EXPECT_TRUE(dictionary.Load(Path(), m_messages));
        EXPECT_EQ(dictionary.GetEntryCount(), 0);
        EXPECT_EQ(m_messages.messages, QStringList());
        // Nothing was left unread that a save could lose.
        dictionary.AddEntry({{1033, QStringLiteral("new")}});
        ASSERT_TRUE(dictionary.Save(Path(), m_messages));
        EXPECT_FALSE(QFileInfo::exists(Path(QStringLiteral("Translator.dic.bak"))));
    }
}

TEST_F(DictionaryFileTest, MissingFileAndFolders) {
    CDictionary dictionary;
    EXPECT_FALSE(dictionary.Load(Path(QStringLiteral("missing.dic")), m_messages));
    EXPECT_EQ(dictionary.GetEntryCount(), 0);
    EXPECT_FALSE(dictionary.IsModified());
    // Saving creates the missing folders.
    dictionary.AddEntry({{1033, QStringLiteral("a")}, {1036, QStringLiteral("b")}});
    EXPECT_TRUE(
        dictionary.Save(Path(QStringLiteral("Varnel/Translator/Translator.dic")), m_messages));
    // A folder that cannot be made: a file stands where it should be.
    ASSERT_TRUE(testutil::WriteAll(Path(QStringLiteral("blocker")), "x"));
    EXPECT_FALSE(dictionary.Save(Path(QStringLiteral("blocker/Translator.dic")), m_messages));
    EXPECT_EQ(m_messages.messages.last(), QStringLiteral("Cannot create directory!"));
}

} // namespace
