#pragma once

#include "engine/image/pixels/PixelLayout.h"

#include <utility>

namespace pagestack {

// The steps from the file to an output each hold a row or more, PNG some dozen of them.
constexpr std::uint32_t longestRowPx = 16 * 1024 * 1024;
constexpr std::uint64_t longestRowBytes = std::uint64_t { 16 } * 1024 * 1024;

/// Some rows of a page, the upper ones first. The memory belongs to whoever handed the band out.
struct Band
{
    const std::uint8_t* samples = nullptr;
    int rows = 0; ///< 0: the page is at its end
    qsizetype strideBytes = 0; ///< from the start of one row to the start of the next

    const std::uint8_t* row(int index) const { return samples + index * strideBytes; }
};

/// One pass over the pixels of a page, from the top row to the bottom row, in bands.
/// One thread at a time.
class RowSource
{
public:
    virtual ~RowSource() = default;

    int widthPx() const { return m_widthPx; }
    int heightPx() const { return m_heightPx; }
    const PixelLayout& layout() const { return m_layout; }
    qsizetype rowBytes() const { return m_layout.rowBytes(m_widthPx); }

    /// The next rows; a band without rows after the last one. It stays valid until the next call.
    /// The bands of a pass hold exactly `heightPx` rows together. Throws std::runtime_error with
    /// the reason when the rows cannot be read completely.
    virtual Band nextBand() = 0;

protected:
    RowSource(int widthPx, int heightPx, PixelLayout layout)
        : m_widthPx(widthPx)
        , m_heightPx(heightPx)
        , m_layout(std::move(layout))
    {
    }

private:
    int m_widthPx;
    int m_heightPx;
    PixelLayout m_layout;
};

} // namespace pagestack
