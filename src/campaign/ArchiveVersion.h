#pragma once

#include "util/Archive.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace varnel_wave {

// The archive the campaign objects serialize through: one object for both directions, as the
// objects' Serialize expects, over the project's archive reader and writer. Failures never throw:
// the first one is kept as the archive's cause, and every later operation does nothing, so that
// a caller checks once after Serialize.
class CArchiveVersion {
public:
    // The causes keep the numbers the campaign format has always reported.
    enum Cause : int {
        kNone = 0,
        kGeneric = 1,   // the bytes cannot be a campaign object (a negative count)
        kReadOnly = 2,  // a write on a loading archive
        kWriteOnly = 3, // a read on a storing archive
        kEndOfFile = 4, // a read past the end
    };

    // A storing archive.
    CArchiveVersion();
    // A loading archive over a copy of `bytes`.
    explicit CArchiveVersion(const QByteArray& bytes);
    ~CArchiveVersion();
    CArchiveVersion(const CArchiveVersion&) = delete;
    CArchiveVersion& operator=(const CArchiveVersion&) = delete;

    bool IsStoring() const { return m_writer != nullptr; }
    bool IsLoading() const { return !IsStoring(); }
    Cause GetCause() const { return m_cause; }
    bool Failed() const { return m_cause != kNone; }
    // What a storing archive has written so far; empty for a loading one.
    QByteArray Bytes() const;
    // Whether a loading archive has read every byte.
    bool AtEnd() const;

    void WriteInt32(qint32 value);
    void WriteBool(bool value);     // as a 32-bit 0 or 1
    void WriteDouble(double value); // its 8 bytes, little-endian
    void WriteString(const QString& text);
    // A 32-bit status (0, valid) followed by the OLE date as a double.
    void WriteDateTime(double oleDate);

    // Each leaves `value` as it was when the archive has failed or fails now.
    void ReadInt32(qint32& value);
    void ReadBool(bool& value); // any non-zero word is true
    void ReadDouble(double& value);
    void ReadString(QString& text);
    // A date read with a status other than valid gives 0, as an invalid date is written.
    void ReadDateTime(double& oleDate);
    // Passes over a 32-bit value without keeping it.
    void SkipInt32();
    // A count of the elements that follow; a negative one fails the archive.
    void ReadCount(qint32& count);

    // Writes when storing, reads when loading: a field goes both ways through one line.
    void Exchange(qint32& value) { IsStoring() ? WriteInt32(value) : ReadInt32(value); }
    void Exchange(bool& value) { IsStoring() ? WriteBool(value) : ReadBool(value); }
    void Exchange(double& value) { IsStoring() ? WriteDouble(value) : ReadDouble(value); }
    void Exchange(QString& text) { IsStoring() ? WriteString(text) : ReadString(text); }
    void ExchangeDateTime(double& oleDate) {
        IsStoring() ? WriteDateTime(oleDate) : ReadDateTime(oleDate);
    }

private:
    bool CanWrite();
    bool CanRead();
    void Fail(Cause cause);
    bool ReadRaw(quint32& value);

    std::unique_ptr<util::ArchiveWriter> m_writer;
    QByteArray m_bytes; // the reader refers to it, so it is declared first
    std::unique_ptr<util::ArchiveReader> m_reader;
    Cause m_cause = kNone;
};

} // namespace varnel_wave
