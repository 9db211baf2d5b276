#include "questionnaire/formats/QesDatabase.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/QesSchema.h"
#include "util/Progress.h"
#include "util/SqlConnection.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <limits>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

namespace questionnaire {
namespace {

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

} // namespace
} // namespace questionnaire

namespace questionnaire {
namespace {

// Reads the tables into a questionnaire. Rows about things that do not exist are skipped and
// counted; a value of the wrong kind stops the read.
class QesReader {
public:
    QesReader(util::sql::Connection& db, CQuestionnaire& q, util::Progress* progress)
        : m_db(db.Database()), m_q(q), m_progress(progress) {}

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
            if (qn->m_id < 0)
                return Bad(Tr(strings::kQuestionIdNegative).arg(qn->m_id));
            if (type < 0 || type > int(QuestionType::MultipleChoice))
                return Bad(Tr(strings::kQuestionHasUnknownType).arg(qn->m_id));
            qn->SetType(QuestionType(type));
            qn->m_shortcut = query.value(1).toString();
            qn->m_hasParent = !query.value(6).isNull();
            if (qn->m_hasParent && !Int(query, 6, qn->m_parentId))
                return false;
            QList<qint32> versions;
            if (!ParseVersionList(query.value(7).toString(), versions))
                return Bad(Tr(strings::kQuestionListsVersionsIds).arg(qn->m_id));
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
            if (response->m_id < 0)
                return Bad(Tr(strings::kResponseIdNegative).arg(response->m_id).arg(questionId));
            response->m_entryCode = query.value(2).toString();
            QList<qint32> versions;
            if (!ParseVersionList(query.value(3).toString(), versions))
                return Bad(Tr(strings::kResponseListsVersionsIds));
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
        util::ProgressScope progress(m_progress, Tr(strings::kReadingQuestions),
                                     m_q.GetNbreQuestion());
        int questions = 0;
        qint32 lastQuestion = 0;
        while (query.next()) {
            qint32 questionId = 0, kind = 0, language = 0;
            if (!Int(query, 0, questionId) || !Int(query, 1, kind) || !Int(query, 2, language))
                return false;
            if (questionId != lastQuestion) {
                lastQuestion = questionId;
                if (!progress.Advance(++questions))
                    return Stopped();
            }
            int index = 0;
            if (kind < kComments || kind > kLongCaption ||
                !m_q.FindQuestionById(questionId, index)) {
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
        util::ProgressScope progress(m_progress, Tr(strings::kReadingResponses),
                                     m_q.GetNbreQuestion());
        int questions = 0;
        while (query.next()) {
            qint32 questionId = 0, responseId = 0, language = 0;
            if (!Int(query, 0, questionId) || !Int(query, 1, responseId) ||
                !Int(query, 2, language))
                return false;
            if (!question || questionId != lastQuestion) {
                question =
                    m_q.FindQuestionById(questionId, index) ? m_q.GetAdrQuestion(index) : nullptr;
                lastQuestion = questionId;
                if (!progress.Advance(++questions))
                    return Stopped();
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
    bool Stopped() {
        status = kQesReadError;
        error = Tr(strings::kReadingStopped);
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
        return Bad(Tr(strings::kValueColumnBitWholeNumber)
                       .arg(query.record().fieldName(column), value.toString().left(40)));
    }

    QSqlDatabase& m_db;
    CQuestionnaire& m_q;
    util::Progress* m_progress;
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

bool IntegrityOk(util::sql::Connection& db, QString& error) {
    QSqlQuery query(db.Database());
    if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next()) {
        error = query.lastError().text();
        return false;
    }
    const QString result = query.value(0).toString();
    if (result == QLatin1String("ok"))
        return true;
    error = Tr(strings::kDatabaseDamaged).arg(result);
    return false;
}

} // namespace
} // namespace questionnaire

bool CQuestionnaire::Read(const QString& path, bool withCaptions, bool withResponses,
                          bool withRoutings, bool withMessages, bool withVersions,
                          DataBaseType type, qint32 programVersion, bool checkIntegrity,
                          util::Progress* progress) {
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
        return fail(kQesCannotOpen, Tr(strings::kUnknownKindQuestionnaireDatabase));
    if (!QFileInfo(path).isFile())
        return fail(kQesCannotOpen, Tr(strings::kFileCannotFound).arg(path));
    util::sql::Connection db;
    if (const util::Outcome opened = db.Open(path); !opened)
        return fail(kQesNotADatabase,
                    Tr(strings::kFileQuestionnaireDatabase).arg(path, opened.Reason()));
    quint16 status = kQesOk;
    QString error;
    bool ok = true;
    if (checkIntegrity && !IntegrityOk(db, error)) {
        status = kQesBadData;
        ok = false;
    }
    if (ok) {
        const util::Outcome checked = qes::CheckSchema(db, status);
        ok = bool(checked);
        error = checked.Reason();
    }
    QesReader reader(db, *this, progress);
    // One read transaction: another program saving meanwhile cannot show us half its work.
    util::sql::Transaction transaction(db, util::sql::Transaction::Kind::Read);
    if (ok) {
        const util::Outcome begun = transaction.Begin();
        if (!begun) {
            status = kQesReadError;
            error = begun.Reason();
            ok = false;
        }
    }
    if (ok) {
        ok = ReadTables(reader, withCaptions, withResponses, withRoutings, withMessages,
                        withVersions);
        transaction.Rollback();
        status = reader.status;
        error = reader.error;
    }
    if (!ok)
        return fail(status != kQesOk ? status : quint16(kQesReadError),
                    Tr(strings::kCannotReadQuestionnaire).arg(path, error));
    m_status = kQesOk;
    if (reader.skipped > 0) {
        m_status = kQesRowsSkipped;
        m_lastError =
            Tr(strings::kRowsReferQuestionsResponsesRoutings).arg(reader.skipped).arg(path);
    } else if (reader.fileProgramVersion < programVersion) {
        m_status = kQesWrittenByOlderProgram;
        m_lastError = Tr(strings::kLastSavedOlderVersionProgram).arg(path);
    }
    return m_status == kQesOk;
}
