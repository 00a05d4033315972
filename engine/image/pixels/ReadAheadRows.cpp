#include "engine/image/pixels/ReadAheadRows.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

namespace pagestack {

namespace {

    /// What is taken at a time stays in the cache.
    constexpr qsizetype portionBytes = qsizetype { 256 } * 1024;

    /// All portions together hold a row of tiles, so that the next one is read while they are used;
    /// of very long rows only a few.
    constexpr qsizetype mostBytes = qsizetype { 4 } * 1024 * 1024;
    constexpr std::size_t fewestPortions = 4;

} // namespace

ReadAheadRows::ReadAheadRows(std::unique_ptr<SharedWork> work, std::unique_ptr<RowSource> source,
                             SpareThreads& threads)
    : RowSource(source->widthPx(), source->heightPx(), source->layout())
    , m_work(std::move(work))
    , m_source(std::move(source))
    , m_threads(threads)
    , m_strideBytes(rowBytes())
    , m_portionRows(static_cast<int>(std::max<qsizetype>(1, portionBytes / m_strideBytes)))
    , m_mostPortions(std::clamp<std::size_t>(
          static_cast<std::size_t>(mostBytes / (m_portionRows * m_strideBytes)), fewestPortions,
          m_ring.size()))
{
}

ReadAheadRows::~ReadAheadRows()
{
    if (!m_thread.joinable())
        return;
    {
        const SharedWork::Lock lock = m_work->lock();
        m_isClosing = true;
    }
    m_work->notify();
    m_thread.join();
}

Band ReadAheadRows::nextBand()
{
    if (m_isAtEnd)
        return {};
    const Band band = m_thread.joinable() || start() ? take() : m_source->nextBand();
    m_isAtEnd = band.rows == 0;
    return band;
}

/// False when there is no thread to be had.
bool ReadAheadRows::start()
{
    ThreadClaim claim = m_threads.tryTake();
    if (!claim)
        return false;
    m_free.reserve(m_ring.size());
    try {
        m_thread = std::thread([this, own = std::move(claim)] { readAll(); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

Band ReadAheadRows::take()
{
    SharedWork::Lock lock = m_work->lock();
    if (m_inUse.samples)
        m_free.push_back(std::move(m_inUse.samples));
    m_work->notify();
    m_work->helpUntil(lock, [this] { return m_read > m_used; });
    m_inUse = std::move(m_ring[m_used++ % m_ring.size()]);
    lock.unlock();
    if (m_inUse.failure) {
        m_isAtEnd = true;
        std::rethrow_exception(std::exchange(m_inUse.failure, nullptr));
    }
    return { m_inUse.samples.get(), m_inUse.rows, m_strideBytes };
}

void ReadAheadRows::readAll()
{
    for (bool goesOn = true; goesOn;) {
        Band band;
        std::exception_ptr failure;
        try {
            band = m_source->nextBand();
        } catch (...) {
            failure = std::current_exception();
        }
        goesOn = handOver(band, std::move(failure));
    }
}

/// False when nothing follows, or nobody wants it.
bool ReadAheadRows::handOver(const Band& band, std::exception_ptr failure)
{
    int done = 0;
    bool goesOn = true;
    do {
        Portion next;
        if (!waitForRoom(next.samples))
            return false;
        next.failure = std::exchange(failure, nullptr);
        copyRows(band, done, next);
        done += next.rows;
        goesOn = next.rows > 0;
        const SharedWork::Lock lock = m_work->lock();
        m_ring[m_read++ % m_ring.size()] = std::move(next);
        m_work->notify();
    } while (goesOn && done < band.rows);
    return goesOn;
}

/// As many as fit in; none, and a failure, if there is no memory for them.
void ReadAheadRows::copyRows(const Band& band, int first, Portion& to) const
{
    const int rows = std::min(m_portionRows, band.rows - first);
    if (rows == 0)
        return;
    if (!to.samples)
        to.samples.reset(new (std::nothrow)
                             std::uint8_t[static_cast<std::size_t>(m_portionRows * m_strideBytes)]);
    if (!to.samples) {
        to.failure = std::make_exception_ptr(std::bad_alloc());
        return;
    }
    for (int i = 0; i < rows; ++i)
        std::memcpy(to.samples.get() + i * m_strideBytes, band.row(first + i),
                    static_cast<std::size_t>(m_strideBytes));
    to.rows = rows;
}

/// Gives room for a portion, or nothing where it has not been made yet. False when no more portions
/// are wanted.
bool ReadAheadRows::waitForRoom(Samples& room)
{
    SharedWork::Lock lock = m_work->lock();
    // One portion is in use.
    m_work->wait(lock, [this] { return m_isClosing || m_read - m_used < m_mostPortions - 1; });
    if (!m_free.empty()) {
        room = std::move(m_free.back());
        m_free.pop_back();
    }
    return !m_isClosing;
}

} // namespace pagestack
