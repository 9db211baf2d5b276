// Saving parts of a questionnaire into its existing database.
#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"
#include "questionnaire/formats/QesWriter.h"

#include <QFileInfo>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

using util::Outcome;

CDBStructureVirtual::~CDBStructureVirtual() = default;

QString CDBStructureAdo::GetQesConnectionString(const QString& path) {
    return QStringLiteral("QSQLITE:") + path;
}

CDBStructureAdo::CDBStructureAdo(const QString& connection) {
    if (connection.startsWith(QLatin1String("QSQLITE:")))
        m_path = connection.mid(8);
    else
        m_path = connection;
}

CDBStructureAdo::~CDBStructureAdo() {
    // An open transaction goes before its connection.
    m_transaction.reset();
}

bool CDBStructureAdo::Failed(const char* operation, const Outcome& outcome) {
    m_lastError =
        QStringLiteral("CDBStructureAdo::%1: %2").arg(QLatin1String(operation), outcome.Reason());
    return false;
}

bool CDBStructureAdo::Open(bool createIfMissing) {
    using namespace questionnaire;
    m_transaction.reset();
    m_db.Close();
    m_lastError.clear();
    const bool exists = QFileInfo(m_path).isFile();
    if (!exists && !createIfMissing)
        return Failed("Open", Outcome::Failure(Tr(strings::kFileCannotFound).arg(m_path)));
    if (!exists) {
        if (const Outcome created = WriteQesFile(m_path, CQuestionnaire(), 0); !created)
            return Failed("Open", created);
    }
    quint16 status = kQesOk;
    Outcome opened = m_db.Open(m_path);
    if (opened)
        opened = qes::CheckSchema(m_db, status);
    if (!opened) {
        m_db.Close();
        return Failed("Open",
                      Outcome::Failure(QStringLiteral("'%1': %2").arg(m_path, opened.Reason())));
    }
    return true;
}

// Each saver is a transaction of its own, or a savepoint within the caller's transaction when
// one is open, so that a whole document save succeeds or fails as one.
template <class F> bool CDBStructureAdo::InTransaction(const char* operation, F&& work) {
    if (!m_db.IsOpen())
        return Failed(operation, Outcome::Failure(Tr(strings::kDatabaseOpen)));
    util::sql::Transaction part(m_db);
    Outcome outcome = part.Begin();
    if (outcome)
        outcome = work();
    if (outcome)
        outcome = part.Commit();
    return outcome ? true : Failed(operation, outcome);
}

bool CDBStructureAdo::BeginTransaction() {
    if (!m_db.IsOpen())
        return Failed("BeginTransaction", Outcome::Failure(Tr(strings::kDatabaseOpen)));
    m_transaction = std::make_unique<util::sql::Transaction>(m_db);
    if (const Outcome begun = m_transaction->Begin(); !begun) {
        m_transaction.reset();
        return Failed("BeginTransaction", begun);
    }
    return true;
}

bool CDBStructureAdo::CommitTransaction() {
    if (!m_transaction)
        return Failed("CommitTransaction", Outcome::Failure(Tr(strings::kTransactionOpen)));
    const Outcome committed = m_transaction->Commit();
    m_transaction.reset();
    return committed ? true : Failed("CommitTransaction", committed);
}

void CDBStructureAdo::RollbackTransaction() {
    m_transaction.reset();
}

bool CDBStructureAdo::SaveLanguages(const CQuestionnaire& q) {
    return InTransaction("SaveLanguages", [&] {
        Outcome outcome = m_db.Exec(QStringLiteral("DELETE FROM languages"));
        return outcome ? questionnaire::qes::WriteLanguages(m_db, q) : outcome;
    });
}

bool CDBStructureAdo::SaveCaptionsOnly(const CQuestionnaire* q) {
    return InTransaction("SaveCaptionsOnly", [&] {
        Outcome outcome = m_db.Exec(QStringLiteral("DELETE FROM question_captions"));
        if (outcome)
            outcome = m_db.Exec(QStringLiteral("DELETE FROM response_captions"));
        return outcome ? questionnaire::qes::WriteCaptions(m_db, *q) : outcome;
    });
}

bool CDBStructureAdo::SaveErrorMessages(const CQuestionnaire& q) {
    return InTransaction("SaveErrorMessages", [&] {
        Outcome outcome = m_db.Exec(QStringLiteral("DELETE FROM system_messages"));
        return outcome ? questionnaire::qes::WriteSystemMessages(m_db, q) : outcome;
    });
}

bool CDBStructureAdo::DoSaveFilters(const CQuestionnaire* q) {
    return InTransaction("DoSaveFilters", [&] {
        Outcome outcome = m_db.Exec(QStringLiteral("DELETE FROM routing_messages"));
        if (outcome)
            outcome = m_db.Exec(QStringLiteral("DELETE FROM routings"));
        return outcome ? questionnaire::qes::WriteRoutings(m_db, *q) : outcome;
    });
}
