#pragma once

#include "engine/image/pixels/PixelLayout.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace pagestack {

/// Collects the colours of a page and chooses a palette for it.
///
/// As many colours as the palette may have are kept exactly. Of up to 256 that are too many the
/// rarest are left out. More are reduced by variance (X. Wu in Graphics Gems II, 1991): the space
/// of colours of 6 bits a channel is cut again and again across the box whose split lowers the
/// squared error most, and the mean of each box's real colours becomes a palette entry.
class ColorQuantizer
{
public:
    ColorQuantizer();

    /// Counts pixels of three bytes, red first.
    void add(const std::uint8_t* pixels, int count);

    /// True when the colours counted fit into a palette of `mostColors`, 2 to 256.
    bool isExact(int mostColors) const;

    /// A palette of at most `mostColors` for the colours counted: in the order of their RGB values
    /// when exact. At least one entry.
    std::vector<RgbColor> palette(int mostColors) const;

private:
    /// Of a cell or, once summed up, of all cells below it: the sums of red, green and blue, the
    /// number of pixels and the sum of all squares.
    using Moments = std::array<std::int64_t, 5>;

    void keepColors(const std::uint8_t* pixels, int count);
    std::vector<Moments> cumulated() const;
    std::vector<RgbColor> reducedPalette(std::size_t mostColors) const;
    std::vector<RgbColor> sortedColors() const;

    bool m_overflowed = false; ///< more than 256 colours
    std::unordered_map<std::uint32_t, std::int64_t> m_colors; ///< pixels of each, while few
    std::vector<Moments> m_cells;
};

} // namespace pagestack
