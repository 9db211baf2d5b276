#include "util/AnsiCodePage.h"

#include <QHash>
#include <QLocale>
#include <QSet>
#include <QSettings>

#include "util/LocaleTable.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using util::AnsiCodePage;

namespace {

class AnsiCodePageTest : public ::testing::Test {
protected:
    void TearDown() override {
        QSettings(u"Halvard Quist"_s, u"Translator"_s).remove(u"Settings/AnsiCodePage"_s);
        AnsiCodePage::Reset();
    }
    static void SetSetting(const QVariant& value) {
        QSettings(u"Halvard Quist"_s, u"Translator"_s).setValue(u"Settings/AnsiCodePage"_s, value);
        AnsiCodePage::Reset();
    }
};

struct Sample {
    quint32 codePage;
    QString text;
    QByteArray bytes;
};

const Sample kSamples[] = {
    {874, u"ก"_s, "\xA1"},
    {932, u"日本"_s, "\x93\xFA\x96\x7B"},
    // Long enough to cross the conversion's chunks.
    {932, QString(70000, QChar(0x65E5)), QByteArray("\x93\xFA").repeated(70000)},
    {936, u"中文"_s, "\xD6\xD0\xCE\xC4"},
    {949, u"한"_s, "\xC7\xD1"},
    {950, u"中"_s, "\xA4\xA4"},
    {1250, u"ř"_s, "\xF8"},
    {1251, u"Ж"_s, "\xC6"},
    {1252, u"€é"_s, "\x80\xE9"},
    {1253, u"Ω"_s, "\xD9"},
    {1254, u"ş"_s, "\xFE"},
    {1255, u"א"_s, "\xE0"},
    {1256, u"ع"_s, "\xDA"},
    {1257, u"ą"_s, "\xE0"},
    {1258, u"₫"_s, "\xFE"},
};

TEST_F(AnsiCodePageTest, ConvertsBothWaysAndMarksUnmappablesInEveryCodePage) {
    for (const Sample& s : kSamples) {
        SCOPED_TRACE(::testing::Message() << s.codePage << ", " << s.text.size() << " characters");
        QByteArray bytes;
        ASSERT_TRUE(AnsiCodePage::FromUnicode(s.text, s.codePage, bytes));
        EXPECT_EQ(bytes, s.bytes);
        QString text;
        ASSERT_TRUE(AnsiCodePage::ToUnicode(s.bytes, s.codePage, text));
        EXPECT_EQ(text, s.text);
    }
    // Every code page a locale names has a converter, and it marks what it cannot map.
    QSet<int> codePages;
    for (const util::LocaleInfo& info : util::LocaleTable::Instance().All())
        if (info.ansiCodePage != 0)
            codePages.insert(info.ansiCodePage);
    ASSERT_TRUE(codePages.contains(932) && codePages.contains(1258));
    for (int codePage : codePages) {
        SCOPED_TRACE(codePage);
        EXPECT_FALSE(AnsiCodePage::IcuName(quint32(codePage)).isEmpty());
        QByteArray bytes;
        // A Deseret letter (one code point, two UTF-16 units) exists in no ANSI code page.
        ASSERT_TRUE(AnsiCodePage::FromUnicode(u"a\U00010400b"_s, codePage, bytes));
        EXPECT_EQ(bytes, QByteArray("a#b"));
    }
    QByteArray bytes;
    EXPECT_TRUE(AnsiCodePage::IcuName(4711).isEmpty());
    EXPECT_FALSE(AnsiCodePage::FromUnicode(u"a"_s, 4711, bytes));
}

TEST_F(AnsiCodePageTest, OverrideBeatsSettingWhichBeatsLocale) {
    AnsiCodePage::Reset();
    const quint32 fromLocale = AnsiCodePage::Current();
    const util::LocaleInfo* locale =
        util::LocaleTable::Instance().FindByTag(QLocale::system().name());
    EXPECT_EQ(fromLocale, locale && locale->ansiCodePage ? quint32(locale->ansiCodePage) : 1252u);

    SetSetting(1251);
    EXPECT_EQ(AnsiCodePage::Current(), 1251u);
    AnsiCodePage::SetCurrent(932);
    EXPECT_EQ(AnsiCodePage::Current(), 932u);
    EXPECT_EQ(AnsiCodePage::IcuName(AnsiCodePage::kSystem), AnsiCodePage::IcuName(932));
    QByteArray bytes;
    ASSERT_TRUE(AnsiCodePage::FromUnicode(u"日"_s, AnsiCodePage::kSystem, bytes));
    EXPECT_EQ(bytes, QByteArray("\x93\xFA"));

    AnsiCodePage::Reset();
    EXPECT_EQ(AnsiCodePage::Current(), 1251u);
    for (const QVariant& unusable : {QVariant(u"cyrillic"_s), QVariant(4711)}) {
        SetSetting(unusable);
        EXPECT_EQ(AnsiCodePage::Current(), fromLocale);
    }
}

} // namespace
