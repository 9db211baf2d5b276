// Bytes of a TMX file, sent to a dictionary holding one entry. A refused file must add nothing.
#include "FuzzInput.h"
#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/TmxFile.h"
#include "util/Messages.h"

#include <cstdint>
#include <cstdlib>

namespace {

class LeaveOut : public ConflictChooser {
public:
    qint32 Choose(const ConflictList&) override { return ConflictList::kDoNotAdd; }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString path = FuzzInputFile(QStringLiteral("memory.tmx"), data, size);
    CDictionary dictionary;
    dictionary.AddEntry({{1033, QStringLiteral("Yes")}, {1036, QStringLiteral("Oui")}});
    LeaveOut chooser;
    util::RecordedMessages messages;
    const dictionary::TmxImport result = dictionary::ImportTmx(path, dictionary, chooser, messages);
    if (result.status != dictionary::TmxImport::Status::Read &&
        (dictionary.GetEntryCount() != 1 || messages.messages.isEmpty()))
        std::abort();
    if (result.added > result.units || dictionary.GetEntryCount() != 1 + result.added)
        std::abort();
    return 0;
}
