#include "questionnaire/XmlFile.h"

#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "util/TextFile.h"

#include <QFile>
#include <QSaveFile>
#include <QtEndian>

namespace questionnaire {

namespace {
bool WriteUtf16(QSaveFile& file, const QString& text) {
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    const qint64 bytes = text.size() * 2;
    return file.write(reinterpret_cast<const char*>(text.utf16()), bytes) == bytes;
#else
    QByteArray le(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<quint16>(text.utf16(), text.size(), le.data());
    return file.write(le) == le.size();
#endif
}

} // namespace

bool ReadXmlFile(const QString& path, CQuestionnaire& q) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        q.m_lastError = QStringLiteral("Cannot open the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        q.m_lastError = QStringLiteral("Cannot read the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    const QString text = util::DecodeText(bytes);
    CMarkup doc;
    if (!doc.SetDoc(text)) {
        q.Clear();
        q.m_lastError = QStringLiteral("The file '%1' holds no XML").arg(path);
        return false;
    }
    return q.FromXML(doc);
}

bool WriteXmlFile(const QString& path, const CQuestionnaire& q) {
    CMarkup doc;
    q.GetQuestionsAsXML(doc, true, true);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        q.m_lastError =
            QStringLiteral("Cannot create the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    const bool written = file.write("\xFF\xFE", 2) == 2 &&
                         WriteUtf16(file, QString::fromUtf16(kXmlDeclaration) +
                                              QStringLiteral("\r\n")) &&
                         WriteUtf16(file, doc.GetDoc());
    if (!written || !file.commit()) {
        q.m_lastError =
            QStringLiteral("Cannot write the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace questionnaire
