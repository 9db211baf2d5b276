#pragma once

#include <QList>
#include <QStringList>

class CQuestionnaire;

namespace questionnaire {

// Every translatable caption of a questionnaire as parallel arrays, in the fixed order that the
// grid, the export and the import share: per question its long and short captions, its
// instructions and comments (when the questionnaire allows them) and its responses; then the 42
// system messages; then the routings that carry a message.
struct CaptionList {
    QList<qint32> questionIds;
    QList<qint32> responseIds;
    QStringList labels; // row headings; empty when not asked for

    qsizetype size() const { return questionIds.size(); }
    void clear() {
        questionIds.clear();
        responseIds.clear();
        labels.clear();
    }
};

// Appends the questionnaire's captions to the list.
void BuildCaptionList(const CQuestionnaire& q, CaptionList& list, bool withLabels = true);

} // namespace questionnaire
