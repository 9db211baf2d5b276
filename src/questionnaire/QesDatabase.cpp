#include "questionnaire/QesDatabase.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/QesSchema.h"
#include "questionnaire/Questionnaire.h"
#include "util/FileSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <limits>

namespace questionnaire {

namespace {

// The driver binds a null string as SQL NULL; an empty text is a text.
template <class T> QVariant Bind(const T& value) {
    return QVariant::fromValue(value);
}
template <> QVariant Bind(const QString& value) {
    return value.isNull() ? QVariant(QString(QLatin1String(""))) : QVariant(value);
}

// A prepared INSERT run once per row.
class Inserter {
public:
    Inserter(QSqlDatabase& db, const QString& sql) : m_query(db) {
        m_query.setForwardOnly(true);
        m_ok = m_query.prepare(sql);
    }
    template <class... Values> bool Row(const Values&... values) {
        if (!m_ok)
            return false;
        int index = 0;
        (m_query.bindValue(index++, Bind(values)), ...);
        m_ok = m_query.exec();
        return m_ok;
    }
    QString Error() const { return m_query.lastError().text(); }

private:
    QSqlQuery m_query;
    bool m_ok = false;
};

QString VersionList(const QList<qint32>& versions) {
    QStringList items;
    for (qint32 id : versions)
        items.append(QString::number(id));
    return items.join(QLatin1Char(' '));
}

bool ParseVersionList(const QString& text, QList<qint32>& versions) {
    versions.clear();
    for (QStringView item : QStringView(text).split(u' ', Qt::SkipEmptyParts)) {
        bool ok = false;
        versions.append(item.toInt(&ok));
        if (!ok)
            return false;
    }
    return true;
}

bool Exec(QSqlDatabase& db, const QString& sql, QString& error) {
    QSqlQuery query(db);
    if (query.exec(sql))
        return true;
    error = query.lastError().text();
    return false;
}

bool WriteFormat(QSqlDatabase& db, qint32 programVersion, QString& error) {
    Inserter row(db, QStringLiteral("INSERT OR REPLACE INTO format VALUES (?, ?)"));
    if (row.Row(QStringLiteral("format"), QString::number(qes::kFormatVersion)) &&
        row.Row(QStringLiteral("program_version"), QString::number(programVersion)))
        return true;
    error = row.Error();
    return false;
}

bool WriteLanguages(QSqlDatabase& db, const CQuestionnaire& q, QString& error) {
    Inserter row(db, QStringLiteral("INSERT INTO languages VALUES (?, ?, ?, ?, ?)"));
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& l = q.GetLanguage(i);
        if (!row.Row(l.m_id, i, l.m_shortName, l.m_name, int(l.m_isMain))) {
            error = row.Error();
            return false;
        }
    }
    return true;
}

bool WriteTexts(Inserter& row, qint32 a, qint32 b, const CLocalisedText& texts) {
    for (const auto& [language, text] : texts.Entries())
        if (!row.Row(a, b, language, text))
            return false;
    return true;
}

bool WriteCaptions(QSqlDatabase& db, const CQuestionnaire& q, QString& error) {
    Inserter questionRow(db, QStringLiteral("INSERT INTO question_captions VALUES (?, ?, ?, ?)"));
    Inserter responseRow(db, QStringLiteral("INSERT INTO response_captions VALUES (?, ?, ?, ?)"));
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& question = q.GetQuestion(i);
        const qint32 id = question.m_id;
        if (!WriteTexts(questionRow, id, kLongCaption, question.LongCaption()) ||
            !WriteTexts(questionRow, id, kShortCaption, question.ShortCaption()) ||
            !WriteTexts(questionRow, id, kInstructions, question.Instructions()) ||
            !WriteTexts(questionRow, id, kComments, question.Comments())) {
            error = questionRow.Error();
            return false;
        }
        for (int r = 0; r < question.GetNbreModalite(); ++r) {
            const CModalite& response = question.GetModalite(r);
            if (!WriteTexts(responseRow, id, response.m_id, response.Caption())) {
                error = responseRow.Error();
                return false;
            }
        }
    }
    return true;
}

bool WriteSystemMessages(QSqlDatabase& db, const CQuestionnaire& q, QString& error) {
    Inserter row(db, QStringLiteral("INSERT INTO system_messages VALUES (?, ?, ?)"));
    for (qint32 number = kFirstSystemMessage; number <= kLastSystemMessage; ++number) {
        for (const auto& [language, text] : q.GetCustomErrorMessages(number).Entries()) {
            if (!row.Row(number, language, text)) {
                error = row.Error();
                return false;
            }
        }
    }
    return true;
}

bool WriteRoutings(QSqlDatabase& db, const CQuestionnaire& q, QString& error) {
    Inserter routingRow(db, QStringLiteral("INSERT INTO routings VALUES (?, ?, ?, ?, ?, ?)"));
    Inserter messageRow(db, QStringLiteral("INSERT INTO routing_messages VALUES (?, ?, ?)"));
    for (int i = 0; i < q.GetNbreFiltre(); ++i) {
        const CFiltre& f = q.GetFiltre(i);
        if (!routingRow.Row(f.m_id, i, f.m_kind, f.m_sourceQuestionId, f.m_targetQuestionId,
                            f.m_condition)) {
            error = routingRow.Error();
            return false;
        }
        for (const auto& [language, text] : f.Message().Entries()) {
            if (!messageRow.Row(f.m_id, language, text)) {
                error = messageRow.Error();
                return false;
            }
        }
    }
    return true;
}

bool WriteStructure(QSqlDatabase& db, const CQuestionnaire& q, QString& error) {
    Inserter head(db, QStringLiteral("INSERT INTO questionnaire VALUES (1, ?, ?)"));
    Inserter version(db, QStringLiteral("INSERT INTO versions VALUES (?, ?, ?)"));
    Inserter question(db, QStringLiteral("INSERT INTO questions VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    Inserter response(db, QStringLiteral("INSERT INTO responses VALUES (?, ?, ?, ?, ?)"));
    if (!head.Row(q.GetName(), int(q.IsAllowingInstructionAndComment()))) {
        error = head.Error();
        return false;
    }
    for (int i = 0; i < q.GetVersionCount(); ++i) {
        if (!version.Row(q.GetVersion(i).m_id, i, q.GetVersion(i).m_name)) {
            error = version.Error();
            return false;
        }
    }
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& qn = q.GetQuestion(i);
        const QVariant parent = qn.m_hasParent ? QVariant(qn.m_parentId) : QVariant();
        if (!question.Row(qn.m_id, i, qn.m_shortcut, int(qn.GetType()), qn.m_visible,
                          qn.m_shownOnScreen, qn.m_shownOnPaper, parent,
                          VersionList(qn.GetVersions()))) {
            error = question.Error();
            return false;
        }
        for (int r = 0; r < qn.GetNbreModalite(); ++r) {
            const CModalite& m = qn.GetModalite(r);
            if (!response.Row(qn.m_id, m.m_id, r, m.m_entryCode, VersionList(m.GetVersions()))) {
                error = response.Error();
                return false;
            }
        }
    }
    return true;
}

} // namespace

bool WriteQesFile(const QString& path, const CQuestionnaire& q, qint32 programVersion,
                  QString& error) {
    // Built under a name of its own beside the target, then renamed over it.
    const QString temporary =
        QStringLiteral("%1.new-%2").arg(path).arg(QCoreApplication::applicationPid());
    QFile::remove(temporary);
    QSqlDatabase db = qes::OpenConnection(temporary, false, error);
    if (!db.isValid()) {
        error = QStringLiteral("Cannot create the file '%1': %2").arg(path, error);
        return false;
    }
    bool ok = Exec(db, QStringLiteral("PRAGMA encoding = 'UTF-16le'"), error) &&
              Exec(db, QStringLiteral("PRAGMA journal_mode = OFF"), error) && db.transaction();
    for (const QString& statement : qes::CreateStatements())
        ok = ok && Exec(db, statement, error);
    ok = ok && WriteFormat(db, programVersion, error) && WriteStructure(db, q, error) &&
         WriteLanguages(db, q, error) && WriteCaptions(db, q, error) &&
         WriteSystemMessages(db, q, error) && WriteRoutings(db, q, error);
    if (ok && !db.commit()) {
        error = db.lastError().text();
        ok = false;
    }
    qes::CloseConnection(db);
    QString renameError;
    if (ok && !util::ReplaceFile(temporary, path, &renameError)) {
        error = renameError;
        ok = false;
    }
    if (!ok) {
        QFile::remove(temporary);
        error = QStringLiteral("Cannot write the file '%1': %2").arg(path, error);
    }
    return ok;
}

} // namespace questionnaire

namespace questionnaire {
namespace {

// Reads the tables into a questionnaire. Rows about things that do not exist are skipped and
// counted; a value of the wrong kind stops the read.
class QesReader {
public:
    QesReader(QSqlDatabase& db, CQuestionnaire& q) : m_db(db), m_q(q) {}

    quint16 status = kQesOk;
    QString error;
    qint64 skipped = 0;
    qint32 fileProgramVersion = 0;

    bool Header() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT name, instructions_and_comments FROM questionnaire"))
            return false;
        if (query.next()) {
            m_q.SetName(query.value(0).toString());
            m_q.SetAllowingInstructionAndComment(query.value(1).toLongLong() != 0);
        }
        if (!Run(query, "SELECT value FROM format WHERE key = 'program_version'"))
            return false;
        if (query.next())
            fileProgramVersion = query.value(0).toString().toInt();
        return true;
    }

    bool Languages() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT lcid, short_name, name, is_main FROM languages "
                        "ORDER BY position, lcid"))
            return false;
        while (query.next()) {
            auto language = std::make_unique<CLanguage>();
            if (!Int(query, 0, language->m_id))
                return false;
            language->m_shortName = query.value(1).toString();
            language->m_name = query.value(2).toString();
            language->m_isMain = query.value(3).toLongLong() != 0;
            m_q.AddLanguage(std::move(language));
        }
        return Done(query);
    }

    bool Versions() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT id, name FROM versions ORDER BY position, id"))
            return false;
        while (query.next()) {
            auto version = std::make_unique<CVersion>();
            if (!Int(query, 0, version->m_id))
                return false;
            version->m_name = query.value(1).toString();
            m_q.AddVersion(std::move(version));
        }
        return Done(query);
    }

    bool Questions(bool withVersions) {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT id, shortcut, type, visible, on_screen, on_paper, parent_id, "
                        "versions FROM questions ORDER BY position, id"))
            return false;
        while (query.next()) {
            auto qn = std::make_unique<CQuestion>();
            qint32 type = 0;
            if (!Int(query, 0, qn->m_id) || !Int(query, 2, type) || !Int(query, 3, qn->m_visible) ||
                !Int(query, 4, qn->m_shownOnScreen) || !Int(query, 5, qn->m_shownOnPaper))
                return false;
            if (type < 0 || type > int(QuestionType::MultipleChoice))
                return Bad(QStringLiteral("question %1 has an unknown type").arg(qn->m_id));
            qn->SetType(QuestionType(type));
            qn->m_shortcut = query.value(1).toString();
            qn->m_hasParent = !query.value(6).isNull();
            if (qn->m_hasParent && !Int(query, 6, qn->m_parentId))
                return false;
            QList<qint32> versions;
            if (!ParseVersionList(query.value(7).toString(), versions))
                return Bad(QStringLiteral("question %1 lists versions that are not ids").arg(qn->m_id));
            if (withVersions)
                qn->SetVersions(versions);
            m_q.AddQuestion(std::move(qn));
        }
        return Done(query);
    }

    bool Responses(bool withVersions) {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT question_id, id, entry_code, versions FROM responses "
                        "ORDER BY question_id, position, id"))
            return false;
        while (query.next()) {
            qint32 questionId = 0;
            auto response = std::make_unique<CModalite>();
            if (!Int(query, 0, questionId) || !Int(query, 1, response->m_id))
                return false;
            response->m_entryCode = query.value(2).toString();
            QList<qint32> versions;
            if (!ParseVersionList(query.value(3).toString(), versions))
                return Bad(QStringLiteral("a response lists versions that are not ids"));
            if (withVersions)
                response->SetVersions(versions);
            int index = 0;
            if (!m_q.FindQuestionById(questionId, index)) {
                ++skipped;
                continue;
            }
            m_q.GetAdrQuestion(index)->AddModalite(std::move(response));
        }
        return Done(query);
    }

    bool QuestionCaptions() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT question_id, kind, lcid, text FROM question_captions"))
            return false;
        while (query.next()) {
            qint32 questionId = 0, kind = 0, language = 0;
            if (!Int(query, 0, questionId) || !Int(query, 1, kind) || !Int(query, 2, language))
                return false;
            int index = 0;
            if (kind < kComments || kind > kLongCaption || !m_q.FindQuestionById(questionId, index)) {
                ++skipped;
                continue;
            }
            WriteCaption(m_q, questionId, kind, language, query.value(3).toString());
        }
        return Done(query);
    }

    bool ResponseCaptions() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT question_id, response_id, lcid, text FROM response_captions"))
            return false;
        int index = 0;
        qint32 lastQuestion = 0;
        CQuestion* question = nullptr;
        while (query.next()) {
            qint32 questionId = 0, responseId = 0, language = 0;
            if (!Int(query, 0, questionId) || !Int(query, 1, responseId) || !Int(query, 2, language))
                return false;
            if (!question || questionId != lastQuestion) {
                question = m_q.FindQuestionById(questionId, index) ? m_q.GetAdrQuestion(index)
                                                                   : nullptr;
                lastQuestion = questionId;
            }
            CModalite* response = nullptr;
            if (!question || !question->FindAdrModaliteById(responseId, response)) {
                ++skipped;
                continue;
            }
            response->SetLocalisedLongCaption(language, query.value(3).toString());
        }
        return Done(query);
    }

    bool Routings(bool withMessages) {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT id, kind, source_question_id, target_question_id, condition "
                        "FROM routings ORDER BY position, id"))
            return false;
        while (query.next()) {
            auto f = std::make_unique<CFiltre>();
            if (!Int(query, 0, f->m_id) || !Int(query, 1, f->m_kind) ||
                !Int(query, 2, f->m_sourceQuestionId) || !Int(query, 3, f->m_targetQuestionId))
                return false;
            f->m_condition = query.value(4).toString();
            m_q.AddFiltre(std::move(f));
        }
        if (!Done(query) || !withMessages)
            return Done(query);
        if (!Run(query, "SELECT routing_id, lcid, text FROM routing_messages"))
            return false;
        while (query.next()) {
            qint32 routingId = 0, language = 0;
            int index = 0;
            if (!Int(query, 0, routingId) || !Int(query, 1, language))
                return false;
            if (!m_q.FindRoutingById(routingId, index)) {
                ++skipped;
                continue;
            }
            m_q.GetAdrFiltre(index)->SetLocalisedMessage(language, query.value(2).toString());
        }
        return Done(query);
    }

    bool SystemMessages() {
        QSqlQuery query(m_db);
        if (!Run(query, "SELECT number, lcid, text FROM system_messages"))
            return false;
        while (query.next()) {
            qint32 number = 0, language = 0;
            if (!Int(query, 0, number) || !Int(query, 1, language))
                return false;
            const QString text = query.value(2).toString();
            if (number < kFirstSystemMessage || number > kLastSystemMessage || text.isEmpty()) {
                ++skipped;
                continue;
            }
            m_q.SetCustomErrorMessage(language, number, text);
        }
        return Done(query);
    }

private:
    bool Run(QSqlQuery& query, const char* sql) {
        query.setForwardOnly(true);
        if (query.exec(QString::fromLatin1(sql)))
            return true;
        status = kQesReadError;
        error = query.lastError().text();
        return false;
    }
    bool Done(const QSqlQuery& query) {
        if (!query.lastError().isValid())
            return true;
        status = kQesReadError;
        error = query.lastError().text();
        return false;
    }
    bool Bad(const QString& message) {
        status = kQesBadData;
        error = message;
        return false;
    }
    // SQLite keeps whatever a column is given; a number column must hold a 32-bit number.
    bool Int(const QSqlQuery& query, int column, qint32& out) {
        const QVariant value = query.value(column);
        const int type = value.typeId();
        if (type == QMetaType::LongLong || type == QMetaType::Int) {
            const qlonglong number = value.toLongLong();
            if (number >= std::numeric_limits<qint32>::min() &&
                number <= std::numeric_limits<qint32>::max()) {
                out = qint32(number);
                return true;
            }
        }
        return Bad(QStringLiteral("a value of column %1 is not a 32-bit whole number: '%2'")
                       .arg(query.record().fieldName(column), value.toString().left(40)));
    }

    QSqlDatabase& m_db;
    CQuestionnaire& m_q;
};

bool ReadTables(QesReader& reader, bool withCaptions, bool withResponses, bool withRoutings,
                bool withMessages, bool withVersions) {
    return reader.Header() && reader.Languages() && (!withVersions || reader.Versions()) &&
           reader.Questions(withVersions) && (!withResponses || reader.Responses(withVersions)) &&
           (!withCaptions || reader.QuestionCaptions()) &&
           (!withCaptions || !withResponses || reader.ResponseCaptions()) &&
           (!withRoutings || reader.Routings(withCaptions)) &&
           (!withMessages || reader.SystemMessages());
}

bool IntegrityOk(QSqlDatabase& db, QString& error) {
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next()) {
        error = query.lastError().text();
        return false;
    }
    const QString result = query.value(0).toString();
    if (result == QLatin1String("ok"))
        return true;
    error = QStringLiteral("The database is damaged: %1").arg(result);
    return false;
}

} // namespace
} // namespace questionnaire

bool CQuestionnaire::Read(const QString& path, bool withCaptions, bool withResponses,
                          bool withRoutings, bool withMessages, bool withVersions,
                          DataBaseType type, qint32 programVersion, bool checkIntegrity) {
    using namespace questionnaire;
    Clear();
    m_lastError.clear();
    auto fail = [this](quint16 status, const QString& error) {
        Clear();
        m_status = status;
        m_lastError = error;
        return false;
    };
    if (type != dbQesFile)
        return fail(kQesCannotOpen, QStringLiteral("Unknown kind of questionnaire database."));
    if (!QFileInfo(path).isFile())
        return fail(kQesCannotOpen, QStringLiteral("The file '%1' cannot be found.").arg(path));
    QString error;
    QSqlDatabase db = qes::OpenConnection(path, false, error);
    if (!db.isValid())
        return fail(kQesNotADatabase,
                    QStringLiteral("The file '%1' is not a questionnaire database: %2").arg(path, error));
    quint16 status = kQesOk;
    bool ok = true;
    if (checkIntegrity && !IntegrityOk(db, error)) {
        status = kQesBadData;
        ok = false;
    }
    ok = ok && qes::CheckSchema(db, status, error);
    QesReader reader(db, *this);
    // One read transaction: another program saving meanwhile cannot show us half its work.
    if (ok && !db.transaction()) {
        status = kQesReadError;
        error = db.lastError().text();
        ok = false;
    }
    if (ok) {
        ok = ReadTables(reader, withCaptions, withResponses, withRoutings, withMessages,
                        withVersions);
        db.rollback();
        status = reader.status;
        error = reader.error;
    }
    qes::CloseConnection(db);
    if (!ok)
        return fail(status != kQesOk ? status : quint16(kQesReadError),
                    QStringLiteral("Cannot read the questionnaire '%1': %2").arg(path, error));
    m_status = kQesOk;
    if (reader.skipped > 0) {
        m_status = kQesRowsSkipped;
        m_lastError = QStringLiteral("%1 rows of '%2' refer to questions, responses or routings "
                                     "that do not exist and were left out.")
                          .arg(reader.skipped)
                          .arg(path);
    } else if (reader.fileProgramVersion < programVersion) {
        m_status = kQesWrittenByOlderProgram;
        m_lastError = QStringLiteral("'%1' was last saved by an older version of the program.")
                          .arg(path);
    }
    return m_status == kQesOk;
}

// ---------------------------------------------------------------------------------------------

struct CDBStructureAdo::Connection {
    QSqlDatabase db;
    ~Connection() { questionnaire::qes::CloseConnection(db); }
};

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

CDBStructureAdo::~CDBStructureAdo() = default;

bool CDBStructureAdo::Open(bool createIfMissing) {
    using namespace questionnaire;
    m_connection.reset();
    m_lastError.clear();
    const bool exists = QFileInfo(m_path).isFile();
    if (!exists && !createIfMissing) {
        m_lastError = QStringLiteral("CDBStructureAdo::Open: the file '%1' cannot be found.").arg(m_path);
        return false;
    }
    if (!exists) {
        CQuestionnaire empty;
        QString error;
        if (!WriteQesFile(m_path, empty, 0, error)) {
            m_lastError = QStringLiteral("CDBStructureAdo::Open: %1").arg(error);
            return false;
        }
    }
    QString error;
    auto connection = std::make_unique<Connection>();
    connection->db = qes::OpenConnection(m_path, false, error);
    quint16 status = kQesOk;
    if (!connection->db.isValid() || !qes::CheckSchema(connection->db, status, error)) {
        m_lastError = QStringLiteral("CDBStructureAdo::Open: '%1': %2").arg(m_path, error);
        return false;
    }
    m_connection = std::move(connection);
    return true;
}

// Each saver is a savepoint: a transaction of its own, or a part of the caller's transaction
// when one is open, so that a whole document save can succeed or fail as one.
template <class F> bool CDBStructureAdo::InTransaction(const char* operation, F&& work) {
    if (!m_connection) {
        m_lastError = QStringLiteral("CDBStructureAdo::%1: the database is not open.")
                          .arg(QLatin1String(operation));
        return false;
    }
    QSqlDatabase& db = m_connection->db;
    QString error;
    if (!questionnaire::Exec(db, QStringLiteral("SAVEPOINT saver"), error)) {
        m_lastError = QStringLiteral("CDBStructureAdo::%1: %2").arg(QLatin1String(operation), error);
        return false;
    }
    if (work(db, error) && questionnaire::Exec(db, QStringLiteral("RELEASE saver"), error))
        return true;
    QString ignored;
    questionnaire::Exec(db, QStringLiteral("ROLLBACK TO saver"), ignored);
    questionnaire::Exec(db, QStringLiteral("RELEASE saver"), ignored);
    m_lastError = QStringLiteral("CDBStructureAdo::%1: %2").arg(QLatin1String(operation), error);
    return false;
}

bool CDBStructureAdo::BeginTransaction() {
    QString error;
    if (m_connection && questionnaire::Exec(m_connection->db, QStringLiteral("BEGIN"), error))
        return true;
    m_lastError = QStringLiteral("CDBStructureAdo::BeginTransaction: %1")
                      .arg(m_connection ? error : QStringLiteral("the database is not open."));
    return false;
}

bool CDBStructureAdo::CommitTransaction() {
    QString error;
    if (m_connection && questionnaire::Exec(m_connection->db, QStringLiteral("COMMIT"), error))
        return true;
    m_lastError = QStringLiteral("CDBStructureAdo::CommitTransaction: %1").arg(error);
    RollbackTransaction();
    return false;
}

void CDBStructureAdo::RollbackTransaction() {
    QString ignored;
    if (m_connection)
        questionnaire::Exec(m_connection->db, QStringLiteral("ROLLBACK"), ignored);
}

bool CDBStructureAdo::SaveLanguages(CQuestionnaire& q) {
    return InTransaction("SaveLanguages", [&q](QSqlDatabase& db, QString& error) {
        return questionnaire::Exec(db, QStringLiteral("DELETE FROM languages"), error) &&
               questionnaire::WriteLanguages(db, q, error);
    });
}

bool CDBStructureAdo::SaveCaptionsOnly(CQuestionnaire* q) {
    return InTransaction("SaveCaptionsOnly", [q](QSqlDatabase& db, QString& error) {
        return questionnaire::Exec(db, QStringLiteral("DELETE FROM question_captions"), error) &&
               questionnaire::Exec(db, QStringLiteral("DELETE FROM response_captions"), error) &&
               questionnaire::WriteCaptions(db, *q, error);
    });
}

bool CDBStructureAdo::SaveErrorMessages(CQuestionnaire& q) {
    return InTransaction("SaveErrorMessages", [&q](QSqlDatabase& db, QString& error) {
        return questionnaire::Exec(db, QStringLiteral("DELETE FROM system_messages"), error) &&
               questionnaire::WriteSystemMessages(db, q, error);
    });
}

bool CDBStructureAdo::DoSaveFilters(CQuestionnaire* q) {
    return InTransaction("DoSaveFilters", [q](QSqlDatabase& db, QString& error) {
        return questionnaire::Exec(db, QStringLiteral("DELETE FROM routing_messages"), error) &&
               questionnaire::Exec(db, QStringLiteral("DELETE FROM routings"), error) &&
               questionnaire::WriteRoutings(db, *q, error);
    });
}
