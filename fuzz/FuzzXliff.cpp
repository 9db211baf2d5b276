// Bytes of an XLIFF file, imported into a small questionnaire with options taken from the first
// byte. A refused file must change nothing; the result is a count or a known code.
#include "FuzzInput.h"
#include "FuzzQuestionnaire.h"
#include "exchange/XliffFile.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QString path = FuzzInputFile(QStringLiteral("translated.xlf"), data + 1, size - 1);
    CQuestionnaire q = FuzzQuestionnaire();
    const CQuestionnaire before = q;
    questionnaire::CaptionList captions;
    questionnaire::BuildCaptionList(q, captions, false);
    exchange::ImportOptions options;
    options.onlyUnchanged = flags & 1;
    options.copyIdentical = flags & 2;
    options.referenceLanguage = 1033;
    options.languages = {1033, 1036, 1031};
    util::RecordedMessages messages;
    const qint32 result = exchange::ImportXliff(q, path, options, captions, messages);
    if (result < 0 &&
        (result < -19 || result > -10 || !(q == before) || messages.messages.isEmpty()))
        std::abort();
    return 0;
}
