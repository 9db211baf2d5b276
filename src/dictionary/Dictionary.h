#pragma once

#include "dictionary/DicEntry.h"
#include "dictionary/DicLanguage.h"

#include <QString>

#include <memory>
#include <vector>

class ConflictChooser;

namespace util {
class Messages;
class Progress;
} // namespace util

// The translation memory: entries numbered by their position (deleted ones stay, so numbers do
// not move while the program runs) and, per language, an index from text to entries.
class CDictionary {
public:
    static constexpr qint32 kFormatVersion = 101;

    // Reads the file; a missing or damaged file says so and leaves the entries read before. A
    // file that is there but was not read whole (damaged, unreadable, or a load the user stopped)
    // is kept as a backup before anything is saved over it.
    bool Load(const QString& path, util::Messages& messages, util::Progress* progress = nullptr);
    // Replaces the file whole, or leaves it as it was.
    bool Save(const QString& path, util::Messages& messages, util::Progress* progress = nullptr);

    void AddEntry(const CDicEntry::Texts& texts);
    // Throws std::out_of_range for a number outside the list.
    void DeleteEntry(qint32 number);
    CDicEntry& GetEntry(qint32 number);
    const CDicEntry& GetEntry(qint32 number) const;
    int GetEntryCount() const { return int(m_entries.size()); }

    CDicLanguage* FindLanguage(qint32 language);
    const CDicLanguage* FindLanguage(qint32 language) const;
    int GetLanguageCount() const { return int(m_languages.size()); }
    const CDicLanguage& GetLanguage(int index) const { return *m_languages[size_t(index)]; }

    // The lowest-numbered entry whose `from` text is `text` exactly and that has a `to` text.
    bool Translate(const QString& text, qint32 from, qint32 to, QString& translation) const;

    // Adds a sent row as a new entry, merges it into the one entry it matches, or lets the
    // chooser decide; false when the chooser cancelled. `added` counts new entries.
    bool AddWithConflicts(const CDicEntry::Texts& row, int& added, ConflictChooser& chooser);

    bool IsModified() const { return m_modified; }
    void SetModified(bool modified) { m_modified = modified; }

private:
    CDicLanguage& LanguageFor(qint32 language);
    bool KeepDamagedFile(const QString& path, util::Messages& messages);

    std::vector<std::unique_ptr<CDicEntry>> m_entries;
    std::vector<std::unique_ptr<CDicLanguage>> m_languages;
    bool m_modified = false;
    QString m_damagedPath; // a file that could not be read whole: kept before it is replaced
};
