#include "util/TextFile.h"

#include "util/AnsiCodePage.h"
#include "util/StdioFileEx.h"

#include <QFile>
#include <QtEndian>
#include <QtDebug>

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
bool LooksLikeText(const QString& text, qint64 bytesRead) {
    const quint32 needed = quint32(bytesRead / 2) - 20u;
    return text.size() >= qint32(needed);
}

void Report(const CFileException& error, bool reportErrors, const ErrorSink& sink) {
    if (!reportErrors)
        return;
    if (sink)
        sink(error.GetErrorMessage());
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

bool LoadTextFile(const QString& path, QString& text, bool reportErrors, const ErrorSink& sink) {
    text.clear();
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        Report(CFileException::ForFailedOpen(path), reportErrors, sink);
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
        Report(CFileException(CFileException::hardIO, path), reportErrors, sink);
        return false;
    }
    return LooksLikeText(text, bytesRead);
}

} // namespace util
