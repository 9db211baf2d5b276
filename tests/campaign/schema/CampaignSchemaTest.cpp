#include "campaign/schema/CampaignSchema.h"

#include <gtest/gtest.h>

using campaign::CampaignSchema;
using util::sql::ColumnType;

namespace {

TEST(CampaignSchema, TypeCodesMapToColumnKinds) {
    const struct {
        int code;
        ColumnType type;
    } cases[] = {
        {1, ColumnType::Boolean}, {3, ColumnType::Integer},  {4, ColumnType::Integer},
        {7, ColumnType::Real},    {8, ColumnType::DateTime}, {10, ColumnType::Text},
        {11, ColumnType::Blob},   {12, ColumnType::Text},    {15, ColumnType::Text},
        {17, ColumnType::Blob},   {0, ColumnType::Integer},  {2, ColumnType::Integer},
        {9, ColumnType::Integer}, {99, ColumnType::Integer}, {-1, ColumnType::Integer},
    };
    for (const auto& c : cases)
        EXPECT_EQ(campaign::ColumnTypeOf(c.code), c.type) << "code " << c.code;
}

TEST(CampaignSchema, ExactlyTheseTextsAcceptAnEmptyString) {
    QStringList allowing;
    for (const campaign::Table& table : CampaignSchema().tables)
        for (const campaign::Column& column : table.columns) {
            if (column.allowZeroLength) {
                EXPECT_TRUE(campaign::IsTextCode(column.type)) << column.name.toStdString();
                allowing.append(table.name + QLatin1Char('.') + column.name);
            }
        }
    EXPECT_EQ(
        allowing.join(QLatin1Char(' ')),
        QStringLiteral(
            "Campaigns.VersionNumber Waves.Name Volumes.Name Volumes.MetaData "
            "Volumes.CaseData Volumes.QuestionMatchingMethods Volumes.ResponseMatchingMethods "
            "Questions.Shortcut QuestionMatchings.SourceID QuestionClasses.Caption "
            "ModalityMatchings.ModalitySourceID ModalityCaptions.ShortCaption "
            "Languages.LanguageName Versions.LongCaption Versions.ShortCaption Tags.Caption"));
}

TEST(CampaignSchema, NamesAreFoundWithoutRegardToCase) {
    const campaign::Table* tags = CampaignSchema().FindTable(QStringLiteral("tags"));
    ASSERT_NE(tags, nullptr);
    EXPECT_EQ(tags->name, QStringLiteral("Tags"));
    // The key is declared "TagId" and its index says "TagID".
    ASSERT_EQ(tags->indexes.size(), 1u);
    EXPECT_EQ(tags->indexes[0].columns, QStringList{QStringLiteral("TagID")});
    EXPECT_EQ(tags->ResolveColumn(QStringLiteral("TagID")), QStringLiteral("TagId"));
    EXPECT_TRUE(tags->ResolveColumn(QStringLiteral("Tag")).isEmpty());
    EXPECT_EQ(CampaignSchema().FindTable(QStringLiteral("Tag")), nullptr);
    EXPECT_EQ(CampaignSchema().version, QStringLiteral("5.6.1.0"));
}

TEST(CampaignSchema, RelationsJoinDeclaredColumns) {
    const campaign::Schema& schema = CampaignSchema();
    ASSERT_EQ(schema.relations.size(), 10u);
    for (const campaign::Relation& relation : schema.relations) {
        const campaign::Table* primary = schema.FindTable(relation.primaryTable);
        const campaign::Table* foreign = schema.FindTable(relation.foreignTable);
        ASSERT_TRUE(primary && foreign) << relation.name.toStdString();
        EXPECT_NE(primary->FindColumn(relation.primaryColumn), nullptr);
        EXPECT_NE(foreign->FindColumn(relation.foreignColumn), nullptr);
        EXPECT_EQ(relation.updateRule, campaign::Rule::Cascade);
        EXPECT_EQ(relation.deleteRule, campaign::Rule::Cascade);
        // A relation needs a key on its primary column.
        EXPECT_TRUE(primary->IsIndexedWithoutNulls(relation.primaryColumn));
    }
}

TEST(CampaignSchema, NullabilityFollowsIndexesAndServerYesNo) {
    const campaign::Table* questions = CampaignSchema().FindTable(QStringLiteral("Questions"));
    ASSERT_NE(questions, nullptr);
    const struct {
        const char* column;
        bool onFile;
        bool onServer;
    } cases[] = {
        {"QuestionID", false, false}, {"Order", false, false},  {"QuestionClassID", false, false},
        {"IsDeleted", true, false},   {"Shortcut", true, true}, {"AppearanceVolumeID", true, true},
        {"MinValue", true, true},
    };
    for (const auto& c : cases) {
        const campaign::Column* column = questions->FindColumn(QLatin1String(c.column));
        ASSERT_NE(column, nullptr) << c.column;
        EXPECT_EQ(campaign::IsNullable(*questions, *column, util::sql::Dialect::Sqlite), c.onFile)
            << c.column;
        EXPECT_EQ(campaign::IsNullable(*questions, *column, util::sql::Dialect::PostgreSql),
                  c.onServer)
            << c.column;
    }
}

} // namespace
