#pragma once

#include <QString>

namespace util {

// Removes a folder with everything in it, read-only files and subfolders included, without
// asking anyone. Links inside are removed, never followed. True only when the folder is gone;
// false for a folder that does not exist, for a link to a folder, and when anything inside
// resisted (the folder is then left in place with whatever remains).
bool DeleteFolder(const QString& folder);

// Renames `from` over `to` in one step, replacing an existing `to`: a reader sees either the old
// file or the new one, never a mixture. On failure `error` (when given) gets the system's reason.
bool ReplaceFile(const QString& from, const QString& to, QString* error = nullptr);

} // namespace util
