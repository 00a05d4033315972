#include "mainwindow/load/IncomingFiles.h"

#include <utility>

namespace pagestack {

namespace {

    constexpr int gatherMs = 50; // a selection of many files comes as an event each
    constexpr int busyMs = 300;

} // namespace

IncomingFiles::IncomingFiles(std::function<bool()> isIdle,
                             std::function<void(const QList<QUrl>&)> open)
    : m_isIdle(std::move(isIdle))
    , m_open(std::move(open))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &IncomingFiles::openWhenIdle);
}

void IncomingFiles::add(const QList<QUrl>& urls)
{
    if (urls.isEmpty())
        return;
    m_waiting += urls;
    m_timer.start(gatherMs);
}

void IncomingFiles::openWhenIdle()
{
    if (m_isIdle())
        m_open(std::exchange(m_waiting, {}));
    else
        m_timer.start(busyMs);
}

} // namespace pagestack
