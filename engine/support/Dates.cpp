#include "engine/support/Dates.h"

#include <QCoreApplication>
#include <QLocale>

#include <cstdio>

#include <array>
#include <chrono>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString timePart(qint64 amount, const QString& unit)
    {
        return amount > 0 ? QString::number(amount) + unit : QString();
    }

} // namespace

QString dateText(const QDateTime& date, const QString& format)
{
    return date.isValid() ? QLocale::system().toString(date.toLocalTime(), format) : QString();
}

// Called for every date of an exported list: QDateTime's own way through days and times of day
// takes several times as long.
QByteArray dateDescription(const QDateTime& date)
{
    using namespace std::chrono;
    if (!date.isValid())
        return {};
    const sys_seconds second
        = floor<seconds>(sys_time<milliseconds>(milliseconds(date.toMSecsSinceEpoch())));
    const sys_days day = floor<days>(second);
    const year_month_day calendar(day);
    const hh_mm_ss time(second - day);
    std::array<char, 48> text {};
    const int length = std::snprintf(
        text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d +0000",
        static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
        static_cast<unsigned>(calendar.day()), static_cast<int>(time.hours().count()),
        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return QByteArray(text.data(), length);
}

QString getStringFromDateFormat(const QString& format)
{
    return dateText(QDateTime::currentDateTime(), format);
}

QString timeTakenString(const QDateTime& start, const QDateTime& end)
{
    if (!start.isValid() || !end.isValid())
        return u""_s;
    const qint64 seconds = start.msecsTo(end) / 1000;
    return u""_s + timePart(seconds / 3600, u" hr(s) "_s)
        + timePart(seconds / 60 % 60, u" min(s) "_s) + timePart(seconds % 60, u" sec(s) "_s);
}

QString totalTimeTakenText(const QString& timeText, int processed, int planned)
{
    return QCoreApplication::translate("pagestack::Dates", "Total Time Taken : %1 %2/%3")
        .arg(timeText, QString::number(processed), QString::number(planned));
}

QString zeroTotalTimeTakenText()
{
    return totalTimeTakenText(QCoreApplication::translate("pagestack::Dates", "0 sec(s)"), 0, 0);
}

} // namespace pagestack
