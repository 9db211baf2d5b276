#pragma once

#include <QByteArray>
#include <QString>

class CMarkup;
class CQuestionnaire;

namespace questionnaire {

// The declaration line that starts every XML questionnaire file we write.
inline constexpr char16_t kXmlDeclaration[] = u"<?xml version=\"1.0\" encoding=\"Unicode\" ?>";

// Reads an XML questionnaire file: UTF-16LE when it starts with FF FE, else text in the ANSI
// code page. On failure the questionnaire's last error text says why.
bool ReadXmlFile(const QString& path, CQuestionnaire& q);

// The bytes of such a file for a document: FF FE, the declaration line and CR LF, the document.
QByteArray XmlFileBytes(const CMarkup& doc);

// Writes the file as FF FE, the declaration line and CR LF, then the document, all UTF-16LE.
// The old file stays untouched unless the whole new one was written.
bool WriteXmlFile(const QString& path, const CQuestionnaire& q);

} // namespace questionnaire
