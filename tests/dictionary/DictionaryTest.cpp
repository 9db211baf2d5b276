#include "dictionary/Dictionary.h"
#include "common/SampleQuestionnaire.h"
#include "dictionary/ConflictList.h"
#include "dictionary/DictionaryPasses.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionTable.h"
#include "questionnaire/LanguageList.h"
#include "util/Messages.h"

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

CDicEntry::Texts Row(std::initializer_list<std::pair<const qint32, QString>> texts) {
    return CDicEntry::Texts(texts);
}

TEST(Dictionary, TheLowerNumberedEntryWithATargetTextWins) {
    CDictionary d;
    d.AddEntry(Row({{kEnglish, QStringLiteral("Yes")}, {kGerman, QStringLiteral("Ja")}}));
    d.AddEntry(Row({{kEnglish, QStringLiteral("Yes")}, {kFrench, QStringLiteral("Oui")}}));
    d.AddEntry(Row({{kEnglish, QStringLiteral("Yes")}, {kFrench, QStringLiteral("Si")}}));
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
        d.AddEntry(Row(
            {{kEnglish, QStringLiteral("e%1").arg(i)}, {kGerman, QStringLiteral("d%1").arg(i)}}));
    const auto row = Row({{kEnglish, QStringLiteral("e3")}, {kGerman, QStringLiteral("d7")}});
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
    d.AddEntry(Row({{kEnglish, QStringLiteral("No")}, {kGerman, QStringLiteral("Nein")}}));
    d.SetModified(false);
    ScriptedChooser nobody({});
    int added = 0;
    ASSERT_TRUE(d.AddWithConflicts(Row({{kEnglish, QStringLiteral("No")}}), added, nobody));
    EXPECT_FALSE(d.IsModified()); // nothing changed
    ASSERT_TRUE(d.AddWithConflicts(
        Row({{kEnglish, QStringLiteral("No")}, {kFrench, QStringLiteral("Non")}}), added, nobody));
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
    d.AddEntry(Row(
        {{kEnglish, QStringLiteral("Satisfaction")}, {kGerman, QStringLiteral("Zufriedenheit")}}));
    d.AddEntry(Row({{kEnglish, QStringLiteral("Very")}, {kGerman, QStringLiteral("Sehr")}}));
    d.AddEntry(Row({{kFrench, QStringLiteral("Très")}, {kGerman, QStringLiteral("Sehr (fr)")}}));
    // Escaped form: the dictionary holds captions as the grid shows them.
    d.AddEntry(Row({{kEnglish, QStringLiteral("Read out\\nthe scale")},
                    {kGerman, QStringLiteral("Vorlesen")}}));
    d.AddEntry(
        Row({{kEnglish, QStringLiteral("Skipping ahead")}, {kGerman, QStringLiteral("Weiter")}}));

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

} // namespace
