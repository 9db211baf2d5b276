#include "common/SampleQuestionnaire.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/LocalisedText.h"
#include "questionnaire/StaticTools.h"
#include "util/LocaleTable.h"

#include <gtest/gtest.h>

using namespace questionnaire;
using namespace Qt::StringLiterals;

namespace {

TEST(LocaleTable, LanguagesAndLookupsByIdAbbreviationAndTag) {
    const util::LocaleTable& table = util::LocaleTable::Instance();
    // The short names ENU, FRA and DEU show in every export's header, which the export tests check.
    EXPECT_EQ(CLanguage(1033).m_name, u"English (United States)"_s);
    EXPECT_EQ(CLanguage(9).m_name, u"English"_s); // neutral locale
    // An id nobody knows has no name: the import relies on that to refuse it.
    EXPECT_TRUE(CLanguage(0x7FFF).m_shortName.isEmpty() && CLanguage(0x7FFF).m_name.isEmpty());
    const util::LocaleInfo* german = table.Find(1031);
    ASSERT_NE(german, nullptr);
    EXPECT_EQ(std::tie(german->tag, german->ansiCodePage, german->oemCodePage,
                       german->listSeparator, german->languageNative),
              std::tuple(u"de-DE"_s, 1252, 850, u";"_s, u"Deutsch"_s));
    EXPECT_EQ(table.FindByAbbreviation(u"enu"_s), (QList<qint32>{9, 1033}));
    EXPECT_GT(table.FindByAbbreviation(u"ZZZ"_s).size(), 1);
    ASSERT_NE(table.FindByTag(u"ja_JP"_s), nullptr);
    EXPECT_EQ(table.FindByTag(u"ja_JP"_s)->ansiCodePage, 932);
    EXPECT_EQ(table.Find(0x7F), nullptr);

    std::vector<std::unique_ptr<CLanguage>> all;
    CLanguage::GetWindowsLanguages(all);
    EXPECT_EQ(all.size(), size_t(table.All().size()));
    EXPECT_EQ(all.size(), 437u);
    // Specific locales come first, so that "ENU" names 1033 rather than the neutral 9.
    const auto specific = [&table](const auto& l) {
        return table.Find(l->m_id)->tag.contains(QLatin1Char('-'));
    };
    EXPECT_TRUE(std::is_partitioned(all.begin(), all.end(), specific));
    EXPECT_EQ((*std::partition_point(all.begin(), all.end(), specific))->m_id, 1);
}

// A number is taken as it stands, even one that names no language.
TEST(LanguageList, ParsesIdsAndShortNamesAndDropsUnknownItems) {
    const std::pair<QString, QList<qint32>> cases[] = {
        {u"1033,1036"_s, {1033, 1036}},
        {u"enu,FRA,Deu"_s, {1033, 1036, 1031}},
        {u"ENU, fra , 1031"_s, {1033, 1036, 1031}},
        {u"ENU,Klingon,,FRA"_s, {1033, 1036}},
        {u"Klingon"_s, {}},
        {QString(), {}},
        {u"-1"_s, {-1}},
        {u"1036,ENU"_s, {1036, 1033}},
        {u"esp,esn"_s, {1034, 3082}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ParseLanguageList(text), expected) << text.toStdString();
}

TEST(LanguageList, MainLanguageComesFirstAndAddingSkipsThoseAlreadyThere) {
    CQuestionnaire q = testutil::MakeSample(); // stored French, English, German; English main
    EXPECT_EQ(DefaultLanguageOrder(q), (QList<qint32>{1033, 1036, 1031}));
    EXPECT_EQ(q.GetDefaultLanguage(), 1033);
    EXPECT_EQ(AddLanguages(q, {1033, 1036}), 0);
    // Numbers that name no language are passed over.
    EXPECT_EQ(AddLanguages(q, {1034, 1033, 0, -1, 99999, 1040, 1034}), 2);
    ASSERT_EQ(q.GetLanguageCount(), 5);
    EXPECT_EQ(q.GetLanguage(3).m_id, 1034);
    EXPECT_EQ(q.GetLanguage(3).m_shortName, u"ESP"_s);
    EXPECT_EQ(q.GetLanguage(4).m_id, 1040);
    q.SetDefaultLanguage(0);
    EXPECT_EQ(DefaultLanguageOrder(q), (QList<qint32>{1036, 1033, 1031, 1034, 1040}));
    EXPECT_EQ(q.GetDefaultLanguage(), 1036); // no main language: the first one
    q.GetAdrLanguage(1)->m_isMain = q.GetAdrLanguage(2)->m_isMain = true; // the later of two leads
    EXPECT_EQ(DefaultLanguageOrder(q).first(), 1031);
    EXPECT_EQ(q.GetDefaultLanguage(), 1031);
}

// Every column reads what a lookup of its language reads, whatever the languages: repeated
// ones, ones too large for a table of columns, and texts in languages no column asks for.
TEST(LanguageColumns, ReadWhatEachLanguageHolds) {
    CLocalisedText texts;
    for (qint32 language : {-5, 1031, 1033, 2052, 2071, 0x10407, 70000})
        texts.Set(language, u"text %1"_s.arg(language));
    const QList<QList<qint32>> columnLists = {
        {1033, 1036, 0, 1031},   {1031, 1033, 1031}, {0x10407, 1033, 4}, {-5, 1033}, {1036}, {},
        {2052, 1033, 1031, 1036}};
    for (const QList<qint32>& languages : columnLists) {
        const LanguageColumns columns(languages);
        std::vector<const QString*> out;
        for (const CLocalisedText* read : {&texts, static_cast<CLocalisedText*>(nullptr)}) {
            columns.Read(read, out);
            ASSERT_EQ(out.size(), size_t(languages.size()));
            for (qsizetype i = 0; i < languages.size(); ++i) {
                const QString expected =
                    read && languages[i] != 0 ? read->Get(languages[i]) : QString();
                EXPECT_EQ(*out[size_t(i)], expected) << languages[i];
            }
        }
    }
}

TEST(StaticTools, WholeNumbersAndSplitting) {
    const std::tuple<QString, bool, qint32> numbers[] = {
        {u"42"_s, true, 42},
        {u"-2"_s, true, -2},
        {u"+7"_s, true, 7},
        {u"2147483647"_s, true, 2147483647},
        {u"-2147483648"_s, true, INT32_MIN},
        {u"2147483648"_s, false, 0},
        {u""_s, false, 0},
        {u"-"_s, false, 0},
        {u"12a"_s, false, 0},
        {u" 12"_s, false, 0},
        {u"1033(ENU)"_s, false, 0},
    };
    for (const auto& [text, ok, value] : numbers) {
        qint32 parsed = 0;
        EXPECT_EQ(CStaticTools::EstLong(text, parsed), ok) << text.toStdString();
        EXPECT_EQ(CStaticTools::ToLong(text), value) << text.toStdString();
    }
    QStringList parts;
    CStaticTools::ReadStringSeparatorString(u"a,,b"_s, QLatin1Char(','), parts);
    EXPECT_EQ(parts, (QStringList{u"a"_s, QString(), u"b"_s}));
    CStaticTools::ReadStringSeparatorString(QString(), QLatin1Char(','), parts);
    EXPECT_TRUE(parts.isEmpty());
}

TEST(Questionnaire, DuplicateIdsAreRefusedAndCopiesAreDeep) {
    CQuestionnaire q = testutil::MakeSample();
    EXPECT_EQ(q.AddQuestion(std::make_unique<CQuestion>(10, u"again"_s)), -1);
    EXPECT_EQ(q.AddFiltre(std::make_unique<CFiltre>(5, 2)), -1);
    EXPECT_EQ(q.AddLanguage(std::make_unique<CLanguage>(1036u)), -1);
    EXPECT_EQ(q.GetAdrQuestion(0)->AddModalite(std::make_unique<CModalite>(1, QString())), -1);

    CQuestionnaire copy = q;
    EXPECT_EQ(copy, q);
    copy.GetAdrQuestion(0)->GetAdrModalite(0)->SetLocalisedLongCaption(1033, u"changed"_s);
    EXPECT_NE(copy, q);
    int index = -1;
    ASSERT_TRUE(copy.FindQuestionById(21, index));
    EXPECT_EQ(index, 2);
}

} // namespace
