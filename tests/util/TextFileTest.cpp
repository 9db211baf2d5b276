#include "util/TextFile.h"
#include "util/Messages.h"

#include "common/TestUtil.h"
#include "util/AnsiCodePage.h"

#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using testutil::Utf16Le;
using util::AnsiCodePage;

namespace {

struct LoadCase {
    const char* name;
    QByteArray bytes;
    bool plausible;
    QString text;
};

class TextFileTest : public ::testing::Test {
protected:
    void SetUp() override { AnsiCodePage::SetCurrent(1252); }
    void TearDown() override { AnsiCodePage::Reset(); }

    QString Write(const QByteArray& bytes) {
        const QString path = m_dir.filePath(QStringLiteral("f%1.txt").arg(++m_count));
        EXPECT_TRUE(testutil::WriteAll(path, bytes));
        return path;
    }
    QTemporaryDir m_dir;
    int m_count = 0;
};

// ASCII text as UTF-16 without a mark: read as ANSI, it ends after the first letter.
QByteArray Unmarked(int bytes) {
    return Utf16Le(QString(bytes / 2, QLatin1Char('a')), false);
}

TEST_F(TextFileTest, DecodesAndJudgesPlausibility) {
    const QString body(60, QLatin1Char('x'));
    const LoadCase cases[] = {
        {"marked utf16", Utf16Le(QStringLiteral(u"h\u00E9llo \u65E5\r\n") + body), true,
         QStringLiteral(u"h\u00E9llo \u65E5\r\n") + body},
        {"marked, zero early", Utf16Le(QStringLiteral("ab") + QChar(0) + body), false, "ab"},
        {"marked, odd length", QByteArray("\xFF\xFE\x41\x00\x42", 5), true, "AB"},
        {"marked, zero near the end", Utf16Le(body + QChar(0) + QStringLiteral("tail")), true,
         body},
        {"mark only", "\xFF\xFE", true, ""},
        {"ansi", QByteArray("caf\xE9 ") + body.toLatin1(), true, QStringLiteral(u"café ") + body},
        {"empty", "", true, ""},
        // Each unmarked file reads as "a"; it needs (bytes / 2) - 20 characters.
        {"unmarked 38 bytes", Unmarked(38), true, "a"},
        {"unmarked 42 bytes", Unmarked(42), true, "a"},
        {"unmarked 44 bytes", Unmarked(44), false, "a"},
        {"unmarked 80 bytes", Unmarked(80), false, "a"},
        {"ansi binary", QByteArray("MZP") + QByteArray(100, '\0'), false, "MZP"},
    };
    for (const LoadCase& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = Write(c.bytes);
        QString text = QStringLiteral("stale");
        EXPECT_EQ(util::LoadTextFile(path, text, false), c.plausible);
        EXPECT_EQ(text, c.text);
        // The reader that streams large files gives the same answer and, read in small
        // pieces, the same text.
        util::TextFileReader reader;
        if (!reader.Open(path)) {
            EXPECT_FALSE(c.plausible);
            continue;
        }
        // What is left is never underestimated: the import sizes its buffers by it.
        EXPECT_GE(reader.CharactersLeft(), c.text.size());
        EXPECT_LE(reader.CharactersLeft(), c.bytes.size());
        QString streamed;
        char16_t piece[3];
        for (qsizetype got; (got = reader.Read(piece, 3)) > 0;) {
            streamed.append(reinterpret_cast<const QChar*>(piece), got);
            EXPECT_GE(reader.CharactersLeft(), c.text.size() - streamed.size());
        }
        EXPECT_EQ(reader.CharactersLeft(), 0);
        EXPECT_EQ(streamed, c.text);
        EXPECT_EQ(reader.LooksLikeText(), c.plausible);
    }
}

TEST_F(TextFileTest, AnsiUsesTheCurrentCodePage) {
    AnsiCodePage::SetCurrent(936);
    QString text;
    EXPECT_TRUE(util::LoadTextFile(Write("\xD6\xD0\xCE\xC4"), text, false));
    EXPECT_EQ(text, QStringLiteral(u"中文"));
}

TEST_F(TextFileTest, MissingFileFailsAndIsReportedOnlyWhenAsked) {
    const QString missing = m_dir.filePath(QStringLiteral("missing.txt"));
    util::RecordedMessages sink;
    const QStringList& reported = sink.messages;
    QString text;
    EXPECT_FALSE(util::LoadTextFile(missing, text, false, &sink));
    EXPECT_TRUE(reported.isEmpty());
    EXPECT_FALSE(util::LoadTextFile(missing, text, true, &sink));
    ASSERT_EQ(reported.size(), 1);
    EXPECT_TRUE(reported[0].contains(QStringLiteral("missing.txt was not found")))
        << reported[0].toStdString();
    EXPECT_EQ(sink.kinds.value(0), util::MessageKind::Error);
    EXPECT_FALSE(util::LoadTextFile(m_dir.path(), text, true, &sink)); // a folder
    EXPECT_EQ(reported.size(), 2);
}

} // namespace
