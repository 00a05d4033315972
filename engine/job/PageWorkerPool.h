#pragma once

#include "engine/image/PageEncoding.h"
#include "engine/image/PageImage.h"
#include "engine/job/SharedSource.h"
#include "engine/threads/SpareThreads.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace pagestack {

class MirroredFolders;

/// A page that is to be prepared.
struct PageTask
{
    enum class State {
        Waiting,
        InWork,
        Done,
        Withdrawn, ///< it was taken, nobody wants it any more, or nobody will do it
    };

    std::shared_ptr<SharedSource> source;
    int page = 1;
    QString targetPath; ///< of the page's own file; empty: it is gathered, its pieces are wanted
    MirroredFolders* folders = nullptr; ///< the folder of `targetPath` may be one of them
    SaveOptions options;

    State state = State::Waiting; ///< as all below guarded by the workers' mutex
    bool isPutAhead = false; ///< its file may have its name before it is taken
    PrefetchedPage result; ///< of a task that is done; empty when the page could not be prepared
    bool needsNoEncoding = false; ///< there are no pieces because the page is only to be copied
};

/// The threads that prepare pages, in the order in which these are added. All operations belong to
/// one thread, that of the job.
///
/// A page that cannot be prepared, for whatever reason, gives an empty result: who takes it does it
/// again in its turn, and there the reason shows as it would have without workers.
class PageWorkerPool
{
public:
    using Flag = std::function<bool()>;

    /// No thread is made before there is work for it; one that has work is taken from `threads`,
    /// which outlives the workers. `isRunning`, asked by any thread, becomes false when the run is
    /// cancelled: no page is begun any more, those in work are finished.
    PageWorkerPool(int mostThreads, SpareThreads& threads, Flag isRunning);

    /// Waits for the pages in work.
    ~PageWorkerPool();
    PageWorkerPool(const PageWorkerPool&) = delete;
    PageWorkerPool& operator=(const PageWorkerPool&) = delete;

    void add(std::span<const std::shared_ptr<PageTask>> tasks);

    /// The file of a task that has not begun gets its name as soon as it is complete, so that this
    /// is not left to the job's thread. One that is not taken is removed from there.
    void putAhead(PageTask& task);

    /// Waits for the result. Empty for a page that was not begun before the run was cancelled.
    PrefetchedPage take(PageTask& task);

    /// The result will not be taken.
    void drop(PageTask& task);

    /// Begins none of the pages that wait, and waits for those in work. The results that are not
    /// dropped stay.
    void settle();

    /// As RunTogether, by the threads that have nothing else to do; by the caller where none is.
    void runTogether(int mostThreads, const std::function<void()>& work);

    /// As RunLater, before the pages that wait.
    bool runLater(std::function<void()> work);

private:
    /// The document that a worker has at hand, for the next page of the same source.
    struct Desk
    {
        std::shared_ptr<SharedSource> source;
        std::unique_ptr<TiffDocument> document;
    };

    bool isEnoughReady() const;
    std::size_t threadsWanted() const;
    void work();
    void prepare(PageTask& task, Desk& desk, bool isPutAhead);
    void prepareEncoded(const PageTask& task, const PageImage& image, PrefetchedPage& result);
    void withdrawAll();
    bool addThread();
    void joinWork(std::unique_lock<std::mutex>& lock);
    void reserve(std::uint64_t bytes);
    void release(std::uint64_t bytes);

    const std::size_t m_mostThreads;
    const std::uint64_t m_mostBytes; ///< of decoded pages in work, unless there is one only
    SpareThreads& m_spareThreads;
    const Flag m_isRunning;
    std::vector<std::thread> m_threads; ///< job's thread only

    std::mutex m_mutex; ///< guards the fields below
    std::condition_variable m_hasWork;
    std::condition_variable m_hasResult;
    std::condition_variable m_hasRoom;
    std::condition_variable m_hasSettled;
    std::deque<std::shared_ptr<PageTask>> m_waiting;
    std::deque<std::function<void()>> m_later; ///< of `runLater`
    std::size_t m_idle = 0;
    std::size_t m_inWork = 0;
    bool m_isCopying = false; ///< the page that was done last was only copied
    const PageTask* m_awaited = nullptr; ///< the one that `take` waits for
    bool m_isPatient = false; ///< it rather waits a little for some pages more
    std::size_t m_ready = 0; ///< tasks done and not taken
    std::uint64_t m_bytesInWork = 0;
    const std::function<void()>* m_sharedWork = nullptr; ///< of `runTogether`
    int m_placesInWork = 0; ///< threads that may still join it
    int m_threadsInWork = 0; ///< that have joined and not ended it
    bool m_wasJoined = false;
    bool m_isClosing = false;
};

} // namespace pagestack
