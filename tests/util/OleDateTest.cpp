#include "util/OleDate.h"
#include "common/TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <limits>

namespace {

QDateTime Local(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, int ms = 0) {
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms));
}

TEST(OleDate, KnownDatesConvertBothWaysAndMillisecondsSurvive) {
    const struct {
        QDateTime local;
        double ole;
    } cases[] = {
        {Local(1899, 12, 30), 0.0},        {Local(1899, 12, 30, 18), 0.75},
        {Local(1900, 1, 1), 2.0},          {Local(2026, 11, 22, 12), 46348.5},
        {Local(1899, 12, 29, 6), -1.25}, // the fraction counts forward from the day's midnight
        {Local(1899, 12, 29), -1.0},       {Local(1800, 1, 1, 12), -36522.5},
        {Local(100, 1, 1, 12), -657434.5}, {Local(9999, 12, 31, 12), 2958465.5},
    };
    for (const auto& c : cases) {
        const std::string label = c.local.toString(Qt::ISODateWithMs).toStdString();
        EXPECT_DOUBLE_EQ(util::ToOleDate(c.local), c.ole) << label;
        EXPECT_EQ(util::FromOleDate(c.ole), c.local) << label;
    }
    // Milliseconds on both sides of the epoch come back as they were.
    for (const QDateTime& dt :
         {Local(2026, 7, 15, 23, 59, 59, 999), Local(1999, 12, 31, 0, 0, 0, 1),
          Local(1899, 12, 29, 23, 59, 59, 999), Local(1899, 12, 28, 0, 0, 0, 1),
          Local(1753, 3, 4, 13, 14, 15, 16)})
        EXPECT_EQ(util::FromOleDate(util::ToOleDate(dt)), dt) << dt.toString().toStdString();

    // Other time zones are taken in local time; an offset no local zone uses, so the wall-clock
    // fields differ from local ones.
    const QDateTime away(QDate(2026, 7, 15), QTime(12, 0), Qt::OffsetFromUTC, 5 * 3600 + 47 * 60);
    EXPECT_DOUBLE_EQ(util::ToOleDate(away), util::ToOleDate(away.toLocalTime()));
    EXPECT_EQ(util::FromOleDate(util::ToOleDate(away)), away.toLocalTime());
    EXPECT_EQ(util::ToOleDate(QDateTime()), 0.0);
}

// Fractions just short of a day round to the next midnight; values outside the date range give
// no date.
TEST(OleDate, RoundingAndValuesOutsideTheDateRange) {
    const struct {
        double ole;
        QDateTime local;
    } cases[] = {{std::nextafter(1.0, 0.0), Local(1899, 12, 31)},
                 {std::nextafter(-2.0, 0.0), Local(1899, 12, 30)}, // 12-29 24:00
                 {std::nextafter(-2.0, -3.0), Local(1899, 12, 28)},
                 {-0.5, Local(1899, 12, 30, 12)}}; // the same instant as 0.5
    for (const auto& c : cases)
        EXPECT_EQ(util::FromOleDate(c.ole), c.local)
            << std::setprecision(17) << c.ole << " gave "
            << util::FromOleDate(c.ole).toString(Qt::ISODateWithMs).toStdString();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    for (const double ole : {std::numeric_limits<double>::quiet_NaN(), kInf, -kInf, 1e300, -1e300,
                             2958466.0, -657435.0})
        EXPECT_FALSE(util::FromOleDate(ole).isValid()) << ole;
}

TEST(OleDate, ContinuousDaysMirrorNegativeFractions) {
    const struct {
        double ole;
        double continuous;
    } cases[] = {
        {0.0, 0.0},     {2.5, 2.5},     {46348.25, 46348.25}, {-1.0, -1.0},
        {-1.25, -0.75}, {-1.75, -0.25}, {-2.5, -1.5},         {-0.5, 0.5},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(util::OleDateToContinuousDays(c.ole), c.continuous) << c.ole;
}

} // namespace
