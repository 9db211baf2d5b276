#include "questionnaire/CaptionTable.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Questionnaire.h"

#include <algorithm>

namespace questionnaire {

RowKind RowKindOf(qint32 questionId, qint32 responseId) {
    if (questionId == kSystemMessageMarker)
        return RowKind::SystemMessage;
    if (questionId == kRoutingMarker)
        return RowKind::Routing;
    switch (responseId) {
    case kLongCaption:
        return RowKind::LongCaption;
    case kShortCaption:
        return RowKind::ShortCaption;
    case kInstructions:
        return RowKind::Instructions;
    case kComments:
        return RowKind::Comments;
    default:
        return RowKind::Response;
    }
}

CaptionTable::CaptionTable(CQuestionnaire* q) : m_q(q) {
    Refill();
}

void CaptionTable::SetQuestionnaire(CQuestionnaire* q) {
    m_q = q;
    if (!q) {
        m_typed.clear();
        m_rows.clear();
        m_languages.clear();
        for (CaptionTableListener* listener : m_listeners)
            listener->TableRefilled();
        return;
    }
    Refill();
}

void CaptionTable::Refill() {
    if (!m_q)
        return;
    m_languages = DefaultLanguageOrder(*m_q);
    m_typed.clear();
    m_rows.clear();
    BuildCaptionList(*m_q, m_rows, true);
    for (CaptionTableListener* listener : m_listeners)
        listener->TableRefilled();
}

QString CaptionTable::ColumnTitle(int column) const {
    return m_q ? LanguageShortName(*m_q, m_languages[column]) : QString();
}

QString CaptionTable::Caption(qsizetype row, int column) const {
    if (!m_q)
        return {};
    return ReadCaption(*m_q, QuestionId(row), ResponseId(row), m_languages[column]);
}

QString CaptionTable::Text(qsizetype row, int column) const {
    const auto typed = m_typed.constFind({row, column});
    return typed != m_typed.cend() ? *typed : EscapeCaption(Caption(row, column));
}

void CaptionTable::NotifyModified(qsizetype row, int column, bool cellChanged) {
    for (CaptionTableListener* listener : m_listeners) {
        if (cellChanged)
            listener->CellChanged(row, column);
        listener->QuestionnaireModified();
    }
}

bool CaptionTable::WriteBack(qsizetype row, int column, const QString& typed) {
    if (row < 0 || row >= RowCount() || column < 0 || column >= ColumnCount())
        return false;
    const qint32 questionId = QuestionId(row);
    const qint32 responseId = ResponseId(row);
    const qint32 language = m_languages[column];
    // The first language's captions can never be emptied here; system messages fall back to
    // their standard text instead.
    if (column == 0 && questionId != kSystemMessageMarker && typed.isEmpty())
        return false;
    const QString text = UnescapeTypedText(typed);
    if (!m_q)
        return false;
    int index = 0;
    if (questionId == kRoutingMarker) {
        const bool found = m_q->FindRoutingById(responseId, index);
        if (found)
            m_q->GetAdrFiltre(index)->SetLocalisedMessage(language, text);
        m_typed.insert({row, column}, typed);
        // The document counts as modified whether or not the routing still exists.
        NotifyModified(row, column, found);
        return true;
    }
    if (questionId == kSystemMessageMarker) {
        m_typed.insert({row, column}, typed);
        if (WriteSystemMessage(responseId, language, text))
            NotifyModified(row, column, true);
        return true;
    }
    if (!m_q->FindQuestionById(questionId, index))
        return false;
    CLocalisedText* texts = FindWritableTexts(*m_q, questionId, responseId);
    if (!texts)
        return false; // a response the question no longer has
    m_typed.insert({row, column}, typed);
    if (texts->Get(language) == text)
        return true;
    texts->Set(language, text);
    NotifyModified(row, column, true);
    return true;
}

// False when nothing changed.
bool CaptionTable::WriteSystemMessage(qint32 number, qint32 language, const QString& text) {
    // Numbers 0 and 1 are never written; a text typed back unchanged changes nothing. Otherwise
    // the caption write customises the message, or returns it to its standard text.
    if (number < kFirstSystemMessage || text == m_q->GetErrorMessage(language, number))
        return false;
    WriteCaption(*m_q, kSystemMessageMarker, number, language, text);
    return true;
}

void CaptionTable::QuestionnaireChanged() {
    for (CaptionTableListener* listener : m_listeners)
        listener->QuestionnaireModified();
    Refill();
}

void CaptionTable::AddListener(CaptionTableListener* listener) {
    if (std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end())
        m_listeners.push_back(listener);
}

void CaptionTable::RemoveListener(CaptionTableListener* listener) {
    std::erase(m_listeners, listener);
}

} // namespace questionnaire
