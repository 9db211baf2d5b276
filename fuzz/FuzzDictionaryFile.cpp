// Bytes of a dictionary file: a dictionary that loads must save and load back to the same
// entries; nothing may crash, hang or allocate by a count read from the file.
#include "dictionary/Dictionary.h"
#include "util/AnsiCodePage.h"
#include "util/MessageSink.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    static const QString path = dir.filePath(QStringLiteral("input.dic"));
    static const QString copy = dir.filePath(QStringLiteral("copy.dic"));
    static const bool fixedCodePage = [] {
        util::AnsiCodePage::SetCurrent(1252);
        return true;
    }();
    (void)fixedCodePage;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    file.write(reinterpret_cast<const char*>(data), qint64(size));
    file.close();

    util::RecordingSink messages;
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
