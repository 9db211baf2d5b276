#pragma once

#include "campaign/Campaign.h"
#include "util/Outcome.h"
#include "util/SqlConnection.h"

#include <QString>

// Reading a campaign from its database (an SQLite file or a PostgreSQL server) and writing it
// back. A failure's reason names the operation that failed, e.g. "CDBAccessADO::SaveQuestions",
// followed by the database's account of it.
namespace campaign {

// Fills an empty `campaign` from every table: the campaign row, waves by their order with the
// volumes of each wave, languages, versions, tags, classes, questions by their order, responses by
// question and order, captions, matchings and mergings. Rows whose owner the campaign does not
// hold are skipped; columns and tables newer than the file's version text are not read. On
// failure the campaign holds what was read before it.
util::Outcome LoadCampaign(util::sql::Connection& db, varnel_wave::CCampaign& campaign);
util::Outcome LoadCampaign(const QString& location, varnel_wave::CCampaign& campaign);

// Writes the whole campaign in one transaction: rows the campaign no longer holds are deleted,
// the others rewritten in place or added, captions per (question, language) and (response,
// language). On failure the database is as it was. On an SQLite connection the caller enables
// foreign keys (EnableForeignKeys) before; the location form does it itself.
// With `before`, the campaign as it was read from this database, only the rows that differ from
// it are written and only rows it held that are gone are deleted: two people saving different
// languages of one campaign at the same time both keep their work.
util::Outcome SaveCampaign(util::sql::Connection& db, const varnel_wave::CCampaign& campaign,
                           const varnel_wave::CCampaign* before = nullptr);
util::Outcome SaveCampaign(const QString& location, const varnel_wave::CCampaign& campaign);

// The captions of one question (or response), each written into its (owner, language) row, which
// is added when missing; rows of other languages are left alone. One transaction (a savepoint
// within an open one).
util::Outcome SaveQuestionCaptions(util::sql::Connection& db,
                                   const varnel_wave::CQuestion& question);
util::Outcome SaveModalityCaptions(util::sql::Connection& db,
                                   const varnel_wave::CModality& modality);

} // namespace campaign
