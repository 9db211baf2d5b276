// Bytes of an XML questionnaire file. Read whole and read from the file in small pieces, they
// must give the same model or the same refusal; whatever reads must write and read back the same.
#include "FuzzInput.h"
#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/formats/XmlFile.h"
#include "questionnaire/formats/XmlScanner.h"
#include "util/TextFile.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString path = FuzzInputFile(QStringLiteral("questionnaire.xml"), data, size);
    const QString text = util::DecodeText(
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    CMarkup doc;
    doc.SetDoc(text);
    CQuestionnaire q;
    const bool read = q.FromXML(doc);

    // The same text read through a buffer of a few characters, refilled at every place.
    util::TextFileReader reader;
    if (reader.Open(path) && size > 2 && data[0] == 0xFF && data[1] == 0xFE) {
        questionnaire::XmlScanner scanner(reader, 1 + size % 7);
        CQuestionnaire pieces;
        if (questionnaire::ReadXmlDocument(scanner, pieces) != read || !(pieces == q))
            std::abort();
    }
    if (!read) {
        if (q.GetLastError().isEmpty() || q.GetNbreQuestion() != 0)
            std::abort(); // a refusal must say why and leave nothing behind
        return 0;
    }
    CMarkup written;
    q.GetQuestionsAsXML(written, true, true);
    CQuestionnaire again;
    if (!again.FromXML(written) || !(again == q))
        std::abort();
    CMarkup rewritten;
    again.GetQuestionsAsXML(rewritten, true, true);
    if (rewritten.GetDoc() != written.GetDoc())
        std::abort();
    return 0;
}
