#pragma once

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QString>

#include <atomic>

namespace util {

class Messages;

// Writes the text as UTF-16LE code units, without a mark; false when the device took less.
bool WriteUtf16Le(QIODevice& device, const QString& text);
// Appends the text's UTF-16LE code units to `out`.
void AppendUtf16Le(QByteArray& out, const QString& text);

// The text in a file's bytes: UTF-16LE after the mark FF FE, else ANSI bytes in the ANSI code
// page, each up to the first zero.
QString DecodeText(const QByteArray& bytes);

// Reads a whole text file: UTF-16LE after the mark FF FE, else ANSI bytes in the ANSI code page,
// each up to the first zero. True when the file could be read and looks like text (binary files
// stop early at a zero); an empty file gives true and "". When `reportErrors` is set, a file that
// cannot be opened or read is reported to `messages`, or to the warning log without them.
bool LoadTextFile(const QString& path, QString& text, bool reportErrors,
                  Messages* messages = nullptr);

// The text of a file as LoadTextFile reads it, handed out piece by piece: a marked UTF-16 file
// is streamed from the disk rather than held whole, so a translated file of several hundred
// megabytes costs a few megabytes of memory. Other files are small and are loaded whole.
class TextFileReader {
public:
    // False when the file cannot be opened, or is small, unmarked and not text.
    bool Open(const QString& path);
    // Copies up to `max` further characters to `out`; returns how many, 0 at the end of the text
    // (the first zero character or the end of the file) and -1 when the file could not be read.
    qsizetype Read(char16_t* out, qsizetype max);
    // How many characters Read() has still to hand out, judged from the size the file had when
    // opened: never fewer, unless the file has grown since.
    qint64 CharactersLeft() const;
    // How many characters Read() has handed out; may be asked from another thread than the one
    // reading, to tell the progress of the work.
    qint64 CharactersRead() const { return m_handedOut.load(std::memory_order_relaxed); }
    // LoadTextFile's judgement: the file was read whole and its text does not end early, as the
    // text of a binary file does. Reads to the end of the text first.
    bool LooksLikeText();

private:
    qsizetype ReadUnits(char16_t* out, qsizetype max);
    QFile m_file;
    qint64 m_size = 0;
    bool m_streaming = false;
    bool m_ended = false;
    bool m_failed = false;
    qint64 m_characters = 0;  // handed out so far
    bool m_plausible = false; // of a file loaded whole
    QString m_loaded;         // the whole text of a file that is not streamed
    qsizetype m_loadedPos = 0;
    std::atomic<qint64> m_handedOut{0};
};

} // namespace util
