#include "campaign/schema/CampaignSchema.h"

#include <algorithm>

namespace campaign {

namespace {

using util::sql::ColumnType;

Column Long(const char* name) {
    return {QLatin1String(name), kLong, 0, false};
}
Column YesNo(const char* name) {
    return {QLatin1String(name), kYesNo, 0, false};
}
Column Dbl(const char* name) {
    return {QLatin1String(name), kDouble, 0, false};
}
Column Date(const char* name) {
    return {QLatin1String(name), kDateTime, 0, false};
}
Column Small(const char* name) {
    return {QLatin1String(name), kInteger, 0, false};
}
// Texts that accept an empty string are marked with `empty`.
enum Empty { kNoEmpty, kEmptyAllowed };
Column Text(const char* name, int size, Empty empty = kNoEmpty) {
    return {QLatin1String(name), kText, size, empty == kEmptyAllowed};
}
Column Memo(const char* name, Empty empty = kNoEmpty) {
    return {QLatin1String(name), kMemo, 0, empty == kEmptyAllowed};
}

QStringList Names(std::initializer_list<const char*> names) {
    QStringList list;
    for (const char* name : names)
        list.append(QLatin1String(name));
    return list;
}
Index PrimaryKey(std::initializer_list<const char*> columns) {
    return {QStringLiteral("PrimaryKey"), Names(columns), true, true, false, IndexNulls::Disallow};
}
Index Plain(const char* name, std::initializer_list<const char*> columns) {
    return {QLatin1String(name), Names(columns), false, false, false, IndexNulls::Disallow};
}
Index Unique(const char* name, std::initializer_list<const char*> columns) {
    return {QLatin1String(name), Names(columns), false, true, false, IndexNulls::Disallow};
}

Relation Cascading(const char* name, const char* primaryTable, const char* primaryColumn,
                   const char* foreignTable, const char* foreignColumn) {
    return {QLatin1String(name),
            QLatin1String(primaryTable),
            QLatin1String(primaryColumn),
            QLatin1String(foreignTable),
            QLatin1String(foreignColumn),
            Rule::Cascade,
            Rule::Cascade};
}

std::vector<Table> Tables() {
    return {
        {QStringLiteral("Campaigns"),
         {Text("Name", 50), Memo("Description"), Text("VersionNumber", 50, kEmptyAllowed)},
         {}},
        {QStringLiteral("Waves"),
         {Long("WaveID"), Long("WaveOrder"), Text("Name", 50, kEmptyAllowed), Memo("Description"),
          Date("WaveStart"), Date("WaveEnd"), Date("WaveMidpoint")},
         {PrimaryKey({"WaveID"}), Unique("IndexWaveOrder", {"WaveOrder"})}},
        {QStringLiteral("Volumes"),
         {Long("VolumeID"), Text("Name", 50, kEmptyAllowed), Long("WaveID"),
          Long("InheritsFromVolumeID"), Long("SourceType"), Memo("MetaData", kEmptyAllowed),
          Memo("CaseData", kEmptyAllowed), YesNo("IsMatchingStrict"),
          Text("QuestionMatchingMethods", 255, kEmptyAllowed),
          Text("ResponseMatchingMethods", 255, kEmptyAllowed), YesNo("IsMainVolume"),
          Long("InterviewMergeMethod"), Long("MainVolumeLinkQuestionID"),
          Text("ThisVolumeLinkQuestionID", 50), Long("Status"), YesNo("CaseSensitiveMatching"),
          YesNo("MatchUsingAncestorValues"), YesNo("AddNoNewQuestions"),
          Memo("ReconciliationSourceQuestionIDs")},
         {PrimaryKey({"VolumeID"}), Plain("Index1", {"WaveID"})}},
        {QStringLiteral("Questions"),
         {Long("QuestionID"),
          YesNo("IsDeleted"),
          Long("Order"), // a keyword: always quoted
          Text("Shortcut", 50, kEmptyAllowed),
          Long("Indent"),
          Long("ElementType"),
          Long("QuestionType"),
          YesNo("IsDontKnow"),
          YesNo("IsSemiOpen"),
          YesNo("IsScale"),
          YesNo("IsMultiple"),
          YesNo("IsRanked"),
          Long("MaxResponseCount"),
          Long("Decimals"),
          Dbl("MinValue"),
          Dbl("MaxValue"),
          YesNo("IsLevelLink"),
          Long("LinkQuestionID"),
          YesNo("IsProbabilityQuestion"),
          Long("DateType"),
          Long("QuestionClassID"),
          Memo("Versions"),
          Memo("UserData"),
          YesNo("IsDevelopLevels"),
          Long("AppearanceVolumeID"),
          Long("DeletionWaveID"),
          YesNo("IsVisibleInAnalyse"),
          Memo("Tags")},
         {PrimaryKey({"QuestionID"}), Plain("Index1", {"QuestionClassID"}),
          Plain("Index2", {"Order"})}},
        {QStringLiteral("QuestionMatchings"),
         {Long("QuestionID"), Long("VolumeID"), Text("SourceID", 50, kEmptyAllowed),
          Long("StartVolumeID"), Long("EndVolumeID")},
         {PrimaryKey({"QuestionID", "VolumeID"})}},
        {QStringLiteral("QuestionClasses"),
         {Long("QuestionClassID"), Text("Caption", 255, kEmptyAllowed)},
         {PrimaryKey({"QuestionClassID"})}},
        {QStringLiteral("QuestionCaptions"),
         {Long("QuestionID"), Long("LanguageID"), Memo("LongCaption"), Memo("ShortCaption")},
         {PrimaryKey({"QuestionID", "LanguageID"}), Plain("Index1", {"QuestionID"})}},
        {QStringLiteral("Modalities"),
         {Long("ModalityID"), Long("QuestionID"), YesNo("IsDeleted"), Long("ModalityOrder"),
          Dbl("Value"), Text("EntryCode", 255), YesNo("IsExclusive"), Long("RotationBehaviour"),
          Memo("Versions"), Memo("UserData"), Long("AppearanceVolumeID"), Long("DeletionWaveID"),
          Small("BaseType"), Memo("Tags")},
         {PrimaryKey({"ModalityID"}), Plain("Index1", {"QuestionID", "ModalityOrder"})}},
        {QStringLiteral("ModalityMatchings"),
         {Long("ModalityID"), Long("QuestionID"), Long("VolumeID"),
          Text("ModalitySourceID", 50, kEmptyAllowed), Long("StartVolumeID"), Long("EndVolumeID")},
         {PrimaryKey({"ModalityID", "QuestionID", "VolumeID"})}},
        {QStringLiteral("ModalityCaptions"),
         {Long("ModalityID"), Long("QuestionID"), Long("LanguageID"),
          Memo("ShortCaption", kEmptyAllowed)},
         {PrimaryKey({"ModalityID", "LanguageID"}), Plain("Index1", {"ModalityID"})}},
        {QStringLiteral("Languages"),
         {Long("LanguageID"), YesNo("IsDefault"), Text("LanguageName", 255, kEmptyAllowed)},
         {PrimaryKey({"LanguageID"})}},
        {QStringLiteral("Versions"),
         {Long("VersionID"), Memo("LongCaption", kEmptyAllowed),
          Text("ShortCaption", 255, kEmptyAllowed)},
         {PrimaryKey({"VersionID"})}},
        {QStringLiteral("ModalityMergings"),
         {Long("MasterModalityID"), Long("ChildModalityID"), Long("MergeVolumeID")},
         {PrimaryKey({"MasterModalityID", "ChildModalityID"})}},
        // The key column is declared "TagId" and named "TagID" by its index; both stand.
        {QStringLiteral("Tags"),
         {Long("TagId"), Text("Caption", 255, kEmptyAllowed), Memo("Description")},
         {PrimaryKey({"TagID"})}},
    };
}

std::vector<Relation> Relations() {
    return {
        Cascading("Waves_Volumes", "Waves", "WaveID", "Volumes", "WaveID"),
        Cascading("Volumes_Questions", "Volumes", "VolumeID", "Questions", "AppearanceVolumeID"),
        Cascading("Questions_Question_Captions", "Questions", "QuestionID", "QuestionCaptions",
                  "QuestionID"),
        Cascading("Volumes_Modalities", "Volumes", "VolumeID", "Modalities", "AppearanceVolumeID"),
        Cascading("Modalities_Modality_Captions", "Modalities", "ModalityID", "ModalityCaptions",
                  "ModalityID"),
        Cascading("Volumes_Modality_Matchings", "Volumes", "VolumeID", "ModalityMatchings",
                  "VolumeID"),
        Cascading("Volumes_Question_Matchings", "Volumes", "VolumeID", "QuestionMatchings",
                  "VolumeID"),
        Cascading("Modalities_ModalityMergingsMaster", "Modalities", "ModalityID",
                  "ModalityMergings", "MasterModalityID"),
        Cascading("Modalities_ModalityMergingsChild", "Modalities", "ModalityID",
                  "ModalityMergings", "ChildModalityID"),
        Cascading("Volumes_ModalityMergings", "Volumes", "VolumeID", "ModalityMergings",
                  "MergeVolumeID"),
    };
}

} // namespace

ColumnType ColumnTypeOf(int code) {
    switch (code) {
    case kYesNo:
        return ColumnType::Boolean;
    case kDouble:
        return ColumnType::Real;
    case kDateTime:
        return ColumnType::DateTime;
    case kText:
    case kMemo:
    case kGuid:
        return ColumnType::Text;
    case kOleObject:
    case kBinary:
        return ColumnType::Blob;
    default: // 16-bit integers too: the engines' integers hold them
        return ColumnType::Integer;
    }
}

bool IsTextCode(int code) {
    return code == kText || code == kMemo;
}

const Column* Table::FindColumn(const QString& name) const {
    const auto it = std::find_if(columns.begin(), columns.end(), [&name](const Column& column) {
        return column.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return it == columns.end() ? nullptr : &*it;
}

QString Table::ResolveColumn(const QString& name) const {
    const Column* column = FindColumn(name);
    return column ? column->name : QString();
}

bool Table::IsIndexedWithoutNulls(const QString& column) const {
    return std::any_of(indexes.begin(), indexes.end(), [&column](const Index& index) {
        return index.nulls == IndexNulls::Disallow &&
               index.columns.contains(column, Qt::CaseInsensitive);
    });
}

const Table* Schema::FindTable(const QString& name) const {
    const auto it = std::find_if(tables.begin(), tables.end(), [&name](const Table& table) {
        return table.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    return it == tables.end() ? nullptr : &*it;
}

const Schema& CampaignSchema() {
    static const Schema schema{QStringLiteral("5.6.1.0"), Tables(), Relations()};
    return schema;
}

QString DatabaseIndexName(const Table& table, const Index& index) {
    return table.name + QLatin1Char('_') + index.name;
}

bool IsNullable(const Table& table, const Column& column, util::sql::Dialect dialect) {
    if (table.IsIndexedWithoutNulls(column.name))
        return false;
    return !(column.type == kYesNo && dialect == util::sql::Dialect::PostgreSql);
}

} // namespace campaign
