#include "filelist/FileItemQueue.h"

#include "engine/threads/StopScope.h"

#include <QThread>

#include <algorithm>
#include <utility>

namespace pagestack {

namespace {

    void makeItem(const QUrl& url, std::shared_ptr<FileItem>& item, std::exception_ptr& thrown)
    {
        try {
            item = FileItem::initWithURL(url);
        } catch (...) { // Not swallowed: the thread that takes the item gets it.
            thrown = std::current_exception();
        }
    }

} // namespace

FileItemQueue::FileItemQueue(std::function<bool()> isWanted)
    : m_isWanted(std::move(isWanted))
{
    // More than one even on a small machine, as they wait for the disk; few, as it is one disk.
    const int threads = std::clamp(QThread::idealThreadCount(), 2, 8);
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { makeItems(); });
}

FileItemQueue::~FileItemQueue()
{
    {
        const std::lock_guard lock(m_guard);
        m_isOver = true;
    }
    m_added.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void FileItemQueue::add(const QList<QUrl>& urls)
{
    {
        const std::lock_guard lock(m_guard);
        for (const QUrl& url : urls)
            m_slots.emplace_back().url = url;
    }
    m_added.notify_all();
}

qsizetype FileItemQueue::pending() const
{
    const std::lock_guard lock(m_guard);
    return static_cast<qsizetype>(m_slots.size());
}

QList<std::shared_ptr<FileItem>> FileItemQueue::takeReady()
{
    const std::lock_guard lock(m_guard);
    return takeFront();
}

QList<std::shared_ptr<FileItem>> FileItemQueue::waitForReady()
{
    std::unique_lock lock(m_guard);
    m_frontReady.wait(lock, [this] { return m_slots.front().isReady; });
    if (m_slots.front().thrown)
        std::rethrow_exception(m_slots.front().thrown);
    return takeFront();
}

// Stops before an item that could not be made: those in front of it count.
QList<std::shared_ptr<FileItem>> FileItemQueue::takeFront()
{
    QList<std::shared_ptr<FileItem>> ready;
    while (!m_slots.empty() && m_slots.front().isReady && !m_slots.front().thrown) {
        ready.append(std::move(m_slots.front().item));
        m_slots.pop_front();
        --m_begun;
    }
    return ready;
}

void FileItemQueue::makeItems()
{
    const StopScope scope([this] { return !m_isWanted(); });
    std::unique_lock lock(m_guard);
    while (true) {
        m_added.wait(lock, [this] { return m_isOver || m_begun < m_slots.size(); });
        if (m_isOver)
            return;
        Slot& slot = m_slots[m_begun++]; // stays valid: only ready ones are removed
        lock.unlock();
        makeItem(slot.url, slot.item, slot.thrown);
        lock.lock();
        slot.isReady = true;
        if (&slot == &m_slots.front())
            m_frontReady.notify_one();
    }
}

} // namespace pagestack
