#include "util/StdioFileEx.h"

#include "util/AnsiCodePage.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

// Texts shown to the user; "%1" is the file's path.
const char* const kGenericText = "An unknown error occurred while accessing %1.";
const char* const kNotFoundText = "%1 was not found.";
const char* const kBadPathText = "%1 contains an incorrect path.";
const char* const kAccessDeniedText = "Access to %1 was denied.";
const char* const kHardIoText = "A hardware I/O error was reported while accessing %1.";

const char kUtf16Mark[] = "\xFF\xFE";
constexpr qint64 kPeekSize = 4096;

bool IsLineEnd(QChar c) {
    return c == QLatin1Char('\r') || c == QLatin1Char('\n');
}

QByteArray Utf16LeBytes(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size() * 2);
    for (QChar c : text) {
        bytes.append(char(c.unicode() & 0xFF));
        bytes.append(char(c.unicode() >> 8));
    }
    return bytes;
}

// A base letter followed by combining marks becomes the precomposed letter where one exists,
// so that "e" + U+0301 is written as the code page's "é" rather than "e#".
QString Composed(const QString& text) {
    return text.normalized(QString::NormalizationForm_C);
}

QIODevice::OpenMode QtOpenMode(quint32 flags) {
    const quint32 access = flags & (CStdioFileEx::modeWrite | CStdioFileEx::modeReadWrite);
    const bool create = flags & CStdioFileEx::modeCreate;
    const bool truncate = create && !(flags & CStdioFileEx::modeNoTruncate);
    if (!create)
        return access == CStdioFileEx::modeRead
                   ? QIODevice::ReadOnly
                   // Write-only would truncate; an existing file opened for writing keeps its
                   // content until it is written over.
                   : QIODevice::ReadWrite | QIODevice::ExistingOnly;
    if (truncate)
        return access == CStdioFileEx::modeWrite ? QIODevice::WriteOnly | QIODevice::Truncate
                                                 : QIODevice::ReadWrite | QIODevice::Truncate;
    return QIODevice::ReadWrite;
}

} // namespace

CFileException::CFileException(Cause cause, const QString& path)
    : CFileException(cause, path, MessageFor(cause, path)) {}

CFileException::CFileException(Cause cause, const QString& path, const QString& message)
    : std::runtime_error(message.toStdString()), m_cause(cause), m_path(path), m_message(message) {}

CFileException CFileException::ForFailedOpen(const QString& path) {
    if (path.isEmpty())
        return CFileException(badPath, path);
    const QFileInfo info(path);
    if (!info.exists())
        return CFileException(QFileInfo(info.absolutePath()).isDir() ? fileNotFound : badPath,
                              path);
    // The file is there, so the system refused it (permissions, a folder, a lock).
    return CFileException(accessDenied, path);
}

QString CFileException::MessageFor(Cause cause, const QString& path) {
    const char* text = kGenericText;
    switch (cause) {
    case fileNotFound:
        text = kNotFoundText;
        break;
    case badPath:
        text = kBadPathText;
        break;
    case accessDenied:
        text = kAccessDeniedText;
        break;
    case hardIO:
        text = kHardIoText;
        break;
    case generic:
        break;
    }
    return QString::fromLatin1(text).arg(QDir::toNativeSeparators(path));
}

CStdioFileEx::CStdioFileEx(const QString& path, quint32 openFlags) {
    if (!Open(path, openFlags))
        throw CFileException::ForFailedOpen(path);
}

quint32 CStdioFileEx::AdjustFlags(const QString& path, quint32 openFlags, bool& unicodeFile) {
    unicodeFile = false;
    // Only a text file opened for reading without being created can already hold UTF-16.
    // Reading it in binary keeps the text-mode line-end handling away from the 16-bit units.
    const quint32 deciding = openFlags & (modeWrite | modeCreate | typeText);
    if (deciding == typeText && HasUtf16Mark(path)) {
        unicodeFile = true;
        openFlags = (openFlags & ~typeText) | typeBinary;
    }
    return openFlags;
}

bool CStdioFileEx::Open(const QString& path, quint32 openFlags, QString* errorText) {
    Close();
    m_openFlags = AdjustFlags(path, openFlags, m_unicodeFile);
    m_filePath = path;
    m_file.setFileName(path);
    if (!path.isEmpty() && m_file.open(QtOpenMode(m_openFlags)))
        return true;
    m_unicodeFile = false;
    if (errorText != nullptr)
        *errorText = CFileException::ForFailedOpen(path).GetErrorMessage();
    return false;
}

void CStdioFileEx::Close() {
    if (m_file.isOpen())
        m_file.close();
}

bool CStdioFileEx::CanRead() const {
    return m_file.isOpen() && (m_openFlags & (modeWrite | modeReadWrite)) != modeWrite;
}

bool CStdioFileEx::CanWrite() const {
    return m_file.isOpen() && (m_openFlags & (modeWrite | modeReadWrite)) != modeRead;
}

QString CStdioFileEx::ReadUtf16Line() {
    QString line;
    for (;;) {
        const QByteArray chunk = m_file.peek(kPeekSize);
        const qsizetype units = chunk.size() / 2;
        if (units == 0)
            return line; // an odd last byte is no character
        qsizetype take = units;
        bool lineEnd = false;
        for (qsizetype i = 0; i < units && !lineEnd; ++i) {
            const char16_t unit = char16_t(uchar(chunk[2 * i]) | uchar(chunk[2 * i + 1]) << 8);
            line.append(QChar(unit));
            if (unit == u'\n') {
                take = i + 1;
                lineEnd = true;
            }
        }
        m_file.skip(take * 2);
        if (lineEnd)
            return line;
    }
}

QString CStdioFileEx::ReadAnsiLine() {
    // No double-byte code page uses 0x0A as a trail byte, so the byte search is safe.
    const QByteArray bytes = m_file.readLine();
    QString line;
    // An unusable code page must not make the rest of the file look like its end.
    if (!util::AnsiCodePage::ToUnicode(bytes, util::AnsiCodePage::kSystem, line))
        line = QString::fromLatin1(bytes);
    return line;
}

bool CStdioFileEx::ReadRawLine(QString& line) {
    line = (m_openFlags & typeBinary) ? ReadUtf16Line() : ReadAnsiLine();
    return !line.isEmpty();
}

bool CStdioFileEx::ReadString(QString& line) {
    line.clear();
    if (!CanRead())
        return false;
    if (m_unicodeFile && m_file.pos() == 0)
        m_file.skip(2);
    if (!ReadRawLine(line))
        return false;
    if (line.endsWith(QLatin1Char('\n')))
        line.chop(1);
    // A UTF-16 line read in binary still carries its CR; cut it as the ANSI line lost its LF.
    if (line.size() > 1 && line.endsWith(QStringLiteral("\r\n")))
        line.chop(2);
    else if (!line.isEmpty() && IsLineEnd(line.back()))
        line.chop(1);
    return true;
}

void CStdioFileEx::WriteString(const QString& text) {
    if (!CanWrite())
        return;
    if (m_openFlags & modeUnicodeWrite) {
        if (m_file.pos() == 0)
            m_file.write(kUtf16Mark, 2);
        m_file.write(Utf16LeBytes(text));
        return;
    }
    QByteArray bytes;
    if (!util::AnsiCodePage::FromUnicode(Composed(text), util::AnsiCodePage::kSystem, bytes))
        return;
    // The byte count follows the character count, not the converted length: double-byte text
    // is cut short, and a shorter result (composed letters) is written as it is.
    m_file.write(bytes.constData(), std::min(bytes.size(), text.size()));
}

void CStdioFileEx::SetFilePath(const QString& path) {
    if (path.isNull())
        throw std::invalid_argument("CStdioFileEx::SetFilePath: null path");
    m_filePath = path;
}

qint64 CStdioFileEx::CountCharacters() const {
    if (!m_file.isOpen())
        return 0;
    const qint64 bytes = m_file.size();
    return m_unicodeFile ? std::max<qint64>(0, (bytes - 2) / 2) : bytes;
}

bool CStdioFileEx::HasUtf16Mark(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return file.read(2) == QByteArray(kUtf16Mark, 2);
}

int CStdioFileEx::WideToAnsi(const QChar* source, char* destination, qint16 capacity,
                             quint32 codePage) {
    if (source == nullptr || destination == nullptr || capacity < 0)
        return 0;
    QByteArray bytes;
    if (!util::AnsiCodePage::FromUnicode(Composed(QString(source)), codePage, bytes))
        return 0;
    bytes.append('\0');
    if (capacity == 0)
        return int(bytes.size());
    if (bytes.size() > capacity)
        return 0;
    std::copy(bytes.cbegin(), bytes.cend(), destination);
    return int(bytes.size());
}

bool CStdioFileEx::AnsiToWide(const char* source, QChar* destination, qint16 capacity,
                              quint32 codePage) {
    if (source == nullptr || destination == nullptr || capacity < 0)
        return false;
    QString text;
    if (!util::AnsiCodePage::ToUnicode(QByteArray(source), codePage, text))
        return false;
    text.append(QChar(0));
    if (capacity == 0)
        return true;
    if (text.size() > capacity)
        return false;
    std::copy(text.cbegin(), text.cend(), destination);
    return true;
}
