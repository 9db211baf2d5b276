// The translation memory as TMX, checked against translate-toolkit as a second, independent
// client: its files fill a dictionary, and ours read back in it and in the program alike.
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/TmxFile.h"
#include "util/Messages.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

// Every live entry's texts, in entry order.
std::vector<CDicEntry::Texts> Entries(const CDictionary& dictionary) {
    std::vector<CDicEntry::Texts> entries;
    for (int n = 0; n < dictionary.GetEntryCount(); ++n)
        if (!dictionary.GetEntry(n).m_deleted)
            entries.push_back(dictionary.GetEntry(n).m_texts);
    return entries;
}

class Counting : public ConflictChooser {
public:
    qint32 Choose(const ConflictList&) override {
        ++asked;
        return ConflictList::kDoNotAdd;
    }
    int asked = 0;
};

TEST(Tmx, AMemoryWrittenByTranslateToolkitFillsAnEmptyDictionary) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shared.tmx"));
    ASSERT_EQ(testutil::WriteTmxWithToolkit(path), QString());
    CDictionary dictionary;
    Counting chooser;
    util::RecordedMessages messages;
    const dictionary::TmxImport imported =
        dictionary::ImportTmx(path, dictionary, chooser, messages);
    ASSERT_EQ(imported.status, dictionary::TmxImport::Status::Read)
        << messages.messages.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(imported.added, 2);
    EXPECT_EQ(imported.skipped, 1); // one language only
    // The dictionary keeps texts as the grid shows them: line breaks and tabs escaped.
    const std::vector<CDicEntry::Texts> expected = {
        {{kEnglish, QStringLiteral("Very satisfied")}, {kFrench, QStringLiteral("Très satisfait")}},
        {{kEnglish, QStringLiteral("Line one\\nLine two\\twith a tab & <b>")},
         {kFrench, QStringLiteral("Ligne un\\nLigne deux\\tavec \u05E9 ") +
                       QString::fromUcs4(U"\U0001F600")}},
    };
    EXPECT_EQ(Entries(dictionary), expected);
    // The same memory again merges into the entries it matches: nothing new, nothing asked.
    const dictionary::TmxImport again = dictionary::ImportTmx(path, dictionary, chooser, messages);
    EXPECT_EQ(again.added, 0);
    EXPECT_EQ(chooser.asked, 0);
    EXPECT_EQ(Entries(dictionary), expected);
}

TEST(Tmx, ADictionaryWrittenAsTmxReadsBackTheSameInBothPrograms) {
    CDictionary dictionary;
    const std::vector<CDicEntry::Texts> entries = {
        {{kEnglish, QStringLiteral("Yes")},
         {kFrench, QStringLiteral("Oui")},
         {kGerman, QStringLiteral("Ja")}},
        {{kEnglish, QStringLiteral("Read out\\nthe scale")},
         {kFrench, QStringLiteral("Lire\\tl'échelle & <fin> \"x\"")}},
        {{kEnglish, QStringLiteral("Folder a\\b")}, {kGerman, QStringLiteral("Ctrl ") + QChar(1)}},
        {{1025, QStringLiteral("\u0646\u0639\u0645")}, {kEnglish, QStringLiteral("Yes!")}},
    };
    for (const CDicEntry::Texts& texts : entries)
        dictionary.AddEntry(texts);
    dictionary.AddEntry({{kEnglish, QStringLiteral("gone")}, {kFrench, QStringLiteral("parti")}});
    dictionary.DeleteEntry(4);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("memory.tmx"));
    util::RecordedMessages messages;
    qint64 units = 0;
    ASSERT_TRUE(dictionary::ExportTmx(path, dictionary, messages, &units));
    EXPECT_EQ(units, 4);

    // The other program sees each entry as a unit, line breaks and tabs as characters.
    QStringList lines;
    EXPECT_EQ(testutil::ReadTmxWithToolkit(path, &lines), QString());
    ASSERT_EQ(lines.size(), 4);
    const QJsonObject second = QJsonDocument::fromJson(lines[1].toUtf8()).object();
    EXPECT_EQ(second.value(QStringLiteral("en-US")).toString(),
              QStringLiteral("Read out\nthe scale"));
    EXPECT_EQ(second.value(QStringLiteral("fr-FR")).toString(),
              QStringLiteral("Lire\tl'échelle & <fin> \"x\""));
    EXPECT_TRUE(lines[3].contains(QStringLiteral("\"ar-SA\""))) << lines[3].toStdString();

    CDictionary back;
    Counting chooser;
    const dictionary::TmxImport imported = dictionary::ImportTmx(path, back, chooser, messages);
    EXPECT_EQ(imported.added, 4);
    std::vector<CDicEntry::Texts> expected = entries;
    // A stored text that was not in the grid's escaped form comes back escaped.
    expected[2][kEnglish] = QStringLiteral("Folder a\\\\b");
    EXPECT_EQ(Entries(back), expected);
}

TEST(Tmx, FilesThatAreNotMemoriesAreRefusedWhole) {
    QTemporaryDir dir;
    const struct {
        const char* what;
        QByteArray bytes;
        dictionary::TmxImport::Status status;
    } cases[] = {
        {"text", "Yes\tOui\r\n", dictionary::TmxImport::Status::NotTmx},
        {"another format", "<xliff version=\"1.2\"/>", dictionary::TmxImport::Status::NotTmx},
        {"entity declared",
         "<!DOCTYPE tmx [<!ENTITY e \"Oui\">]><tmx version=\"1.4\"><body><tu><tuv "
         "xml:lang=\"en-US\"><seg>Yes</seg></tuv><tuv xml:lang=\"fr-FR\"><seg>&e;</seg></tuv>"
         "</tu></body></tmx>",
         dictionary::TmxImport::Status::NotTmx},
        {"cut short",
         "<tmx version=\"1.4\"><body><tu><tuv xml:lang=\"en-US\"><seg>Yes</seg></tuv><tuv "
         "xml:lang=\"fr-FR\"><seg>Oui</seg></tuv></tu><tu>",
         dictionary::TmxImport::Status::NotTmx},
        {"no file", QByteArray(), dictionary::TmxImport::Status::CannotRead},
    };
    const QString path = dir.filePath(QStringLiteral("in.tmx"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(path);
        if (!c.bytes.isNull()) {
            ASSERT_TRUE(testutil::WriteAll(path, c.bytes));
        }
        CDictionary dictionary;
        Counting chooser;
        util::RecordedMessages messages;
        EXPECT_EQ(dictionary::ImportTmx(path, dictionary, chooser, messages).status, c.status);
        EXPECT_EQ(dictionary.GetEntryCount(), 0);
        EXPECT_EQ(messages.messages.size(), 1);
    }
}

} // namespace
