// Bytes of a translated file, imported into a small questionnaire with options taken from the
// first byte. A refused file must change nothing; the result is a count or a known code.
#include "FuzzInput.h"
#include "FuzzQuestionnaire.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QString path = FuzzInputFile(QStringLiteral("translated.txt"), data + 1, size - 1);

    CQuestionnaire q = FuzzQuestionnaire();
    const CQuestionnaire before = q;
    questionnaire::CaptionList captions;
    questionnaire::BuildCaptionList(q, captions, false);
    exchange::ImportOptions options;
    options.onlyUnchanged = flags & 1;
    options.copyIdentical = flags & 2;
    options.referenceLanguage = 1033;
    options.languages = {1033, 1036, 1031};
    if (flags & 8)
        options.explicitLanguages = {1033, 1031};
    util::RecordedMessages recorded;
    util::NoMessages silent;
    util::Messages& messages = (flags & 4) ? static_cast<util::Messages&>(silent) : recorded;
    const qint32 result = exchange::ImportTranslatedFile(q, path, options, captions, messages);
    if (result < 0 && (result < -19 || result > -10 || !(q == before)))
        std::abort();
    // A refusal says why, when anyone listens.
    if (!(flags & 4) && result < 0 && recorded.messages.isEmpty())
        std::abort();
    return 0;
}
