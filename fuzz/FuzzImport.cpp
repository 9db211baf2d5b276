// Bytes of a translated file, imported into a small questionnaire with options taken from the
// first byte. A refused file must change nothing; the result is a count or a known code.
#include "FuzzInput.h"
#include "FuzzQuestionnaire.h"
#include "exchange/ImportFile.h"
#include "util/Messages.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QString path = FuzzInputFile(QStringLiteral("translated.txt"), data + 1, size - 1);

    FuzzImportCase c(flags);
    util::RecordedMessages recorded;
    util::NoMessages silent;
    util::Messages& messages = (flags & 4) ? static_cast<util::Messages&>(silent) : recorded;
    const qint32 result =
        exchange::ImportTranslatedFile(c.q, path, c.options, c.captions, messages);
    if (result < 0 && (result < -19 || result > -10 || !(c.q == c.before)))
        std::abort();
    // A refusal says why, when anyone listens.
    if (!(flags & 4) && result < 0 && recorded.messages.isEmpty())
        std::abort();
    return 0;
}
