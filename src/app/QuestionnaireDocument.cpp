#include "app/QuestionnaireDocument.h"

#include "app/AppContext.h"
#include "app/Strings.h"
#include "exchange/WorkingFolder.h"
#include "questionnaire/QesDatabase.h"
#include "questionnaire/XmlFile.h"
#include "util/FileSystem.h"
#include "util/MessageSink.h"

#include <QFile>
#include <QFileInfo>

namespace app {

FileType FileTypeOf(const QString& path) {
    const QString end = path.right(3);
    if (end.compare(QLatin1String("qex"), Qt::CaseInsensitive) == 0)
        return FileType::Exchange;
    if (end.compare(QLatin1String("qew"), Qt::CaseInsensitive) == 0)
        return FileType::Campaign;
    if (end.compare(QLatin1String("xml"), Qt::CaseInsensitive) == 0)
        return FileType::Xml;
    return FileType::Database;
}

namespace {

bool ReadByType(const AppContext& app, const QString& path, CQuestionnaire& q) {
    switch (FileTypeOf(path)) {
    case FileType::Exchange: {
        const QString folder = exchange::PrepareWorkingFolder(app.stamps, path);
        if (folder.isEmpty()) {
            q.m_lastError = QStringLiteral("The file '%1' has no extension, so it has no "
                                           "working folder to unpack into.").arg(path);
            return false;
        }
        return q.ReadFromExchangeFormat(path, folder);
    }
    case FileType::Campaign:
        q.m_lastError = QString::fromLatin1(strings::kCampaignNotSupported);
        return false;
    case FileType::Xml:
        return questionnaire::ReadXmlFile(path, q);
    case FileType::Database:
        break;
    }
    const bool read = q.Read(path, true, true, true, true, true, dbQesFile,
                             AppContext::ProgramVersion(), true);
    return read || q.m_status > 8;
}

// Replaces `target` with a copy of `source`, whole or not at all.
bool CopyOver(const QString& source, const QString& target) {
    const QString temporary = target + QStringLiteral(".copy");
    QFile::remove(temporary);
    if (!QFile::copy(source, temporary))
        return false;
    if (util::ReplaceFile(temporary, target))
        return true;
    QFile::remove(temporary);
    return false;
}

} // namespace

bool LoadQuestionnaire(const AppContext& app, const QString& path, CQuestionnaire& q,
                       bool silent, util::MessageSink& messages) {
    if (ReadByType(app, path, q)) {
        q.PrepareLinks();
        return true;
    }
    if (!silent)
        messages.Show(q.m_lastError);
    return false;
}

QuestionnaireDocument::QuestionnaireDocument(AppContext& app, util::MessageSink& messages)
    : m_app(app), m_messages(messages) {}

QuestionnaireDocument::~QuestionnaireDocument() {
    DeleteContents();
}

bool QuestionnaireDocument::Open(const QString& path) {
    if (!Load(path, false))
        return false;
    m_app.recentFiles.Add(path);
    return true;
}

bool QuestionnaireDocument::OpenSilently(const QString& path) {
    return Load(path, true);
}

bool QuestionnaireDocument::Load(const QString& path, bool silent) {
    DeleteContents();
    m_path = path;
    m_type = FileTypeOf(path);
    if (m_type == FileType::Exchange)
        m_stampedPath = path;
    m_questionnaire = std::make_unique<CQuestionnaire>();
    if (LoadQuestionnaire(m_app, path, *m_questionnaire, silent, m_messages))
        return true;
    m_lastError = m_questionnaire->m_lastError;
    DeleteContents();
    return false;
}

void QuestionnaireDocument::DeleteContents() {
    m_questionnaire.reset();
    m_modified = false;
    // Only packages get a working folder: a folder that merely shares the name of another
    // file's would be someone else's.
    if (!m_stampedPath.isEmpty())
        exchange::CleanWorkingFolder(m_app.stamps, m_stampedPath);
    m_stampedPath.clear();
}

void QuestionnaireDocument::Report(const QString& text, bool silent) {
    m_lastError = text;
    if (!silent)
        m_messages.Show(text);
}

bool QuestionnaireDocument::Save(const QString& target) {
    if (!m_questionnaire)
        return false;
    if (target.compare(m_path, Qt::CaseInsensitive) != 0 && !SaveAs(target, false))
        return false;
    if (!SaveByType(false))
        return false;
    m_modified = false;
    return true;
}

bool QuestionnaireDocument::SaveAs(const QString& target, bool silent) {
    const FileType targetType = FileTypeOf(target);
    const bool copyFirst = targetType == FileType::Database || targetType == FileType::Campaign;
    if (copyFirst && targetType == m_type) {
        // Saving in place later keeps whatever else the file holds.
        if (!CopyOver(m_path, target)) {
            Report(QString::fromLatin1(strings::kCannotSaveFile), silent);
            return false;
        }
    } else if (targetType == FileType::Database) {
        // Nothing to copy from another type: the new database is written whole.
        QString error;
        if (!questionnaire::WriteQesFile(target, *m_questionnaire, AppContext::ProgramVersion(),
                                         error)) {
            Report(error, silent);
            return false;
        }
    }
    m_path = target;
    m_type = targetType;
    return true;
}

bool QuestionnaireDocument::SaveBatch() {
    return m_questionnaire && SaveByType(true);
}

bool QuestionnaireDocument::SaveByType(bool batch) {
    CQuestionnaire& q = *m_questionnaire;
    switch (m_type) {
    case FileType::Database:
        return SaveDatabase(batch);
    case FileType::Exchange:
        if (q.SaveToExchangeFormat(m_path, QString(), -1))
            return true;
        Report(q.m_lastError, batch);
        return false;
    case FileType::Campaign:
        Report(QString::fromLatin1(strings::kCampaignNotSupported), batch);
        return false;
    case FileType::Xml:
        if (questionnaire::WriteXmlFile(m_path, q))
            return true;
        Report(q.m_lastError, batch);
        return false;
    }
    return false;
}

bool QuestionnaireDocument::SaveDatabase(bool batch) {
    CQuestionnaire& q = *m_questionnaire;
    auto db = std::make_shared<CDBStructureAdo>(CDBStructureAdo::GetQesConnectionString(m_path));
    if (!db->Open(false) || !db->BeginTransaction()) {
        Report(db->GetLastError(), batch);
        return false;
    }
    // Only batch work adds languages, so only the batch save writes them. The parts go in one
    // transaction: a save that fails or is killed half-way leaves the file as it was.
    const bool saved = (!batch || db->SaveLanguages(q)) && db->SaveCaptionsOnly(&q) &&
                       db->SaveErrorMessages(q) && db->DoSaveFilters(&q);
    if (saved && db->CommitTransaction())
        return true;
    if (!saved)
        db->RollbackTransaction();
    Report(db->GetLastError(), batch);
    return false;
}

} // namespace app
