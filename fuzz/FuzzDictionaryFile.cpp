// Bytes of a dictionary file: a dictionary that loads must save and load back to the same
// entries; nothing may crash, hang or allocate by a count read from the file.
#include "FuzzInput.h"
#include "dictionary/Dictionary.h"
#include "util/Messages.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString path = FuzzInputFile(QStringLiteral("input.dic"), data, size);
    const QString copy = path + QStringLiteral(".copy");

    util::RecordedMessages messages;
    CDictionary dictionary;
    if (!dictionary.Load(path, messages))
        return 0;
    if (!dictionary.Save(copy, messages))
        std::abort();
    CDictionary again;
    if (!again.Load(copy, messages) || again.GetEntryCount() != dictionary.GetEntryCount())
        std::abort();
    for (int i = 0; i < again.GetEntryCount(); ++i)
        if (again.GetEntry(i).m_texts != dictionary.GetEntry(i).m_texts)
            std::abort();
    return 0;
}
