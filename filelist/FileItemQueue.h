#pragma once

#include "filelist/FileItem.h"

#include <QList>
#include <QUrl>

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace pagestack {

/// Makes file items, which opens the files, on threads of its own, and gives them back in the order
/// in which they were asked for. Used by one thread.
class FileItemQueue
{
public:
    /// When `isWanted`, asked on any thread, says no, the files in hand are given up: their items
    /// do not count.
    explicit FileItemQueue(std::function<bool()> isWanted);
    ~FileItemQueue(); ///< waits for the files in hand, forgets the others
    FileItemQueue(const FileItemQueue&) = delete;
    FileItemQueue& operator=(const FileItemQueue&) = delete;

    void add(const QList<QUrl>& urls);
    /// Items that were added and not taken yet.
    qsizetype pending() const;

    /// The items that are ready at the front, maybe none; null for a URL that makes no item.
    QList<std::shared_ptr<FileItem>> takeReady();
    /// Waits for the first pending item, of which there is one; throws what making it threw.
    QList<std::shared_ptr<FileItem>> waitForReady();

private:
    struct Slot
    {
        QUrl url;
        std::shared_ptr<FileItem> item;
        std::exception_ptr thrown;
        bool isReady = false;
    };

    void makeItems();
    QList<std::shared_ptr<FileItem>> takeFront();

    mutable std::mutex m_guard; ///< protects what follows up to `m_isOver`
    std::condition_variable m_added; ///< there is something to make, or all is over
    std::condition_variable m_frontReady;
    std::deque<Slot> m_slots; ///< pending ones, in order; a slot in hand stays where it is
    std::size_t m_begun = 0; ///< how many of them are ready or in hand
    bool m_isOver = false;
    const std::function<bool()> m_isWanted;
    std::vector<std::thread> m_threads;
};

} // namespace pagestack
