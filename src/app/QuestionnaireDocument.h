#pragma once

#include "questionnaire/Questionnaire.h"

#include <QString>

#include <memory>

namespace util {
class MessageSink;
}

namespace app {

class AppContext;

// The four kinds of questionnaire files; the numbers are those stored with a document.
enum class FileType : qint16 { Database = 0, Exchange = 1, Campaign = 2, Xml = 3 };

// The type from the last three letters of the path, whatever precedes them: "qex", "qew" and
// "xml" (any case); anything else is a questionnaire database.
FileType FileTypeOf(const QString& path);

// Loads a questionnaire by file type. Unless silent, a failure is shown through `messages`; the
// questionnaire's last error text says why in any case.
bool LoadQuestionnaire(const AppContext& app, const QString& path, CQuestionnaire& q,
                       bool silent, util::MessageSink& messages);

// One open questionnaire: loads it, saves it back in its own type or as another, and cleans
// its working folder when its contents go. No window: the window program and the batch mode
// both use it.
class QuestionnaireDocument {
public:
    QuestionnaireDocument(AppContext& app, util::MessageSink& messages);
    ~QuestionnaireDocument();
    QuestionnaireDocument(const QuestionnaireDocument&) = delete;
    QuestionnaireDocument& operator=(const QuestionnaireDocument&) = delete;

    // Interactive open: failures are shown; success adds the file to the recent-file list.
    bool Open(const QString& path);
    // Batch open: nothing is shown.
    bool OpenSilently(const QString& path);

    // Interactive save to `target` (the current path, or another for "Save As").
    bool Save(const QString& target);
    // Batch save in the file's own type, languages included; nothing is shown.
    bool SaveBatch();

    // Drops the questionnaire and cleans the working folder it used.
    void DeleteContents();

    CQuestionnaire* Questionnaire() const { return m_questionnaire.get(); }
    FileType Type() const { return m_type; }
    const QString& Path() const { return m_path; }
    bool IsModified() const { return m_modified; }
    // Why the last load or save failed, also when nothing was shown.
    const QString& LastError() const { return m_lastError; }
    void SetModified(bool modified) { m_modified = modified; }

private:
    bool Load(const QString& path, bool silent);
    bool SaveAs(const QString& target, bool silent);
    bool SaveByType(bool batch);
    bool SaveDatabase(bool batch);
    void Report(const QString& text, bool silent);

    AppContext& m_app;
    util::MessageSink& m_messages;
    std::unique_ptr<CQuestionnaire> m_questionnaire;
    FileType m_type = FileType::Database;
    QString m_path;
    QString m_stampedPath; // the package whose working folder carries our stamp
    QString m_lastError;
    bool m_modified = false;
};

} // namespace app
