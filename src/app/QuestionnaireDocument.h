#pragma once

#include "questionnaire/CaptionTable.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/store/QuestionnaireStore.h"
#include "util/Outcome.h"

#include <QString>

#include <memory>

namespace util {
class Messages;
class Progress;
} // namespace util

namespace app {

class AppContext;

// Loads a questionnaire through the store for its file type, without a document: for tools and
// measurements. The working folder of a package is prepared but left for the caller to clean.
util::Outcome LoadQuestionnaire(const AppContext& app, const QString& path, CQuestionnaire& q,
                                util::Progress* progress = nullptr);

// True, after telling `messages` why, when an export to `targets` would write over `source`, the
// file it exports from (a questionnaire, a dictionary): nothing is to be exported then.
bool ExportWouldReplaceSource(const QStringList& targets, const QString& source,
                              util::Messages& messages);

// One open questionnaire: loads it through the store for its file type, saves it back in its own
// type or as another, and cleans its working folder when its contents go. It never asks which
// type a file is: the stores registered with the application do. No window: the window program
// and the batch mode both use it.
class QuestionnaireDocument : private questionnaire::CaptionTableListener {
public:
    QuestionnaireDocument(AppContext& app, util::Messages& messages,
                          util::Progress* progress = nullptr);
    ~QuestionnaireDocument();
    QuestionnaireDocument(const QuestionnaireDocument&) = delete;
    QuestionnaireDocument& operator=(const QuestionnaireDocument&) = delete;

    // Interactive open: a failure is shown; success adds the file to the recent-file list.
    bool Open(const QString& path);
    // Batch open: nothing is shown.
    bool OpenSilently(const QString& path);

    // Interactive save to `target` (the current path, or another for "Save As").
    bool Save(const QString& target);
    // Batch save in the file's own type, languages included; nothing is shown.
    bool SaveBatch();
    // Batch save to another file or server, of any type, which becomes the document's.
    bool SaveBatchAs(const QString& target);

    // Drops the questionnaire and cleans the working folder it used.
    void DeleteContents();

    CQuestionnaire* Questionnaire() const { return m_questionnaire.get(); }
    // Every caption of the questionnaire by its languages; empty while none is open. Changes
    // made through it mark the document modified.
    questionnaire::CaptionTable& Captions() { return m_captions; }
    const questionnaire::CaptionTable& Captions() const { return m_captions; }
    // The file type as the stores number it (questionnaire::FileType for the standard ones).
    qint16 Type() const { return m_type; }
    const QString& Path() const { return m_path; }
    bool IsModified() const { return m_modified; }
    void SetModified(bool modified) { m_modified = modified; }
    // Why the last open or save failed, also when nothing was shown.
    const QString& LastError() const { return m_lastError; }
    // Where long loads and saves report; null for none.
    void SetProgress(util::Progress* progress) { m_progress = progress; }

private:
    bool Load(const QString& path, bool interactive);
    bool SaveTo(const QString& target, questionnaire::SaveParts parts, bool interactive);
    util::Outcome SaveAs(const QString& target, questionnaire::SaveParts parts);
    questionnaire::StoreContext Context();
    bool Report(const util::Outcome& outcome, bool interactive);
    void QuestionnaireModified() override { m_modified = true; }

    AppContext& m_app;
    util::Messages& m_messages;
    util::Progress* m_progress;
    std::unique_ptr<CQuestionnaire> m_questionnaire;
    std::unique_ptr<questionnaire::QuestionnaireStore> m_store;
    questionnaire::CaptionTable m_captions;
    qint16 m_type = 0;
    QString m_path;
    QString m_stampedPath; // the file whose working folder carries our stamp
    QString m_lastError;
    bool m_modified = false;
};

} // namespace app
