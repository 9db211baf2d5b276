// Arbitrary bytes as a questionnaire database file: a refusal must say why, and whatever reads
// must write and read back to the same questionnaire.
#include "FuzzInput.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/formats/QesDatabase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static int argc = 1;
    static char name[] = "fuzz_qes_reader";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv); // the database driver is a plugin
    const QString path = FuzzInputFile(QStringLiteral("input.qes"), data, size);
    QFile::remove(path + QStringLiteral("-journal")); // left by an earlier input
    const QString copy = path + QStringLiteral(".copy");

    CQuestionnaire q;
    const bool read = q.Read(path, true, true, true, true, true, dbQesFile, 0x100, true);
    if (!questionnaire::QesStatusMeansRead(q.GetStatus())) {
        if (read || q.GetLastError().isEmpty() || q.GetNbreQuestion() != 0)
            std::abort();
        return 0;
    }
    if (!questionnaire::WriteQesFile(copy, q, 0x100))
        std::abort();
    CQuestionnaire again;
    if (!again.Read(copy, true, true, true, true, true, dbQesFile, 0x100, true) || !(again == q))
        std::abort();
    return 0;
}
