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

using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

// Answers the conflict dialog from a script and remembers what it was shown.
class ScriptedChooser : public ConflictChooser {
public:
    explicit ScriptedChooser(QList<qint32> answers) : m_answers(std::move(answers)) {}
    qint32 Choose(const ConflictList& list) override {
        QStringList labels;
        for (int r = 0; r < list.RowCount(); ++r)
            labels.append(list.Label(r));
        shown.append(labels);
        return m_answers.isEmpty() ? ConflictChooser::kCancelled : m_answers.takeFirst();
    }
    QList<QStringList> shown;

private:
    QList<qint32> m_answers;
};

TEST(Dictionary, TheLowerNumberedEntryWithATargetTextWins) {
    CDictionary d;
    d.AddEntry({{kEnglish, QStringLiteral("Yes")}, {kGerman, QStringLiteral("Ja")}});
    d.AddEntry({{kEnglish, QStringLiteral("Yes")}, {kFrench, QStringLiteral("Oui")}});
    d.AddEntry({{kEnglish, QStringLiteral("Yes")}, {kFrench, QStringLiteral("Si")}});
    QString out;
    ASSERT_TRUE(d.Translate(QStringLiteral("Yes"), kEnglish, kFrench, out));
    EXPECT_EQ(out, QStringLiteral("Oui")); // entry 0 has no French
    EXPECT_FALSE(d.Translate(QStringLiteral("yes"), kEnglish, kFrench, out)); // exact only
    EXPECT_FALSE(d.Translate(QStringLiteral("Yes"), 1040, kFrench, out));     // unknown language
    d.DeleteEntry(1);
    ASSERT_TRUE(d.Translate(QStringLiteral("Yes"), kEnglish, kFrench, out));
    EXPECT_EQ(out, QStringLiteral("Si"));
    EXPECT_THROW(d.DeleteEntry(3), std::out_of_range);
    EXPECT_THROW(d.GetEntry(-1), std::out_of_range);
    // The index answers whether anything sorts at or after a text, found or not.
    std::set<qint32> numbers;
    EXPECT_TRUE(d.FindLanguage(kEnglish)->FindEntries(QStringLiteral("A"), numbers));
    EXPECT_TRUE(numbers.empty());
    EXPECT_FALSE(d.FindLanguage(kEnglish)->FindEntries(QStringLiteral("Z"), numbers));
}

TEST(Dictionary, ConflictListForARowMatchingTwoEntries) {
    CDictionary d;
    for (int i = 0; i < 8; ++i)
        d.AddEntry(
            {{kEnglish, QStringLiteral("e%1").arg(i)}, {kGerman, QStringLiteral("d%1").arg(i)}});
    const CDicEntry::Texts row = {{kEnglish, QStringLiteral("e3")},
                                  {kGerman, QStringLiteral("d7")}};
    ScriptedChooser chooser({ConflictList::kDoNotAdd, ConflictList::kNewEntry, 7});
    int added = 0;
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser));
    ASSERT_EQ(chooser.shown.size(), 1);
    EXPECT_EQ(chooser.shown[0],
              (QStringList{QStringLiteral("Existing entry no -1"), QStringLiteral("New entry"),
                           QStringLiteral("Existing entry no 4"),
                           QStringLiteral("Existing entry no 8")}));
    EXPECT_EQ(d.GetEntryCount(), 8); // the first row adds nothing
    EXPECT_EQ(added, 0);
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser));
    EXPECT_EQ(added, 1);
    EXPECT_EQ(d.GetEntryCount(), 9);
    ASSERT_TRUE(d.AddWithConflicts(row, added, chooser)); // merged into entry 7
    EXPECT_EQ(d.GetEntry(7).GetText(kEnglish), QStringLiteral("e3"));
    EXPECT_FALSE(d.AddWithConflicts(row, added, chooser)); // no answer left: cancelled

    const ConflictList list({3, 7}, row, d);
    EXPECT_EQ(list.Cell(0, 1), QStringLiteral("DEU")); // 1031 sorts before 1033
    EXPECT_EQ(list.Cell(2, 0), QStringLiteral("New entry"));
    EXPECT_EQ(list.Cell(3, 1), QStringLiteral("d3"));
    EXPECT_EQ(list.Cell(1, 1), QString());
}

TEST(Dictionary, MergesWithoutConflictAndTheUnindexedLanguage) {
    CDictionary d;
    d.AddEntry({{kEnglish, QStringLiteral("No")}, {kGerman, QStringLiteral("Nein")}});
    d.SetModified(false);
    ScriptedChooser nobody({});
    int added = 0;
    ASSERT_TRUE(d.AddWithConflicts({{kEnglish, QStringLiteral("No")}}, added, nobody));
    EXPECT_FALSE(d.IsModified()); // nothing changed
    ASSERT_TRUE(d.AddWithConflicts(
        {{kEnglish, QStringLiteral("No")}, {kFrench, QStringLiteral("Non")}}, added, nobody));
    EXPECT_TRUE(d.IsModified());
    EXPECT_EQ(added, 0);
    EXPECT_TRUE(nobody.shown.isEmpty());
    QString out;
    EXPECT_TRUE(d.Translate(QStringLiteral("No"), kEnglish, kFrench, out));
    EXPECT_FALSE(d.Translate(QStringLiteral("Non"), kFrench, kEnglish, out)); // not indexed yet

    QTemporaryDir dir;
    util::RecordedMessages messages;
    ASSERT_TRUE(d.Save(dir.filePath(QStringLiteral("d.dic")), messages));
    CDictionary reloaded;
    ASSERT_TRUE(reloaded.Load(dir.filePath(QStringLiteral("d.dic")), messages));
    EXPECT_TRUE(reloaded.Translate(QStringLiteral("Non"), kFrench, kEnglish, out));
    EXPECT_EQ(out, QStringLiteral("No"));
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
    d.AddEntry(
        {{kEnglish, QStringLiteral("Satisfaction")}, {kGerman, QStringLiteral("Zufriedenheit")}});
    d.AddEntry({{kEnglish, QStringLiteral("Very")}, {kGerman, QStringLiteral("Sehr")}});
    d.AddEntry({{kFrench, QStringLiteral("Très")}, {kGerman, QStringLiteral("Sehr (fr)")}});
    // Escaped form: the dictionary holds captions as the grid shows them.
    d.AddEntry({{kEnglish, QStringLiteral("Read out\\nthe scale")},
                {kGerman, QStringLiteral("Vorlesen")}});
    d.AddEntry({{kEnglish, QStringLiteral("Skipping ahead")}, {kGerman, QStringLiteral("Weiter")}});

    // Response 1 gets two hits (from English, then from French, which wins); instructions and
    // routings receive nothing.
    EXPECT_EQ(dictionary::AutoTranslate(table, d), 3);
    EXPECT_EQ(listener.modified, 1);
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, -2, kGerman), QStringLiteral("Zufriedenheit"));
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, 1, kGerman), QStringLiteral("Sehr (fr)"));
    EXPECT_EQ(questionnaire::ReadCaption(q, 10, -3, kGerman), QString());
    EXPECT_EQ(questionnaire::ReadCaption(q, -2, 5, kGerman), QString());
    EXPECT_EQ(dictionary::AutoTranslate(table, d), 0);
    EXPECT_EQ(listener.modified, 1) << "nothing translated, nothing modified";

    // Rows with two languages or more are sent; the first conflict's cancel stops the rest.
    CDictionary fresh;
    ScriptedChooser cancel({});
    int added = 0;
    EXPECT_TRUE(dictionary::SendToDictionary(table, 0, table.RowCount() - 1, fresh, cancel, added));
    EXPECT_GT(added, 3);
    q.GetAdrQuestion(0)->SetLocalisedShortCaption(kGerman, QStringLiteral("Andere"));
    const int before = fresh.GetEntryCount();
    EXPECT_FALSE(
        dictionary::SendToDictionary(table, 0, table.RowCount() - 1, fresh, cancel, added));
    EXPECT_EQ(fresh.GetEntryCount(), before);
}

// Every live entry's texts, in entry order.
std::vector<CDicEntry::Texts> Entries(const CDictionary& dictionary) {
    std::vector<CDicEntry::Texts> entries;
    for (int n = 0; n < dictionary.GetEntryCount(); ++n)
        if (!dictionary.GetEntry(n).m_deleted)
            entries.push_back(dictionary.GetEntry(n).m_texts);
    return entries;
}

// TMX is checked against translate-toolkit as a second, independent client: its files fill a
// dictionary, and ours read back in it and in the program alike.
TEST(Tmx, AMemoryWrittenByTranslateToolkitFillsAnEmptyDictionary) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shared.tmx"));
    ASSERT_EQ(testutil::WriteTmxWithToolkit(path), QString());
    CDictionary dictionary;
    ScriptedChooser chooser({});
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
    EXPECT_TRUE(chooser.shown.isEmpty());
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
    ScriptedChooser chooser({});
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
        ScriptedChooser chooser({});
        util::RecordedMessages messages;
        EXPECT_EQ(dictionary::ImportTmx(path, dictionary, chooser, messages).status, c.status);
        EXPECT_EQ(dictionary.GetEntryCount(), 0);
        EXPECT_EQ(messages.messages.size(), 1);
    }
}

} // namespace
