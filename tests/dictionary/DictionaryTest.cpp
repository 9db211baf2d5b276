// The translation memory: the dictionary model, its conflicts, the passes over a questionnaire,
// and its TMX form.
#include "dictionary/Dictionary.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "dictionary/ConflictList.h"
#include "dictionary/DictionaryPasses.h"
#include "dictionary/TmxFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionTable.h"
#include "questionnaire/LanguageList.h"
#include "util/Messages.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

// Answers the conflict dialog from a script and counts how often it was asked. What the dialog
// lists for a conflict is checked through the dialog itself, in the window program's tests.
class ScriptedChooser : public ConflictChooser {
public:
    explicit ScriptedChooser(QList<qint32> answers = {}) : m_answers(std::move(answers)) {}
    qint32 Choose(const ConflictList&) override {
        ++asked;
        return m_answers.isEmpty() ? ConflictChooser::kCancelled : m_answers.takeFirst();
    }
    int asked = 0;

private:
    QList<qint32> m_answers;
};

TEST(Dictionary, TheLowerNumberedEntryWithATargetTextWins) {
    CDictionary d;
    d.AddEntry({{kEnglish, u"Yes"_s}, {kGerman, u"Ja"_s}});
    d.AddEntry({{kEnglish, u"Yes"_s}, {kFrench, u"Oui"_s}});
    d.AddEntry({{kEnglish, u"Yes"_s}, {kFrench, u"Si"_s}});
    QString out;
    ASSERT_TRUE(d.Translate(u"Yes"_s, kEnglish, kFrench, out));
    EXPECT_EQ(out, u"Oui"_s);                                    // entry 0 has no French
    EXPECT_FALSE(d.Translate(u"yes"_s, kEnglish, kFrench, out)); // exact only
    EXPECT_FALSE(d.Translate(u"Yes"_s, 1040, kFrench, out));     // unknown language
    d.DeleteEntry(1);
    ASSERT_TRUE(d.Translate(u"Yes"_s, kEnglish, kFrench, out));
    EXPECT_EQ(out, u"Si"_s);
    EXPECT_THROW(d.DeleteEntry(3), std::out_of_range);
    EXPECT_THROW(d.GetEntry(-1), std::out_of_range);
    // The index answers whether anything sorts at or after a text, found or not.
    std::set<qint32> numbers;
    EXPECT_TRUE(d.FindLanguage(kEnglish)->FindEntries(u"A"_s, numbers));
    EXPECT_TRUE(numbers.empty());
    EXPECT_FALSE(d.FindLanguage(kEnglish)->FindEntries(u"Z"_s, numbers));
}

// A row matching two entries goes to the chooser; each answer has its effect.
TEST(Dictionary, ARowMatchingTwoEntriesDoesWhatTheChooserSays) {
    CDictionary d;
    for (int i = 0; i < 8; ++i)
        d.AddEntry({{kEnglish, u"e%1"_s.arg(i)}, {kGerman, u"d%1"_s.arg(i)}});
    const CDicEntry::Texts row = {{kEnglish, u"e3"_s}, {kGerman, u"d7"_s}};
    ScriptedChooser chooser({ConflictList::kDoNotAdd, ConflictList::kNewEntry, 7});
    int added = 0;
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser));
    EXPECT_EQ(chooser.asked, 1);
    EXPECT_EQ(d.GetEntryCount(), 8); // the first row adds nothing
    EXPECT_EQ(added, 0);
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser));
    EXPECT_EQ(added, 1);
    EXPECT_EQ(d.GetEntryCount(), 9);
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser)); // merged into entry 7
    EXPECT_EQ(d.GetEntry(7).GetText(kEnglish), u"e3"_s);
    EXPECT_FALSE(d.AddWithConflicts(row, added, chooser)); // no answer left: cancelled
}

TEST(Dictionary, MergesWithoutConflictAndTheUnindexedLanguage) {
    CDictionary d;
    d.AddEntry({{kEnglish, u"No"_s}, {kGerman, u"Nein"_s}});
    d.SetModified(false);
    ScriptedChooser nobody;
    int added = 0;
    ASSERT_TRUE(d.AddWithConflicts({{kEnglish, u"No"_s}}, added, nobody));
    EXPECT_FALSE(d.IsModified()); // nothing changed
    ASSERT_TRUE(d.AddWithConflicts({{kEnglish, u"No"_s}, {kFrench, u"Non"_s}}, added, nobody));
    EXPECT_TRUE(d.IsModified());
    EXPECT_EQ(added, 0);
    EXPECT_EQ(nobody.asked, 0);
    QString out;
    EXPECT_TRUE(d.Translate(u"No"_s, kEnglish, kFrench, out));
    EXPECT_FALSE(d.Translate(u"Non"_s, kFrench, kEnglish, out)); // not indexed yet

    QTemporaryDir dir;
    util::RecordedMessages messages;
    ASSERT_TRUE(d.Save(dir.filePath(u"d.dic"_s), messages));
    CDictionary reloaded;
    ASSERT_TRUE(reloaded.Load(dir.filePath(u"d.dic"_s), messages));
    EXPECT_TRUE(reloaded.Translate(u"Non"_s, kFrench, kEnglish, out));
    EXPECT_EQ(out, u"No"_s);
}

TEST(DictionaryPasses, AutoTranslateAndSend) {
    CQuestionnaire q = testutil::MakeSample();
    questionnaire::CaptionTable table(&q); // columns en, fr, de
    struct Listener : questionnaire::CaptionTableListener {
        void QuestionnaireModified() override { ++modified; }
        int modified = 0;
    } listener;
    table.AddListener(&listener);
    CDictionary d;
    d.AddEntry({{kEnglish, u"Satisfaction"_s}, {kGerman, u"Zufriedenheit"_s}});
    d.AddEntry({{kEnglish, u"Very"_s}, {kGerman, u"Sehr"_s}});
    d.AddEntry({{kFrench, u"Très"_s}, {kGerman, u"Sehr (fr)"_s}});
    // Escaped form: the dictionary holds captions as the grid shows them.
    d.AddEntry({{kEnglish, u"Read out\\nthe scale"_s}, {kGerman, u"Vorlesen"_s}});
    d.AddEntry({{kEnglish, u"Skipping ahead"_s}, {kGerman, u"Weiter"_s}});

    // Response 1 gets two hits (from English, then from French, which wins); instructions and
    // routings receive nothing.
    EXPECT_EQ(dictionary::AutoTranslate(table, d), 3);
    EXPECT_EQ(listener.modified, 1);
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, -2, kGerman), u"Zufriedenheit"_s);
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, 1, kGerman), u"Sehr (fr)"_s);
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, -3, kGerman), QString());
    EXPECT_EQ(questionnaire::ReadCaption(q, -2, 5, kGerman), QString());
    EXPECT_EQ(dictionary::AutoTranslate(table, d), 0);
    EXPECT_EQ(listener.modified, 1) << "nothing translated, nothing modified";

    // Rows with two languages or more are sent; the first conflict's cancel stops the rest.
    CDictionary fresh;
    ScriptedChooser cancel;
    int added = 0;
    const int last = table.RowCount() - 1;
    EXPECT_TRUE(dictionary::SendToDictionary(table, 0, last, fresh, cancel, added));
    EXPECT_GT(added, 3);
    q.GetAdrQuestion(0)->SetLocalisedShortCaption(kGerman, u"Andere"_s);
    const int before = fresh.GetEntryCount();
    EXPECT_FALSE(dictionary::SendToDictionary(table, 0, last, fresh, cancel, added));
    EXPECT_EQ(fresh.GetEntryCount(), before);
}

// TMX is checked against translate-toolkit as a second, independent client: its files fill a
// dictionary, and ours read back in it and in the program alike.
class Tmx : public ::testing::Test {
protected:
    dictionary::TmxImport Import(CDictionary& dictionary) {
        return dictionary::ImportTmx(m_path, dictionary, m_chooser, m_messages);
    }
    // Every live entry's texts, in entry order.
    static std::vector<CDicEntry::Texts> Entries(const CDictionary& dictionary) {
        std::vector<CDicEntry::Texts> entries;
        for (int n = 0; n < dictionary.GetEntryCount(); ++n)
            if (!dictionary.GetEntry(n).m_deleted)
                entries.push_back(dictionary.GetEntry(n).m_texts);
        return entries;
    }
    QTemporaryDir m_dir;
    const QString m_path = m_dir.filePath(u"memory.tmx"_s);
    ScriptedChooser m_chooser;
    util::RecordedMessages m_messages;
};

TEST_F(Tmx, AMemoryWrittenByTranslateToolkitFillsAnEmptyDictionary) {
    ASSERT_EQ(testutil::WriteTmxWithToolkit(m_path), QString());
    CDictionary dictionary;
    const dictionary::TmxImport imported = Import(dictionary);
    ASSERT_EQ(imported.status, dictionary::TmxImport::Status::Read)
        << m_messages.messages.join(u'\n').toStdString();
    EXPECT_EQ(imported.added, 2);
    EXPECT_EQ(imported.skipped, 1); // one language only
    // The dictionary keeps texts as the grid shows them: line breaks and tabs escaped.
    const std::vector<CDicEntry::Texts> expected = {
        {{kEnglish, u"Very satisfied"_s}, {kFrench, u"Très satisfait"_s}},
        {{kEnglish, u"Line one\\nLine two\\twith a tab & <b>"_s},
         {kFrench, u"Ligne un\\nLigne deux\\tavec \u05E9 "_s + QString::fromUcs4(U"\U0001F600")}},
    };
    EXPECT_EQ(Entries(dictionary), expected);
    // The same memory again merges into the entries it matches: nothing new, nothing asked.
    EXPECT_EQ(Import(dictionary).added, 0);
    EXPECT_EQ(m_chooser.asked, 0);
    EXPECT_EQ(Entries(dictionary), expected);
}

TEST_F(Tmx, ADictionaryWrittenAsTmxReadsBackTheSameInBothPrograms) {
    CDictionary dictionary;
    const std::vector<CDicEntry::Texts> entries = {
        {{kEnglish, u"Yes"_s}, {kFrench, u"Oui"_s}, {kGerman, u"Ja"_s}},
        {{kEnglish, u"Read out\\nthe scale"_s}, {kFrench, u"Lire\\tl'échelle & <fin> \"x\""_s}},
        {{kEnglish, u"Folder a\\b"_s}, {kGerman, u"Ctrl "_s + QChar(1)}},
        {{1025, u"\u0646\u0639\u0645"_s}, {kEnglish, u"Yes!"_s}},
    };
    for (const CDicEntry::Texts& texts : entries)
        dictionary.AddEntry(texts);
    dictionary.AddEntry({{kEnglish, u"gone"_s}, {kFrench, u"parti"_s}});
    dictionary.DeleteEntry(4);

    qint64 units = 0;
    ASSERT_TRUE(dictionary::ExportTmx(m_path, dictionary, m_messages, &units));
    EXPECT_EQ(units, 4);

    // The other program sees each entry as a unit, line breaks and tabs as characters.
    QStringList lines;
    EXPECT_EQ(testutil::ReadTmxWithToolkit(m_path, &lines), QString());
    ASSERT_EQ(lines.size(), 4);
    const QJsonObject second = QJsonDocument::fromJson(lines[1].toUtf8()).object();
    EXPECT_EQ(second.value(u"en-US"_s).toString(), u"Read out\nthe scale"_s);
    EXPECT_EQ(second.value(u"fr-FR"_s).toString(), u"Lire\tl'échelle & <fin> \"x\""_s);
    EXPECT_TRUE(lines[3].contains(u"\"ar-SA\""_s)) << lines[3].toStdString();

    CDictionary back;
    EXPECT_EQ(Import(back).added, 4);
    std::vector<CDicEntry::Texts> expected = entries;
    // A stored text that was not in the grid's escaped form comes back escaped.
    expected[2][kEnglish] = u"Folder a\\\\b"_s;
    EXPECT_EQ(Entries(back), expected);
}

TEST_F(Tmx, FilesThatAreNotMemoriesAreRefusedWhole) {
    using Status = dictionary::TmxImport::Status;
    const struct {
        const char* what;
        QByteArray bytes;
        Status status;
    } cases[] = {
        {"text", "Yes\tOui\r\n", Status::NotTmx},
        {"another format", "<xliff version=\"1.2\"/>", Status::NotTmx},
        {"entity declared",
         "<!DOCTYPE tmx [<!ENTITY e \"Oui\">]><tmx version=\"1.4\"><body><tu><tuv "
         "xml:lang=\"en-US\"><seg>Yes</seg></tuv><tuv xml:lang=\"fr-FR\"><seg>&e;</seg></tuv>"
         "</tu></body></tmx>",
         Status::NotTmx},
        {"cut short",
         "<tmx version=\"1.4\"><body><tu><tuv xml:lang=\"en-US\"><seg>Yes</seg></tuv><tuv "
         "xml:lang=\"fr-FR\"><seg>Oui</seg></tuv></tu><tu>",
         Status::NotTmx},
        {"no file", QByteArray(), Status::CannotRead},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(m_path);
        if (!c.bytes.isNull()) {
            ASSERT_TRUE(testutil::WriteAll(m_path, c.bytes));
        }
        CDictionary dictionary;
        m_messages.messages.clear();
        EXPECT_EQ(Import(dictionary).status, c.status);
        EXPECT_EQ(dictionary.GetEntryCount(), 0);
        EXPECT_EQ(m_messages.messages.size(), 1);
    }
}

} // namespace
