#include "common/SampleQuestionnaire.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/LocalisedText.h"
#include "questionnaire/StaticTools.h"
#include "util/LocaleTable.h"

#include <gtest/gtest.h>

using namespace questionnaire;

namespace {

TEST(Language, FilledFromTheLocaleTable) {
    const CLanguage english(1033);
    EXPECT_EQ(english.m_shortName, QStringLiteral("ENU"));
    EXPECT_EQ(english.m_name, QStringLiteral("English (United States)"));
    EXPECT_EQ(CLanguage(1036).m_shortName, QStringLiteral("FRA"));
    EXPECT_EQ(CLanguage(9).m_name, QStringLiteral("English")); // neutral locale
    // An id nobody knows has no name: the import relies on that to refuse it.
    EXPECT_TRUE(CLanguage(0x7FFF).m_shortName.isEmpty());
    EXPECT_TRUE(CLanguage(0x7FFF).m_name.isEmpty());

    std::vector<std::unique_ptr<CLanguage>> all;
    CLanguage::GetWindowsLanguages(all);
    EXPECT_EQ(all.size(), size_t(util::LocaleTable::Instance().All().size()));
    EXPECT_EQ(all.size(), 437u);
    // Specific locales come first, so that "ENU" names 1033 rather than the neutral 9.
    const auto firstNeutral = std::find_if(all.begin(), all.end(), [](const auto& l) {
        return !util::LocaleTable::Instance().Find(l->m_id)->tag.contains(QLatin1Char('-'));
    });
    EXPECT_TRUE(std::all_of(firstNeutral, all.end(), [](const auto& l) {
        return !util::LocaleTable::Instance().Find(l->m_id)->tag.contains(QLatin1Char('-'));
    }));
    EXPECT_EQ((*firstNeutral)->m_id, 1);
    CObjet::DeleteArray(all);
    EXPECT_TRUE(all.empty());
}

TEST(LocaleTable, LookupsByIdAbbreviationAndTag) {
    const util::LocaleTable& table = util::LocaleTable::Instance();
    const util::LocaleInfo* german = table.Find(1031);
    ASSERT_NE(german, nullptr);
    EXPECT_EQ(german->tag, QStringLiteral("de-DE"));
    EXPECT_EQ(german->ansiCodePage, 1252);
    EXPECT_EQ(german->oemCodePage, 850);
    EXPECT_EQ(german->listSeparator, QStringLiteral(";"));
    EXPECT_EQ(german->languageNative, QStringLiteral("Deutsch"));
    EXPECT_EQ(table.FindByAbbreviation(QStringLiteral("enu")), (QList<qint32>{9, 1033}));
    EXPECT_GT(table.FindByAbbreviation(QStringLiteral("ZZZ")).size(), 1);
    ASSERT_NE(table.FindByTag(QStringLiteral("ja_JP")), nullptr);
    EXPECT_EQ(table.FindByTag(QStringLiteral("ja_JP"))->ansiCodePage, 932);
    EXPECT_EQ(table.Find(0x7F), nullptr);
}

TEST(LanguageList, ParsesIdsAndShortNamesAndDropsUnknownItems) {
    const struct {
        QString text;
        QList<qint32> expected;
    } cases[] = {
        {QStringLiteral("1033,1036"), {1033, 1036}},
        {QStringLiteral("enu,FRA,Deu"), {1033, 1036, 1031}},
        {QStringLiteral("ENU, fra , 1031"), {1033, 1036, 1031}},
        {QStringLiteral("ENU,Klingon,,FRA"), {1033, 1036}},
        {QStringLiteral("Klingon"), {}},
        {QString(), {}},
        {QStringLiteral("-1"), {-1}}, // a number is taken as it stands
        {QStringLiteral("1036,ENU"), {1036, 1033}},
        {QStringLiteral("esp,esn"), {1034, 3082}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseLanguageList(c.text), c.expected) << c.text.toStdString();
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
    EXPECT_EQ(q.GetLanguage(3).m_shortName, QStringLiteral("ESP"));
    EXPECT_EQ(q.GetLanguage(4).m_id, 1040);
    q.SetDefaultLanguage(0);
    EXPECT_EQ(DefaultLanguageOrder(q), (QList<qint32>{1036, 1033, 1031, 1034, 1040}));
    EXPECT_EQ(q.GetDefaultLanguage(), 1036); // no main language: the first one
}

// Every column reads what a lookup of its language reads, whatever the languages: repeated
// ones, ones too large for a table of columns, and texts in languages no column asks for.
TEST(LanguageColumns, ReadWhatEachLanguageHolds) {
    CLocalisedText texts;
    for (qint32 language : {-5, 1031, 1033, 2052, 2071, 0x10407, 70000})
        texts.Set(language, QStringLiteral("text %1").arg(language));
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
    const struct {
        QString text;
        bool ok;
        qint32 value;
    } numbers[] = {
        {QStringLiteral("42"), true, 42},
        {QStringLiteral("-2"), true, -2},
        {QStringLiteral("+7"), true, 7},
        {QStringLiteral("2147483647"), true, 2147483647},
        {QStringLiteral("-2147483648"), true, std::numeric_limits<qint32>::min()},
        {QStringLiteral("2147483648"), false, 0},
        {QStringLiteral(""), false, 0},
        {QStringLiteral("-"), false, 0},
        {QStringLiteral("12a"), false, 0},
        {QStringLiteral(" 12"), false, 0},
        {QStringLiteral("1033(ENU)"), false, 0},
    };
    for (const auto& c : numbers) {
        qint32 value = 0;
        EXPECT_EQ(CStaticTools::EstLong(c.text, value), c.ok) << c.text.toStdString();
        EXPECT_EQ(CStaticTools::ToLong(c.text), c.value) << c.text.toStdString();
    }
    QStringList parts;
    CStaticTools::ReadStringSeparatorString(QStringLiteral("a,,b"), QLatin1Char(','), parts);
    EXPECT_EQ(parts, (QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")}));
    CStaticTools::ReadStringSeparatorString(QString(), QLatin1Char(','), parts);
    EXPECT_TRUE(parts.isEmpty());
}

TEST(Questionnaire, DuplicateIdsAreRefusedAndCopiesAreDeep) {
    CQuestionnaire q = testutil::MakeSample();
    EXPECT_EQ(q.AddQuestion(std::make_unique<CQuestion>(10, QStringLiteral("again"))), -1);
    EXPECT_EQ(q.AddFiltre(std::make_unique<CFiltre>(5, 2)), -1);
    EXPECT_EQ(q.AddLanguage(std::make_unique<CLanguage>(1036u)), -1);
    EXPECT_EQ(q.GetAdrQuestion(0)->AddModalite(std::make_unique<CModalite>(1, QString())), -1);

    CQuestionnaire copy = q;
    EXPECT_EQ(copy, q);
    copy.GetAdrQuestion(0)->GetAdrModalite(0)->SetLocalisedLongCaption(1033,
                                                                       QStringLiteral("changed"));
    EXPECT_NE(copy, q);
    int index = -1;
    ASSERT_TRUE(copy.FindQuestionById(21, index));
    EXPECT_EQ(index, 2);
}

} // namespace
