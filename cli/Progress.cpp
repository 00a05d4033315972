#include "cli/Progress.h"

#include "cli/Console.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 redrawMs = 100;

    bool isWanted(ProgressMode mode, const Console& console)
    {
        return mode == ProgressMode::Always || (mode == ProgressMode::Auto && console.isTerminal());
    }

    /// "0:07", "12:30", "1:02:03"; a begun second counts.
    QString clockText(qint64 ms)
    {
        const qint64 seconds = (ms + 999) / 1000;
        const QString tail
            = u"%1:%2"_s.arg(seconds / 60 % 60, seconds >= 3600 ? 2 : 1, 10, QChar(u'0'))
                  .arg(seconds % 60, 2, 10, QChar(u'0'));
        return seconds >= 3600 ? u"%1:%2"_s.arg(seconds / 3600).arg(tail) : tail;
    }

} // namespace

QString progressText(int done, int total, qint64 elapsedMs)
{
    QString text = u"%1 of %2 %3"_s.arg(done).arg(total).arg(total == 1 ? u"page"_s : u"pages"_s);
    if (done <= 0 || done >= total)
        return text;
    return text + u", %1 left"_s.arg(clockText(elapsedMs * (total - done) / done));
}

Progress::Progress(Console& console, ProgressMode mode, int totalPages)
    : m_console(console)
    , m_isShown(isWanted(mode, console))
    , m_total(totalPages)
{
    m_sinceStart.start();
}

void Progress::setDone(int pages)
{
    m_done = pages;
    if (!m_sinceShown.isValid() || m_sinceShown.elapsed() >= redrawMs)
        show();
}

void Progress::finish()
{
    show();
    m_console.clearProgress();
}

void Progress::show()
{
    if (!m_isShown || m_shown == m_done)
        return;
    m_console.showProgress(progressText(m_done, m_total, m_sinceStart.elapsed()));
    m_shown = m_done;
    m_sinceShown.start();
}

} // namespace pagestack
