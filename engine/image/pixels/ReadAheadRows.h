#pragma once

#include "engine/image/pixels/RowSource.h"
#include "engine/threads/SpareThreads.h"

#include <array>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

namespace pagestack {

/// The rows of another source, which reads on by a thread of its own while those at hand are used.
/// That begins with the first band for which a thread is spare; before that the source's bands are
/// handed out as they come.
///
/// An exception of the source comes after the rows before it.
class ReadAheadRows : public RowSource
{
public:
    /// `threads` outlives the rows.
    ReadAheadRows(std::unique_ptr<RowSource> source, SpareThreads& threads);

    /// Waits for the band that is being read.
    ~ReadAheadRows() override;
    ReadAheadRows(const ReadAheadRows&) = delete;
    ReadAheadRows& operator=(const ReadAheadRows&) = delete;

    Band nextBand() override;

private:
    /// A part of a band that the thread has read.
    struct Portion
    {
        std::unique_ptr<std::uint8_t[]> samples;
        int rows = 0; ///< 0: the page is at its end, or there is a failure
        std::exception_ptr failure;
    };

    bool start();
    Band take();
    void readAll();
    bool handOver(const Band& band, std::exception_ptr failure);
    bool waitForRoom();
    Portion& portion(std::size_t number) { return m_ring[number % m_ring.size()]; }

    std::unique_ptr<RowSource> m_source; ///< from the start on its thread's
    SpareThreads& m_threads;
    const qsizetype m_strideBytes;
    const int m_portionRows;
    std::array<Portion, 4> m_ring;
    bool m_isAtEnd = false; ///< user's thread only, as the next one
    bool m_holdsPortion = false; ///< the oldest portion is in use

    std::mutex m_mutex; ///< guards the fields below; a portion belongs to one side at a time
    std::condition_variable m_changed;
    std::size_t m_read = 0; ///< portions handed over
    std::size_t m_used = 0; ///< portions given back
    bool m_isClosing = false;

    std::thread m_thread; ///< last: it uses the rest
};

} // namespace pagestack
