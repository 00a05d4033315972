#include "engine/image/pixels/ReadAheadRows.h"

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

namespace pagestack {

namespace {

    /// All portions together stay in the cache.
    constexpr qsizetype portionBytes = qsizetype { 256 } * 1024;

} // namespace

ReadAheadRows::ReadAheadRows(std::unique_ptr<RowSource> source, SpareThreads& threads)
    : RowSource(source->widthPx(), source->heightPx(), source->layout())
    , m_source(std::move(source))
    , m_threads(threads)
    , m_strideBytes(rowBytes())
    , m_portionRows(static_cast<int>(std::max<qsizetype>(1, portionBytes / m_strideBytes)))
{
}

ReadAheadRows::~ReadAheadRows()
{
    if (!m_thread.joinable())
        return;
    {
        const std::scoped_lock lock(m_mutex);
        m_isClosing = true;
    }
    m_changed.notify_all();
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
    for (Portion& portion : m_ring)
        portion.samples = std::make_unique_for_overwrite<std::uint8_t[]>(
            static_cast<std::size_t>(m_portionRows * m_strideBytes));
    try {
        m_thread = std::thread([this, own = std::move(claim)] { readAll(); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

Band ReadAheadRows::take()
{
    std::unique_lock lock(m_mutex);
    if (m_holdsPortion)
        ++m_used;
    m_holdsPortion = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_read > m_used; });
    Portion& taken = portion(m_used);
    lock.unlock();
    if (taken.failure) {
        m_isAtEnd = true;
        std::rethrow_exception(std::exchange(taken.failure, nullptr));
    }
    return { taken.samples.get(), taken.rows, m_strideBytes };
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
    do {
        if (!waitForRoom())
            return false;
        Portion& next = portion(m_read);
        next.rows = std::min(m_portionRows, band.rows - done);
        next.failure = std::exchange(failure, nullptr);
        for (int i = 0; i < next.rows; ++i)
            std::memcpy(next.samples.get() + i * m_strideBytes, band.row(done + i),
                        static_cast<std::size_t>(m_strideBytes));
        done += next.rows;
        const std::scoped_lock lock(m_mutex);
        ++m_read;
        m_changed.notify_all();
    } while (done < band.rows);
    return band.rows > 0;
}

bool ReadAheadRows::waitForRoom()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isClosing || m_read - m_used < m_ring.size(); });
    return !m_isClosing;
}

} // namespace pagestack
