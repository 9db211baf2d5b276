#pragma once

#include "questionnaire/CaptionList.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <vector>

class CQuestionnaire;

namespace questionnaire {

// What a caption row is, for its icon; the numbers are the order of the row icons.
enum class RowKind : int {
    LongCaption = 0,
    ShortCaption = 1,
    Response = 2,
    SystemMessage = 3,
    Routing = 4,
    Instructions = 5,
    Comments = 6,
};

// A system-message or routing row is one whatever its response id.
RowKind RowKindOf(qint32 questionId, qint32 responseId);

// Hears what changes through a caption table.
class CaptionTableListener {
public:
    virtual ~CaptionTableListener() = default;
    // The stored text of a cell changed.
    virtual void CellChanged(qsizetype row, int column) {
        Q_UNUSED(row);
        Q_UNUSED(column);
    }
    // The questionnaire was changed: its document is modified.
    virtual void QuestionnaireModified() {}
    // The rows and columns were built again.
    virtual void TableRefilled() {}
};

// Every caption of a questionnaire as rows, in the caption list's order, by its languages as
// columns: the default language first, then the others in their stored order. Cells are read
// from the questionnaire when asked for, never stored, in the escaped form a grid shows and
// exports write ("\\", "\n", "\r" and "\t" for a backslash, a line feed, a carriage return and a
// tab), except that a cell shows an accepted edit as it was typed until the table is built
// again. Rows and columns are numbered from 0.
class CaptionTable {
public:
    // Built from the questionnaire, which must outlive the table; null for none yet.
    explicit CaptionTable(CQuestionnaire* q = nullptr);

    // Builds the rows and columns again from the questionnaire (after languages were added, or
    // anything else changed which captions there are); without one the table stays as it is.
    void Refill();
    void SetQuestionnaire(CQuestionnaire* q);
    CQuestionnaire* Questionnaire() const { return m_q; }

    qsizetype RowCount() const { return m_rows.size(); }
    int ColumnCount() const { return int(m_languages.size()); }

    qint32 QuestionId(qsizetype row) const { return m_rows.questionIds[row]; }
    qint32 ResponseId(qsizetype row) const { return m_rows.responseIds[row]; }
    const QString& RowLabel(qsizetype row) const { return m_rows.labels[row]; }
    RowKind Kind(qsizetype row) const { return RowKindOf(QuestionId(row), ResponseId(row)); }
    qint32 ColumnLanguage(int column) const { return m_languages[column]; }
    // The language's short name, as column titles show it.
    QString ColumnTitle(int column) const;

    const CaptionList& Rows() const { return m_rows; }
    const QList<qint32>& Languages() const { return m_languages; }

    // The caption as stored, and as a cell shows it (an accepted edit as typed).
    QString Caption(qsizetype row, int column) const;
    QString Text(qsizetype row, int column) const;

    // Writes back a text typed into a cell, in the escaped form. False when the edit is refused,
    // and the cell then shows its old text again: an empty text in the first column (but for a
    // system message), an unknown question or response, or no questionnaire. A caption changes
    // only when the text differs (letter case counts); a system message typed back to its
    // standard text, or emptied, loses its customisation. Listeners hear of each change. An
    // accepted edit is shown as typed, whatever it stored: a typed "\\n" is stored as a
    // backslash and a line feed, which would read back as "\\\n".
    bool WriteBack(qsizetype row, int column, const QString& typed);

    // Tells the listeners that other work (an import, auto-translation) changed the
    // questionnaire, then builds the table again.
    void QuestionnaireChanged();

    void AddListener(CaptionTableListener* listener);
    void RemoveListener(CaptionTableListener* listener);

private:
    bool WriteSystemMessage(qint32 number, qint32 language, const QString& text);
    void NotifyModified(qsizetype row, int column, bool cellChanged);

    CQuestionnaire* m_q = nullptr;
    CaptionList m_rows;
    QList<qint32> m_languages;
    QHash<QPair<qsizetype, int>, QString> m_typed; // accepted edits, by row and column
    std::vector<CaptionTableListener*> m_listeners;
};

} // namespace questionnaire
