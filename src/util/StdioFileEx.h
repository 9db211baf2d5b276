#pragma once

#include <QFile>
#include <QString>

#include <stdexcept>

// Why a file could not be opened or read, with the text shown to the user.
class CFileException : public std::runtime_error {
public:
    enum Cause { generic, fileNotFound, badPath, accessDenied, hardIO };

    CFileException(Cause cause, const QString& path);

    // The cause that best explains a failed open of `path`.
    static CFileException ForFailedOpen(const QString& path);

    Cause GetCause() const { return m_cause; }
    const QString& GetFilePath() const { return m_path; }
    QString GetErrorMessage() const { return m_message; }

private:
    CFileException(Cause cause, const QString& path, const QString& message);
    static QString MessageFor(Cause cause, const QString& path);

    Cause m_cause;
    QString m_path;
    QString m_message;
};

// Line-oriented text file that reads UTF-16 (with the mark FF FE) or ANSI text, writes either,
// and returns lines without their line ends.
class CStdioFileEx {
public:
    static constexpr quint32 modeRead = 0x0000;
    static constexpr quint32 modeWrite = 0x0001;
    static constexpr quint32 modeReadWrite = 0x0002;
    static constexpr quint32 modeCreate = 0x1000;
    static constexpr quint32 modeNoTruncate = 0x2000;
    static constexpr quint32 typeText = 0x4000;
    static constexpr quint32 typeBinary = 0x8000;
    static constexpr quint32 modeUnicodeWrite = 0x20000;

    CStdioFileEx() = default;
    // Throws CFileException when the file cannot be opened.
    CStdioFileEx(const QString& path, quint32 openFlags);
    CStdioFileEx(const CStdioFileEx&) = delete;
    CStdioFileEx& operator=(const CStdioFileEx&) = delete;

    // False when the file cannot be opened; the reason goes to `errorText` when given.
    bool Open(const QString& path, quint32 openFlags, QString* errorText = nullptr);
    void Close();
    bool IsOpen() const { return m_file.isOpen(); }

    // False at end of file; an empty line is still a line.
    bool ReadString(QString& line);
    // Writes the text as it stands; no line end is added.
    void WriteString(const QString& text);

    // Throws std::invalid_argument for a null string.
    void SetFilePath(const QString& path);
    const QString& GetFilePath() const { return m_filePath; }

    qint64 GetPosition() const { return m_file.isOpen() ? m_file.pos() : 0; }
    qint64 GetLength() const { return m_file.isOpen() ? m_file.size() : 0; }
    bool Seek(qint64 position) { return m_file.isOpen() && m_file.seek(position); }
    bool SeekToEnd() { return Seek(GetLength()); }
    bool Flush() { return m_file.isOpen() && m_file.flush(); }

    // Characters in the file, not counting the mark; 0 when no file is open.
    qint64 CountCharacters() const;

    static bool HasUtf16Mark(const QString& path);
    // Converts up to and including the terminator; capacity 0 only asks for the size needed.
    // Returns the bytes written (or needed), 0 on a null pointer, a short buffer or an
    // unknown code page. Code page kSystem (all bits set) is the ANSI code page.
    static int WideToAnsi(const QChar* source, char* destination, qint16 capacity,
                          quint32 codePage);
    // Same conventions, the other way; true when the conversion succeeded.
    static bool AnsiToWide(const char* source, QChar* destination, qint16 capacity,
                           quint32 codePage);

    bool m_unicodeFile = false;
    quint32 m_openFlags = 0;

private:
    static quint32 AdjustFlags(const QString& path, quint32 openFlags, bool& unicodeFile);
    bool CanRead() const;
    bool CanWrite() const;
    bool ReadRawLine(QString& line);
    QString ReadUtf16Line();
    QString ReadAnsiLine();

    QFile m_file;
    QString m_filePath;
};
