#include "util/OleDate.h"

#include <cmath>

namespace util {

namespace {

constexpr double kMsecsPerDay = 86400000.0;
// Outside this range the classic OLE date type calls a value invalid: years 100 to 9999.
constexpr double kLowestOleDate = -657435.0;
constexpr double kHighestOleDate = 2958466.0;

QDate OleEpoch() {
    return QDate(1899, 12, 30);
}

} // namespace

double ToOleDate(const QDateTime& dateTime) {
    if (!dateTime.isValid())
        return 0.0;
    const QDateTime local = dateTime.toLocalTime();
    const double days = double(OleEpoch().daysTo(local.date()));
    const double fraction = local.time().msecsSinceStartOfDay() / kMsecsPerDay;
    return days < 0 ? days - fraction : days + fraction;
}

QDateTime FromOleDate(double oleDate) {
    if (!std::isfinite(oleDate) || oleDate <= kLowestOleDate || oleDate >= kHighestOleDate)
        return {};
    const double whole = std::trunc(oleDate);
    qint64 msecs = std::llround(std::fabs(oleDate - whole) * kMsecsPerDay);
    QDate date = OleEpoch().addDays(qint64(whole));
    // A fraction just below one rounds up to midnight of the following day, on either side of
    // the epoch, because the fraction always counts forward in the day.
    if (msecs >= qint64(kMsecsPerDay)) {
        date = date.addDays(1);
        msecs = 0;
    }
    return QDateTime(date, QTime::fromMSecsSinceStartOfDay(int(msecs)));
}

double OleDateToContinuousDays(double oleDate) {
    if (oleDate >= 0)
        return oleDate;
    const double whole = std::ceil(oleDate);
    return whole - (oleDate - whole);
}

} // namespace util
