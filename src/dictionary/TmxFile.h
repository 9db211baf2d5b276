#pragma once

#include <QString>

class CDictionary;
class ConflictChooser;

namespace util {
class Messages;
}

// The translation memory as TMX 1.4b, the format translation tools share memories in: one
// translation unit per entry, one variant per language, languages as their tags ("en-US").
namespace dictionary {

// A path ending in ".tmx", in any letter case.
bool IsTmxPath(const QString& path);

// Writes every entry not deleted; false, with the reason shown, when the file could not be
// written whole (an old file then stays as it was). `units` receives the number written.
bool ExportTmx(const QString& path, const CDictionary& dictionary, util::Messages& messages,
               qint64* units = nullptr);

// What reading a TMX file found.
struct TmxImport {
    enum class Status { Read, CannotRead, NotTmx, Cancelled };
    Status status = Status::Read;
    int added = 0;   // new entries
    int units = 0;   // units with two languages or more, sent to the dictionary
    int skipped = 0; // units with fewer languages the program knows
};

// Sends every unit with texts in two languages or more to the dictionary, as sending caption rows
// does: a unit matching one entry is merged into it, one matching none is added, and the others
// go to `chooser`. The file is read and checked whole before anything is sent.
TmxImport ImportTmx(const QString& path, CDictionary& dictionary, ConflictChooser& chooser,
                    util::Messages& messages);

} // namespace dictionary
