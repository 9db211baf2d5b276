// Bytes of any text file the program reads whole (translated files, XML questionnaires).
#include "FuzzInput.h"
#include "util/TextFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString path = FuzzInputFile(QStringLiteral("input.txt"), data, size);

    QString text;
    const bool plausible = util::LoadTextFile(path, text, false);
    // The text never holds a zero, and never more characters than the file has bytes.
    if (text.contains(QChar(0)) || text.size() > qsizetype(size))
        std::abort();
    // Files under 40 bytes always pass; an empty file gives an empty text.
    if (size < 40 && !plausible)
        std::abort();
    if (size == 0 && !text.isEmpty())
        std::abort();
    return 0;
}
