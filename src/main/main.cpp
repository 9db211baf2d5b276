// The program: batch work when the command line asks for it, else the window. The choice is made
// before any application object exists, so that batch work never needs a display.
#include "BuildInfo.h"
#include "app/AppContext.h"
#include "app/BatchRunner.h"
#include "app/Strings.h"
#include "ui/Strings.h"
#include "ui/WindowProgram.h"
#include "util/Messages.h"
#include "util/Progress.h"

#include <QCoreApplication>
#include <QTextStream>

#include <memory>

namespace {

const char kUsage[] =
    "Usage: translator FILE OPTION...\n"
    "\n"
    "FILE is a questionnaire: .qes (database), .qex (package), .xml, or a campaign database:\n"
    ".qew, or on a server postgresql://[user[:password]@][host][:port]/database. Each option\n"
    "is one argument, a flag or KEY:VALUE; a leading - or / is allowed; names are\n"
    "case-insensitive.\n"
    "\n"
    "Operations (the last one given wins):\n"
    "  export:PATH          write the captions to PATH for translation; PATH ending in .xlf\n"
    "                       or .xliff writes XLIFF, one file per target language\n"
    "  translate:PATH       import the translated file PATH (tab-separated text or XLIFF),\n"
    "                       then save FILE\n"
    "  saveas:TARGET        save FILE as TARGET, a file of any type or a server URI\n"
    "  addlanguage          add the languages of languages:... that FILE lacks, then save\n"
    "  listcaptions         print every caption row with its label\n"
    "  autotranslate        fill empty captions from the dictionary, then save FILE; the result\n"
    "                       is the number of captions translated\n"
    "  senddictionary       send every caption row with two languages or more to the\n"
    "                       dictionary (rows that would need a choice are left out), then save\n"
    "                       the dictionary; the result is the number of entries added\n"
    "  FILE.dic with export:PATH.tmx or translate:PATH.tmx\n"
    "                       write the dictionary FILE as TMX, or send a TMX file's units into it\n"
    "Options:\n"
    "  xliff:VERSION        the XLIFF version of an export: 1.2 (default) or 2.0\n"
    "  languages:LIST       comma-separated LCIDs or short names (1033,FRA,...):\n"
    "                       export: the columns in order (default: all, main language first);\n"
    "                       translate: the languages of columns 3, 4, ... (header not read);\n"
    "                       addlanguage: the languages to add\n"
    "  reference:LANGUAGE   translate: the source language (default: the main language)\n"
    "  headers:LIST         comma-separated column titles (export and translate)\n"
    "  dictionary:PATH      the dictionary file to use instead of the profile's\n"
    "  importunchanged      translate: only rows whose source text has not changed; the others\n"
    "                       go to UnusedStrings.txt beside the translated file\n"
    "  copyidentical        translate: apply each row to every caption with the same source\n"
    "  excludenonvisible, excluderouting, excludemessage, excludetranslated,\n"
    "  excludeduplicates    export filters\n"
    "\n"
    "The exit status is the low 8 bits of the result; the full result is the last line of\n"
    "standard output as result=N: 0 done (addlanguage, saveas), -1 FILE could not be loaded,\n"
    "-2 FILE could not be saved, -3 the dictionary could not be saved, -20 export finished\n"
    "(judge by the file), N >= 0 captions imported, -10 to -19 the translated file was refused.\n"
    "\n"
    "  translator --help | --version\n"
    "\n"
    "Without an operation, translator opens its window (with FILE when given); exit status 3\n"
    "when no display can be reached.\n";

// The exit status when the window cannot be shown.
constexpr int kNoDisplayStatus = 3;

// The arguments as the application object would give them, before one exists.
QStringList Arguments(int argc, char** argv) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

int RunWindow(int argc, char** argv, const QStringList& arguments) {
    QString why;
    if (!ui::DisplayReachable(arguments, why)) {
        QTextStream(stderr) << ui::Tr(ui::strings::kNoDisplay).arg(why) << '\n';
        return kNoDisplayStatus;
    }
    QCoreApplication::setOrganizationName(QString::fromLatin1(buildinfo::kCompany));
    QCoreApplication::setApplicationName(QString::fromLatin1(buildinfo::kProduct));
    return ui::RunWindow(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    // The window needs a QApplication and batch work must not: the choice comes first.
    const QStringList early = Arguments(argc, argv);
    const bool informational = early.size() == 2 && (early[1] == QLatin1String("--help") ||
                                                     early[1] == QLatin1String("--version"));
    if (!informational && !app::IsBatchWork(early))
        return RunWindow(argc, argv, early);
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QString::fromLatin1(buildinfo::kCompany));
    QCoreApplication::setApplicationName(QString::fromLatin1(buildinfo::kProduct));
    QTextStream out(stdout);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && arguments[1] == QLatin1String("--help")) {
        out << kUsage;
        return 0;
    }
    if (arguments.size() == 2 && arguments[1] == QLatin1String("--version")) {
        out << buildinfo::kProduct << ' ' << buildinfo::kVersion << " (" << buildinfo::kBuildDate
            << ")\n"
            << buildinfo::kLegal << '\n';
        return 0;
    }
    app::AppContext context;
    util::StandardErrorMessages messages;
    // Progress only for a person watching a terminal; scripts read nothing of it.
    std::unique_ptr<util::TerminalProgress> progress;
    if (util::TerminalProgress::Wanted())
        progress = std::make_unique<util::TerminalProgress>();
    app::RunBatch(context, arguments, messages, out, progress.get());
    out << "result=" << context.exitCode << '\n';
    out.flush();
    return app::PosixStatus(context.exitCode);
}
