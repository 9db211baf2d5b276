#pragma once

#include "util/Outcome.h"
#include "util/SqlConnection.h"

#include <QString>

#include <memory>

class CQuestionnaire;

namespace util {
class Progress;
}

namespace questionnaire {

// Outcome of CQuestionnaire::Read. Values above 8 mean the questionnaire was read and the
// result is only a warning.
enum QesStatus : quint16 {
    kQesOk = 0,
    kQesCannotOpen = 1,        // the file is missing or cannot be opened
    kQesNotADatabase = 2,      // the file is not a database
    kQesNotAQuestionnaire = 3, // a table we need is missing
    kQesBadSchema = 4,         // a column is missing or has the wrong type
    kQesNewerFormat = 5,       // written by a program that knows a later format
    kQesBadData = 6,   // a row holds something that cannot be (a duplicate id, a non-number)
    kQesReadError = 7, // the database failed while being read
    kQesWrittenByOlderProgram = 9, // read; the file was last written by an older program
    kQesRowsSkipped = 10,          // read; rows about questions or responses that do not exist
};

inline bool QesStatusMeansRead(quint16 status) {
    return status == kQesOk || status > 8;
}

// Writes a whole new database file for the questionnaire. The file appears only when complete:
// an existing file is replaced at once or not at all.
util::Outcome WriteQesFile(const QString& path, const CQuestionnaire& q, qint32 programVersion,
                           util::Progress* progress = nullptr);

} // namespace questionnaire

// Base of the database savers: the text of the last failure.
class CDBStructureVirtual {
public:
    virtual ~CDBStructureVirtual();
    const QString& GetLastError() const { return m_lastError; }

protected:
    QString m_lastError;
};

// Saves parts of a questionnaire into its existing database, each part in one transaction that
// touches only that part's tables, so everything else in the file stays as it was. A caller that
// saves several parts wraps them in BeginTransaction / CommitTransaction.
class CDBStructureAdo : public CDBStructureVirtual {
public:
    static QString GetQesConnectionString(const QString& path);

    explicit CDBStructureAdo(const QString& connection);
    ~CDBStructureAdo() override;
    CDBStructureAdo(const CDBStructureAdo&) = delete;
    CDBStructureAdo& operator=(const CDBStructureAdo&) = delete;

    // Opens the database; with `createIfMissing` a missing file becomes a new empty
    // questionnaire database, otherwise it is an error.
    virtual bool Open(bool createIfMissing);
    bool SaveLanguages(const CQuestionnaire& q);
    bool SaveCaptionsOnly(const CQuestionnaire* q);
    bool SaveErrorMessages(const CQuestionnaire& q);
    bool DoSaveFilters(const CQuestionnaire* q);

    // Groups the savers that follow into one transaction: all of them reach the file, or none.
    bool BeginTransaction();
    bool CommitTransaction();
    void RollbackTransaction();

private:
    template <class F> bool InTransaction(const char* operation, F&& work);
    bool Failed(const char* operation, const util::Outcome& outcome);

    QString m_path;
    util::sql::Connection m_db;
    std::unique_ptr<util::sql::Transaction> m_transaction;
};
