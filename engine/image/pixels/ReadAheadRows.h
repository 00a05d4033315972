#pragma once

#include "engine/image/pixels/RowSource.h"
#include "engine/threads/SharedWork.h"
#include "engine/threads/SpareThreads.h"

#include <array>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

namespace pagestack {

/// The rows of another source, which reads on by a thread of its own while those at hand are used.
/// That begins with the first band for which a thread is spare; before that the source's bands are
/// handed out as they come. While the user's thread waits for rows it takes part in the work of the
/// source.
///
/// An exception of the source comes after the rows before it.
class ReadAheadRows : public RowSource
{
public:
    /// `work` is that of `source`; `threads` outlives the rows.
    ReadAheadRows(std::unique_ptr<SharedWork> work, std::unique_ptr<RowSource> source,
                  SpareThreads& threads);

    /// Waits for the band that is being read.
    ~ReadAheadRows() override;
    ReadAheadRows(const ReadAheadRows&) = delete;
    ReadAheadRows& operator=(const ReadAheadRows&) = delete;

    Band nextBand() override;

private:
    using Samples = std::unique_ptr<std::uint8_t[]>;

    /// A part of a band that the thread has read.
    struct Portion
    {
        Samples samples;
        int rows = 0; ///< 0: the page is at its end, or there is a failure
        std::exception_ptr failure;
    };

    bool start();
    Band take();
    void readAll();
    bool handOver(const Band& band, std::exception_ptr failure);
    void copyRows(const Band& band, int first, Portion& to) const;
    bool waitForRoom(Samples& room);

    const std::unique_ptr<SharedWork> m_work; ///< its lock guards what is said below
    std::unique_ptr<RowSource> m_source; ///< from the start on its thread's
    SpareThreads& m_threads;
    const qsizetype m_strideBytes;
    const int m_portionRows;
    const std::size_t m_mostPortions; ///< no more than the ring has
    Portion m_inUse; ///< user's thread only, as the next one
    bool m_isAtEnd = false;

    // Guarded.
    std::array<Portion, 16> m_ring; ///< number n at n modulo its size
    std::size_t m_read = 0; ///< portions handed over
    std::size_t m_used = 0; ///< portions taken
    std::vector<Samples> m_free; ///< the last one was in use last and is still in the cache
    bool m_isClosing = false;

    std::thread m_thread; ///< last: it uses the rest
};

} // namespace pagestack
