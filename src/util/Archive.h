#pragma once

#include <QByteArray>
#include <QString>

namespace util {

// Reads and writes the byte layout of the classic application-framework archive: little-endian
// integers one after the other, and strings as a length prefix and their code units.
class ArchiveWriter {
public:
    void Int32(qint32 value);
    void UInt32(quint32 value);
    // 0xFF, 0xFFFE (a wide string), the length (one byte below 255; else 0xFF and 16 bits below
    // 0xFFFE; else 0xFF, 0xFFFF and 32 bits), then the UTF-16LE code units.
    void String(const QString& text);
    const QByteArray& Bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

class ArchiveReader {
public:
    explicit ArchiveReader(const QByteArray& bytes) : m_bytes(bytes) {}

    // Each returns false, and leaves the reader failed, when the data ends too early.
    bool Int32(qint32& value);
    bool UInt32(quint32& value);
    // Also reads an 8-bit string (the same length prefix without the wide marker), whose bytes
    // are text in the ANSI code page.
    bool String(QString& text);
    bool Failed() const { return m_failed; }
    bool AtEnd() const { return m_pos >= m_bytes.size(); }

private:
    bool Take(qsizetype count, const char*& data);
    bool Length(quint32 first, quint64& length);

    const QByteArray& m_bytes;
    qsizetype m_pos = 0;
    bool m_failed = false;
};

} // namespace util
