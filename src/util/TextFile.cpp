#include "util/TextFile.h"

#include "util/AnsiCodePage.h"
#include "util/Messages.h"
#include "util/StdioFileEx.h"

#include <QFile>
#include <QtDebug>
#include <QtEndian>

#include <algorithm>
#include <vector>

namespace util {

namespace {

// Up to the first zero character; an odd last byte counts as a character with a zero high byte.
QString Utf16UpToZero(const QByteArray& bytes, qsizetype offset) {
    const qsizetype units = (bytes.size() - offset + 1) / 2;
    QString text(units, Qt::Uninitialized);
    char16_t* out = reinterpret_cast<char16_t*>(text.data());
    const qsizetype whole = (bytes.size() - offset) / 2;
    qFromLittleEndian<quint16>(bytes.constData() + offset, whole, out);
    if (whole < units)
        out[whole] = char16_t(uchar(bytes[bytes.size() - 1]));
    const qsizetype zero = text.indexOf(QChar(0));
    if (zero >= 0)
        text.truncate(zero);
    return text;
}

QString AnsiUpToZero(const QByteArray& bytes) {
    const qsizetype zero = bytes.indexOf('\0');
    const QByteArray ansi = zero < 0 ? bytes : bytes.left(zero);
    QString text;
    // An unusable code page override still yields the text rather than nothing.
    if (!AnsiCodePage::ToUnicode(ansi, AnsiCodePage::kSystem, text))
        text = QString::fromLatin1(ansi);
    return text;
}

bool HasMark(const QByteArray& bytes) {
    return bytes.size() >= 2 && uchar(bytes[0]) == 0xFF && uchar(bytes[1]) == 0xFE;
}

// Binary files end their text at an early zero. The subtraction wraps on purpose: any file
// under 40 bytes needs a negative number of characters and passes.
bool LooksLikeText(qint64 characters, qint64 bytesRead) {
    const quint32 needed = quint32(bytesRead / 2) - 20u;
    return characters >= qint32(needed);
}

void Report(const CFileException& error, bool reportErrors, Messages* messages) {
    if (!reportErrors)
        return;
    if (messages)
        messages->Error(error.GetErrorMessage());
    else
        qWarning().noquote() << error.GetErrorMessage();
}

} // namespace

bool WriteUtf16Le(QIODevice& device, const QString& text) {
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    const qint64 bytes = text.size() * 2;
    return device.write(reinterpret_cast<const char*>(text.utf16()), bytes) == bytes;
#else
    QByteArray le;
    AppendUtf16Le(le, text);
    return device.write(le) == le.size();
#endif
}

void AppendUtf16Le(QByteArray& out, const QString& text) {
    const qsizetype start = out.size();
    out.resize(start + text.size() * 2);
    qToLittleEndian<quint16>(text.utf16(), text.size(), out.data() + start);
}

QString DecodeText(const QByteArray& bytes) {
    return HasMark(bytes) ? Utf16UpToZero(bytes, 2) : AnsiUpToZero(bytes);
}

// A marked UTF-16 file is read straight into the string's storage: a translated file of several
// hundred megabytes is then held once, not twice.
bool ReadUtf16Body(QFile& file, qint64 size, QString& text, qint64& bytesRead) {
    const qint64 bodyBytes = size - 2;
    text.resize((bodyBytes + 1) / 2);
    if (text.isEmpty()) {
        bytesRead = 2;
        return true;
    }
    text.data()[text.size() - 1] = QChar(0); // the high byte of an odd last byte
    const qint64 got = file.read(reinterpret_cast<char*>(text.data()), bodyBytes);
    if (got < 0)
        return false;
    bytesRead = got + 2;
    text.truncate((got + 1) / 2);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    qFromLittleEndian<quint16>(text.constData(), text.size(), text.data());
#endif
    const qsizetype zero = text.indexOf(QChar(0));
    if (zero >= 0)
        text.truncate(zero);
    return true;
}

bool LoadTextFile(const QString& path, QString& text, bool reportErrors, Messages* messages) {
    text.clear();
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        Report(CFileException::ForFailedOpen(path), reportErrors, messages);
        return false;
    }
    const qint64 size = file.size();
    QByteArray head = file.read(2);
    qint64 bytesRead = head.size();
    bool ok = bytesRead >= 0;
    if (ok && HasMark(head) && size >= 2) {
        ok = ReadUtf16Body(file, size, text, bytesRead);
    } else if (ok) {
        const QByteArray rest = file.readAll();
        ok = file.error() == QFileDevice::NoError;
        head.append(rest);
        bytesRead = head.size();
        text = DecodeText(head);
    }
    if (!ok) {
        text.clear();
        Report(CFileException(CFileException::hardIO, path), reportErrors, messages);
        return false;
    }
    return LooksLikeText(text.size(), bytesRead);
}

namespace {
constexpr qsizetype kReadChunkChars = qsizetype(1) << 21;
}

// Characters straight from the file; an odd last byte counts as a character with a zero high byte.
qsizetype TextFileReader::ReadUnits(char16_t* out, qsizetype max) {
    char* bytes = reinterpret_cast<char*>(out);
    qint64 got = m_file.read(bytes, max * 2);
    if (got < 0)
        return -1;
    if (got % 2 != 0) {
        // The high byte is still to come, or the file ends and it stays zero.
        bytes[got] = 0;
        if (m_file.read(bytes + got, 1) < 0)
            return -1;
        ++got;
    }
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    qFromLittleEndian<quint16>(out, got / 2, out);
#endif
    return got / 2;
}

bool TextFileReader::Open(const QString& path) {
    m_file.setFileName(path);
    m_streaming = false;
    m_ended = false;
    m_failed = false;
    m_characters = 0;
    m_loaded.clear();
    m_loadedPos = 0;
    m_handedOut.store(0, std::memory_order_relaxed);
    if (path.isEmpty() || !m_file.open(QIODevice::ReadOnly))
        return false;
    m_size = m_file.size();
    if (m_size < 2 || !HasMark(m_file.read(2))) {
        m_file.close();
        m_plausible = LoadTextFile(path, m_loaded, false);
        return m_plausible;
    }
    m_streaming = true;
    return true;
}

qsizetype TextFileReader::Read(char16_t* out, qsizetype max) {
    if (!m_streaming) {
        const qsizetype n = std::min(max, m_loaded.size() - m_loadedPos);
        std::copy_n(reinterpret_cast<const char16_t*>(m_loaded.constData()) + m_loadedPos, n, out);
        m_loadedPos += n;
        m_handedOut.store(m_loadedPos, std::memory_order_relaxed);
        return n;
    }
    if (m_ended || max <= 0)
        return 0;
    const qsizetype got = ReadUnits(out, max);
    if (got <= 0) {
        m_ended = true;
        m_failed = got < 0;
        return got;
    }
    // The text ends at the first zero character.
    const qsizetype zero = QStringView(out, got).indexOf(QChar(0));
    const qsizetype kept = zero < 0 ? got : zero;
    m_characters += kept;
    m_handedOut.store(m_characters, std::memory_order_relaxed);
    if (zero >= 0) {
        m_ended = true;
        if (kept == 0)
            return 0;
    }
    return kept;
}

qint64 TextFileReader::CharactersLeft() const {
    if (!m_streaming)
        return m_loaded.size() - m_loadedPos;
    // After the mark, two bytes a character, and an odd last byte one more.
    return m_ended ? 0 : std::max<qint64>(0, (m_size - 1) / 2 - m_characters);
}

bool TextFileReader::LooksLikeText() {
    if (!m_streaming)
        return m_plausible;
    if (!m_ended) {
        // A buffer of this size is worth its cost only when text is left to read.
        std::vector<char16_t> rest(kReadChunkChars);
        while (Read(rest.data(), qsizetype(rest.size())) > 0) {
        }
    }
    return !m_failed && util::LooksLikeText(m_characters, m_size);
}

} // namespace util
