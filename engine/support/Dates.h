#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace pagestack {

/// `date` in the user's locale and time zone, laid out as `format` says in the letters of
/// QLocale::toString(). A null string for an invalid date.
QString dateText(const QDateTime& date, const QString& format);

/// `date` in UTC, as "2013-03-05 16:07:09 +0000"; empty for an invalid date.
QByteArray dateDescription(const QDateTime& date);

/// The current date and time, laid out as for dateText.
QString getStringFromDateFormat(const QString& format);

/// The time from `start` to `end` in whole hours, minutes and seconds: "1 hr(s) 5 sec(s) ". Zero
/// parts are left out, each part ends in a blank. Empty below one second, when `end` is before
/// `start` and when either is invalid.
QString timeTakenString(const QDateTime& start, const QDateTime& end);

/// The time line: "Total Time Taken : 5 sec(s)  1/5" for a text of timeTakenString() and the
/// numbers of sources done and planned.
QString totalTimeTakenText(const QString& timeText, int processed, int planned);

/// The time line when nothing runs: "Total Time Taken : 0 sec(s) 0/0".
QString zeroTotalTimeTakenText();

} // namespace pagestack
