#include "util/AnsiCodePage.h"

#include <QHash>
#include <QLocale>
#include <QSet>
#include <QSettings>

#include "util/LocaleTable.h"

#include <gtest/gtest.h>

using util::AnsiCodePage;

namespace {

class AnsiCodePageTest : public ::testing::Test {
protected:
    void TearDown() override {
        QSettings(QStringLiteral("Halvard Quist"), QStringLiteral("Translator"))
            .remove(QStringLiteral("Settings/AnsiCodePage"));
        AnsiCodePage::Reset();
    }
    static void SetSetting(const QVariant& value) {
        QSettings(QStringLiteral("Halvard Quist"), QStringLiteral("Translator"))
            .setValue(QStringLiteral("Settings/AnsiCodePage"), value);
        AnsiCodePage::Reset();
    }
};

struct Sample {
    quint32 codePage;
    QString text;
    QByteArray bytes;
};

const Sample kSamples[] = {
    {874, QStringLiteral(u"ก"), "\xA1"},
    {932, QStringLiteral(u"日本"), "\x93\xFA\x96\x7B"},
    // Long enough to cross the conversion's chunks.
    {932, QString(70000, QChar(0x65E5)), QByteArray("\x93\xFA").repeated(70000)},
    {936, QStringLiteral(u"中文"), "\xD6\xD0\xCE\xC4"},
    {949, QStringLiteral(u"한"), "\xC7\xD1"},
    {950, QStringLiteral(u"中"), "\xA4\xA4"},
    {1250, QStringLiteral(u"ř"), "\xF8"},
    {1251, QStringLiteral(u"Ж"), "\xC6"},
    {1252, QStringLiteral(u"€é"), "\x80\xE9"},
    {1253, QStringLiteral(u"Ω"), "\xD9"},
    {1254, QStringLiteral(u"ş"), "\xFE"},
    {1255, QStringLiteral(u"א"), "\xE0"},
    {1256, QStringLiteral(u"ع"), "\xDA"},
    {1257, QStringLiteral(u"ą"), "\xE0"},
    {1258, QStringLiteral(u"₫"), "\xFE"},
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
        ASSERT_TRUE(AnsiCodePage::FromUnicode(QStringLiteral(u"a\U00010400b"), codePage, bytes));
        EXPECT_EQ(bytes, QByteArray("a#b"));
    }
    QByteArray bytes;
    EXPECT_TRUE(AnsiCodePage::IcuName(4711).isEmpty());
    EXPECT_FALSE(AnsiCodePage::FromUnicode(QStringLiteral("a"), 4711, bytes));
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
    ASSERT_TRUE(AnsiCodePage::FromUnicode(QStringLiteral(u"日"), AnsiCodePage::kSystem, bytes));
    EXPECT_EQ(bytes, QByteArray("\x93\xFA"));

    AnsiCodePage::Reset();
    EXPECT_EQ(AnsiCodePage::Current(), 1251u);
    for (const QVariant& unusable : {QVariant(QStringLiteral("cyrillic")), QVariant(4711)}) {
        SetSetting(unusable);
        EXPECT_EQ(AnsiCodePage::Current(), fromLocale);
    }
}

} // namespace
