#include "dictionary/DictionaryPasses.h"

#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionTable.h"
#include "questionnaire/Questionnaire.h"
#include "util/Progress.h"

namespace dictionary {

namespace {

// The row's cells as the grid shows them, read before anything is written.
QStringList Cells(const questionnaire::CaptionTable& table, qsizetype row) {
    QStringList cells;
    for (int column = 0; column < table.ColumnCount(); ++column)
        cells.append(table.Text(row, column));
    return cells;
}

// Only a question's long and short captions and its responses take translations: the lookups
// of the other rows find nothing, deliberately.
bool Store(CQuestionnaire& q, qint32 questionId, qint32 responseId, qint32 language,
           const QString& text) {
    int index = 0;
    if (!q.FindQuestionById(questionId, index))
        return false;
    CQuestion* question = q.GetAdrQuestion(index);
    if (responseId == questionnaire::kLongCaption) {
        question->SetLocalisedLongCaption(language, text);
        return true;
    }
    if (responseId == questionnaire::kShortCaption) {
        question->SetLocalisedShortCaption(language, text);
        return true;
    }
    CModalite* response = nullptr;
    if (!question->FindAdrModaliteById(responseId, response))
        return false;
    response->SetLocalisedLongCaption(language, text);
    return true;
}

} // namespace

int AutoTranslate(questionnaire::CaptionTable& table, const CDictionary& dictionary,
                  util::Progress* progress) {
    CQuestionnaire* q = table.Questionnaire();
    if (!q)
        return 0;
    int count = 0;
    util::ProgressScope scope(progress, Tr(strings::kTranslating), table.RowCount());
    for (qsizetype row = 0; row < table.RowCount() && scope.Advance(row); ++row) {
        const QStringList cells = Cells(table, row);
        for (qsizetype target = 0; target < cells.size(); ++target) {
            if (!cells[target].isEmpty())
                continue;
            for (qsizetype source = 0; source < cells.size(); ++source) {
                QString translation;
                if (cells[source].isEmpty() ||
                    !dictionary.Translate(cells[source], table.ColumnLanguage(int(source)),
                                          table.ColumnLanguage(int(target)), translation))
                    continue;
                if (Store(*q, table.QuestionId(row), table.ResponseId(row),
                          table.ColumnLanguage(int(target)), translation))
                    ++count;
            }
        }
    }
    if (count > 0)
        table.QuestionnaireChanged();
    return count;
}

bool SendToDictionary(const questionnaire::CaptionTable& table, qsizetype first, qsizetype last,
                      CDictionary& dictionary, ConflictChooser& chooser, int& added,
                      util::Progress* progress) {
    first = std::max<qsizetype>(first, 0);
    last = std::min(last, table.RowCount() - 1);
    util::ProgressScope scope(progress, Tr(strings::kSending), last - first + 1);
    for (qsizetype row = first; row <= last; ++row) {
        if (!scope.Advance(row - first))
            return false;
        const QStringList cells = Cells(table, row);
        CDicEntry::Texts texts;
        for (qsizetype c = 0; c < cells.size(); ++c)
            if (!cells[c].isEmpty())
                texts[table.ColumnLanguage(int(c))] = cells[c];
        if (texts.size() > 1 && !dictionary.AddWithConflicts(texts, added, chooser))
            return false;
    }
    return true;
}

} // namespace dictionary
