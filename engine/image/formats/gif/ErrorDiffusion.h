#pragma once

#include "engine/image/pixels/PixelLayout.h"

namespace pagestack {

/// Finds palette entries for the pixels of one row after the other and spreads the error of each
/// pixel over its neighbours (Floyd and Steinberg, 1976), every other row from right to left.
class ErrorDiffusion
{
public:
    ErrorDiffusion(const std::vector<RgbColor>& palette, int widthPx);

    /// Replaces each RGB pixel of `row` by the index of a palette entry at `to`.
    void mapRow(const std::uint8_t* row, std::uint8_t* to);

private:
    /// Red, green, blue and index of a palette entry, from the highest byte on.
    using Entry = std::uint32_t;

    template <int step>
    void mapInDirection(const std::uint8_t* row, std::uint8_t* to);
    void findNearest(std::size_t cell);

    std::vector<Entry> m_entries;
    std::array<std::vector<std::int16_t>, 3> m_palette; ///< by channel
    int m_widthPx;
    bool m_fromRight = false;
    /// Of this row, in sixteenths, three channels, with a pixel's margin on each side.
    std::vector<int> m_errors;
    std::vector<int> m_nextErrors;
    Entry m_unknown; ///< stands for an entry that was not looked for yet
    std::vector<Entry> m_nearest; ///< by 6 bits a channel
};

} // namespace pagestack
