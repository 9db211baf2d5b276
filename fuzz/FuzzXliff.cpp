// Bytes of an XLIFF file, imported into a small questionnaire with options taken from the first
// byte. A refused file must change nothing; the result is a count or a known code.
#include "FuzzInput.h"
#include "FuzzQuestionnaire.h"
#include "exchange/XliffFile.h"
#include "util/Messages.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const uint8_t flags = data[0];
    const QString path = FuzzInputFile(QStringLiteral("translated.xlf"), data + 1, size - 1);
    // The languages are always read from the file.
    FuzzImportCase c(flags & 3);
    util::RecordedMessages messages;
    const qint32 result = exchange::ImportXliff(c.q, path, c.options, c.captions, messages);
    if (result < 0 &&
        (result < -19 || result > -10 || !(c.q == c.before) || messages.messages.isEmpty()))
        std::abort();
    return 0;
}
