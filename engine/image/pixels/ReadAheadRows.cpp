#include "engine/image/pixels/ReadAheadRows.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace pagestack {

namespace {

    /// Stays in the cache, and takes far longer to be made than a thread does.
    constexpr qsizetype portionBytes = qsizetype { 1024 } * 1024;

} // namespace

ReadAheadRows::ReadAheadRows(std::unique_ptr<RowSource> source, SpareThreads& threads)
    : RowSource(source->widthPx(), source->heightPx(), source->layout())
    , m_threads(threads)
    , m_source(std::move(source))
{
}

Band ReadAheadRows::nextBand()
{
    if (m_isAtEnd)
        return {};
    if (!m_claim)
        m_claim = m_threads.tryTake();
    m_isAtEnd = true; // with an exception, too
    Band band;
    if (m_claim) {
        if (!m_rowsAhead.valid())
            startReading();
        band.rows = m_rowsAhead.get();
        m_samples.swap(m_ahead);
        band.samples = m_samples.data();
        band.strideBytes = rowBytes();
        if (band.rows > 0)
            startReading();
    } else {
        band = m_source->nextBand();
    }
    m_isAtEnd = band.rows == 0;
    return band;
}

void ReadAheadRows::startReading()
try {
    m_rowsAhead = std::async(std::launch::async, [this] { return read(); });
} catch (const std::system_error&) { // the system has no thread left
    m_rowsAhead = std::async(std::launch::deferred, [this] { return read(); });
}

/// Fills `m_ahead`; returns the number of rows, 0 at the end.
int ReadAheadRows::read()
{
    const qsizetype bytes = rowBytes();
    const qsizetype most = std::max<qsizetype>(1, portionBytes / bytes);
    m_ahead.clear();
    int rows = 0;
    try {
        if (m_failure)
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        for (; rows < most; ++rows, ++m_done) {
            if (m_done == m_band.rows) {
                m_band = m_source->nextBand();
                m_done = 0;
                if (m_band.rows == 0)
                    break;
            }
            m_ahead.insert(m_ahead.end(), m_band.row(m_done), m_band.row(m_done) + bytes);
        }
    } catch (...) {
        if (rows == 0)
            throw;
        m_failure = std::current_exception();
    }
    return rows;
}

} // namespace pagestack
