#pragma once

#include "util/Outcome.h"

#include <QFlags>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class CQuestionnaire;

namespace util {
class Progress;
}

namespace questionnaire {

// What a store may need from the program while it loads or saves.
struct StoreContext {
    // This program's version number (major * 256 + minor), which files record.
    qint32 programVersion = 0;
    // Prepares the working folder of the file at `path` and returns it, "" when it has none.
    // Stores of files that unpack ask for it; the caller cleans the folder up later.
    std::function<QString(const QString& path)> workingFolder;
    util::Progress* progress = nullptr;
};

// The parts of a questionnaire that an in-place save writes.
enum class SavePart : unsigned {
    Languages = 1,
    Captions = 2,
    SystemMessages = 4,
    Routings = 8,
};
Q_DECLARE_FLAGS(SaveParts, SavePart)
Q_DECLARE_OPERATORS_FOR_FLAGS(SaveParts)

// What the window's save writes; only batch work adds languages, so only its save writes them.
inline constexpr SaveParts kInteractiveSave =
    SaveParts(SavePart::Captions) | SavePart::SystemMessages | SavePart::Routings;
inline constexpr SaveParts kBatchSave = kInteractiveSave | SavePart::Languages;

// One kind of questionnaire file: how it is read and written. One store serves one document, so
// a store may keep what it read beside the questionnaire until the document is saved.
class QuestionnaireStore {
public:
    virtual ~QuestionnaireStore() = default;

    // Reads the file into `q`, which is empty. On failure the questionnaire's last error text
    // says why too.
    virtual util::Outcome Load(const QString& path, CQuestionnaire& q,
                               const StoreContext& context) = 0;
    // Writes a whole new file; the old one stays as it was until the new one is complete.
    virtual util::Outcome SaveWhole(const QString& path, const CQuestionnaire& q,
                                    const StoreContext& context) = 0;
    // Writes these parts into the existing file and keeps everything else the file holds. A
    // store whose files are always written whole writes them whole.
    virtual util::Outcome SaveParts(const QString& path, const CQuestionnaire& q,
                                    questionnaire::SaveParts parts, const StoreContext& context) {
        Q_UNUSED(parts);
        return SaveWhole(path, q, context);
    }
    // True when "Save As" to this kind of file first copies the current file of the same kind
    // onto the target (CopyForSaveAs) and then saves in place, which keeps what else the file
    // holds.
    virtual bool CopiesBeforeSaveAs() const { return false; }
    // Replaces `target` with a copy of `source`, whole or not at all; a file copy unless the
    // store knows better. A failure without a reason is reported as the program's standard
    // "cannot save" text.
    virtual util::Outcome CopyForSaveAs(const QString& source, const QString& target);
    // "Save As" within the type of a store that copies first: `target` becomes a copy of
    // `source` with these parts of `q` saved into it, or stays as it was when that fails. The
    // default copies beside the target, saves into the copy and renames it over the target.
    virtual util::Outcome SaveCopyAs(const QString& source, const QString& target,
                                     const CQuestionnaire& q, questionnaire::SaveParts parts,
                                     const StoreContext& context);
};

// The stores by file type. A type is recognised by the last letters of the path, whatever
// precedes them, in any letter case; a path that matches none goes to the fallback type.
class StoreRegistry {
public:
    using Factory = std::function<std::unique_ptr<QuestionnaireStore>()>;

    // Files whose path ends with `ending` have type `type`, served by stores from `factory`.
    void Register(const QString& ending, qint16 type, Factory factory);
    // Locations that begin with `prefix` (for example a server's "postgresql://"), whatever
    // they end with.
    void RegisterPrefix(const QString& prefix, qint16 type, Factory factory);
    // A type this program knows but cannot open: its files are refused with `reason`.
    void RegisterRefused(const QString& ending, qint16 type, const QString& reason);
    void RegisterFallback(qint16 type, Factory factory);

    qint16 TypeOf(const QString& path) const;
    // A new store for files like `path`, or null with the reason in `refusal`.
    std::unique_ptr<QuestionnaireStore> Create(const QString& path, QString& refusal) const;

private:
    struct Entry {
        QString ending;
        qint16 type = 0;
        Factory factory;
        QString refusal;
        bool prefix = false; // `ending` is what the location begins with
    };
    const Entry* Find(const QString& path) const;

    std::vector<Entry> m_prefixes;
    std::vector<Entry> m_entries; // the longest endings first
    Entry m_fallback;
};

// The four kinds of questionnaire files; the numbers are those a document records.
enum class FileType : qint16 { Database = 0, Exchange = 1, Campaign = 2, Xml = 3 };

// The stores of the questionnaire's own files: ".qex" packages, ".xml" files, and databases for
// every other ending. ".qew" campaigns are refused until a campaign store is registered.
StoreRegistry StandardStores();

// The type as the standard stores tell it from the last three letters of the path.
FileType FileTypeOf(const QString& path);

} // namespace questionnaire
