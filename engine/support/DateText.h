#pragma once

#include <QDateTime>
#include <QString>

namespace pagestack {

/// `date` in the user's locale and time zone, laid out as `format` says in the letters of
/// QLocale::toString(). A null string for an invalid date.
QString dateText(const QDateTime& date, const QString& format);

/// The current date and time, laid out as for dateText.
QString getStringFromDateFormat(const QString& format);

} // namespace pagestack
