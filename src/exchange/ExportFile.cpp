#include "exchange/ExportFile.h"

#include "exchange/ExportRows.h"
#include "exchange/RowCutter.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/StaticTools.h"
#include "util/CharScan.h"
#include "util/FileSystem.h"
#include "util/Messages.h"
#include "util/Progress.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace exchange {

using namespace questionnaire;

namespace {

// Rows are encoded in blocks of about this many cells (some 1 MB of text): few enough blocks that
// handing them between threads costs nothing worth measuring, small enough to be written out
// while still in the processor's cache.
constexpr qsizetype kBlockCells = 8192;
constexpr int kMaxEncoders = 4;
constexpr int kWarningKeys = 10;

const char16_t* Utf16(const QString& text) {
    return reinterpret_cast<const char16_t*>(text.constData());
}

// The text of one block, kept until its turn to be written comes.
class OutBuffer {
public:
    // Small at first, so that a small export costs no megabytes; on a large one it doubles a
    // few times during the first block and is then used again for every block.
    OutBuffer() : m_data(size_t(1) << 16) {}

    void Append(const char16_t* s, qsizetype n) {
        if (n > qsizetype(m_data.size()) - m_used)
            Grow(n);
        std::memcpy(m_data.data() + m_used, s, size_t(n) * 2);
        m_used += n;
    }
    void Append(const QString& text) { Append(Utf16(text), text.size()); }
    void Append(char16_t c) {
        if (m_used == qsizetype(m_data.size()))
            Grow(1);
        m_data[size_t(m_used++)] = c;
    }
    void Clear() { m_used = 0; }
    const char16_t* Data() const { return m_data.data(); }
    qsizetype Size() const { return m_used; }

private:
    void Grow(qsizetype n) { m_data.resize(std::max(m_data.size() * 2, size_t(m_used + n))); }

    TextBuffer m_data;
    qsizetype m_used = 0;
};

// Hands out the blocks to the threads that encode them and writes the blocks in file order,
// whichever thread encoded them. After a failed write no more blocks are handed out.
class BlockOrder {
public:
    BlockOrder(util::ReplacingFile& file, qsizetype blockCount, util::ProgressScope& progress)
        : m_file(file), m_blockCount(blockCount), m_progress(progress) {}

    // The next block to encode, or -1 when none is left.
    qsizetype Claim() {
        if (m_failed.load(std::memory_order_acquire))
            return -1;
        const qsizetype block = m_next.fetch_add(1, std::memory_order_relaxed);
        return block < m_blockCount ? block : -1;
    }
    // Waits until the blocks before this one are written, then writes it.
    bool Write(qsizetype block, const OutBuffer& text) {
        for (qsizetype turn = m_turn.load(std::memory_order_acquire); turn != block;
             turn = m_turn.load(std::memory_order_acquire)) {
            if (m_failed.load(std::memory_order_acquire))
                return false;
            m_turn.wait(turn, std::memory_order_acquire);
        }
        const bool ok = !m_failed.load(std::memory_order_relaxed) &&
                        m_file.WriteUtf16Le(QStringView(text.Data(), text.Size())) &&
                        m_progress.Advance(block + 1);
        if (!ok)
            m_failed.store(true, std::memory_order_release);
        m_turn.store(block + 1, std::memory_order_release);
        m_turn.notify_all();
        return ok;
    }
    bool Failed() const { return m_failed.load(std::memory_order_acquire); }

private:
    util::ReplacingFile& m_file;
    const qsizetype m_blockCount;
    util::ProgressScope& m_progress;
    std::atomic<qsizetype> m_next{0};
    std::atomic<qsizetype> m_turn{0};
    std::atomic<bool> m_failed{false};
};

bool NeedsQuotes(QStringView cell) {
    const char16_t* const begin = cell.utf16();
    const char16_t* const end = begin + cell.size();
    return util::FindFirstOf<u'"', u'\t', u'\r', u'\n'>(begin, end) != end;
}

class Exporter {
public:
    Exporter(const CQuestionnaire& q, const ExportOptions& options,
             const VisibilityFilter* visibility)
        : m_options(options), m_rows(q, options, visibility) {}

    // Writes the line of row `k` to `out`; false when a filter drops it.
    bool WriteLine(const CaptionList& captions, qsizetype k, OutBuffer& out);

    qint64 rows = 0;
    qint64 unsafeCaptions = 0;
    std::vector<std::pair<qsizetype, QString>> unsafeKeys; // (row, key), the first few

private:
    void WriteCaptionCell(OutBuffer& out, const QString& text, bool sourceColumn, qint32 questionId,
                          qint32 responseId);
    void NoteUnsafe(const QString& text, bool sourceColumn, qint32 questionId, qint32 responseId);

    const ExportOptions& m_options;
    RowSelector m_rows;
    qsizetype m_row = 0;
    QString m_cell; // the extra columns of a row
    const QString m_empty;
};

void Exporter::NoteUnsafe(const QString& text, bool sourceColumn, qint32 questionId,
                          qint32 responseId) {
    if (CaptionSurvivesRoundTrip(text, sourceColumn))
        return;
    ++unsafeCaptions;
    if (unsafeKeys.size() < size_t(kWarningKeys) &&
        (unsafeKeys.empty() || unsafeKeys.back().first != m_row))
        unsafeKeys.emplace_back(m_row, QStringLiteral("%1/%2").arg(questionId).arg(responseId));
}

void Exporter::WriteCaptionCell(OutBuffer& out, const QString& text, bool sourceColumn,
                                qint32 questionId, qint32 responseId) {
    const char16_t* s = Utf16(text);
    const char16_t* const end = s + text.size();
    const char16_t* hit = util::FindControlOr<u'\\', u'"'>(s, end);
    // Nearly every caption holds nothing to escape, quote or warn about: it goes out as it is.
    if (hit == end) {
        out.Append(s, text.size());
        if (text.size() > kSpreadsheetCellLimit)
            NoteUnsafe(text, sourceColumn, questionId, responseId);
        return;
    }
    // Escaping leaves no tab or line break, so only a double quote calls for quoting.
    const bool quoted = util::FindFirstOf<u'"'>(hit, end) != end;
    bool suspect = text.size() > kSpreadsheetCellLimit / 2 || *s == u'"';
    if (quoted)
        out.Append(u'"');
    while (hit != end) {
        out.Append(s, hit - s);
        switch (*hit) {
        case u'\\':
            out.Append(u'\\');
            out.Append(u'\\');
            suspect = true;
            break;
        case u'\n':
            out.Append(u'\\');
            out.Append(u'n');
            break;
        case u'\r':
            out.Append(u'\\');
            out.Append(u'r');
            break;
        case u'\t':
            out.Append(u'\\');
            out.Append(u't');
            break;
        case u'"':
            out.Append(u'"');
            out.Append(u'"');
            break;
        default:
            out.Append(*hit);
            suspect = true;
            break; // zero, or another control character
        }
        s = hit + 1;
        hit = util::FindControlOr<u'\\', u'"'>(s, end);
    }
    out.Append(s, end - s);
    if (quoted)
        out.Append(u'"');
    if (suspect)
        NoteUnsafe(text, sourceColumn, questionId, responseId);
}

bool Exporter::WriteLine(const CaptionList& captions, qsizetype k, OutBuffer& out) {
    m_row = k;
    ExportRow row;
    if (!m_rows.Select(captions, k, row))
        return false;
    out.Append(QString::number(row.questionId));
    out.Append(u'\t');
    out.Append(QString::number(row.responseId));
    const std::vector<const QString*>& texts = *row.texts;
    for (size_t i = 0; i < texts.size(); ++i) {
        out.Append(u'\t');
        WriteCaptionCell(out, *texts[i], i == 0, row.questionId, row.responseId);
    }
    if (m_options.showShortcuts) {
        m_cell.clear();
        m_cell.append(QLatin1Char('\t'));
        AppendCell(m_cell, row.question ? row.question->m_shortcut : m_empty);
        m_cell.append(QLatin1Char('\t'));
        AppendCell(m_cell, row.response ? row.response->m_entryCode : m_empty);
        out.Append(m_cell);
    }
    out.Append(u'\r');
    out.Append(u'\n');
    ++rows;
    return true;
}

QString HeaderLine(const CQuestionnaire& q, const ExportOptions& options) {
    QString line;
    const QStringList titles = ExportHeaderTitles(q, options);
    for (qsizetype i = 0; i < titles.size(); ++i) {
        if (i > 0)
            line.append(QLatin1Char('\t'));
        AppendCell(line, titles[i]);
    }
    return line + QStringLiteral("\r\n");
}

} // namespace

void AppendCell(QString& out, QStringView cell) {
    if (!NeedsQuotes(cell)) {
        out.append(cell);
        return;
    }
    out.append(QLatin1Char('"'));
    for (QChar c : cell) {
        if (c == QLatin1Char('"'))
            out.append(QLatin1Char('"'));
        out.append(c);
    }
    out.append(QLatin1Char('"'));
}

QStringList ExportHeaderTitles(const CQuestionnaire& q, const ExportOptions& options) {
    QStringList given;
    CStaticTools::ReadStringSeparatorString(options.headers, QLatin1Char(','), given);
    QStringList titles = {QStringLiteral("QuestionId"), QStringLiteral("ResponseId")};
    for (qint32 lcid : options.languages)
        titles.append(QStringLiteral("%1(%2)").arg(lcid).arg(LanguageShortName(q, lcid)));
    if (options.showShortcuts)
        titles << QStringLiteral("Shortcut") << QStringLiteral("Entrycode");
    // Titles given on the command line replace the defaults one by one; extra ones are ignored.
    for (qsizetype i = 0; i < titles.size() && i < given.size(); ++i)
        if (!given[i].isEmpty())
            titles[i] = given[i];
    return titles;
}

bool ExportStringsForTranslation(const QString& path, const CQuestionnaire& q,
                                 const ExportOptions& options, const CaptionList& captions,
                                 util::Messages& messages, ExportReport* report,
                                 util::Progress* progress) {
    if (report)
        *report = ExportReport(); // what an earlier export left there is not this one's
    util::ReplacingFile file(path);
    if (!file.Open()) {
        messages.Error(Tr(strings::kCannotCreateExportFile));
        return false;
    }
    const QString header = QString(QChar(0xFEFF)) + HeaderLine(q, options);
    bool ok = file.WriteUtf16Le(header);

    std::unique_ptr<VisibilityFilter> visibility;
    if (options.excludeNonVisible)
        visibility = std::make_unique<VisibilityFilter>(q);
    const qsizetype rowsPerBlock =
        std::max<qsizetype>(1, kBlockCells / std::max<qsizetype>(1, options.languages.size()));
    const qsizetype blockCount = (captions.size() + rowsPerBlock - 1) / rowsPerBlock;
    util::ProgressScope scope(progress, Tr(strings::kExporting), blockCount);
    BlockOrder order(file, ok ? blockCount : 0, scope);
    // The duplicates filter depends on the rows before, so it keeps to one thread.
    const int encoders =
        options.excludeDuplicates
            ? 1
            : int(std::clamp<qsizetype>(
                  std::min<qsizetype>(std::thread::hardware_concurrency(), blockCount), 1,
                  kMaxEncoders));
    std::vector<std::unique_ptr<Exporter>> exporters;
    for (int e = 0; e < encoders; ++e)
        exporters.push_back(std::make_unique<Exporter>(q, options, visibility.get()));
    auto encode = [&](Exporter& exporter) {
        OutBuffer out;
        for (qsizetype block = order.Claim(); block >= 0; block = order.Claim()) {
            out.Clear();
            const qsizetype end = std::min(captions.size(), (block + 1) * rowsPerBlock);
            for (qsizetype k = block * rowsPerBlock; k < end; ++k)
                exporter.WriteLine(captions, k, out);
            if (!order.Write(block, out))
                return;
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (int e = 1; e < encoders; ++e)
            helpers.emplace_back(encode, std::ref(*exporters[size_t(e)]));
        encode(*exporters.front());
    }
    ok = ok && !order.Failed() && file.Commit();

    ExportReport result;
    std::vector<std::pair<qsizetype, QString>> keys;
    for (const auto& exporter : exporters) {
        result.rows += exporter->rows;
        result.unsafeCaptions += exporter->unsafeCaptions;
        keys.insert(keys.end(), exporter->unsafeKeys.begin(), exporter->unsafeKeys.end());
    }
    // Each thread kept its first few; the first of all are among them.
    std::sort(keys.begin(), keys.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t i = 0; i < keys.size() && i < size_t(kWarningKeys); ++i)
        result.unsafeKeys.append(keys[i].second);
    result.written = ok;
    result.stopped = scope.Cancelled();
    result.bytes = ok ? QFileInfo(path).size() : 0;
    // Shown in batch runs too: a script must learn why the old file is still there.
    if (!ok && !result.stopped)
        messages.Error(Tr(strings::kCannotWriteFile).arg(path, file.ErrorString()));
    if (ok && result.unsafeCaptions > 0)
        messages.Warn(Tr(strings::kExportWarning)
                          .arg(result.unsafeCaptions)
                          .arg(result.unsafeKeys.join(QStringLiteral(", "))));
    if (report)
        *report = result;
    // Deliberately reports failure even after a complete file: callers judge by the file.
    return false;
}

} // namespace exchange
