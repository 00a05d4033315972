#include "engine/support/DateText.h"

#include <QLocale>

namespace pagestack {

QString dateText(const QDateTime& date, const QString& format)
{
    return date.isValid() ? QLocale::system().toString(date.toLocalTime(), format) : QString();
}

QString getStringFromDateFormat(const QString& format)
{
    return dateText(QDateTime::currentDateTime(), format);
}

} // namespace pagestack
