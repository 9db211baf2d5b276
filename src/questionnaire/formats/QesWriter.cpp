#include "questionnaire/formats/QesWriter.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/Strings.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/QesSchema.h"
#include "util/FileSystem.h"
#include "util/Progress.h"
#include "util/SqlConnection.h"

#include <QCoreApplication>
#include <QFile>

using questionnaire::Tr;
namespace strings = questionnaire::strings;

namespace questionnaire::qes {

namespace {

using util::Outcome;
using util::sql::Inserter;

QString VersionList(const QList<qint32>& versions) {
    QStringList items;
    for (qint32 id : versions)
        items.append(QString::number(id));
    return items.join(QLatin1Char(' '));
}

bool WriteTexts(Inserter& row, qint32 a, qint32 b, const CLocalisedText& texts) {
    for (const auto& [language, text] : texts.Entries())
        if (!row.Row(a, b, language, text))
            return false;
    return true;
}

} // namespace

Outcome WriteFormat(util::sql::Connection& db, qint32 programVersion) {
    Inserter row(db, QStringLiteral("INSERT OR REPLACE INTO format VALUES (?, ?)"));
    row.Row(QStringLiteral("format"), QString::number(kFormatVersion)) &&
        row.Row(QStringLiteral("program_version"), QString::number(programVersion));
    return row.Result();
}

Outcome WriteLanguages(util::sql::Connection& db, const CQuestionnaire& q) {
    Inserter row(db, QStringLiteral("INSERT INTO languages VALUES (?, ?, ?, ?, ?)"));
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& l = q.GetLanguage(i);
        if (!row.Row(l.m_id, i, l.m_shortName, l.m_name, int(l.m_isMain)))
            break;
    }
    return row.Result();
}

Outcome WriteCaptions(util::sql::Connection& db, const CQuestionnaire& q,
                      util::ProgressScope* progress) {
    Inserter questionRow(db, QStringLiteral("INSERT INTO question_captions VALUES (?, ?, ?, ?)"));
    Inserter responseRow(db, QStringLiteral("INSERT INTO response_captions VALUES (?, ?, ?, ?)"));
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        if (progress && !progress->Advance(i))
            return Outcome::Failure(Tr(strings::kStopped));
        const CQuestion& question = q.GetQuestion(i);
        const qint32 id = question.m_id;
        if (!WriteTexts(questionRow, id, kLongCaption, question.LongCaption()) ||
            !WriteTexts(questionRow, id, kShortCaption, question.ShortCaption()) ||
            !WriteTexts(questionRow, id, kInstructions, question.Instructions()) ||
            !WriteTexts(questionRow, id, kComments, question.Comments()))
            return questionRow.Result();
        for (int r = 0; r < question.GetNbreModalite(); ++r) {
            const CModalite& response = question.GetModalite(r);
            if (!WriteTexts(responseRow, id, response.m_id, response.Caption()))
                return responseRow.Result();
        }
    }
    return {};
}

Outcome WriteSystemMessages(util::sql::Connection& db, const CQuestionnaire& q) {
    Inserter row(db, QStringLiteral("INSERT INTO system_messages VALUES (?, ?, ?)"));
    for (qint32 number = kFirstSystemMessage; number <= kLastSystemMessage; ++number)
        for (const auto& [language, text] : q.GetCustomErrorMessages(number).Entries())
            if (!row.Row(number, language, text))
                return row.Result();
    return {};
}

Outcome WriteRoutings(util::sql::Connection& db, const CQuestionnaire& q) {
    Inserter routingRow(db, QStringLiteral("INSERT INTO routings VALUES (?, ?, ?, ?, ?, ?)"));
    Inserter messageRow(db, QStringLiteral("INSERT INTO routing_messages VALUES (?, ?, ?)"));
    for (int i = 0; i < q.GetNbreFiltre(); ++i) {
        const CFiltre& f = q.GetFiltre(i);
        if (!routingRow.Row(f.m_id, i, f.m_kind, f.m_sourceQuestionId, f.m_targetQuestionId,
                            f.m_condition))
            return routingRow.Result();
        for (const auto& [language, text] : f.Message().Entries())
            if (!messageRow.Row(f.m_id, language, text))
                return messageRow.Result();
    }
    return {};
}

Outcome WriteStructure(util::sql::Connection& db, const CQuestionnaire& q) {
    Inserter head(db, QStringLiteral("INSERT INTO questionnaire VALUES (1, ?, ?)"));
    Inserter version(db, QStringLiteral("INSERT INTO versions VALUES (?, ?, ?)"));
    Inserter question(db,
                      QStringLiteral("INSERT INTO questions VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    Inserter response(db, QStringLiteral("INSERT INTO responses VALUES (?, ?, ?, ?, ?)"));
    if (!head.Row(q.GetName(), int(q.IsAllowingInstructionAndComment())))
        return head.Result();
    for (int i = 0; i < q.GetVersionCount(); ++i)
        if (!version.Row(q.GetVersion(i).m_id, i, q.GetVersion(i).m_name))
            return version.Result();
    for (int i = 0; i < q.GetNbreQuestion(); ++i) {
        const CQuestion& qn = q.GetQuestion(i);
        const QVariant parent = qn.m_hasParent ? QVariant(qn.m_parentId) : QVariant();
        if (!question.Row(qn.m_id, i, qn.m_shortcut, int(qn.GetType()), qn.m_visible,
                          qn.m_shownOnScreen, qn.m_shownOnPaper, parent,
                          VersionList(qn.GetVersions())))
            return question.Result();
        for (int r = 0; r < qn.GetNbreModalite(); ++r) {
            const CModalite& m = qn.GetModalite(r);
            if (!response.Row(qn.m_id, m.m_id, r, m.m_entryCode, VersionList(m.GetVersions())))
                return response.Result();
        }
    }
    return {};
}

} // namespace questionnaire::qes

namespace questionnaire {

util::Outcome WriteQesFile(const QString& path, const CQuestionnaire& q, qint32 programVersion,
                           util::Progress* progress) {
    using namespace qes;
    const QString target = util::ReplacementTarget(path);
    if (const QString refused = util::ReplaceRefusal(target, path); !refused.isEmpty())
        return util::Outcome::Failure(Tr(strings::kCannotWriteFile).arg(path, refused));
    // Built under a name of its own beside the target, then renamed over it.
    const QString temporary =
        QStringLiteral("%1.new-%2").arg(target).arg(QCoreApplication::applicationPid());
    QFile::remove(temporary);
    util::Outcome outcome;
    {
        util::sql::Connection db;
        outcome = db.Open(temporary, util::sql::Connection::Mode::ReadWrite, true);
        if (outcome)
            outcome = db.Exec(QStringLiteral("PRAGMA encoding = 'UTF-16le'"));
        if (outcome)
            outcome = db.Exec(QStringLiteral("PRAGMA journal_mode = OFF"));
        util::sql::Transaction transaction(db);
        if (outcome)
            outcome = transaction.Begin();
        for (const QString& statement : CreateStatements())
            if (outcome)
                outcome = db.Exec(statement);
        util::ProgressScope scope(progress, Tr(strings::kWritingQuestionnaire),
                                  q.GetNbreQuestion());
        if (outcome)
            outcome = WriteFormat(db, programVersion);
        for (auto write : {&WriteStructure, &WriteLanguages})
            if (outcome)
                outcome = write(db, q);
        if (outcome)
            outcome = WriteCaptions(db, q, &scope);
        for (auto write : {&WriteSystemMessages, &WriteRoutings})
            if (outcome)
                outcome = write(db, q);
        if (outcome)
            outcome = transaction.Commit();
    }
    QString renameError;
    if (outcome)
        QFile::setPermissions(temporary, util::ReplacementPermissions(target));
    if (outcome && !util::ReplaceFile(temporary, target, &renameError))
        outcome = util::Outcome::Failure(renameError);
    if (!outcome) {
        QFile::remove(temporary);
        return util::Outcome::Failure(Tr(strings::kCannotWriteFile).arg(path, outcome.Reason()));
    }
    return {};
}

} // namespace questionnaire
