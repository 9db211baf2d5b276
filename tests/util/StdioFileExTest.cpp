// Reading and writing text files: the stdio-style file class and the whole-file loader built on
// it.
#include "util/StdioFileEx.h"
#include "util/TextFile.h"

#include "common/TestUtil.h"
#include "util/AnsiCodePage.h"
#include "util/Messages.h"

#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using testutil::Utf16Le;
using util::AnsiCodePage;

namespace {

class StdioFileExTest : public ::testing::Test {
protected:
    void SetUp() override { AnsiCodePage::SetCurrent(1252); }
    void TearDown() override { AnsiCodePage::Reset(); }

    QString Write(const QByteArray& bytes) {
        const QString path = m_dir.filePath(u"f%1.txt"_s.arg(++m_count));
        EXPECT_TRUE(testutil::WriteAll(path, bytes));
        return path;
    }
    static QStringList ReadLines(const QString& path) {
        CStdioFileEx file;
        EXPECT_TRUE(file.Open(path, CStdioFileEx::typeText));
        QStringList lines;
        QString line;
        while (file.ReadString(line))
            lines.append(line);
        EXPECT_TRUE(line.isEmpty());
        return lines;
    }

    QTemporaryDir m_dir;
    int m_count = 0;
};
using TextFileTest = StdioFileExTest;

TEST_F(StdioFileExTest, ReadStringCutsLineEnds) {
    const QString longLine(3000, QLatin1Char('x')); // spans several read-ahead chunks
    const struct {
        const char* name;
        QByteArray bytes;
        QStringList lines;
        quint32 codePage = 1252;
    } cases[] = {
        {"ansi crlf", "one\r\ntwo\r\n", {"one", "two"}},
        {"ansi lf, no end", "one\ntwo", {"one", "two"}},
        {"ansi lone cr", "a\rb\nlast\r", {"a\rb", "last"}},
        {"ansi empty lines", "\n\nx\n", {"", "", "x"}},
        {"ansi code page", "caf\xE9\r\n", {u"café"_s}},
        {"ansi double-byte code page", "\x93\xFA\x96\x7B\r\n\x93\xFA", {u"日本"_s, u"日"_s}, 932},
        {"utf16 crlf", Utf16Le(u"one\r\ntwo\r\n"_s), {"one", "two"}},
        {"utf16 lf and lone cr", Utf16Le(u"a\rb\n\nlast\r"_s), {"a\rb", "", "last"}},
        // Units whose low or high byte is 0x0A are not line ends.
        {"utf16 0x0A bytes", Utf16Le(u"\u010A\u0A41\r\nz"_s), {u"\u010A\u0A41"_s, "z"}},
        {"utf16 long", Utf16Le(longLine + "\r\nend"), {longLine, "end"}},
        {"mark only", "\xFF\xFE", {}},
        {"empty", "", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AnsiCodePage::SetCurrent(c.codePage);
        EXPECT_EQ(ReadLines(Write(c.bytes)), c.lines);
    }
}

TEST_F(StdioFileExTest, OnlyTextReadingWithoutCreateLooksForTheMark) {
    using F = CStdioFileEx;
    const QByteArray marked = Utf16Le(u"ab"_s);
    const struct {
        QByteArray bytes;
        quint32 flags;
        bool unicode;
        quint32 finalFlags;
    } cases[] = {
        {marked, F::typeText, true, F::typeBinary},
        {marked, F::typeText | F::modeReadWrite, true, F::typeBinary | F::modeReadWrite},
        {marked, F::typeText | F::modeWrite, false, F::typeText | F::modeWrite},
        {marked, F::typeText | F::modeCreate | F::modeNoTruncate, false,
         F::typeText | F::modeCreate | F::modeNoTruncate},
        {marked, F::modeRead, false, F::modeRead},
        {marked, F::typeBinary, false, F::typeBinary},
        {"abc", F::typeText, false, F::typeText},
        {"\xFE\xFF\x41\x00", F::typeText, false, F::typeText}, // the big-endian mark is none
        {"\xFF", F::typeText, false, F::typeText},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.toHex().toStdString() + " " + std::to_string(c.flags));
        CStdioFileEx file;
        ASSERT_TRUE(file.Open(Write(c.bytes), c.flags));
        EXPECT_EQ(file.m_unicodeFile, c.unicode);
        EXPECT_EQ(file.m_openFlags, c.finalFlags);
        EXPECT_EQ(file.CountCharacters(), c.unicode ? (c.bytes.size() - 2) / 2 : c.bytes.size());
    }
    EXPECT_FALSE(CStdioFileEx::HasUtf16Mark(m_dir.filePath(u"missing"_s)));
    EXPECT_EQ(CStdioFileEx().CountCharacters(), 0);
}

TEST_F(StdioFileExTest, WritesUtf16WithOneMarkAndAnsiWithOneBytePerCharacter) {
    using F = CStdioFileEx;
    const QString unicode = m_dir.filePath(u"out.txt"_s);
    {
        CStdioFileEx file(unicode, F::modeCreate | F::modeWrite | F::modeUnicodeWrite);
        file.WriteString(u"a\u00E9"_s);
        file.WriteString(u"\r\n"_s);
    }
    {
        CStdioFileEx file(unicode, F::modeWrite | F::modeUnicodeWrite);
        ASSERT_TRUE(file.SeekToEnd());
        file.WriteString(u"z"_s);
    }
    EXPECT_EQ(testutil::ReadAll(unicode), Utf16Le(u"a\u00E9\r\nz"_s));
    EXPECT_EQ(ReadLines(unicode), QStringList({u"aé"_s, u"z"_s}));

    // ANSI text takes one byte per character.
    struct {
        quint32 codePage;
        QString text;
        QByteArray bytes;
    } const cases[] = {
        {1252, u"café 日本\n"_s, "caf\xE9 ##\n"},
        {1252, u"e\u0301!"_s, "\xE9!"},     // composed first, never padded
        {932, u"日本語"_s, "\x93\xFA\x96"}, // cut at the character count
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.codePage);
        AnsiCodePage::SetCurrent(c.codePage);
        const QString path = Write("old content");
        {
            CStdioFileEx file(path, CStdioFileEx::modeCreate | CStdioFileEx::modeWrite);
            file.WriteString(c.text);
        }
        EXPECT_EQ(testutil::ReadAll(path), c.bytes);
    }
}

// A missing file, folder or path fails with the reason, and the loader reports it only when
// asked; opening for writing without create neither creates nor empties a file.
TEST_F(StdioFileExTest, OpenFailuresAndAccess) {
    const QString missing = m_dir.filePath(u"missing.txt"_s);
    CStdioFileEx file;
    QString notFound;
    EXPECT_FALSE(file.Open(missing, CStdioFileEx::modeWrite, &notFound));
    EXPECT_TRUE(notFound.contains(u"missing.txt was not found"_s)) << notFound.toStdString();
    EXPECT_FALSE(QFile::exists(missing));
    QString error;
    EXPECT_FALSE(file.Open(m_dir.filePath(u"no/such/dir.txt"_s), CStdioFileEx::modeRead, &error));
    EXPECT_TRUE(error.contains(u"incorrect path"_s)) << error.toStdString();
    EXPECT_THROW(CStdioFileEx(missing, CStdioFileEx::typeText), CFileException);

    util::RecordedMessages sink;
    QString text;
    EXPECT_FALSE(util::LoadTextFile(missing, text, false, &sink));
    EXPECT_TRUE(sink.messages.isEmpty());
    EXPECT_FALSE(util::LoadTextFile(missing, text, true, &sink));
    EXPECT_EQ(sink.messages, QStringList(notFound)); // the loader gives the same reason
    EXPECT_EQ(sink.kinds.value(0), util::MessageKind::Error);
    EXPECT_FALSE(util::LoadTextFile(m_dir.path(), text, true, &sink)); // a folder
    EXPECT_EQ(sink.messages.size(), 2);

    const QString existing = Write("keep\n");
    ASSERT_TRUE(file.Open(existing, CStdioFileEx::modeWrite));
    QString line;
    EXPECT_FALSE(file.ReadString(line));
    file.Close();
    EXPECT_EQ(testutil::ReadAll(existing), QByteArray("keep\n"));

    // A null path is refused, an empty one taken.
    EXPECT_THROW(file.SetFilePath(QString()), std::invalid_argument);
    file.SetFilePath(u""_s);
    EXPECT_TRUE(file.GetFilePath().isEmpty());
}

TEST_F(StdioFileExTest, StaticConvertersIncludeTheTerminator) {
    const QString text = u"Ωa"_s;
    char bytes[8] = {};
    EXPECT_EQ(CStdioFileEx::WideToAnsi(text.constData(), bytes, 8, 1253), 3);
    EXPECT_EQ(QByteArray(bytes, 3), QByteArray("\xD9\x61", 3));
    EXPECT_EQ(CStdioFileEx::WideToAnsi(text.constData(), bytes, 8, 1252), 3);
    EXPECT_EQ(QByteArray(bytes), QByteArray("#a"));
    EXPECT_EQ(CStdioFileEx::WideToAnsi(text.constData(), bytes, 0, 1252), 3);
    EXPECT_EQ(CStdioFileEx::WideToAnsi(text.constData(), bytes, 2, 1252), 0);
    EXPECT_EQ(CStdioFileEx::WideToAnsi(nullptr, bytes, 8, 1252), 0);

    AnsiCodePage::SetCurrent(1251);
    QChar wide[4] = {};
    ASSERT_TRUE(CStdioFileEx::AnsiToWide("\xC6z", wide, 4, AnsiCodePage::kSystem));
    EXPECT_EQ(QString(wide), u"Жz"_s);
    EXPECT_EQ(wide[2], QChar(0));
    EXPECT_FALSE(CStdioFileEx::AnsiToWide("\xC6z", wide, 2, 1251));
    EXPECT_FALSE(CStdioFileEx::AnsiToWide("a", nullptr, 4, 1251));
    EXPECT_FALSE(CStdioFileEx::AnsiToWide("a", wide, 4, 4711));
}

struct LoadCase {
    const char* name;
    QByteArray bytes;
    bool plausible;
    QString text;
    quint32 codePage = 1252; // for files without a mark
};

// ASCII text as UTF-16 without a mark: read as ANSI, it ends after the first letter.
QByteArray Unmarked(int bytes) {
    return Utf16Le(QString(bytes / 2, QLatin1Char('a')), false);
}

TEST_F(TextFileTest, DecodesAndJudgesPlausibility) {
    const QString body(60, QLatin1Char('x'));
    const LoadCase cases[] = {
        {"marked utf16", Utf16Le(u"h\u00E9llo \u65E5\r\n"_s + body), true,
         u"h\u00E9llo \u65E5\r\n"_s + body},
        {"marked, zero early", Utf16Le(u"ab"_s + QChar(0) + body), false, "ab"},
        {"marked, odd length", QByteArray("\xFF\xFE\x41\x00\x42", 5), true, "AB"},
        {"marked, zero near the end", Utf16Le(body + QChar(0) + u"tail"_s), true, body},
        {"mark only", "\xFF\xFE", true, ""},
        {"ansi", QByteArray("caf\xE9 ") + body.toLatin1(), true, u"café "_s + body},
        {"ansi, current code page", "\xD6\xD0\xCE\xC4", true, u"中文"_s, 936},
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
        AnsiCodePage::SetCurrent(c.codePage);
        const QString path = Write(c.bytes);
        QString text = u"stale"_s;
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

} // namespace
