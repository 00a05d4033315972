#include "engine/support/TimeText.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString part(qint64 amount, const QString& unit)
    {
        return amount > 0 ? QString::number(amount) + unit : QString();
    }

} // namespace

QString timeTakenString(const QDateTime& start, const QDateTime& end)
{
    if (!start.isValid() || !end.isValid())
        return u""_s;
    const qint64 seconds = start.msecsTo(end) / 1000;
    return u""_s + part(seconds / 3600, u" hr(s) "_s) + part(seconds / 60 % 60, u" min(s) "_s)
        + part(seconds % 60, u" sec(s) "_s);
}

QString totalTimeTakenText(const QString& timeText, int processed, int planned)
{
    return u"Total Time Taken : "_s + timeText + u' ' + QString::number(processed) + u'/'
        + QString::number(planned);
}

QString zeroTotalTimeTakenText() { return totalTimeTakenText(u"0 sec(s)"_s, 0, 0); }

} // namespace pagestack
