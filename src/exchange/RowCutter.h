#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace util {
class TextFileReader;
}

namespace exchange {

// One cell of a cut row.
struct CutCell {
    QStringView text;
    bool backslash = false; // the import's unescaping has work to do only then
};

// Text buffers are filled by reading before anything reads them, so they are not zeroed first;
// large ones ask for huge pages, as a fresh buffer otherwise costs one page fault every 4 KB.
void* AllocateTextBuffer(size_t bytes);
void FreeTextBuffer(void* p, size_t bytes);

template <class T>
struct TextBufferAllocator {
    using value_type = T;
    TextBufferAllocator() = default;
    template <class U>
    TextBufferAllocator(const TextBufferAllocator<U>&) {}
    T* allocate(size_t n) { return static_cast<T*>(AllocateTextBuffer(n * sizeof(T))); }
    void deallocate(T* p, size_t n) { FreeTextBuffer(p, n * sizeof(T)); }
    template <class U>
    void construct(U* p) noexcept {
        ::new (static_cast<void*>(p)) U;
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args) {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
    template <class U>
    bool operator==(const TextBufferAllocator<U>&) const {
        return true;
    }
};
using TextBuffer = std::vector<char16_t, TextBufferAllocator<char16_t>>;

// Rows cut ahead of their use, in order. Their cells point into the batch's own text and
// strings, so a batch may be handed to another thread while the cutter goes on.
class RowBatch {
public:
    size_t RowCount() const { return m_rowEnds.size(); }
    std::span<const CutCell> Row(size_t r) const {
        const size_t begin = r == 0 ? 0 : m_rowEnds[r - 1];
        return std::span<const CutCell>(m_cells.data() + begin, m_rowEnds[r] - begin);
    }

private:
    friend class RowCutter;
    TextBuffer m_text;
    std::vector<QString> m_strings;
    std::vector<CutCell> m_cells;
    std::vector<size_t> m_rowEnds; // one past the last cell of each row
};

// Cuts the text of a translated file into rows of cells, one row at a time, as spreadsheet
// programs write tab-separated text: a tab ends a cell, a line end ends a row, and a double
// quote toggles quoting (inside quotes, tabs and line ends are kept and a doubled quote stands
// for one). Empty lines after a row give no row. Cells are views into the text where they can
// be, so a file of millions of cells is cut without a string for each.
class RowCutter {
public:
    // Over a text held whole, which must outlive the cutter.
    explicit RowCutter(QStringView text);
    // Over a file's text, read piece by piece: memory holds a piece and the longest row.
    static constexpr qint64 kPieceChars = qint64(1) << 20;
    explicit RowCutter(util::TextFileReader& reader, size_t pieceChars = kPieceChars);

    // The next row; false when the text has no more. The cells stay valid until the next call.
    bool Next(std::vector<CutCell>& cells);
    // The next rows, up to about a piece of text; false when the text has no more. The rows of
    // the batch passed before stay valid as long as that batch is not passed again.
    bool NextBatch(RowBatch& batch);
    // True when the file could not be read to its end.
    bool Failed() const { return m_failed; }

    static QStringList Strings(const std::vector<CutCell>& cells);

private:
    enum class Cut { Row, NeedMore };
    Cut CutRow(std::vector<CutCell>& cells);
    // Row: a row was added to `cells`; LastRow: the last, which had no line end; End: no more
    // rows; Stop: the row runs past what has been read and `mayRead` is false.
    enum class Step { Row, LastRow, End, Stop };
    Step CutNext(std::vector<CutCell>& cells, bool mayRead);
    // A cell in quotes up to a tab or a line end, inner quotes doubled (what a spreadsheet
    // program writes for a text holding a quote), cut in one go; false, with nothing changed,
    // for any other shape, which is then cut character by character.
    bool TakeQuotedCell(std::vector<CutCell>& cells, bool& rowEnded);
    // Plain cells, without quotes, ended by tabs (or the last by a line end), cut a window of
    // text at a time; false when the cell at the position is of another shape, or too near the
    // end of what has been read, and is to be cut character by character.
    bool TakePlainCells(std::vector<CutCell>& cells, bool& rowEnded);
    QString& NewString(); // the next string of m_strings, emptied
    void Add(qsizetype pos, qsizetype length);
    void EndCell(std::vector<CutCell>& cells);
    void ResetCell();
    void Refill(qsizetype keepFrom);

    const char16_t* m_data = nullptr;
    qsizetype m_size = 0;
    qsizetype m_pos = 0;
    bool m_inQuotes = false;
    bool m_atLineStart = false;
    bool m_done = false;
    bool m_eof = true;
    bool m_failed = false;

    util::TextFileReader* m_reader = nullptr;
    TextBuffer m_buffer;
    size_t m_pieceChars = 0;

    // The cell being cut: a range of the text until it stops being one (a doubled quote, or a
    // quote inside it), then a string of its own.
    qsizetype m_cellStart = 0;
    qsizetype m_cellLength = 0;
    qsizetype m_cellString = -1; // index in m_strings, or -1 while the cell is a range
    bool m_cellBackslash = false;
    std::vector<QString> m_strings;
    size_t m_stringsUsed = 0;
};

} // namespace exchange
