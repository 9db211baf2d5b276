#include "app/QuestionnaireDocument.h"

#include "app/AppContext.h"
#include "app/Strings.h"
#include "exchange/WorkingFolder.h"
#include "util/FileSystem.h"
#include "util/Messages.h"

namespace app {

namespace {

// What the stores need from the application; `stamped` hears of each working folder prepared.
questionnaire::StoreContext StoreContextFor(const AppContext& app, util::Progress* progress,
                                            std::function<void(const QString&)> stamped) {
    questionnaire::StoreContext context;
    context.programVersion = AppContext::ProgramVersion();
    context.workingFolder = [&app, stamped](const QString& path) {
        QString folder = exchange::PrepareWorkingFolder(app.stamps, path);
        if (stamped)
            stamped(path);
        return folder;
    };
    context.progress = progress;
    return context;
}

util::Outcome LoadWith(questionnaire::QuestionnaireStore& store, const QString& path,
                       CQuestionnaire& q, const questionnaire::StoreContext& context) {
    util::Outcome loaded = store.Load(path, q, context);
    if (loaded)
        q.PrepareLinks(); // once after every load, before anything reads the questionnaire
    else
        q.SetLastError(loaded.Reason());
    return loaded;
}

} // namespace

bool ExportWouldReplaceSource(const QStringList& targets, const QString& source,
                              util::Messages& messages) {
    for (const QString& target : targets) {
        if (!source.isEmpty() && util::SameFile(target, source)) {
            messages.Error(Tr(strings::kExportOverSource).arg(target));
            return true;
        }
    }
    return false;
}

util::Outcome LoadQuestionnaire(const AppContext& app, const QString& path, CQuestionnaire& q,
                                util::Progress* progress) {
    QString refusal;
    const std::unique_ptr<questionnaire::QuestionnaireStore> store =
        app.stores.Create(path, refusal);
    if (!store) {
        q.SetLastError(refusal);
        return util::Outcome::Failure(refusal);
    }
    return LoadWith(*store, path, q, StoreContextFor(app, progress, {}));
}

QuestionnaireDocument::QuestionnaireDocument(AppContext& app, util::Messages& messages,
                                             util::Progress* progress)
    : m_app(app), m_messages(messages), m_progress(progress) {
    m_captions.AddListener(this);
}

QuestionnaireDocument::~QuestionnaireDocument() {
    DeleteContents();
    m_captions.RemoveListener(this);
}

questionnaire::StoreContext QuestionnaireDocument::Context() {
    // The stamped file is remembered, so that its folder is cleaned when the questionnaire goes.
    return StoreContextFor(m_app, m_progress, [this](const QString& path) {
        m_app.EnterWorkingFolder(path); // first: the folder left below may be this one
        if (!m_stampedPath.isEmpty())
            m_app.LeaveWorkingFolder(m_stampedPath);
        m_stampedPath = path;
    });
}

bool QuestionnaireDocument::Report(const util::Outcome& outcome, bool interactive) {
    if (outcome)
        return true;
    m_lastError = outcome.Reason();
    if (interactive)
        m_messages.Error(m_lastError);
    return false;
}

bool QuestionnaireDocument::Open(const QString& path) {
    if (!Load(path, true))
        return false;
    m_app.recentFiles.Add(path);
    return true;
}

bool QuestionnaireDocument::OpenSilently(const QString& path) {
    return Load(path, false);
}

bool QuestionnaireDocument::Load(const QString& path, bool interactive) {
    DeleteContents();
    m_path = path;
    m_type = m_app.stores.TypeOf(path);
    QString refusal;
    m_store = m_app.stores.Create(path, refusal);
    if (!m_store)
        return Report(util::Outcome::Failure(refusal), interactive);
    m_questionnaire = std::make_unique<CQuestionnaire>();
    const util::Outcome loaded = LoadWith(*m_store, path, *m_questionnaire, Context());
    if (loaded) {
        m_captions.SetQuestionnaire(m_questionnaire.get());
        return true;
    }
    DeleteContents();
    return Report(loaded, interactive);
}

void QuestionnaireDocument::DeleteContents() {
    m_captions.SetQuestionnaire(nullptr);
    m_questionnaire.reset();
    m_modified = false;
    // Only files that asked for a working folder have one: a folder that merely shares the name
    // of another file's would be someone else's.
    if (!m_stampedPath.isEmpty())
        m_app.LeaveWorkingFolder(m_stampedPath);
    m_stampedPath.clear();
}

bool QuestionnaireDocument::Save(const QString& target) {
    return SaveTo(target, questionnaire::kInteractiveSave, true);
}

bool QuestionnaireDocument::SaveBatch() {
    return SaveTo(m_path, questionnaire::kBatchSave, false);
}

bool QuestionnaireDocument::SaveBatchAs(const QString& target) {
    return SaveTo(target, questionnaire::kBatchSave, false);
}

bool QuestionnaireDocument::SaveTo(const QString& target, questionnaire::SaveParts parts,
                                   bool interactive) {
    if (!m_questionnaire || !m_store)
        return false;
    // A name that differs only in letter case is another file here, unless the file system
    // makes it the same one.
    const util::Outcome saved =
        !util::SameFile(target, m_path)
            ? SaveAs(target, parts)
            : m_store->SaveParts(m_path, *m_questionnaire, parts, Context());
    if (!Report(saved, interactive))
        return false;
    m_modified = false;
    return true;
}

// Makes `target` the document's file once it is written: a failed save leaves the document at
// its file. A store that saves in place saves into a copy of the current file when it is of its
// own type, and writes a whole new file otherwise.
util::Outcome QuestionnaireDocument::SaveAs(const QString& target, questionnaire::SaveParts parts) {
    const qint16 targetType = m_app.stores.TypeOf(target);
    std::unique_ptr<questionnaire::QuestionnaireStore> targetStore;
    if (targetType != m_type) {
        QString refusal;
        targetStore = m_app.stores.Create(target, refusal);
        if (!targetStore)
            return util::Outcome::Failure(refusal);
    }
    questionnaire::QuestionnaireStore& store = targetStore ? *targetStore : *m_store;
    if (!store.CopiesBeforeSaveAs()) {
        if (const util::Outcome saved = store.SaveParts(target, *m_questionnaire, parts, Context());
            !saved)
            return saved;
    } else if (targetType == m_type) {
        // Saving into the copy keeps whatever else the file holds.
        if (const util::Outcome saved =
                store.SaveCopyAs(m_path, target, *m_questionnaire, parts, Context());
            !saved)
            return util::Outcome::Failure(saved.Reason().isEmpty() ? Tr(strings::kCannotSaveFile)
                                                                   : saved.Reason());
    } else if (const util::Outcome saved = store.SaveWhole(target, *m_questionnaire, Context());
               !saved) {
        return saved; // nothing to copy from another type
    }
    if (targetStore)
        m_store = std::move(targetStore);
    m_path = target;
    m_type = targetType;
    return {};
}

} // namespace app
