#include "dictionary/Dictionary.h"

#include "dictionary/ConflictList.h"
#include "dictionary/Strings.h"
#include "util/Archive.h"
#include "util/FileSystem.h"
#include "util/Messages.h"
#include "util/Progress.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <stdexcept>

using dictionary::Tr;
namespace strings = dictionary::strings;

namespace {

// One entry record: the count of pairs, then each language id and its text.
bool ReadEntry(util::ArchiveReader& reader, CDicEntry::Texts& texts) {
    quint32 count = 0;
    if (!reader.UInt32(count))
        return false;
    for (quint32 i = 0; i < count; ++i) {
        qint32 language = 0;
        QString text;
        if (!reader.Int32(language) || !reader.String(text))
            return false;
        texts[language] = text; // a repeated language overwrites the earlier text
    }
    return true;
}
} // namespace

CDicLanguage& CDictionary::LanguageFor(qint32 language) {
    if (CDicLanguage* known = FindLanguage(language))
        return *known;
    m_languages.push_back(std::make_unique<CDicLanguage>(quint32(language)));
    return *m_languages.back();
}

CDicLanguage* CDictionary::FindLanguage(qint32 language) {
    for (const auto& l : m_languages)
        if (qint32(l->m_id) == language)
            return l.get();
    return nullptr;
}

const CDicLanguage* CDictionary::FindLanguage(qint32 language) const {
    return const_cast<CDictionary*>(this)->FindLanguage(language);
}

void CDictionary::AddEntry(const CDicEntry::Texts& texts) {
    const qint32 number = qint32(m_entries.size());
    m_entries.push_back(std::make_unique<CDicEntry>(texts, number));
    for (const auto& [language, text] : texts)
        LanguageFor(language).Add(text, number);
    m_modified = true;
}

CDicEntry& CDictionary::GetEntry(qint32 number) {
    if (number < 0 || size_t(number) >= m_entries.size())
        throw std::out_of_range("dictionary entry number out of range");
    return *m_entries[size_t(number)];
}

const CDicEntry& CDictionary::GetEntry(qint32 number) const {
    return const_cast<CDictionary*>(this)->GetEntry(number);
}

void CDictionary::DeleteEntry(qint32 number) {
    CDicEntry& entry = GetEntry(number);
    if (!entry.m_deleted)
        for (const auto& [language, text] : entry.m_texts)
            if (CDicLanguage* indexed = FindLanguage(language))
                indexed->Remove(text, number);
    entry.m_deleted = true;
    m_modified = true;
}

bool CDictionary::Translate(const QString& text, qint32 from, qint32 to,
                            QString& translation) const {
    const CDicLanguage* source = FindLanguage(from);
    if (!source)
        return false;
    std::set<qint32> numbers;
    source->FindEntries(text, numbers);
    for (qint32 number : numbers) {
        const QString found = m_entries[size_t(number)]->GetText(to);
        if (!found.isEmpty()) {
            translation = found;
            return true;
        }
    }
    return false;
}

bool CDictionary::AddWithConflicts(const CDicEntry::Texts& row, int& added,
                                   ConflictChooser& chooser) {
    std::set<qint32> candidates;
    for (const auto& [language, text] : row)
        LanguageFor(language).FindEntries(text, candidates);
    if (candidates.empty()) {
        AddEntry(row);
        ++added;
        return true;
    }
    qint32 choice = *candidates.begin();
    if (candidates.size() > 1 || GetEntry(choice).HasConflict(row)) {
        choice = chooser.Choose(ConflictList(candidates, row, *this));
        if (choice == ConflictChooser::kCancelled)
            return false;
        if (choice == ConflictList::kDoNotAdd)
            return true;
        if (choice == ConflictList::kNewEntry) {
            AddEntry(row);
            ++added;
            return true;
        }
    }
    if (GetEntry(choice).MergeInto(row, choice, *this))
        m_modified = true;
    return true;
}

bool CDictionary::Load(const QString& path, util::Messages& messages, util::Progress* progress) {
    QFile file(path);
    const bool opened = file.open(QIODevice::ReadOnly);
    const QByteArray bytes = opened ? file.readAll() : QByteArray();
    const bool readWhole = opened && file.error() == QFileDevice::NoError;
    util::ArchiveReader reader(bytes);
    qint32 version = 0;
    qint32 count = 0;
    bool ok = readWhole && reader.Int32(version) && reader.Int32(count);
    util::ProgressScope scope(progress, Tr(strings::kLoading), ok ? std::max(count, 0) : 0);
    // The count is never trusted for memory: entries are added as they are read. A count below
    // one reads none.
    for (qint32 i = 0; ok && i < count; ++i) {
        if (!scope.Advance(i)) {
            // Stopped by the user: the file was not read whole, so it is kept like a damaged one.
            m_damagedPath = QFileInfo(path).absoluteFilePath();
            m_modified = false;
            return false;
        }
        CDicEntry::Texts texts;
        ok = ReadEntry(reader, texts);
        if (ok)
            AddEntry(texts);
    }
    m_modified = false;
    if (ok)
        return true;
    // Whatever kept it from being read (rights, a read error), a file that is there holds entries
    // that must survive the next save; only an empty one read without error holds nothing.
    const QFileInfo info(path);
    if (info.exists() && !info.isDir() && !(readWhole && bytes.isEmpty()))
        m_damagedPath = info.absoluteFilePath();
    messages.Error(Tr(strings::kCannotLoad));
    return false;
}

bool CDictionary::KeepDamagedFile(const QString& path, util::Messages& messages) {
    QString backup = path + QStringLiteral(".bak");
    for (int n = 1; QFileInfo::exists(backup); ++n)
        backup = path + QStringLiteral(".bak%1").arg(n);
    // A file this user may not read cannot be copied, but it can still be moved aside.
    if (!QFile::copy(path, backup) && !QFile::rename(path, backup))
        return false;
    messages.Warn(Tr(strings::kDamagedKept).arg(path, backup));
    m_damagedPath.clear();
    return true;
}

bool CDictionary::Save(const QString& path, util::Messages& messages, util::Progress* progress) {
    const QString folder = QFileInfo(path.left(260)).absolutePath();
    if (!QDir().mkpath(folder)) {
        messages.Error(Tr(strings::kCannotCreateDirectory));
        return false;
    }
    // A file that could not be read whole still holds entries nobody has seen: never lose it.
    if (m_damagedPath == QFileInfo(path).absoluteFilePath() && QFileInfo::exists(path) &&
        !KeepDamagedFile(path, messages))
        return false;
    util::ArchiveWriter writer;
    writer.Int32(kFormatVersion);
    qint32 kept = 0;
    for (const auto& entry : m_entries)
        kept += entry->m_deleted ? 0 : 1;
    writer.Int32(kept);
    util::ProgressScope scope(progress, Tr(strings::kSaving), qint64(m_entries.size()));
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const auto& entry = m_entries[i];
        if (!scope.Advance(qint64(i)))
            return false; // stopped by the user: the file stays as it was
        if (entry->m_deleted)
            continue;
        writer.UInt32(quint32(entry->m_texts.size()));
        for (const auto& [language, text] : entry->m_texts) {
            writer.Int32(language);
            writer.String(text);
        }
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // The old file's mode, not the process's rights: root would make a read-only file writable.
    file.setPermissions(util::ReplacementPermissions(util::ReplacementTarget(path)));
    return file.write(writer.Bytes()) == writer.Bytes().size() && file.commit();
}
