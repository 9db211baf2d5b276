#include "campaign/ArchiveVersion.h"

#include <cstring>

namespace varnel_wave {

CArchiveVersion::CArchiveVersion() : m_writer(std::make_unique<util::ArchiveWriter>()) {}

CArchiveVersion::CArchiveVersion(const QByteArray& bytes)
    : m_bytes(bytes), m_reader(std::make_unique<util::ArchiveReader>(m_bytes)) {}

CArchiveVersion::~CArchiveVersion() = default;

QByteArray CArchiveVersion::Bytes() const {
    return m_writer ? m_writer->Bytes() : QByteArray();
}

bool CArchiveVersion::AtEnd() const {
    return m_reader && m_reader->AtEnd();
}

void CArchiveVersion::Fail(Cause cause) {
    if (m_cause == kNone)
        m_cause = cause;
}

bool CArchiveVersion::CanWrite() {
    if (IsLoading())
        Fail(kReadOnly);
    return !Failed();
}

bool CArchiveVersion::CanRead() {
    if (IsStoring())
        Fail(kWriteOnly);
    return !Failed();
}

bool CArchiveVersion::ReadRaw(quint32& value) {
    if (!CanRead())
        return false;
    if (!m_reader->UInt32(value)) {
        Fail(kEndOfFile);
        return false;
    }
    return true;
}

void CArchiveVersion::WriteInt32(qint32 value) {
    if (CanWrite())
        m_writer->Int32(value);
}

void CArchiveVersion::WriteBool(bool value) {
    WriteInt32(value ? 1 : 0);
}

void CArchiveVersion::WriteDouble(double value) {
    if (!CanWrite())
        return;
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    m_writer->UInt32(quint32(bits & 0xFFFFFFFFu));
    m_writer->UInt32(quint32(bits >> 32));
}

void CArchiveVersion::WriteString(const QString& text) {
    if (CanWrite())
        m_writer->String(text);
}

void CArchiveVersion::WriteDateTime(double oleDate) {
    WriteInt32(0);
    WriteDouble(oleDate);
}

void CArchiveVersion::ReadInt32(qint32& value) {
    quint32 raw = 0;
    if (ReadRaw(raw))
        value = qint32(raw);
}

void CArchiveVersion::ReadBool(bool& value) {
    quint32 raw = 0;
    if (ReadRaw(raw))
        value = raw != 0;
}

void CArchiveVersion::ReadDouble(double& value) {
    quint32 low = 0;
    quint32 high = 0;
    if (!ReadRaw(low) || !ReadRaw(high))
        return;
    const quint64 bits = (quint64(high) << 32) | low;
    std::memcpy(&value, &bits, sizeof value);
}

void CArchiveVersion::ReadString(QString& text) {
    if (!CanRead())
        return;
    QString read;
    if (!m_reader->String(read)) {
        Fail(kEndOfFile);
        return;
    }
    text = read;
}

void CArchiveVersion::ReadDateTime(double& oleDate) {
    qint32 status = 0;
    double date = 0;
    ReadInt32(status);
    ReadDouble(date);
    if (!Failed())
        oleDate = status == 0 ? date : 0;
}

void CArchiveVersion::SkipInt32() {
    quint32 ignored = 0;
    ReadRaw(ignored);
}

void CArchiveVersion::ReadCount(qint32& count) {
    qint32 read = 0;
    ReadInt32(read);
    if (read < 0)
        Fail(kGeneric);
    count = Failed() ? 0 : read;
}

} // namespace varnel_wave
