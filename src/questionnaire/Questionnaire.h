#pragma once

#include "questionnaire/Filtre.h"
#include "questionnaire/Language.h"
#include "questionnaire/LocalisedText.h"
#include "questionnaire/Objet.h"
#include "questionnaire/Question.h"
#include "questionnaire/SystemMessageCatalog.h"
#include "questionnaire/Version.h"

#include <QHash>
#include <QString>

#include <array>
#include <memory>
#include <vector>

class CMarkup;

namespace util {
class Progress;
}

// Kinds of questionnaire databases the reader knows.
enum DataBaseType { dbUnknown = 0, dbQesFile = 1 };

// A whole questionnaire: languages, versions, questions with their responses, routings and the
// customised system messages. Ids are looked up through hash maps kept beside the arrays.
class CQuestionnaire : public CObjet {
public:
    CQuestionnaire() = default;
    CQuestionnaire(const CQuestionnaire& other);
    CQuestionnaire& operator=(const CQuestionnaire& other);
    ~CQuestionnaire() override;

    // Drops every question, routing, language, version and custom message.
    void Clear();

    // Rebuilds the id indexes; called once after every load, before anything reads the object.
    void PrepareLinks() const;

    // --- questionnaire database (.qes) ---
    // Reads the whole questionnaire. The flags choose what is read (captions, responses,
    // routings, custom system messages, versions); `programVersion` is this program's 16-bit
    // version number (major * 256 + minor), used to tell a file written by an older program;
    // `checkIntegrity` runs the database's own consistency check first. GetStatus() tells the
    // outcome (see questionnaire::QesStatus): a false result with a status above 8 still read
    // the questionnaire, with a warning as its last error text.
    bool Read(const QString& path, bool withCaptions, bool withResponses, bool withRoutings,
              bool withMessages, bool withVersions, DataBaseType type, qint32 programVersion,
              bool checkIntegrity, util::Progress* progress = nullptr);

    // --- exchange package (.qex): a ZIP holding questionnaire.xml and further files ---
    // Unpacks the package into the working folder (which must exist) and reads its XML. The
    // folder is remembered: the next save packs it back.
    bool ReadFromExchangeFormat(const QString& path, const QString& workingFolder,
                                util::Progress* progress = nullptr);
    // Writes questionnaire.xml into the remembered working folder and packs the folder (stamp
    // files left out) into the package, replacing it atomically; without a working folder the
    // package holds the XML alone. `extraFolder`, when not empty, is a folder whose files are
    // packed too. `flags`: bit 0 writes the captions, bit 1 the routings; -1 writes everything.
    bool SaveToExchangeFormat(const QString& path, const QString& extraFolder, qint32 flags,
                              util::Progress* progress = nullptr);
    const QString& GetExchangeFolder() const { return m_exchangeFolder; }

    // --- XML form ---
    bool FromXML(CMarkup& doc);
    // includeTexts: write the captions; includeRoutings: write the routings.
    void GetQuestionsAsXML(CMarkup& doc, bool includeTexts, bool includeRoutings) const;

    // --- questions ---
    int GetNbreQuestion() const { return int(m_questions.size()); }
    const CQuestion& GetQuestion(int index) const { return *m_questions[size_t(index)]; }
    CQuestion* GetAdrQuestion(int index) const { return m_questions[size_t(index)].get(); }
    virtual bool FindQuestionById(qint32 id, int& index) const;
    // Takes ownership; returns the index, or -1 when the id is already used.
    int AddQuestion(CQuestion* question);
    int AddQuestion(std::unique_ptr<CQuestion> question);

    // --- routings ---
    int GetNbreFiltre() const { return int(m_filtres.size()); }
    const CFiltre& GetFiltre(int index) const { return *m_filtres[size_t(index)]; }
    CFiltre* GetAdrFiltre(int index) { return m_filtres[size_t(index)].get(); }
    bool FindRoutingById(qint32 id, int& index) const;
    int AddFiltre(std::unique_ptr<CFiltre> routing);

    // --- languages ---
    int GetLanguageCount() const { return int(m_languages.size()); }
    const CLanguage& GetLanguage(int index) const { return *m_languages[size_t(index)]; }
    CLanguage* GetAdrLanguage(int index) { return m_languages[size_t(index)].get(); }
    bool HasLanguage(qint32 lcid) const;
    // Takes ownership; returns the index, or -1 when the language is already there.
    int AddLanguage(CLanguage* language);
    int AddLanguage(std::unique_ptr<CLanguage> language);
    // The main language (the later one, should two be flagged: the one the grid and the export
    // put first), else the first language, else 0.
    qint32 GetDefaultLanguage() const;
    // Flags exactly this language as the main one.
    void SetDefaultLanguage(qint32 lcid);

    // --- versions ---
    int GetVersionCount() const { return int(m_versions.size()); }
    const CVersion& GetVersion(int index) const { return *m_versions[size_t(index)]; }
    bool FindVersionById(qint32 id, int& index) const;
    int AddVersion(std::unique_ptr<CVersion> version);

    // --- settings ---
    bool IsAllowingInstructionAndComment() const { return m_allowInstructionsAndComments; }
    void SetAllowingInstructionAndComment(bool allow) { m_allowInstructionsAndComments = allow; }
    const QString& GetName() const { return m_name; }
    void SetName(const QString& name) { m_name = name; }

    // --- system messages (numbers 2 to 43) ---
    // The custom text when one is set, else the standard one.
    QString GetErrorMessage(qint32 language, qint32 messageId) const;
    static QString GetStandardErrorMessage(qint32 language, qint32 messageId);
    // An empty text removes the customisation.
    void SetCustomErrorMessage(qint32 language, qint32 messageId, const QString& text);
    // The customised texts of one message (empty when none).
    const CLocalisedText& GetCustomErrorMessages(qint32 messageId) const;
    // Null for a number that is not a system message's.
    CLocalisedText* GetAdrCustomErrorMessages(qint32 messageId);

    bool operator==(const CQuestionnaire& other) const;

    // Why the last load or save failed; filled by every failed one.
    const QString& GetLastError() const { return m_lastError; }
    void SetLastError(const QString& text) { m_lastError = text; }
    // The outcome of the last Read.
    quint16 GetStatus() const { return m_status; }

private:
    QString m_lastError;
    quint16 m_status = 0;
    void CopyFrom(const CQuestionnaire& other);

    QString m_name;
    QString m_exchangeFolder; // working folder of the package this was read from
    bool m_allowInstructionsAndComments = true;
    std::vector<std::unique_ptr<CLanguage>> m_languages;
    std::vector<std::unique_ptr<CVersion>> m_versions;
    std::vector<std::unique_ptr<CQuestion>> m_questions;
    std::vector<std::unique_ptr<CFiltre>> m_filtres;
    std::array<CLocalisedText, questionnaire::kSystemMessageCount> m_customMessages;

    // Id indexes; mutable so that PrepareLinks can rebuild them on a const object.
    mutable QHash<qint32, int> m_questionIndex;
    mutable QHash<qint32, int> m_filtreIndex;
    mutable QHash<qint32, int> m_versionIndex;
};
