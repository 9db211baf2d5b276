#pragma once

#include <QString>
#include <QStringList>

class QTextStream;

namespace util {
class Messages;
class Progress;
} // namespace util

namespace app {

class AppContext;

// The command line of batch work: `translator FILE option...`, each option one argument, a flag
// or a key and value joined by a colon.
struct BatchOptions {
    enum class Operation {
        None,
        Export,
        Translate,
        AddLanguage,
        ListCaptions,
        AutoTranslate,
        SendDictionary,
        SaveAs
    };

    QString file;
    Operation operation = Operation::None;
    QString path; // of `export`, `translate` and `saveas`, which share it
    QString languages;
    QString reference;
    QString headers;
    QString dictionary; // the dictionary file instead of the profile's
    QString xliff;      // the XLIFF version of an export to .xlf or .xliff: "1.2" or "2.0"
    bool importUnchanged = false;
    bool copyIdentical = false;
    bool excludeNonVisible = false;
    bool excludeRouting = false;
    bool excludeMessage = false;
    bool excludeTranslated = false;
    bool excludeDuplicates = false;
};

// Reads the options from the third argument on; unknown options and arguments without a colon
// are ignored without a word, and the last of repeated options wins.
BatchOptions ParseBatchOptions(const QStringList& arguments);

// Whether the command line asks for batch work; otherwise the program opens its window.
bool IsBatchWork(const QStringList& arguments);

// Does the batch work the command line asks for. Returns false when it asks for none (the file
// then opens in the window); otherwise the exit code is in `app.exitCode`. Messages that the
// window would show go to `messages`; long work reports to `progress` when given.
bool RunBatch(AppContext& app, const QStringList& arguments, util::Messages& messages,
              QTextStream& out, util::Progress* progress = nullptr);

// The exit code as a POSIX status keeps it: its low 8 bits.
int PosixStatus(qint32 exitCode);

} // namespace app
