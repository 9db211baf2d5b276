#include "exchange/RowCutter.h"

namespace exchange {

namespace {
bool IsSpecial(char16_t c) {
    return c == u'\t' || c == u'\r' || c == u'\n' || c == u'"';
}
} // namespace

bool RowCutter::Next(QStringList& cells) {
    cells.clear();
    if (m_done)
        return false;
    const QChar* s = m_text.constData();
    const qsizetype n = m_text.size();
    while (m_pos < n) {
        const char16_t c = s[m_pos].unicode();
        if (!IsSpecial(c)) {
            const qsizetype start = m_pos;
            while (m_pos < n && !IsSpecial(s[m_pos].unicode()))
                ++m_pos;
            m_cell.append(s + start, m_pos - start);
            m_atLineStart = false;
            continue;
        }
        ++m_pos;
        if (c == u'"') {
            if (m_inQuotes && m_pos < n && s[m_pos] == QLatin1Char('"')) {
                m_cell.append(QLatin1Char('"'));
                ++m_pos;
            } else {
                m_inQuotes = !m_inQuotes;
            }
        } else if (m_inQuotes) {
            m_cell.append(QChar(c));
        } else if (c == u'\t') {
            cells.append(m_cell);
            m_cell.clear();
            m_atLineStart = false;
        } else if (!m_atLineStart) {
            cells.append(m_cell);
            m_cell.clear();
            m_atLineStart = true;
            return true;
        }
    }
    m_done = true;
    if (!m_cell.isEmpty())
        cells.append(m_cell);
    m_cell.clear();
    return !cells.isEmpty();
}

} // namespace exchange
