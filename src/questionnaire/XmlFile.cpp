#include "questionnaire/XmlFile.h"

#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "util/TextFile.h"

#include <QFile>
#include <QSaveFile>
#include <QtEndian>

namespace questionnaire {

namespace {

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

QByteArray XmlFileBytes(const CMarkup& doc) {
    QByteArray bytes("\xFF\xFE", 2);
    util::AppendUtf16Le(bytes, QString::fromUtf16(kXmlDeclaration) + QStringLiteral("\r\n"));
    util::AppendUtf16Le(bytes, doc.GetDoc());
    return bytes;
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
                         util::WriteUtf16Le(file, QString::fromUtf16(kXmlDeclaration) +
                                              QStringLiteral("\r\n")) &&
                         util::WriteUtf16Le(file, doc.GetDoc());
    if (!written || !file.commit()) {
        q.m_lastError =
            QStringLiteral("Cannot write the file '%1': %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace questionnaire
