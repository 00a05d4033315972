#include "mainwindow/load/IncomingFiles.h"

#include "engine/support/SystemLog.h"

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int gatherMs = 50; // a selection of many files comes as an event each
    constexpr int busyMs = 300;

} // namespace

IncomingFiles::IncomingFiles(std::function<bool()> isIdle,
                             std::function<void(const QList<QUrl>&)> open)
    : m_isIdle(std::move(isIdle))
    , m_open(std::move(open))
    , m_timer(gatherMs, [this] { openWhenIdle(); })
{
}

IncomingFiles::~IncomingFiles()
{
    for (const QUrl& url : std::as_const(m_waiting))
        systemLog(u"The program ended before this file was opened: "_s + url.toLocalFile());
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
        return m_open(std::exchange(m_waiting, {}));
    emit kept(static_cast<int>(m_waiting.size()));
    m_timer.start(busyMs);
}

} // namespace pagestack
