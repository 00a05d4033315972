#pragma once

#include <QDateTime>
#include <QString>

namespace pagestack {

/// How long it took from `start` to `end`, in whole hours, minutes and seconds: "1 hr(s) 5 sec(s)
/// ". Zero parts are left out and every part keeps its blank; "" below one second, when `end` is
/// before `start`, and when either is invalid.
QString timeTakenString(const QDateTime& start, const QDateTime& end);

/// The time line: "Total Time Taken : 5 sec(s)  1/5" for the text of a time and the numbers of
/// sources done and planned.
QString totalTimeTakenText(const QString& timeText, int processed, int planned);

/// The time line when nothing runs: "Total Time Taken : 0 sec(s) 0/0".
QString zeroTotalTimeTakenText();

} // namespace pagestack
