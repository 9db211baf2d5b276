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

TEST(CampaignSchema, NamesAreFoundWithoutRegardToCase) {
    const campaign::Table* tags = CampaignSchema().FindTable(QStringLiteral("tags"));
    ASSERT_NE(tags, nullptr);
    EXPECT_EQ(tags->name, QStringLiteral("Tags"));
    // The key is declared "TagId" and its index says "TagID".
    EXPECT_EQ(tags->ResolveColumn(QStringLiteral("TagID")), QStringLiteral("TagId"));
    EXPECT_TRUE(tags->ResolveColumn(QStringLiteral("Tag")).isEmpty());
    EXPECT_EQ(CampaignSchema().FindTable(QStringLiteral("Tag")), nullptr);
}

} // namespace
