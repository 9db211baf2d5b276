#pragma once

#include "util/Outcome.h"

class CQuestionnaire;

namespace util::sql {
class Connection;
}
namespace util {
class ProgressScope;
}

// The rows of each part of a questionnaire database, as a whole new file and the in-place
// savers write them.
namespace questionnaire::qes {

util::Outcome WriteFormat(util::sql::Connection& db, qint32 programVersion);
util::Outcome WriteStructure(util::sql::Connection& db, const CQuestionnaire& q);
util::Outcome WriteLanguages(util::sql::Connection& db, const CQuestionnaire& q);
// Reports each question's captions to `progress` when given.
util::Outcome WriteCaptions(util::sql::Connection& db, const CQuestionnaire& q,
                            util::ProgressScope* progress = nullptr);
util::Outcome WriteSystemMessages(util::sql::Connection& db, const CQuestionnaire& q);
util::Outcome WriteRoutings(util::sql::Connection& db, const CQuestionnaire& q);

} // namespace questionnaire::qes
