#include "dictionary/ConflictList.h"

#include "dictionary/DicLanguage.h"
#include "dictionary/Dictionary.h"
#include "dictionary/Strings.h"
#include "util/Messages.h"

namespace {
QString ExistingLabel(qint32 number) {
    return util::WithCount(dictionary::Tr(dictionary::strings::kExistingEntry), number + 1);
}
} // namespace

ConflictList::ConflictList(const std::set<qint32>& candidates, const CDicEntry::Texts& row,
                           const CDictionary& dictionary)
    : m_dictionary(dictionary) {
    // The first label is the existing-entry format applied to -2, as the dialog always showed.
    m_rows.push_back({std::make_unique<CDicEntry>(), kDoNotAdd, ExistingLabel(kDoNotAdd)});
    m_rows.push_back({std::make_unique<CDicEntry>(row, kNewEntry), kNewEntry,
                      dictionary::Tr(dictionary::strings::kNewEntry)});
    for (qint32 number : candidates)
        m_rows.push_back({std::make_unique<CDicEntry>(dictionary.GetEntry(number)), number,
                          ExistingLabel(number)});
}

int ConflictList::ColumnCount() const {
    return m_dictionary.GetLanguageCount() + 1;
}

QString ConflictList::Cell(int gridRow, int gridColumn) const {
    if (gridRow == 0)
        return gridColumn == 0 ? QString()
                               : m_dictionary.GetLanguage(gridColumn - 1).m_abbreviation;
    if (gridColumn == 0)
        return Label(gridRow - 1);
    return Entry(gridRow - 1).GetText(qint32(m_dictionary.GetLanguage(gridColumn - 1).m_id));
}
