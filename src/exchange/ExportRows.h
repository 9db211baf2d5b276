#pragma once

#include "exchange/ExportFile.h"
#include "questionnaire/CaptionFilters.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/LocalisedText.h"

#include <QList>
#include <QSet>
#include <QString>

#include <vector>

class CModalite;
class CQuestion;
class CQuestionnaire;

namespace exchange {

// A caption row that passed the export's filters.
struct ExportRow {
    qint32 questionId = 0;
    qint32 responseId = 0;
    // The caption in each exported language, in the order of the options' languages.
    const std::vector<const QString*>* texts = nullptr;
    const CQuestion* question = nullptr; // null for system messages and routings
    const CModalite* response = nullptr; // set on response rows
};

// Decides which rows of the caption list an export writes and reads their texts, the same for
// every file format: the kinds, versions, visibility, "translated" and duplicates filters. One
// selector serves one thread; the duplicates filter needs the rows in order on one selector.
class RowSelector {
public:
    RowSelector(const CQuestionnaire& q, const ExportOptions& options,
                const questionnaire::VisibilityFilter* visibility);

    // Row `k` of the caption list; false when a filter drops it. `row` stays valid until the
    // next call.
    bool Select(const questionnaire::CaptionList& captions, qsizetype k, ExportRow& row);

private:
    struct Resolved {
        bool keep = false;
        const CLocalisedText* texts = nullptr; // null: empty in every language, or system message
        bool systemMessage = false;
        const CQuestion* question = nullptr;
        const CModalite* response = nullptr;
    };
    Resolved Resolve(qint32 questionId, qint32 responseId) const;

    const CQuestionnaire& m_q;
    const ExportOptions& m_options;
    const LanguageColumns m_columns;
    const questionnaire::VisibilityFilter* m_visibility;
    QSet<QString> m_seenReferences;
    const QString m_empty;
    std::vector<const QString*> m_texts;
    QList<QString> m_messageTexts; // a system message's texts, which are computed
};

} // namespace exchange
