#include "util/Archive.h"

#include "util/AnsiCodePage.h"
#include "util/TextFile.h"

#include <QtEndian>

namespace util {

void ArchiveWriter::Int32(qint32 value) {
    UInt32(quint32(value));
}

void ArchiveWriter::UInt32(quint32 value) {
    char bytes[4];
    qToLittleEndian(value, bytes);
    m_bytes.append(bytes, 4);
}

void ArchiveWriter::String(const QString& text) {
    const quint64 length = quint64(text.size());
    m_bytes.append("\xFF\xFE\xFF", 3);
    if (length < 0xFF) {
        m_bytes.append(char(length));
    } else if (length < 0xFFFE) {
        m_bytes.append('\xFF');
        char bytes[2];
        qToLittleEndian(quint16(length), bytes);
        m_bytes.append(bytes, 2);
    } else {
        m_bytes.append("\xFF\xFF\xFF", 3);
        UInt32(quint32(length));
    }
    AppendUtf16Le(m_bytes, text);
}

bool ArchiveReader::Take(qsizetype count, const char*& data) {
    if (m_failed || count < 0 || count > m_bytes.size() - m_pos) {
        m_failed = true;
        return false;
    }
    data = m_bytes.constData() + m_pos;
    m_pos += count;
    return true;
}

bool ArchiveReader::Int32(qint32& value) {
    quint32 raw = 0;
    if (!UInt32(raw))
        return false;
    value = qint32(raw);
    return true;
}

bool ArchiveReader::UInt32(quint32& value) {
    const char* data = nullptr;
    if (!Take(4, data))
        return false;
    value = qFromLittleEndian<quint32>(data);
    return true;
}

// The length after its first byte: that byte, or 16 bits, or 32 bits.
bool ArchiveReader::Length(quint32 first, quint64& length) {
    const char* data = nullptr;
    if (first < 0xFF) {
        length = first;
        return true;
    }
    if (!Take(2, data))
        return false;
    const quint16 shortLength = qFromLittleEndian<quint16>(data);
    if (shortLength < 0xFFFE) {
        length = shortLength;
        return true;
    }
    quint32 longLength = 0;
    if (!UInt32(longLength))
        return false;
    length = longLength;
    return true;
}

bool ArchiveReader::String(QString& text) {
    const char* data = nullptr;
    if (!Take(1, data))
        return false;
    quint64 length = 0;
    bool wide = false;
    quint32 first = uchar(data[0]);
    if (first == 0xFF) {
        // 0xFF may open a longer length or the wide-string marker 0xFFFE.
        if (!Take(2, data))
            return false;
        const quint16 next = qFromLittleEndian<quint16>(data);
        if (next == 0xFFFE) {
            wide = true;
            if (!Take(1, data))
                return false;
            first = uchar(data[0]);
            if (!Length(first, length))
                return false;
        } else if (next < 0xFFFE) {
            length = next;
        } else {
            quint32 longLength = 0;
            if (!UInt32(longLength))
                return false;
            length = longLength;
        }
    } else {
        length = first;
    }
    const qint64 bytes = qint64(length) * (wide ? 2 : 1);
    if (!Take(bytes, data))
        return false;
    if (wide) {
        text.resize(qsizetype(length));
        qFromLittleEndian<quint16>(data, qsizetype(length), text.data());
        return true;
    }
    if (!AnsiCodePage::ToUnicode(QByteArray(data, bytes), AnsiCodePage::kSystem, text))
        text = QString::fromLatin1(data, bytes);
    return true;
}

} // namespace util
