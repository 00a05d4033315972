#pragma once

#include "engine/image/pixels/RowSource.h"
#include "engine/threads/SpareThreads.h"

#include <exception>
#include <future>
#include <memory>
#include <vector>

namespace pagestack {

/// The rows of another source, which reads on by another thread while those at hand are used. That
/// begins with the first band for which a thread is spare; before that the source's bands are
/// handed out as they come.
///
/// An exception of the source comes after the rows before it. The destructor waits for what is
/// being read.
class ReadAheadRows : public RowSource
{
public:
    /// `threads` outlives the rows.
    ReadAheadRows(std::unique_ptr<RowSource> source, SpareThreads& threads);

    Band nextBand() override;

private:
    void startReading();
    int read();

    SpareThreads& m_threads;
    ThreadClaim m_claim; ///< none before a thread is spare
    bool m_isAtEnd = false;
    std::vector<std::uint8_t> m_samples; ///< in use

    // From here on of the thread that reads, while there is one.
    std::unique_ptr<RowSource> m_source;
    Band m_band; ///< of the source
    int m_done = 0; ///< of its rows
    std::exception_ptr m_failure; ///< of the source, behind rows that were read before
    std::vector<std::uint8_t> m_ahead;

    std::future<int> m_rowsAhead; ///< last: it waits for the thread, which uses the rest
};

} // namespace pagestack
