#pragma once

#include "util/Outcome.h"

#include <QString>
#include <QStringView>

#include <functional>

class CQuestionnaire;

namespace util {
class Progress;
}

namespace questionnaire {

// The declaration line that starts every XML questionnaire file we write.
inline constexpr char16_t kXmlDeclaration[] = u"<?xml version=\"1.0\" encoding=\"Unicode\" ?>";

// Takes the text of a document piece by piece; false stops the writing.
using XmlTextSink = std::function<bool(QStringView)>;
// Takes the bytes of a file piece by piece; false stops the writing.
using XmlByteSink = std::function<bool(const char*, qint64)>;

// Reads an XML questionnaire file: UTF-16LE when it starts with FF FE, else text in the ANSI
// code page. On failure the reason is also the questionnaire's last error text.
util::Outcome ReadXmlFile(const QString& path, CQuestionnaire& q,
                          util::Progress* progress = nullptr);

class XmlScanner;
// Reads a document into the questionnaire from a scanner; on failure the questionnaire is left
// empty with the reason as its last error text.
bool ReadXmlDocument(XmlScanner& scanner, CQuestionnaire& q, util::Progress* progress = nullptr,
                     qint64 totalCharacters = 0);

// The questionnaire's XML form, handed to `sink` in pieces. False when the sink refused a piece
// or the user stopped the work.
bool WriteQuestionnaireXml(const CQuestionnaire& q, bool includeTexts, bool includeRoutings,
                           const XmlTextSink& sink, util::Progress* progress = nullptr);

// The bytes of an XML questionnaire file: FF FE, the declaration line and CR LF, then the
// document, all UTF-16LE.
bool WriteXmlDocument(const CQuestionnaire& q, bool includeTexts, bool includeRoutings,
                      const XmlByteSink& sink, util::Progress* progress = nullptr);

// Writes such a file with everything in it. The old file stays untouched unless the whole new
// one was written.
util::Outcome WriteXmlFile(const QString& path, const CQuestionnaire& q,
                           util::Progress* progress = nullptr);

} // namespace questionnaire
