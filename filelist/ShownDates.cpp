#include "filelist/ShownDates.h"

#include <utility>

namespace pagestack {

namespace {

    constexpr int mostFilesKept = 10000; // more than a window has rows
    constexpr int mostFilesAtATime = 4;
    constexpr qint64 shortestPauseMs = 1000;

} // namespace

ShownDates::ShownDates(ReadDates read)
    : m_read(std::move(read))
    , m_looks(mostFilesKept)
{
    m_clock.start();
    m_threads.setMaxThreadCount(mostFilesAtATime);
}

ShownDates::~ShownDates()
{
    m_threads.clear();
    m_threads.waitForDone();
}

FileDates ShownDates::of(const std::shared_ptr<FileItem>& item)
{
    const QUrl url = item->filePath();
    if (!m_looks.contains(url))
        m_looks.insert(url, new Look);
    Look& last = *m_looks.object(url);
    if (!last.isUnderWay && m_clock.elapsed() >= last.nextMs) {
        last.isUnderWay = true;
        look(item);
    }
    return last.dates;
}

void ShownDates::look(const std::shared_ptr<FileItem>& item)
{
    const auto read = [this, item] {
        const FileDates dates = m_read(*item);
        QMetaObject::invokeMethod(
            this, [this, url = item->filePath(), dates] { take(url, dates); },
            Qt::QueuedConnection);
    };
    m_threads.start(read, ++m_lookCount); // the rows in view were asked for last
}

void ShownDates::take(const QUrl& url, const FileDates& dates)
{
    Look* const last = m_looks.object(url);
    if (last == nullptr)
        return;
    last->isUnderWay = false;
    last->nextMs = m_clock.elapsed() + shortestPauseMs;
    if (std::exchange(last->dates, dates) != dates)
        emit changed();
}

} // namespace pagestack
