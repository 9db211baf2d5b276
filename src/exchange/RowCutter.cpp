#include "exchange/RowCutter.h"

#include "util/CharScan.h"
#include "util/TextFile.h"

#include <algorithm>
#include <cstring>

namespace exchange {

RowCutter::RowCutter(QStringView text)
    : m_data(text.utf16()), m_size(text.size()) {}

RowCutter::RowCutter(util::TextFileReader& reader, size_t pieceChars)
    : m_eof(false), m_reader(&reader), m_buffer(std::max<size_t>(pieceChars, 1)) {
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
        if (m_stringsUsed == m_strings.size())
            m_strings.emplace_back();
        m_cellString = qsizetype(m_stringsUsed++);
        QString& text = m_strings[size_t(m_cellString)];
        text.resize(0); // keeps its storage for the next rows
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

RowCutter::Cut RowCutter::CutRow(std::vector<CutCell>& cells) {
    const char16_t* const end = m_data + m_size;
    while (m_pos < m_size) {
        const char16_t c = m_data[m_pos];
        if (c != u'\t' && c != u'\r' && c != u'\n' && c != u'"') {
            const char16_t* stop =
                util::FindFirstOf<u'\t', u'\r', u'\n', u'"', u'\\'>(m_data + m_pos + 1, end);
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

bool RowCutter::Next(std::vector<CutCell>& cells) {
    cells.clear();
    m_stringsUsed = 0;
    if (m_done)
        return false;
    for (;;) {
        const qsizetype rowStart = m_pos;
        const bool atLineStart = m_atLineStart;
        if (CutRow(cells) == Cut::Row)
            return true;
        if (m_eof)
            break;
        // The row runs past what has been read (a doubled quote may even be split): read on and
        // cut it again from its start.
        cells.clear();
        m_stringsUsed = 0;
        ResetCell();
        m_pos = rowStart;
        m_atLineStart = atLineStart;
        m_inQuotes = false;
        Refill(rowStart);
    }
    m_done = true;
    if (m_cellLength > 0 || (m_cellString >= 0 && !m_strings[size_t(m_cellString)].isEmpty()))
        EndCell(cells);
    ResetCell();
    return !cells.empty();
}

} // namespace exchange
