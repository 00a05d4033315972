#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace pagestack {

/// `date` in the user's locale and time zone, laid out as `format` says in the letters of
/// QLocale::toString(). A null string for an invalid date.
QString dateText(const QDateTime& date, const QString& format);

/// `date` in UTC, as "2013-03-05 16:07:09 +0000"; empty for no date.
QByteArray dateDescription(const QDateTime& date);

/// The current date and time, laid out as for dateText.
QString getStringFromDateFormat(const QString& format);

} // namespace pagestack
