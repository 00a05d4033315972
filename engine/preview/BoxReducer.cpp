#include "engine/preview/BoxReducer.h"

#include <algorithm>

namespace pagestack {

namespace {

    /// As many samples of 8 bits as a sum of 16 bits holds.
    constexpr int mostPendingRows = 257;

} // namespace

BoxReducer::BoxReducer(int fromWidth, int toWidth, int channels)
    : m_channels(static_cast<std::size_t>(channels))
    , m_columns(static_cast<std::size_t>(fromWidth) * m_channels)
    , m_sums(static_cast<std::size_t>(toWidth) * m_channels)
{
    m_starts.reserve(static_cast<std::size_t>(toWidth) + 1);
    for (int i = 0; i <= toWidth; ++i)
        m_starts.push_back(static_cast<std::uint32_t>(boxStart(i, fromWidth, toWidth)));
}

void BoxReducer::add(const std::uint8_t* row)
{
    if (m_pendingRows == mostPendingRows)
        flush();
    std::uint16_t* const sums = m_columns.data();
    const std::size_t count = m_columns.size();
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::uint16_t>(sums[i] + row[i]);
    ++m_pendingRows;
}

void BoxReducer::flush()
{
    for (std::size_t box = 0; box + 1 < m_starts.size(); ++box)
        for (std::size_t c = 0; c < m_channels; ++c) {
            std::uint64_t sum = 0;
            for (std::size_t x = m_starts[box]; x < m_starts[box + 1]; ++x)
                sum += m_columns[x * m_channels + c];
            m_sums[box * m_channels + c] += sum;
        }
    std::ranges::fill(m_columns, std::uint16_t { 0 });
    m_rows += m_pendingRows;
    m_pendingRows = 0;
}

void BoxReducer::finishRow(std::uint8_t* to)
{
    flush();
    for (std::size_t box = 0; box + 1 < m_starts.size(); ++box) {
        const std::uint64_t pixels
            = std::uint64_t { m_starts[box + 1] - m_starts[box] } * static_cast<unsigned>(m_rows);
        for (std::size_t c = 0; c < m_channels; ++c) {
            const std::uint64_t sum = m_sums[box * m_channels + c];
            *to++ = static_cast<std::uint8_t>((sum + pixels / 2) / pixels);
        }
    }
    std::ranges::fill(m_sums, std::uint64_t { 0 });
    m_rows = 0;
}

} // namespace pagestack
