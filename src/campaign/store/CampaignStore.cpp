#include "campaign/store/CampaignStore.h"

#include "campaign/schema/CampaignDatabase.h"
#include "campaign/schema/CampaignSchema.h"
#include "campaign/schema/Migrations.h"
#include "campaign/store/StoreStrings.h"
#include "util/OleDate.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

using util::Outcome;
using util::sql::Connection;
using util::sql::Dialect;
using util::sql::Transaction;
using namespace varnel_wave;

namespace campaign {
namespace {

namespace op = operation;

QString Tr(const char* text) {
    return QCoreApplication::translate(storestrings::kContext, text);
}

Outcome DatabaseFailure(const char* operation, const QSqlError& error) {
    return Outcome::Failure(
        Tr(storestrings::kDatabaseError)
            .arg(QLatin1String(operation), error.databaseText(), error.driverText()));
}

Outcome UnknownFailure(const char* operation) {
    return Outcome::Failure(Tr(storestrings::kUnknownError).arg(QLatin1String(operation)));
}

// Whatever failed below an operation is reported under the operation's own name.
Outcome Under(const char* operation, const Outcome& outcome) {
    if (outcome)
        return outcome;
    return Outcome::Failure(Tr(storestrings::kDatabaseError)
                                .arg(QLatin1String(operation), outcome.Reason(), QString()));
}

// Whether the file's version text is older than the version that brought a column or table.
bool IsOlderThan(const QString& version, const char* than) {
    return IsOlder(ParseVersion(version).version, ParseVersion(QLatin1String(than)).version);
}

// --- reading ---

// Qt's driver for the server decodes texts as UTF-8 that drops a first U+FEFF, taking it for a
// byte order mark. Text columns are asked for with this character in front, taken off again on
// reading, so that a text's own first character is never the first.
constexpr char kTextGuard[] = "~";

// What to select from a table: on the server, its text columns behind the guard.
QString SelectList(Connection& db, const QString& table, const Table* described) {
    if (db.GetDialect() != Dialect::PostgreSql || !described)
        return QStringLiteral("*");
    QStringList parts;
    for (const QString& name : db.Columns(table)) {
        const Column* column = described->FindColumn(name);
        const QString quoted = db.Quote(name);
        parts.append(column && IsTextCode(column->type)
                         ? QStringLiteral("'%1' || %2 AS %2").arg(QLatin1String(kTextGuard), quoted)
                         : quoted);
    }
    return parts.isEmpty() ? QStringLiteral("*") : parts.join(QStringLiteral(", "));
}

// The columns of the current row by name; a column the table lacks reads as its default.
class RowReader {
public:
    RowReader(const QSqlQuery& query, Dialect dialect, const Table* described)
        : m_query(query), m_record(query.record()), m_dialect(dialect) {
        if (m_dialect != Dialect::PostgreSql || !described)
            return;
        for (int i = 0; i < m_record.count(); ++i) {
            const Column* column = described->FindColumn(m_record.fieldName(i));
            m_guarded.push_back(column && IsTextCode(column->type));
        }
    }

    qint32 Long(const char* column) const { return Value(column).toInt(); }
    bool YesNo(const char* column) const { return Value(column).toBool(); }
    // A Yes/No column the table may lack: `absent` when it does.
    bool YesNo(const char* column, bool absent) const {
        const QVariant value = Value(column);
        return value.isValid() ? value.toBool() : absent;
    }
    double Double(const char* column) const { return Value(column).toDouble(); }
    QString Text(const char* column) const { return Value(column).toString(); }
    double Date(const char* column) const {
        const QVariant value = Value(column);
        if (value.isNull())
            return 0;
        if (m_dialect == Dialect::Sqlite)
            return value.toDouble();
        // Stored as the wall-clock time it was written with.
        const QDateTime stored = value.toDateTime();
        return util::ToOleDate(QDateTime(stored.date(), stored.time()));
    }

private:
    QVariant Value(const char* column) const {
        const int index = m_record.indexOf(QLatin1String(column));
        if (index < 0)
            return QVariant();
        const QVariant value = m_query.value(index);
        if (size_t(index) < m_guarded.size() && m_guarded[size_t(index)] && !value.isNull())
            return QVariant(value.toString().mid(1));
        return value;
    }

    const QSqlQuery& m_query;
    QSqlRecord m_record;
    Dialect m_dialect;
    std::vector<bool> m_guarded; // by column: selected behind kTextGuard
};

using RowFill = std::function<void(const RowReader&)>;

Outcome ReadRows(Connection& db, const char* operation, const QString& table, const QString& where,
                 const QVariantList& binds, const QStringList& orderBy, const RowFill& fill) {
    // Sorted by the columns as the table declares them: a server matches quoted names exactly.
    const Table* described = CampaignSchema().FindTable(table);
    QStringList order;
    for (const QString& column : orderBy) {
        const QString declared = described ? described->ResolveColumn(column) : QString();
        order.append(db.Quote(declared.isEmpty() ? column : declared));
    }
    QString sql =
        QStringLiteral("SELECT %1 FROM %2").arg(SelectList(db, table, described), db.Quote(table));
    if (!where.isEmpty())
        sql += QStringLiteral(" WHERE ") + where;
    if (!order.isEmpty())
        sql += QStringLiteral(" ORDER BY ") + order.join(QStringLiteral(", "));
    QSqlQuery query = db.Query();
    if (!query.prepare(sql))
        return DatabaseFailure(operation, query.lastError());
    for (qsizetype i = 0; i < binds.size(); ++i)
        query.bindValue(static_cast<int>(i), binds[i]);
    if (!query.exec())
        return DatabaseFailure(operation, query.lastError());
    const RowReader row(query, db.GetDialect(), described);
    while (query.next())
        fill(row);
    if (query.lastError().isValid())
        return DatabaseFailure(operation, query.lastError());
    return {};
}

Outcome ReadRows(Connection& db, const char* operation, const char* table,
                 const QStringList& orderBy, const RowFill& fill) {
    return ReadRows(db, operation, QLatin1String(table), QString(), {}, orderBy, fill);
}

QStringList Columns(std::initializer_list<const char*> names) {
    QStringList columns;
    for (const char* name : names)
        columns.append(QLatin1String(name));
    return columns;
}

Outcome ReadCampaignRow(Connection& db, CCampaign& campaign) {
    bool first = true;
    return ReadRows(db, op::kReadCampaign, "Campaigns", {}, [&](const RowReader& row) {
        if (!first)
            return; // one row describes the campaign
        first = false;
        campaign.m_name = row.Text("Name");
        campaign.m_description = row.Text("Description");
        campaign.m_versionNumber = row.Text("VersionNumber");
    });
}

Outcome ReadWaves(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadWaves, "Waves", Columns({"WaveOrder"}), [&](const RowReader& row) {
        auto wave = std::make_unique<CWave>();
        wave->m_waveID = row.Long("WaveID");
        wave->m_waveOrder = row.Long("WaveOrder");
        wave->m_name = row.Text("Name");
        wave->m_description = row.Text("Description");
        wave->m_waveStart = row.Date("WaveStart");
        wave->m_waveEnd = row.Date("WaveEnd");
        wave->m_waveMidpoint = row.Date("WaveMidpoint");
        campaign.AddWave(std::move(wave));
    });
}

std::unique_ptr<CVolume> VolumeFromRow(const RowReader& row, const QString& version) {
    auto volume = std::make_unique<CVolume>();
    volume->m_volumeID = row.Long("VolumeID");
    volume->m_name = row.Text("Name");
    volume->m_waveID = row.Long("WaveID");
    volume->m_inheritsFromVolumeID = row.Long("InheritsFromVolumeID");
    volume->m_sourceType = row.Long("SourceType");
    volume->m_metaData = row.Text("MetaData");
    volume->m_caseData = row.Text("CaseData");
    volume->m_isMatchingStrict = row.YesNo("IsMatchingStrict");
    volume->m_questionMatchingMethods = row.Text("QuestionMatchingMethods");
    volume->m_responseMatchingMethods = row.Text("ResponseMatchingMethods");
    volume->m_isMainVolume = row.YesNo("IsMainVolume");
    volume->m_interviewMergeMethod = row.Long("InterviewMergeMethod");
    volume->m_mainVolumeLinkQuestionID = row.Long("MainVolumeLinkQuestionID");
    volume->m_thisVolumeLinkQuestionID = row.Text("ThisVolumeLinkQuestionID");
    volume->m_status = row.Long("Status");
    // What an older file holds in columns added after it was written means nothing.
    if (!IsOlderThan(version, "5.2.0.0"))
        volume->m_caseSensitiveMatching = row.YesNo("CaseSensitiveMatching");
    if (!IsOlderThan(version, "5.1.6.15"))
        volume->m_matchUsingAncestorValues = row.YesNo("MatchUsingAncestorValues");
    if (!IsOlderThan(version, "5.3.0.0")) {
        volume->m_addNoNewQuestions = row.YesNo("AddNoNewQuestions");
        volume->m_reconciliationSourceQuestionIDs = row.Text("ReconciliationSourceQuestionIDs");
    }
    return volume;
}

Outcome ReadVolumes(Connection& db, CCampaign& campaign) {
    const QString where = db.Quote(QStringLiteral("WaveID")) + QStringLiteral(" = ?");
    for (const auto& wave : campaign.Waves()) {
        const Outcome read =
            ReadRows(db, op::kReadVolumes, QStringLiteral("Volumes"), where, {wave->m_waveID},
                     Columns({"VolumeID"}), [&](const RowReader& row) {
                         campaign.AddVolume(VolumeFromRow(row, campaign.m_versionNumber));
                     });
        if (!read)
            return read;
    }
    return {};
}

Outcome ReadLanguages(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadLanguages, "Languages", Columns({"LanguageID"}),
                    [&](const RowReader& row) {
                        auto language = std::make_unique<CLanguage>();
                        language->m_languageID = row.Long("LanguageID");
                        language->m_isDefault = row.YesNo("IsDefault");
                        language->m_languageName = row.Text("LanguageName");
                        campaign.AddLanguage(std::move(language));
                    });
}

Outcome ReadVersions(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadVersions, "Versions", Columns({"VersionID"}),
                    [&](const RowReader& row) {
                        auto version = std::make_unique<CVersion>();
                        version->m_versionID = row.Long("VersionID");
                        version->m_longCaption = row.Text("LongCaption");
                        version->m_shortCaption = row.Text("ShortCaption");
                        campaign.AddVersion(std::move(version));
                    });
}

Outcome ReadTags(Connection& db, CCampaign& campaign) {
    if (IsOlderThan(campaign.m_versionNumber, "5.5.2.4"))
        return {}; // files before tags have no tag table
    return ReadRows(db, op::kReadTags, "Tags", Columns({"TagID"}), [&](const RowReader& row) {
        auto tag = std::make_unique<CQuelSurveyTag>();
        tag->m_tagID = row.Long("TagID");
        tag->m_caption = row.Text("Caption");
        tag->m_description = row.Text("Description");
        campaign.AddTag(std::move(tag));
    });
}

Outcome ReadQuestionClasses(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadQuestionClasses, "QuestionClasses", Columns({"QuestionClassID"}),
                    [&](const RowReader& row) {
                        auto questionClass = std::make_unique<CQuestionClass>();
                        questionClass->m_questionClassID = row.Long("QuestionClassID");
                        questionClass->m_caption = row.Text("Caption");
                        campaign.AddQuestionClass(std::move(questionClass));
                    });
}

Outcome ReadQuestions(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadQuestions, "Questions", Columns({"Order"}),
                    [&](const RowReader& row) {
                        auto question = std::make_unique<CQuestion>();
                        question->m_questionID = row.Long("QuestionID");
                        question->m_isDeleted = row.YesNo("IsDeleted");
                        question->m_order = row.Long("Order");
                        question->m_shortcut = row.Text("Shortcut");
                        question->m_indent = row.Long("Indent");
                        question->m_elementType = row.Long("ElementType");
                        question->m_questionType = row.Long("QuestionType");
                        question->m_isDontKnow = row.YesNo("IsDontKnow");
                        question->m_isSemiOpen = row.YesNo("IsSemiOpen");
                        question->m_isScale = row.YesNo("IsScale");
                        question->m_isMultiple = row.YesNo("IsMultiple");
                        question->m_isRanked = row.YesNo("IsRanked");
                        question->m_maxResponseCount = row.Long("MaxResponseCount");
                        question->m_decimals = row.Long("Decimals");
                        question->m_minValue = row.Double("MinValue");
                        question->m_maxValue = row.Double("MaxValue");
                        question->m_isLevelLink = row.YesNo("IsLevelLink");
                        question->m_linkQuestionID = row.Long("LinkQuestionID");
                        question->m_isProbabilityQuestion = row.YesNo("IsProbabilityQuestion");
                        question->m_dateType = row.Long("DateType");
                        question->m_questionClassID = row.Long("QuestionClassID");
                        question->m_versions = row.Text("Versions");
                        question->m_userData = row.Text("UserData");
                        // A file without these two columns gets them filled with true when it is
                        // migrated: a question read from it holds what it will hold.
                        question->m_isDevelopLevels = row.YesNo("IsDevelopLevels", true);
                        question->m_appearanceVolumeID = row.Long("AppearanceVolumeID");
                        question->m_deletionWaveID = row.Long("DeletionWaveID");
                        question->m_isVisibleInAnalyse = row.YesNo("IsVisibleInAnalyse", true);
                        question->m_tags = row.Text("Tags");
                        campaign.AddQuestion(std::move(question));
                    });
}

Outcome ReadQuestionCaptions(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadQuestionCaptions, "QuestionCaptions",
                    Columns({"QuestionID", "LanguageID"}), [&](const RowReader& row) {
                        auto caption = std::make_unique<CQuestionCaption>();
                        caption->m_questionID = row.Long("QuestionID");
                        caption->m_languageID = row.Long("LanguageID");
                        caption->m_longCaption = row.Text("LongCaption");
                        caption->m_shortCaption = row.Text("ShortCaption");
                        campaign.AddQuestionCaption(std::move(caption));
                    });
}

Outcome ReadQuestionMatchings(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadQuestionMatchings, "QuestionMatchings",
                    Columns({"QuestionID", "VolumeID"}), [&](const RowReader& row) {
                        auto matching = std::make_unique<CQuestionMatching>();
                        matching->m_questionID = row.Long("QuestionID");
                        matching->m_volumeID = row.Long("VolumeID");
                        matching->m_sourceID = row.Text("SourceID");
                        matching->m_startVolumeID = row.Long("StartVolumeID");
                        matching->m_endVolumeID = row.Long("EndVolumeID");
                        campaign.AddQuestionMatching(std::move(matching));
                    });
}

Outcome ReadModalities(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadModalities, "Modalities", Columns({"QuestionID", "ModalityOrder"}),
                    [&](const RowReader& row) {
                        auto modality = std::make_unique<CModality>();
                        modality->m_modalityID = row.Long("ModalityID");
                        modality->m_questionID = row.Long("QuestionID");
                        modality->m_isDeleted = row.YesNo("IsDeleted");
                        modality->m_modalityOrder = row.Long("ModalityOrder");
                        modality->m_value = row.Double("Value");
                        modality->m_entryCode = row.Text("EntryCode");
                        modality->m_isExclusive = row.YesNo("IsExclusive");
                        modality->m_rotationBehaviour = row.Long("RotationBehaviour");
                        modality->m_versions = row.Text("Versions");
                        modality->m_userData = row.Text("UserData");
                        modality->m_appearanceVolumeID = row.Long("AppearanceVolumeID");
                        modality->m_deletionWaveID = row.Long("DeletionWaveID");
                        modality->m_baseType = row.Long("BaseType");
                        modality->m_tags = row.Text("Tags");
                        campaign.AddModality(std::move(modality));
                    });
}

Outcome ReadModalityCaptions(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadModalityCaptions, "ModalityCaptions",
                    Columns({"ModalityID", "LanguageID"}), [&](const RowReader& row) {
                        auto caption = std::make_unique<CModalityCaption>();
                        caption->m_modalityID = row.Long("ModalityID");
                        caption->m_questionID = row.Long("QuestionID");
                        caption->m_languageID = row.Long("LanguageID");
                        caption->m_shortCaption = row.Text("ShortCaption");
                        campaign.AddModalityCaption(std::move(caption));
                    });
}

Outcome ReadModalityMatchings(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadModalityMatchings, "ModalityMatchings",
                    Columns({"ModalityID", "QuestionID", "VolumeID"}), [&](const RowReader& row) {
                        auto matching = std::make_unique<CModalityMatching>();
                        matching->m_modalityID = row.Long("ModalityID");
                        matching->m_questionID = row.Long("QuestionID");
                        matching->m_volumeID = row.Long("VolumeID");
                        matching->m_modalitySourceID = row.Text("ModalitySourceID");
                        matching->m_startVolumeID = row.Long("StartVolumeID");
                        matching->m_endVolumeID = row.Long("EndVolumeID");
                        campaign.AddModalityMatching(std::move(matching));
                    });
}

Outcome ReadModalityMergings(Connection& db, CCampaign& campaign) {
    return ReadRows(db, op::kReadModalityMergings, "ModalityMergings",
                    Columns({"MasterModalityID", "ChildModalityID"}), [&](const RowReader& row) {
                        auto merging = std::make_unique<CModalityMerging>();
                        merging->m_masterModalityID = row.Long("MasterModalityID");
                        merging->m_childModalityID = row.Long("ChildModalityID");
                        merging->m_mergeVolumeID = row.Long("MergeVolumeID");
                        campaign.AddModalityMerging(std::move(merging));
                    });
}

// --- writing ---

// One row's values in the order of its table's declared columns, in memory types.
using Values = QVariantList;

// A value as the column takes it on this engine.
QVariant ToColumn(const QVariant& value, const Column& column, Dialect dialect) {
    if (column.type == kYesNo)
        return QVariant(value.toBool());
    if (column.type == kDateTime) {
        if (dialect == Dialect::Sqlite)
            return QVariant(value.toDouble());
        // The wall-clock time as text, so that no time zone of the session shifts it.
        const QDateTime local = util::FromOleDate(value.toDouble());
        if (!local.isValid())
            return QVariant(QMetaType::fromType<QString>());
        return QVariant(local.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")));
    }
    if (IsTextCode(column.type)) {
        const QString text = value.toString();
        // Columns that refuse an empty text keep "no text" as NULL.
        if (text.isEmpty())
            return column.allowZeroLength ? QVariant(QString(QLatin1String("")))
                                          : QVariant(QMetaType::fromType<QString>());
        return util::sql::TextValue(text, dialect);
    }
    if (column.type == kDouble)
        return QVariant(value.toDouble());
    return QVariant(value.toInt());
}

using Key = std::vector<qint64>;

// Writes rows of one table in place: a row with the key of one given is rewritten, one without
// is added; with `deleteOperation`, rows whose keys are not among the given ones are deleted
// first, under that operation's name.
class TableWriter {
public:
    TableWriter(Connection& db, const char* table) : m_db(db) {
        m_table = CampaignSchema().FindTable(QLatin1String(table));
        for (const Index& index : m_table->indexes)
            if (index.primary)
                for (const QString& name : index.columns)
                    m_keyNames.append(m_table->ResolveColumn(name));
        for (size_t i = 0; i < m_table->columns.size(); ++i)
            (m_keyNames.contains(m_table->columns[i].name) ? m_keyPositions : m_otherPositions)
                .push_back(i);
    }

    // Without `before`, every row is written: the keys the table holds are read once, rows with
    // one of them are rewritten and the others added in batches; with `deleteOperation`, rows
    // whose keys are not among the given ones are deleted first, under that operation's name.
    // With `before`, the rows as the database held them when read: only rows that differ from
    // those are written (each rewritten, or added when the database no longer has it), and only
    // rows that were there and are gone are deleted, so that rows another writer changed or added
    // meanwhile are left alone.
    Outcome Write(const char* operation, const char* deleteOperation,
                  const std::vector<Values>& rows, const std::vector<Values>* before = nullptr) {
        for (const Values& row : rows)
            if (static_cast<size_t>(row.size()) != m_table->columns.size())
                return UnknownFailure(operation);
        return before ? WriteChanges(operation, deleteOperation, rows, *before)
                      : WriteAll(operation, deleteOperation, rows);
    }

private:
    static constexpr int kRowsPerInsert = 64;

    static const Key& KeyFrom(const Key& key) { return key; }
    static const Key& KeyFrom(const std::pair<const Key, const Values*>& entry) {
        return entry.first;
    }

    // Deletes the rows among `present` (keys, or rows by key) that `rows` no longer holds; with
    // no delete operation the table keeps every row.
    template <class Present>
    Outcome DeleteGone(const char* deleteOperation, const std::vector<Values>& rows,
                       const Present& present) {
        if (!deleteOperation)
            return {};
        std::set<Key> kept;
        for (const Values& row : rows)
            kept.insert(KeyOf(row));
        std::vector<Key> removed;
        for (const auto& entry : present)
            if (!kept.count(KeyFrom(entry)))
                removed.push_back(KeyFrom(entry));
        return DeleteKeys(deleteOperation, removed);
    }

    Outcome WriteAll(const char* operation, const char* deleteOperation,
                     const std::vector<Values>& rows) {
        std::set<Key> existing;
        if (const Outcome read =
                ExistingKeys(deleteOperation ? deleteOperation : operation, existing);
            !read)
            return read;
        if (const Outcome deleted = DeleteGone(deleteOperation, rows, existing); !deleted)
            return deleted;
        QSqlQuery update = m_db.Query();
        if (!update.prepare(UpdateSql()))
            return DatabaseFailure(operation, update.lastError());
        std::vector<const Values*> added;
        for (const Values& row : rows) {
            if (!existing.count(KeyOf(row))) {
                added.push_back(&row);
                continue;
            }
            if (!Update(update, row))
                return DatabaseFailure(operation, update.lastError());
        }
        return Insert(operation, added);
    }

    Outcome WriteChanges(const char* operation, const char* deleteOperation,
                         const std::vector<Values>& rows, const std::vector<Values>& before) {
        std::map<Key, const Values*> read;
        for (const Values& row : before)
            read.emplace(KeyOf(row), &row);
        if (const Outcome deleted = DeleteGone(deleteOperation, rows, read); !deleted)
            return deleted;
        QSqlQuery update = m_db.Query();
        if (!update.prepare(UpdateSql()))
            return DatabaseFailure(operation, update.lastError());
        for (const Values& row : rows) {
            const auto found = read.find(KeyOf(row));
            if (found != read.end() && *found->second == row)
                continue;
            if (!Update(update, row))
                return DatabaseFailure(operation, update.lastError());
            if (update.numRowsAffected() > 0)
                continue;
            if (const Outcome inserted = Insert(operation, {&row}); !inserted)
                return inserted;
        }
        return {};
    }

    bool Update(QSqlQuery& update, const Values& row) const {
        int bound = 0;
        for (size_t position : m_otherPositions)
            update.bindValue(bound++, Bound(row, position));
        for (size_t position : m_keyPositions)
            update.bindValue(bound++, Bound(row, position));
        return update.exec();
    }

    // Adds rows several to a statement: each statement is a round trip to a server.
    Outcome Insert(const char* operation, const std::vector<const Values*>& rows) {
        QSqlQuery batch = m_db.Query();
        if (rows.size() >= size_t(kRowsPerInsert) && !batch.prepare(InsertSql(kRowsPerInsert)))
            return DatabaseFailure(operation, batch.lastError());
        QSqlQuery single = m_db.Query();
        if (!single.prepare(InsertSql(1)))
            return DatabaseFailure(operation, single.lastError());
        const size_t columns = m_table->columns.size();
        for (size_t first = 0; first < rows.size();) {
            const bool full = rows.size() - first >= size_t(kRowsPerInsert);
            QSqlQuery& insert = full ? batch : single;
            const size_t count = full ? size_t(kRowsPerInsert) : 1;
            for (size_t r = 0; r < count; ++r)
                for (size_t position = 0; position < columns; ++position)
                    insert.bindValue(static_cast<int>(r * columns + position),
                                     Bound(*rows[first + r], position));
            if (!insert.exec())
                return DatabaseFailure(operation, insert.lastError());
            first += count;
        }
        return {};
    }

    QVariant Bound(const Values& row, size_t position) const {
        return ToColumn(row[static_cast<qsizetype>(position)], m_table->columns[position],
                        m_db.GetDialect());
    }

    QString Equations(const std::vector<size_t>& positions, const char* separator) const {
        QStringList parts;
        for (size_t position : positions)
            parts.append(m_db.Quote(m_table->columns[position].name) + QStringLiteral(" = ?"));
        return parts.join(QLatin1String(separator));
    }

    QString UpdateSql() const {
        return QStringLiteral("UPDATE %1 SET %2 WHERE %3")
            .arg(m_db.Quote(m_table->name), Equations(m_otherPositions, ", "),
                 Equations(m_keyPositions, " AND "));
    }

    QString InsertSql(int rowCount) const {
        QStringList names;
        QStringList marks;
        for (const Column& column : m_table->columns) {
            names.append(m_db.Quote(column.name));
            marks.append(QStringLiteral("?"));
        }
        const QString row = QLatin1Char('(') + marks.join(QStringLiteral(", ")) + QLatin1Char(')');
        QStringList rowsText;
        for (int i = 0; i < rowCount; ++i)
            rowsText.append(row);
        return QStringLiteral("INSERT INTO %1 (%2) VALUES %3")
            .arg(m_db.Quote(m_table->name), names.join(QStringLiteral(", ")),
                 rowsText.join(QStringLiteral(", ")));
    }

    Key KeyOf(const Values& row) const {
        Key key;
        for (size_t position : m_keyPositions)
            key.push_back(row.value(static_cast<qsizetype>(position)).toLongLong());
        return key;
    }

    Outcome ExistingKeys(const char* operation, std::set<Key>& keys) {
        QStringList keyColumns;
        for (size_t position : m_keyPositions)
            keyColumns.append(m_db.Quote(m_table->columns[position].name));
        QSqlQuery select = m_db.Query();
        if (!select.exec(
                QStringLiteral("SELECT %1 FROM %2")
                    .arg(keyColumns.join(QStringLiteral(", ")), m_db.Quote(m_table->name))))
            return DatabaseFailure(operation, select.lastError());
        while (select.next()) {
            Key key;
            for (size_t i = 0; i < m_keyPositions.size(); ++i)
                key.push_back(select.value(static_cast<int>(i)).toLongLong());
            keys.insert(std::move(key));
        }
        return {};
    }

    Outcome DeleteKeys(const char* operation, const std::vector<Key>& removed) {
        if (removed.empty())
            return {};
        QSqlQuery remove = m_db.Query();
        if (!remove.prepare(
                QStringLiteral("DELETE FROM %1 WHERE %2")
                    .arg(m_db.Quote(m_table->name), Equations(m_keyPositions, " AND "))))
            return DatabaseFailure(operation, remove.lastError());
        for (const Key& key : removed) {
            for (size_t i = 0; i < key.size(); ++i)
                remove.bindValue(static_cast<int>(i), QVariant(static_cast<int>(key[i])));
            if (!remove.exec())
                return DatabaseFailure(operation, remove.lastError());
        }
        return {};
    }

    Connection& m_db;
    const Table* m_table = nullptr;
    QStringList m_keyNames;
    std::vector<size_t> m_keyPositions;
    std::vector<size_t> m_otherPositions;
};

Values RowOf(const CWave& wave) {
    return {wave.m_waveID,    wave.m_waveOrder, wave.m_name,        wave.m_description,
            wave.m_waveStart, wave.m_waveEnd,   wave.m_waveMidpoint};
}

Values RowOf(const CVolume& volume) {
    return {volume.m_volumeID,
            volume.m_name,
            volume.m_waveID,
            volume.m_inheritsFromVolumeID,
            volume.m_sourceType,
            volume.m_metaData,
            volume.m_caseData,
            volume.m_isMatchingStrict,
            volume.m_questionMatchingMethods,
            volume.m_responseMatchingMethods,
            volume.m_isMainVolume,
            volume.m_interviewMergeMethod,
            volume.m_mainVolumeLinkQuestionID,
            volume.m_thisVolumeLinkQuestionID,
            volume.m_status,
            volume.m_caseSensitiveMatching,
            volume.m_matchUsingAncestorValues,
            volume.m_addNoNewQuestions,
            volume.m_reconciliationSourceQuestionIDs};
}

Values RowOf(const CQuestion& q) {
    return {q.m_questionID,
            q.m_isDeleted,
            q.m_order,
            q.m_shortcut,
            q.m_indent,
            q.m_elementType,
            q.m_questionType,
            q.m_isDontKnow,
            q.m_isSemiOpen,
            q.m_isScale,
            q.m_isMultiple,
            q.m_isRanked,
            q.m_maxResponseCount,
            q.m_decimals,
            q.m_minValue,
            q.m_maxValue,
            q.m_isLevelLink,
            q.m_linkQuestionID,
            q.m_isProbabilityQuestion,
            q.m_dateType,
            q.m_questionClassID,
            q.m_versions,
            q.m_userData,
            q.m_isDevelopLevels,
            q.m_appearanceVolumeID,
            q.m_deletionWaveID,
            q.m_isVisibleInAnalyse,
            q.m_tags};
}

Values RowOf(const CModality& m) {
    return {m.m_modalityID, m.m_questionID, m.m_isDeleted,          m.m_modalityOrder,
            m.m_value,      m.m_entryCode,  m.m_isExclusive,        m.m_rotationBehaviour,
            m.m_versions,   m.m_userData,   m.m_appearanceVolumeID, m.m_deletionWaveID,
            m.m_baseType,   m.m_tags};
}

Values RowOf(const CQuestionMatching& m) {
    return {m.m_questionID, m.m_volumeID, m.m_sourceID, m.m_startVolumeID, m.m_endVolumeID};
}

Values RowOf(const CModalityMatching& m) {
    return {m.m_modalityID,       m.m_questionID,    m.m_volumeID,
            m.m_modalitySourceID, m.m_startVolumeID, m.m_endVolumeID};
}

Values RowOf(const CQuestionCaption& c) {
    return {c.m_questionID, c.m_languageID, c.m_longCaption, c.m_shortCaption};
}

Values RowOf(const CModalityCaption& c) {
    return {c.m_modalityID, c.m_questionID, c.m_languageID, c.m_shortCaption};
}

Values RowOf(const CModalityMerging& m) {
    return {m.m_masterModalityID, m.m_childModalityID, m.m_mergeVolumeID};
}

Values RowOf(const CLanguage& l) {
    return {l.m_languageID, l.m_isDefault, l.m_languageName};
}
Values RowOf(const CVersion& v) {
    return {v.m_versionID, v.m_longCaption, v.m_shortCaption};
}
Values RowOf(const CQuelSurveyTag& t) {
    return {t.m_tagID, t.m_caption, t.m_description};
}
Values RowOf(const CQuestionClass& c) {
    return {c.m_questionClassID, c.m_caption};
}

template <class List> std::vector<Values> RowsOf(const List& list) {
    std::vector<Values> rows;
    rows.reserve(list.size());
    for (const auto& item : list)
        rows.push_back(RowOf(*item));
    return rows;
}

// Every row of a campaign, table by table, in the order the campaign keeps them.
struct CampaignRows {
    Values campaign;
    std::vector<Values> languages, questionClasses, waves, volumes, questions, questionMatchings,
        questionCaptions, modalities, modalityMatchings, modalityCaptions, mergings, versions, tags;
};

CampaignRows RowsOfCampaign(const CCampaign& c) {
    CampaignRows rows;
    rows.campaign = {c.m_name, c.m_description, c.m_versionNumber};
    rows.languages = RowsOf(c.Languages());
    rows.questionClasses = RowsOf(c.QuestionClasses());
    rows.waves = RowsOf(c.Waves());
    rows.volumes = RowsOf(c.Volumes());
    rows.questions = RowsOf(c.Questions());
    rows.modalities = RowsOf(c.Modalities());
    rows.versions = RowsOf(c.Versions());
    rows.tags = RowsOf(c.Tags());
    for (const auto& question : c.Questions()) {
        for (const auto& matching : question->m_matchings)
            rows.questionMatchings.push_back(RowOf(*matching));
        for (const auto& caption : question->m_captions)
            rows.questionCaptions.push_back(RowOf(*caption));
    }
    for (const CModality* modality : c.Modalities()) {
        for (const auto& matching : modality->m_matchings)
            rows.modalityMatchings.push_back(RowOf(*matching));
        for (const auto& caption : modality->m_captions)
            rows.modalityCaptions.push_back(RowOf(*caption));
        for (const auto& merging : modality->m_mergings)
            rows.mergings.push_back(RowOf(*merging));
    }
    return rows;
}

Outcome SaveCampaignRow(Connection& db, const Values& values) {
    const Table& table = *CampaignSchema().FindTable(QStringLiteral("Campaigns"));
    QSqlQuery count = db.Query();
    if (!count.exec(QStringLiteral("SELECT COUNT(*) FROM %1").arg(db.Quote(table.name))) ||
        !count.next())
        return DatabaseFailure(op::kSaveCampaign, count.lastError());
    const bool empty = count.value(0).toLongLong() == 0;
    count.finish();
    QStringList names;
    QStringList marks;
    QStringList sets;
    for (const Column& column : table.columns) {
        names.append(db.Quote(column.name));
        marks.append(QStringLiteral("?"));
        sets.append(db.Quote(column.name) + QStringLiteral(" = ?"));
    }
    // The table holds the campaign's one row: added the first time, edited after.
    const QString sql = empty ? QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                                    .arg(db.Quote(table.name), names.join(QStringLiteral(", ")),
                                         marks.join(QStringLiteral(", ")))
                              : QStringLiteral("UPDATE %1 SET %2")
                                    .arg(db.Quote(table.name), sets.join(QStringLiteral(", ")));
    QSqlQuery write = db.Query();
    if (!write.prepare(sql))
        return DatabaseFailure(op::kSaveCampaign, write.lastError());
    for (size_t i = 0; i < table.columns.size(); ++i)
        write.bindValue(static_cast<int>(i), ToColumn(values[static_cast<qsizetype>(i)],
                                                      table.columns[i], db.GetDialect()));
    if (!write.exec())
        return DatabaseFailure(op::kSaveCampaign, write.lastError());
    return {};
}

Outcome SaveWaves(Connection& db, const CampaignRows& rows, const CampaignRows* before) {
    if (!before || rows.waves != before->waves) {
        // Wave orders are unique row by row: two waves that exchange their places would collide
        // while rewritten one after the other, so the stored orders are first moved out of the
        // way (orders are positions, never negative).
        const QString order = db.Quote(QStringLiteral("WaveOrder"));
        QSqlQuery park = db.Query();
        if (!park.exec(QStringLiteral("UPDATE %1 SET %2 = -%2 - 1")
                           .arg(db.Quote(QStringLiteral("Waves")), order)))
            return DatabaseFailure(op::kSaveWaves, park.lastError());
        // Parked orders of rows that are not rewritten would stay negative: all are written.
        const Outcome waves =
            TableWriter(db, "Waves").Write(op::kSaveWaves, op::kDeleteRemovedWaves, rows.waves);
        if (!waves)
            return waves;
    }
    return TableWriter(db, "Volumes")
        .Write(op::kSaveWaves, op::kDeleteRemovedVolumes, rows.volumes,
               before ? &before->volumes : nullptr);
}

Outcome WriteQuestionCaptions(Connection& db, const char* operation, const CQuestion& question) {
    return TableWriter(db, "QuestionCaptions")
        .Write(operation, nullptr, RowsOf(question.m_captions));
}

Outcome WriteModalityCaptions(Connection& db, const char* operation, const CModality& modality) {
    return TableWriter(db, "ModalityCaptions")
        .Write(operation, nullptr, RowsOf(modality.m_captions));
}

// Writes every table, parents before the rows that refer to them; with `before`, only what
// differs from it.
Outcome SaveEverything(Connection& db, const CampaignRows& rows, const CampaignRows* before) {
    const auto table = [&](const char* name, const char* operation, const char* deleteOperation,
                           std::vector<Values> CampaignRows::*member) {
        return [&db, &rows, before, name, operation, deleteOperation, member] {
            return TableWriter(db, name).Write(operation, deleteOperation, rows.*member,
                                               before ? &(before->*member) : nullptr);
        };
    };
    const std::function<Outcome()> steps[] = {
        [&] {
            return before && rows.campaign == before->campaign ? Outcome()
                                                               : SaveCampaignRow(db, rows.campaign);
        },
        table("Languages", op::kSaveLanguages, op::kSaveLanguages, &CampaignRows::languages),
        table("QuestionClasses", op::kSaveQuestionClasses, op::kSaveQuestionClasses,
              &CampaignRows::questionClasses),
        [&] { return SaveWaves(db, rows, before); },
        table("Questions", op::kSaveQuestions, op::kDeleteRemovedQuestions,
              &CampaignRows::questions),
        table("QuestionMatchings", op::kSaveQuestions, op::kDeleteRemovedQuestionMatchings,
              &CampaignRows::questionMatchings),
        table("QuestionCaptions", op::kSaveAllQuestionCaptions, nullptr,
              &CampaignRows::questionCaptions),
        table("Modalities", op::kSaveModalities, op::kDeleteRemovedModalities,
              &CampaignRows::modalities),
        table("ModalityMatchings", op::kSaveModalities, op::kDeleteRemovedModalityMatchings,
              &CampaignRows::modalityMatchings),
        table("ModalityCaptions", op::kSaveAllModalityCaptions, nullptr,
              &CampaignRows::modalityCaptions),
        table("ModalityMergings", op::kSaveModalityMergings, op::kSaveModalityMergings,
              &CampaignRows::mergings),
        table("Versions", op::kSaveVersions, op::kSaveVersions, &CampaignRows::versions),
        table("Tags", op::kSaveTags, op::kSaveTags, &CampaignRows::tags),
    };
    for (const auto& step : steps) {
        const Outcome saved = step();
        if (!saved)
            return saved;
    }
    return {};
}

// Runs `work` in a transaction of its own (a savepoint within an open one), kept only when all
// of it succeeded.
Outcome InTransaction(Connection& db, const char* operation, const std::function<Outcome()>& work) {
    if (!db.IsOpen())
        return UnknownFailure(operation);
    Transaction transaction(db);
    const Outcome begun = transaction.Begin();
    if (!begun)
        return Under(operation, begun);
    const Outcome done = work();
    if (!done)
        return done; // rolled back as the transaction goes
    return Under(operation, transaction.Commit());
}

} // namespace

Outcome LoadCampaign(Connection& db, CCampaign& campaign) {
    using Read = Outcome (*)(Connection&, CCampaign&);
    // The campaign row first: its version text decides which columns count.
    static constexpr Read kReads[] = {
        ReadCampaignRow,       ReadWaves,
        ReadVolumes,           ReadLanguages,
        ReadVersions,          ReadTags,
        ReadQuestionClasses,   ReadQuestions,
        ReadQuestionCaptions,  ReadQuestionMatchings,
        ReadModalities,        ReadModalityCaptions,
        ReadModalityMatchings, ReadModalityMergings,
    };
    if (!db.IsOpen())
        return UnknownFailure(op::kReadCampaign);
    // One snapshot, so that a save running meanwhile is seen whole or not at all.
    Transaction snapshot(db, Transaction::Kind::Read);
    const Outcome begun = snapshot.Begin();
    if (!begun)
        return Under(op::kReadCampaign, begun);
    for (Read read : kReads) {
        const Outcome done = read(db, campaign);
        if (!done)
            return done;
    }
    return {};
}

Outcome LoadCampaign(const QString& location, CCampaign& campaign) {
    Connection db;
    // Able to write, so that a save cut short (its journal left beside the file) is rolled back
    // before the read; a write-protected file still opens, for reading.
    const Outcome opened = db.Open(location);
    if (!opened)
        return Under(op::kOpen, opened);
    return LoadCampaign(db, campaign);
}

Outcome SaveCampaign(Connection& db, const CCampaign& campaign, const CCampaign* before) {
    const CampaignRows rows = RowsOfCampaign(campaign);
    const std::optional<CampaignRows> read =
        before ? std::optional<CampaignRows>(RowsOfCampaign(*before)) : std::nullopt;
    return InTransaction(db, op::kSaveCampaign,
                         [&] { return SaveEverything(db, rows, read ? &*read : nullptr); });
}

Outcome SaveCampaign(const QString& location, const CCampaign& campaign) {
    Connection db;
    const Outcome opened = db.Open(location);
    if (!opened)
        return Under(op::kOpen, opened);
    const Outcome checked = EnableForeignKeys(db);
    if (!checked)
        return Under(op::kOpen, checked);
    return SaveCampaign(db, campaign);
}

Outcome SaveQuestionCaptions(Connection& db, const CQuestion& question) {
    return InTransaction(db, op::kSaveQuestionCaptions, [&] {
        return WriteQuestionCaptions(db, op::kSaveQuestionCaptions, question);
    });
}

Outcome SaveModalityCaptions(Connection& db, const CModality& modality) {
    return InTransaction(db, op::kSaveModalityCaptions, [&] {
        return WriteModalityCaptions(db, op::kSaveModalityCaptions, modality);
    });
}

} // namespace campaign
