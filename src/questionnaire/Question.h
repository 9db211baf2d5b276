#pragma once

#include "questionnaire/LocalisedText.h"
#include "questionnaire/Modalite.h"
#include "questionnaire/Objet.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

// What kind of answer a question asks for. Only choice questions have a list of responses.
enum class QuestionType : quint8 {
    Information = 0, // text shown, no answer
    OpenText = 1,
    Numeric = 2,
    Date = 3,
    SingleChoice = 4,
    MultipleChoice = 5,
};

class CQuestion : public CObjet {
public:
    CQuestion() = default;
    CQuestion(qint32 id, const QString& shortcut, QuestionType type = QuestionType::SingleChoice)
        : m_id(id), m_shortcut(shortcut), m_type(type) {}
    CQuestion(const CQuestion& other);
    CQuestion& operator=(const CQuestion& other);

    const QString& GetLocalisedLongCaption(qint32 language) const { return m_long.Get(language); }
    void SetLocalisedLongCaption(qint32 language, const QString& text) { m_long.Set(language, text); }
    const QString& GetLocalisedShortCaption(qint32 language) const { return m_short.Get(language); }
    void SetLocalisedShortCaption(qint32 language, const QString& text) {
        m_short.Set(language, text);
    }
    const QString& GetLocalisedInstructions(qint32 language) const {
        return m_instructions.Get(language);
    }
    void SetLocalisedInstructions(qint32 language, const QString& text) {
        m_instructions.Set(language, text);
    }
    const QString& GetLocalisedComments(qint32 language) const { return m_comments.Get(language); }
    void SetLocalisedComments(qint32 language, const QString& text) {
        m_comments.Set(language, text);
    }
    const CLocalisedText& LongCaption() const { return m_long; }
    const CLocalisedText& ShortCaption() const { return m_short; }
    const CLocalisedText& Instructions() const { return m_instructions; }
    const CLocalisedText& Comments() const { return m_comments; }

    QuestionType GetType() const { return m_type; }
    void SetType(QuestionType type) { m_type = type; }
    // True when the question offers a list of responses.
    bool EstAModalite() const {
        return m_type == QuestionType::SingleChoice || m_type == QuestionType::MultipleChoice;
    }

    int GetNbreModalite() const { return int(m_responses.size()); }
    const CModalite& GetModalite(int index) const { return *m_responses[size_t(index)]; }
    CModalite* GetAdrModalite(int index) { return m_responses[size_t(index)].get(); }
    bool FindModaliteById(qint32 id, const CModalite*& out) const;
    bool FindAdrModaliteById(qint32 id, CModalite*& out);
    // Takes ownership; returns the new index, or -1 when the question already has that id.
    int AddModalite(std::unique_ptr<CModalite> response);
    void RemoveModalite(int index);

    // Ids of the versions the question belongs to; empty means all versions.
    const QList<qint32>& GetVersions() const { return m_versions; }
    void SetVersions(const QList<qint32>& versions) { m_versions = versions; }

    bool operator==(const CQuestion& other) const;

    qint32 m_id = 0;
    QString m_shortcut;       // short identifier shown to designers, e.g. "Q12"
    qint32 m_visible = 1;     // non-zero when the question is shown to respondents
    bool m_hasParent = false; // the question is a sub-question of m_parentId
    qint32 m_parentId = 0;
    // Where a visible question appears: at least one must be set for it to reach anybody.
    qint32 m_shownOnScreen = 1; // electronic forms (web, interviewer screen)
    qint32 m_shownOnPaper = 1;  // the printed questionnaire

private:
    void RebuildResponseIndex();

    QuestionType m_type = QuestionType::SingleChoice;
    CLocalisedText m_long;
    CLocalisedText m_short;
    CLocalisedText m_instructions;
    CLocalisedText m_comments;
    QList<qint32> m_versions;
    std::vector<std::unique_ptr<CModalite>> m_responses;
    QHash<qint32, int> m_responseIndex; // response id -> index
};
