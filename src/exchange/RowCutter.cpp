#include "exchange/RowCutter.h"

#include "exchange/WindowMasks.h"

#include "util/CharScan.h"
#include "util/TextFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace exchange {

namespace {
constexpr size_t kHugePage = size_t(2) << 20;
} // namespace

void* AllocateTextBuffer(size_t bytes) {
#ifdef __linux__
    if (bytes >= kHugePage) {
        const size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        void* p = std::aligned_alloc(kHugePage, rounded);
        if (!p)
            throw std::bad_alloc();
        ::madvise(p, rounded, MADV_HUGEPAGE); // a wish: without huge pages the buffer still works
        return p;
    }
#endif
    void* p = std::malloc(std::max<size_t>(bytes, 1));
    if (!p)
        throw std::bad_alloc();
    return p;
}

void FreeTextBuffer(void* p, size_t) {
    std::free(p);
}

namespace {
// What ends a cell or a row, or starts or ends quoting.
bool IsSpecial(char16_t c) {
    return c == u'\t' || c == u'\r' || c == u'\n' || c == u'"';
}
} // namespace

RowCutter::RowCutter(QStringView text)
    : m_data(text.utf16()), m_size(text.size()), m_pieceChars(size_t(kPieceChars)) {}

RowCutter::RowCutter(util::TextFileReader& reader, size_t pieceChars)
    : m_eof(false), m_reader(&reader), m_buffer(std::max<size_t>(pieceChars, 1)),
      m_pieceChars(m_buffer.size()) {
    m_data = m_buffer.data();
}

QStringList RowCutter::Strings(const std::vector<CutCell>& cells) {
    QStringList strings;
    strings.reserve(qsizetype(cells.size()));
    for (const CutCell& cell : cells)
        strings.append(cell.text.toString());
    return strings;
}

void RowCutter::ResetCell() {
    m_cellStart = 0;
    m_cellLength = 0;
    m_cellString = -1;
    m_cellBackslash = false;
}

void RowCutter::Add(qsizetype pos, qsizetype length) {
    if (m_cellString >= 0) {
        m_strings[size_t(m_cellString)].append(reinterpret_cast<const QChar*>(m_data + pos), length);
    } else if (m_cellLength == 0) {
        m_cellStart = pos;
        m_cellLength = length;
    } else if (m_cellStart + m_cellLength == pos) {
        m_cellLength += length;
    } else {
        QString& text = NewString();
        m_cellString = qsizetype(m_stringsUsed - 1);
        text.append(reinterpret_cast<const QChar*>(m_data + m_cellStart), m_cellLength);
        text.append(reinterpret_cast<const QChar*>(m_data + pos), length);
    }
}

void RowCutter::EndCell(std::vector<CutCell>& cells) {
    const QStringView text = m_cellString >= 0 ? QStringView(m_strings[size_t(m_cellString)])
                                               : QStringView(m_data + m_cellStart, m_cellLength);
    cells.push_back({text, m_cellBackslash});
    ResetCell();
}

QString& RowCutter::NewString() {
    if (m_stringsUsed == m_strings.size())
        m_strings.emplace_back();
    QString& text = m_strings[m_stringsUsed++];
    text.resize(0); // keeps its storage for the next rows
    return text;
}

[[gnu::flatten]] bool RowCutter::TakeQuotedCell(std::vector<CutCell>& cells, bool& rowEnded) {
    const char16_t* const end = m_data + m_size;
    const char16_t* piece = m_data + m_pos + 1; // not yet in `text`
    const char16_t* scan = piece;
    QString* text = nullptr; // the cell's own string, from its first doubled quote on
    bool backslash = false;
    for (;;) {
        const char16_t* hit = util::FindFirstOf<u'"', u'\\'>(scan, end);
        if (hit == end || hit + 1 == end)
            break; // what follows is not read yet
        if (*hit == u'\\') {
            backslash = true;
            scan = hit + 1;
            continue;
        }
        if (hit[1] == u'"') {
            if (!text)
                text = &NewString();
            text->append(reinterpret_cast<const QChar*>(piece), hit + 1 - piece);
            piece = scan = hit + 2;
            continue;
        }
        if (hit[1] != u'\t' && hit[1] != u'\r' && hit[1] != u'\n')
            break; // text after the closing quote
        QStringView cell(piece, hit - piece);
        if (text) {
            text->append(cell);
            cell = *text;
        }
        cells.push_back({cell, backslash});
        m_atLineStart = rowEnded = hit[1] != u'\t';
        m_pos = hit + 2 - m_data;
        return true;
    }
    if (text)
        --m_stringsUsed;
    return false;
}


// Flattened like CutRow below, so that each cell is stored in place. Tabs, backslashes and the
// rest are told apart by their masks rather than by a branch on each character, which would be
// guessed wrong at every cell that holds a backslash.
[[gnu::flatten]] bool RowCutter::TakePlainCells(std::vector<CutCell>& cells, bool& rowEnded) {
    const char16_t* const end = m_data + m_size;
    const char16_t* cellStart = m_data + m_pos;
    bool backslash = false; // in the part of the cell before the window
    bool took = false;
    for (const char16_t* window = cellStart; window < end; window += 64) {
        // A cell starts at the first window or inside one, after a tab whose bit is handled.
        const qsizetype count = std::min<qsizetype>(64, end - window);
        WindowMasks masks = count == 64 ? MasksOf(window) : MasksOfOneByOne(window, int(count));
        while ((masks.tabs | masks.others) != 0) {
            const quint64 nextTab = masks.tabs & (0 - masks.tabs);
            const quint64 nextOther = masks.others & (0 - masks.others);
            if (nextOther != 0 && (nextTab == 0 || nextOther < nextTab)) {
                const char16_t* const hit = window + __builtin_ctzll(masks.others);
                const bool lineEnd = *hit == u'\r' || *hit == u'\n';
                if (lineEnd && hit > cellStart) {
                    cells.push_back({QStringView(cellStart, hit - cellStart),
                                     backslash || (masks.backslashes & (nextOther - 1)) != 0});
                    m_pos = hit + 1 - m_data;
                    m_atLineStart = rowEnded = true;
                    return true;
                }
                if (lineEnd || *hit == u'"') {
                    m_pos = cellStart - m_data;
                    return took;
                }
                masks.others &= masks.others - 1; // any other control character is text
                continue;
            }
            const char16_t* const hit = window + __builtin_ctzll(masks.tabs);
            cells.push_back({QStringView(cellStart, hit - cellStart),
                             backslash || (masks.backslashes & (nextTab - 1)) != 0});
            // Shifted past bit 63 the tab's bit becomes 0, and every backslash bit is dropped.
            masks.backslashes &= ~((nextTab << 1) - 1);
            masks.tabs &= masks.tabs - 1;
            cellStart = hit + 1;
            backslash = false;
            took = true;
            m_atLineStart = false;
        }
        backslash = backslash || masks.backslashes != 0;
    }
    m_pos = cellStart - m_data;
    return took;
}

// Flattened: with every call inlined, a cell is stored in place rather than built beside the
// vector and copied, which costs a stall per cell on the millions of cells of a large file.
[[gnu::flatten]] RowCutter::Cut RowCutter::CutRow(std::vector<CutCell>& cells) {
    const char16_t* const end = m_data + m_size;
    while (m_pos < m_size) {
        // Most cells are plain text up to a tab or a line end, or quoted as spreadsheet programs
        // quote: they are taken whole.
        if (!m_inQuotes && m_cellLength == 0 && m_cellString < 0) {
            bool rowEnded = false;
            if (TakePlainCells(cells, rowEnded) ||
                (m_data[m_pos] == u'"' && !m_atLineStart && TakeQuotedCell(cells, rowEnded))) {
                if (rowEnded)
                    return Cut::Row;
                continue;
            }
        }
        const char16_t c = m_data[m_pos];
        if (!IsSpecial(c)) {
            const char16_t* stop = util::FindControlOr<u'"', u'\\'>(m_data + m_pos + 1, end);
            while (stop != end && !IsSpecial(*stop) && *stop != u'\\')
                stop = util::FindControlOr<u'"', u'\\'>(stop + 1, end);
            m_cellBackslash = m_cellBackslash || c == u'\\';
            Add(m_pos, stop - (m_data + m_pos));
            m_pos = stop - m_data;
            m_atLineStart = false;
            continue;
        }
        if (c == u'"') {
            if (m_inQuotes && m_pos + 1 < m_size && m_data[m_pos + 1] == u'"') {
                Add(m_pos, 1);
                m_pos += 2;
            } else {
                m_inQuotes = !m_inQuotes;
                ++m_pos;
            }
        } else if (m_inQuotes) {
            Add(m_pos++, 1);
        } else if (c == u'\t') {
            ++m_pos;
            EndCell(cells);
            m_atLineStart = false;
        } else if (!m_atLineStart) {
            ++m_pos;
            EndCell(cells);
            m_atLineStart = true;
            return Cut::Row;
        } else {
            ++m_pos;
        }
    }
    return Cut::NeedMore;
}

void RowCutter::Refill(qsizetype keepFrom) {
    const qsizetype kept = m_size - keepFrom;
    std::memmove(m_buffer.data(), m_buffer.data() + keepFrom, size_t(kept) * 2);
    m_pos -= keepFrom;
    m_size = kept;
    // A row longer than the buffer makes it grow; it never shrinks back.
    if (size_t(m_size) == m_buffer.size())
        m_buffer.resize(m_buffer.size() * 2);
    m_data = m_buffer.data();
    const qsizetype got =
        m_reader->Read(m_buffer.data() + m_size, qsizetype(m_buffer.size()) - m_size);
    if (got <= 0) {
        m_eof = true;
        m_failed = got < 0;
        return;
    }
    m_size += got;
}

RowCutter::Step RowCutter::CutNext(std::vector<CutCell>& cells, bool mayRead) {
    if (m_done)
        return Step::End;
    const size_t cellsBefore = cells.size();
    const size_t stringsBefore = m_stringsUsed;
    for (;;) {
        const qsizetype rowStart = m_pos;
        const bool atLineStart = m_atLineStart;
        if (CutRow(cells) == Cut::Row)
            return Step::Row;
        if (m_eof)
            break;
        // The row runs past what has been read (a doubled quote may even be split): read on and
        // cut it again from its start.
        cells.resize(cellsBefore);
        m_stringsUsed = stringsBefore;
        ResetCell();
        m_pos = rowStart;
        m_atLineStart = atLineStart;
        m_inQuotes = false;
        if (!mayRead)
            return Step::Stop;
        Refill(rowStart);
    }
    m_done = true;
    if (m_cellLength > 0 || (m_cellString >= 0 && !m_strings[size_t(m_cellString)].isEmpty()))
        EndCell(cells);
    ResetCell();
    return cells.size() > cellsBefore ? Step::LastRow : Step::End;
}

bool RowCutter::Next(std::vector<CutCell>& cells) {
    cells.clear();
    m_stringsUsed = 0;
    const Step step = CutNext(cells, true);
    return step == Step::Row || step == Step::LastRow;
}

bool RowCutter::NextBatch(RowBatch& batch) {
    batch.m_cells.clear();
    batch.m_rowEnds.clear();
    TextBuffer spare = std::move(batch.m_text);
    m_strings = std::move(batch.m_strings); // their storage is used again
    m_stringsUsed = 0;
    const qsizetype batchStart = m_pos;
    for (;;) {
        // A batch holds the rows of one piece of the file, or of a stretch of a whole text.
        const Step step = CutNext(batch.m_cells, batch.m_rowEnds.empty());
        if (step == Step::Row || step == Step::LastRow)
            batch.m_rowEnds.push_back(batch.m_cells.size());
        if (step != Step::Row || (!m_reader && m_pos - batchStart >= qsizetype(m_pieceChars)))
            break;
    }
    if (m_reader) {
        // The batch keeps the piece its cells point into; the unfinished row moves to a new one.
        const qsizetype rest = m_size - m_pos;
        spare.resize(std::max(m_buffer.size(), m_pieceChars));
        std::copy(m_buffer.begin() + m_pos, m_buffer.begin() + m_size, spare.begin());
        batch.m_text = std::move(m_buffer);
        m_buffer = std::move(spare);
        m_data = m_buffer.data();
        m_size = rest;
        m_pos = 0;
    }
    batch.m_strings = std::move(m_strings);
    m_strings.clear();
    return !batch.m_rowEnds.empty();
}

} // namespace exchange
