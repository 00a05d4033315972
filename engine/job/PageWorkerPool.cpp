#include "engine/job/PageWorkerPool.h"

#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/plan/MirroredFolders.h"
#include "engine/settings/OutputCodes.h"
#include "engine/threads/StopScope.h"

#include <QScopeGuard>

#include <chrono>
#include <exception>
#include <new>

namespace pagestack {

namespace {

    /// Pages flow in bands, so this is no measure of memory; but some steps (turning a page, strips
    /// that have to be held as a whole) take more of it for a large page.
    constexpr std::uint64_t decodedBytesAWorker = std::uint64_t { 128 } * 1024 * 1024;

    // To wake the job's thread for each of a thousand small pages takes longer than what it does
    // with them. So it sleeps until there are several, but no longer than nobody notices.
    constexpr std::size_t readyAtOnce = 20;
    constexpr std::chrono::milliseconds longestPatience { 8 };

    /// Pages that are only copied are soon done: what the threads do then is mostly to take turns
    /// at the folder and the memory.
    constexpr std::size_t mostCopying = 3;

    void finishFile(const PageTask& task, const PageImage& image, PrefetchedPage& result)
    {
        result.file->settle();
        if (task.options.needsDigest)
            result.digest = digestOf(*result.file);
        result.diagnostics = image.takeDiagnostics();
    }

    /// A page for a TIFF file of which nothing has to be decoded, not even for a proof; false when
    /// it is no such page.
    bool prepareCopy(const PageTask& task, const PageImage& image, PrefetchedPage& result)
    {
        const bool isGathered = task.targetPath.isEmpty();
        if (task.options.verifies
            || (!isGathered && pageEncoding(task.targetPath).type != OutputType::Tiff))
            return false;
        const int compression = task.options.tiffCompressionIndex;
        EncodedPieces pieces;
        pieces.copy = copiedPage(image.source(), tiffCompressionTag(compression));
        if (!pieces.copy)
            return false;
        if (isGathered) {
            result.pieces = std::move(pieces);
            return true;
        }
        task.folders->makeFor(task.targetPath);
        MultiPageTiffWriter file(task.targetPath, compression, 1);
        file.append(image.sharedSource(), pieces);
        result.file = file.finish();
        finishFile(task, image, result);
        return true;
    }

} // namespace

PageWorkerPool::PageWorkerPool(int mostThreads, SpareThreads& threads, Flag isRunning)
    : m_mostThreads(static_cast<std::size_t>(mostThreads))
    , m_mostBytes(decodedBytesAWorker * m_mostThreads)
    , m_spareThreads(threads)
    , m_isRunning(std::move(isRunning))
{
}

PageWorkerPool::~PageWorkerPool()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isClosing = true;
        m_waiting.clear();
    }
    m_hasWork.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void PageWorkerPool::add(std::span<const std::shared_ptr<PageTask>> tasks)
{
    std::size_t wanted = 0;
    std::size_t idle = 0;
    {
        const std::scoped_lock lock(m_mutex);
        try {
            m_waiting.insert(m_waiting.end(), tasks.begin(), tasks.end());
        } catch (const std::bad_alloc&) {
            for (const std::shared_ptr<PageTask>& task : tasks)
                task->state = PageTask::State::Withdrawn;
            return;
        }
        wanted = threadsWanted();
        idle = m_idle;
    }
    for (std::size_t i = 0; i < std::min(wanted, idle); ++i)
        m_hasWork.notify_one();
    while (wanted > idle && m_threads.size() < m_mostThreads && addThread())
        --wanted;
}

/// Besides those that are in work. Under the lock.
std::size_t PageWorkerPool::threadsWanted() const
{
    if (!m_isCopying || m_bytesInWork > 0)
        return m_waiting.size();
    const std::size_t most = std::min(m_waiting.size(), mostCopying);
    return most - std::min(most, m_inWork);
}

bool PageWorkerPool::addThread()
{
    try {
        m_threads.emplace_back([this] { work(); });
        return true;
    } catch (const std::exception&) {
        // The system has no thread left, or no memory for one. Without any the job's thread does
        // everything.
        const std::scoped_lock lock(m_mutex);
        if (m_threads.empty())
            withdrawAll();
        return false;
    }
}

void PageWorkerPool::putAhead(PageTask& task)
{
    const std::scoped_lock lock(m_mutex);
    task.isPutAhead = true;
}

PrefetchedPage PageWorkerPool::take(PageTask& task)
{
    using State = PageTask::State;
    std::unique_lock lock(m_mutex);
    const auto isDone = [&] { return task.state == State::Done; };
    const auto isOver = [&] { return isDone() || task.state == State::Withdrawn; };
    if (!isOver()) {
        m_awaited = &task;
        m_isPatient = true;
        m_hasResult.wait_for(lock, longestPatience,
                             [&] { return isOver() && (!isDone() || isEnoughReady()); });
        m_isPatient = false;
        m_hasResult.wait(lock, isOver);
        m_awaited = nullptr;
    }
    if (isDone())
        --m_ready;
    task.state = State::Withdrawn;
    return std::move(task.result);
}

/// Whether more pages than one are ready, or no more will be before long. Under the lock.
bool PageWorkerPool::isEnoughReady() const
{
    return m_ready >= readyAtOnce || (m_waiting.empty() && m_inWork <= 1);
}

void PageWorkerPool::drop(PageTask& task)
{
    const std::scoped_lock lock(m_mutex);
    if (task.state == PageTask::State::Done)
        --m_ready;
    task.state = PageTask::State::Withdrawn;
}

void PageWorkerPool::settle()
{
    std::unique_lock lock(m_mutex);
    withdrawAll();
    m_hasSettled.wait(lock, [this] { return m_inWork == 0; });
}

void PageWorkerPool::withdrawAll()
{
    for (const std::shared_ptr<PageTask>& task : m_waiting)
        task->state = PageTask::State::Withdrawn;
    m_waiting.clear();
    m_hasResult.notify_all();
}

void PageWorkerPool::work()
{
    const StopScope scope([this] { return !m_isRunning(); });
    Desk desk;
    ThreadClaim self;
    for (;;) {
        std::shared_ptr<PageTask> task;
        bool isPutAhead = false;
        {
            std::unique_lock lock(m_mutex);
            // Not between two pages: another worker would take help that it keeps for its page.
            if (m_waiting.empty())
                self.giveBack();
            ++m_idle;
            m_hasWork.wait(lock, [this] {
                return m_isClosing || !m_waiting.empty() || m_placesInWork > 0 || !m_later.empty();
            });
            --m_idle;
            if (m_isClosing)
                return;
            if (!m_later.empty()) {
                const std::function<void()> next = std::move(m_later.front());
                m_later.pop_front();
                lock.unlock();
                next();
                continue;
            }
            if (m_placesInWork > 0) {
                joinWork(lock);
                continue;
            }
            if (!m_isRunning())
                withdrawAll();
            if (m_waiting.empty())
                continue;
            task = m_waiting.front();
            m_waiting.pop_front();
            if (task->state == PageTask::State::Withdrawn)
                continue;
            task->state = PageTask::State::InWork;
            isPutAhead = task->isPutAhead;
            ++m_inWork;
        }
        if (!self)
            self = m_spareThreads.take();
        prepare(*task, desk, isPutAhead);
        task.reset(); // so that whoever drops a settled page is the last to hold it
        const std::scoped_lock lock(m_mutex);
        if (--m_inWork == 0)
            m_hasSettled.notify_all();
    }
}

void PageWorkerPool::runTogether(int mostThreads, const std::function<void()>& work)
{
    const auto wanted = std::min(static_cast<std::size_t>(mostThreads), m_mostThreads);
    while (m_threads.size() < wanted && addThread()) { }
    if (m_threads.empty())
        return work();
    std::unique_lock lock(m_mutex);
    m_sharedWork = &work;
    m_placesInWork = static_cast<int>(wanted);
    m_wasJoined = false;
    for (std::size_t i = 0; i < wanted; ++i)
        m_hasWork.notify_one();
    const auto isOver = [this] { return m_wasJoined && m_threadsInWork == 0; };
    m_hasSettled.wait_for(lock, longestPatience, isOver);
    m_placesInWork = 0;
    if (m_wasJoined) {
        m_hasSettled.wait(lock, isOver);
        return;
    }
    lock.unlock(); // they are busy
    work();
}

bool PageWorkerPool::runLater(std::function<void()> work)
{
    if (m_threads.empty())
        return false;
    {
        const std::scoped_lock lock(m_mutex);
        m_later.push_back(std::move(work));
    }
    m_hasWork.notify_one();
    return true;
}

/// Under the lock, which is open meanwhile.
void PageWorkerPool::joinWork(std::unique_lock<std::mutex>& lock)
{
    --m_placesInWork;
    ++m_threadsInWork;
    m_wasJoined = true;
    const std::function<void()>& work = *m_sharedWork;
    lock.unlock();
    work();
    lock.lock();
    if (--m_threadsInWork == 0) {
        m_placesInWork = 0; // nothing is left of it
        m_hasSettled.notify_all();
    }
}

void PageWorkerPool::prepare(PageTask& task, Desk& desk, bool isPutAhead)
{
    PrefetchedPage result;
    bool needsNoEncoding = false;
    bool isCopied = false;
    try {
        if (desk.source != task.source) {
            desk = {};
            desk.document = task.source->openAhead();
            desk.source = task.source;
        }
        const PageImage image = desk.document->page(task.page - 1);
        image.takeDiagnostics(); // of a page that could not be prepared
        if (prepareCopy(task, image, result))
            isCopied = true;
        else
            prepareEncoded(task, image, result);
        if (result.file && isPutAhead)
            result.file->putAhead();
        needsNoEncoding = task.targetPath.isEmpty() && !result.pieces.bytes && !result.proof;
    } catch (...) {
        // Nothing is lost: the job's thread does the page again and meets the same fault.
        result = {};
    }
    const std::scoped_lock lock(m_mutex);
    m_isCopying = isCopied;
    if (task.state != PageTask::State::InWork)
        return;
    task.state = PageTask::State::Done;
    task.result = std::move(result);
    task.needsNoEncoding = needsNoEncoding;
    ++m_ready;
    if (m_awaited != nullptr && m_awaited->state == PageTask::State::Done
        && (!m_isPatient || isEnoughReady()))
        m_hasResult.notify_all();
}

void PageWorkerPool::prepareEncoded(const PageTask& task, const PageImage& image,
                                    PrefetchedPage& result)
{
    const std::uint64_t bytes = image.source().decodedBytes();
    reserve(bytes);
    const auto room = qScopeGuard([=, this] { release(bytes); });
    if (task.targetPath.isEmpty()) {
        result.pieces
            = encodePieces(image.source(), tiffCompressionTag(task.options.tiffCompressionIndex));
        if (task.options.verifies)
            result.proof = proofOf(image.source());
        return;
    }
    task.folders->makeFor(task.targetPath);
    result.file = encodedPage(image.sharedSource(), task.targetPath, pageEncoding(task.targetPath),
                              task.options);
    finishFile(task, image, result);
}

/// Waits until the page can be in work beside the others. Those are finished in any case, so this
/// ends.
void PageWorkerPool::reserve(std::uint64_t bytes)
{
    std::unique_lock lock(m_mutex);
    if (std::exchange(m_isCopying, false))
        m_hasWork.notify_all();
    m_hasRoom.wait(lock,
                   [&] { return m_bytesInWork == 0 || m_bytesInWork + bytes <= m_mostBytes; });
    m_bytesInWork += bytes;
}

void PageWorkerPool::release(std::uint64_t bytes)
{
    const std::scoped_lock lock(m_mutex);
    m_bytesInWork -= bytes;
    m_hasRoom.notify_all();
}

} // namespace pagestack
