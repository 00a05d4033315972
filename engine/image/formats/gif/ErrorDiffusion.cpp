#include "engine/image/formats/gif/ErrorDiffusion.h"

#include <algorithm>
#include <limits>

namespace pagestack {

namespace {

    constexpr int searchBits = 6;
    constexpr int lost = 8 - searchBits; ///< bits of a channel that are not searched for

    std::uint32_t entryOf(const RgbColor& color, std::size_t index)
    {
        return std::uint32_t { color[0] } << 24U | std::uint32_t { color[1] } << 16U
            | std::uint32_t { color[2] } << 8U | static_cast<std::uint32_t>(index);
    }

} // namespace

ErrorDiffusion::ErrorDiffusion(const std::vector<RgbColor>& palette, int widthPx)
    : m_widthPx(widthPx)
    , m_errors(static_cast<std::size_t>(widthPx + 2) * 3)
    , m_nextErrors(m_errors.size())
    , m_unknown(~entryOf(palette[0], 255)) // entry 0 does not have this colour
    , m_nearest(std::size_t { 1 } << (3 * searchBits), m_unknown)
{
    for (const RgbColor& color : palette) {
        m_entries.push_back(entryOf(color, m_entries.size()));
        for (std::size_t c = 0; c < 3; ++c)
            m_palette[c].push_back(color[c]);
    }
}

/// Looks for the palette entry that is nearest to the middle of a cell, so that the answer does not
/// depend on which colour of the cell came first.
void ErrorDiffusion::findNearest(std::size_t cell)
{
    std::array<std::int16_t, 3> middle {};
    for (std::size_t c = 0; c < 3; ++c)
        middle[c] = static_cast<std::int16_t>(
            ((cell >> (searchBits * (2 - c)) & ((1U << searchBits) - 1)) << lost)
            + (1U << lost) / 2);
    int least = std::numeric_limits<int>::max();
    const auto entries = static_cast<int>(m_palette[0].size());
    for (int i = 0; i < entries; ++i) {
        int distance = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const auto off = static_cast<std::int16_t>(m_palette[c].data()[i] - middle[c]);
            distance += off * off;
        }
        least = std::min(least, distance << 8 | i); // of equal distances the first
    }
    m_nearest[cell] = m_entries[static_cast<std::size_t>(least & 255)];
}

void ErrorDiffusion::mapRow(const std::uint8_t* row, std::uint8_t* to)
{
    if (m_fromRight)
        mapInDirection<-1>(row, to);
    else
        mapInDirection<1>(row, to);
    m_errors.swap(m_nextErrors);
    m_fromRight = !m_fromRight;
}

template <int step>
void ErrorDiffusion::mapInDirection(const std::uint8_t* row, std::uint8_t* to)
{
    // What is spread goes from pixel to pixel in variables; the next row gets each sum once.
    std::array<int, 3> ahead {}; // for the next pixel
    std::array<int, 3> behind {}; // for the pixel behind, in the next row
    std::array<int, 3> below {};
    for (int i = 0, x = step > 0 ? 0 : m_widthPx - 1; i < m_widthPx; ++i, x += step) {
        const std::uint8_t* const pixel = row + 3 * qsizetype { x };
        const int* const errors = m_errors.data() + 3 * qsizetype { x + 1 };
        int* const nextBehind = m_nextErrors.data() + 3 * qsizetype { x + 1 - step };
        std::array<int, 3> wanted {};
        std::size_t cell = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            wanted[c] = std::clamp(pixel[c] + (errors[c] + ahead[c] + 8) / 16, 0, 255);
            cell = cell << searchBits | static_cast<std::size_t>(wanted[c] >> lost);
        }
        if (m_nearest[cell] == m_unknown)
            findNearest(cell);
        const Entry entry = m_nearest[cell];
        to[x] = static_cast<std::uint8_t>(entry);
        for (std::size_t c = 0; c < 3; ++c) {
            const int error = wanted[c] - static_cast<int>(entry >> (24 - 8 * c) & 255U);
            ahead[c] = error * 7;
            nextBehind[c] = behind[c] + error * 3;
            behind[c] = below[c] + error * 5;
            below[c] = error;
        }
    }
    const qsizetype last = step > 0 ? m_widthPx - 1 : 0;
    std::copy(behind.begin(), behind.end(), m_nextErrors.begin() + 3 * (last + 1));
}

} // namespace pagestack
