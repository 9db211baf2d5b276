#include "dictionary/DictionaryPasses.h"

#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/Questionnaire.h"

namespace dictionary {

namespace {

// The row's cells as the grid shows them, read before anything is written.
QStringList Cells(const CQuestionnaire& q, const questionnaire::CaptionList& rows, qsizetype k,
                  const QList<qint32>& columns) {
    QStringList cells;
    for (qint32 lcid : columns)
        cells.append(questionnaire::EscapeCaption(
            questionnaire::ReadCaption(q, rows.questionIds[k], rows.responseIds[k], lcid)));
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

int AutoTranslate(CQuestionnaire& q, const questionnaire::CaptionList& rows,
                  const QList<qint32>& columns, const CDictionary& dictionary) {
    int count = 0;
    for (qsizetype k = 0; k < rows.size(); ++k) {
        const QStringList cells = Cells(q, rows, k, columns);
        for (qsizetype target = 0; target < cells.size(); ++target) {
            if (!cells[target].isEmpty())
                continue;
            for (qsizetype source = 0; source < cells.size(); ++source) {
                QString translation;
                if (cells[source].isEmpty() ||
                    !dictionary.Translate(cells[source], columns[source], columns[target],
                                          translation))
                    continue;
                if (Store(q, rows.questionIds[k], rows.responseIds[k], columns[target], translation))
                    ++count;
            }
        }
    }
    return count;
}

bool SendToDictionary(const CQuestionnaire& q, const questionnaire::CaptionList& rows,
                      const QList<qint32>& columns, qsizetype first, qsizetype last,
                      CDictionary& dictionary, ConflictChooser& chooser, int& added) {
    for (qsizetype k = std::max<qsizetype>(first, 0); k <= last && k < rows.size(); ++k) {
        const QStringList cells = Cells(q, rows, k, columns);
        CDicEntry::Texts row;
        for (qsizetype c = 0; c < cells.size(); ++c)
            if (!cells[c].isEmpty())
                row[columns[c]] = cells[c];
        if (row.size() > 1 && !dictionary.AddWithConflicts(row, added, chooser))
            return false;
    }
    return true;
}

} // namespace dictionary
