#pragma once

#include <QDateTime>

namespace util {

// OLE automation dates: days since 1899-12-30 00:00 local time, the fraction being the time of
// day. Before 1899-12-30 the fraction still counts forward in the day while the whole part counts
// backwards, so -1.25 is 1899-12-29 06:00 and the scale is not continuous below zero.

// The local wall-clock time of `dateTime` as an OLE date, to the millisecond. An invalid
// date-time gives 0.
double ToOleDate(const QDateTime& dateTime);

// The local date-time of an OLE date, rounded to the millisecond. Not-a-number, infinities and
// values outside the years 100 to 9999 give an invalid QDateTime.
QDateTime FromOleDate(double oleDate);

// The OLE date on a continuous day scale, so that two dates can be subtracted: a negative date
// has its fraction mirrored about its whole part (-1.25 becomes -0.75).
double OleDateToContinuousDays(double oleDate);

} // namespace util
