// Bytes of an XML questionnaire file: whatever reads must write and read back to the same model.
#include "questionnaire/Markup.h"
#include "questionnaire/Questionnaire.h"
#include "util/AnsiCodePage.h"
#include "util/TextFile.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool fixedCodePage = [] {
        util::AnsiCodePage::SetCurrent(1252);
        return true;
    }();
    (void)fixedCodePage;
    const QString text =
        util::DecodeText(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    CMarkup doc;
    doc.SetDoc(text);
    CQuestionnaire q;
    if (!q.FromXML(doc)) {
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
